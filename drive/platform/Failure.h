#pragma once

#include <stdexcept>
#include <string>

namespace ferrobank::drive {

/// What ended an operation, in the one sentence that the user will read. `code` is a short word for programs
/// ("busy", "not-authorized"); it is kept in the state file and in replies, never shown.
class Failure : public std::runtime_error {
public:
    explicit Failure(const std::string& text, std::string code = "failed");

    [[nodiscard]] const std::string& code() const noexcept { return _code; }

    [[nodiscard]] std::string text() const { return what(); }

private:
    std::string _code;
};

/// A Failure that says what was being done and why the system refused, from `errno`:
/// "Cannot write /a/b: No space left on device."
[[nodiscard]] Failure systemFailure(const std::string& attempt, int error);

} // namespace ferrobank::drive
