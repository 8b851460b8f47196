#pragma once

#include <functional>
#include <string>

namespace ferrobank::drive {

/// Runs one turn of a loop that must go on, or all of a thread, whose exceptions would end the process.
/// Whatever it throws is handed to `tell` in words, and the answer is false. Any thread.
bool guarded(const std::function<void()>& turn,
             const std::function<void(const std::string& words)>& tell) noexcept;

} // namespace ferrobank::drive
