#pragma once

namespace ferrobank::drive {

/// Runs the command that the arguments name; the process's exit status. Failures are one sentence on standard
/// error and 1; arguments that make no sense, 2.
[[nodiscard]] int runCommandLine(int argumentCount, const char* const* arguments);

} // namespace ferrobank::drive
