#pragma once

#include <optional>
#include <string>

namespace ferrobank::drive {

/// The advice beside the remedy "restart", which the application shows as a button.
inline constexpr const char* kRestartAdvice = "Restart Ferrobank.";

/// One row of `ferrobank check`. With JSON it is one object on a line; `action` is a remedy that the
/// application knows: "restart", "login-items", "storage-settings".
struct CheckRow {
    enum class State { Running, Pass, Fail };

    std::string id;
    std::string title;
    State state = State::Running;
    std::optional<std::string> detail;
    std::optional<std::string> fix;
    std::optional<std::string> action;

    [[nodiscard]] std::string toJson() const;
    [[nodiscard]] std::string toText(bool colours) const;

    /// The application has a button for each remedy; at a terminal it is a command.
    [[nodiscard]] CheckRow forTerminal() const;

    [[nodiscard]] CheckRow passed(std::optional<std::string> words = std::nullopt) const;
    [[nodiscard]] CheckRow failed(std::string words, std::string advice,
                                  std::optional<std::string> remedy = std::nullopt) const;

private:
    [[nodiscard]] bool onlyNamesItsAction() const;
};

} // namespace ferrobank::drive
