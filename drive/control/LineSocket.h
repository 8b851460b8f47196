#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace ferrobank::drive {

/// Reads up to the first line break (not part of the result) from a connected socket, waiting at most `limit`
/// in all. Nothing when the time is over, the peer closes first or sends more than 64 KiB.
[[nodiscard]] std::optional<std::string> readLine(int socket, std::chrono::milliseconds limit);

/// False when the peer is gone. Never raises SIGPIPE.
bool sendLine(int socket, const std::string& line);

} // namespace ferrobank::drive
