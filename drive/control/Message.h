#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace ferrobank::drive {

/// What a command can ask of the serving process.
///
/// | operation   | meaning                                                           | answered        |
/// |-------------|-------------------------------------------------------------------|-----------------|
/// | Ping        | are you there                                                     | at once         |
/// | Attach      | mount the drive unless it is                                      | when tried      |
/// | Restart     | unmount, become the program that is installed now, mount          | when tried      |
/// | Reexec      | become the program that is installed now, the drive stays mounted | by the new one  |
/// | PauseDedup  | share nothing for a minute; carries how far an export is          | at once         |
/// | ShareNow    | begin a sharing pass whatever it would wait for                   | at once         |
/// | HoldSharing | share nothing until resumed, also after a restart                 | at once         |
/// | Resume      | share again                                                       | at once         |
/// | FilesRead   | every file was read; the list beside the store has those that     | at once         |
/// |             | cannot be, `total` carries how many they are                      |                 |
/// | Replaced    | the same after looking at the files of that list alone            | at once         |
/// | Accept      | the store that is there is meant: take an older one, or, at the   | at once         |
/// |             | next attach, another one                                          |                 |
/// | Stop        | unmount and leave it so                                           | when done       |
/// | Quit        | end, without unmounting                                           | at once         |
enum class Operation {
    Ping,
    Attach,
    Restart,
    Reexec,
    PauseDedup,
    ShareNow,
    HoldSharing,
    Resume,
    FilesRead,
    Replaced,
    Accept,
    Stop,
    Quit
};

/// One request on the control socket: a JSON object on a line.
struct Request {
    Operation operation = Operation::Ping;
    std::uint64_t done = 0;
    std::uint64_t total = 0;

    [[nodiscard]] std::string toLine() const;
    [[nodiscard]] static std::optional<Request> fromLine(const std::string& line);
};

/// The answer: `{"ok":true}` or why not.
struct Reply {
    bool ok = false;
    std::string code;
    std::string text;

    [[nodiscard]] static Reply success() { return {.ok = true, .code = {}, .text = {}}; }

    [[nodiscard]] std::string toLine() const;
    [[nodiscard]] static std::optional<Reply> fromLine(const std::string& line);
};

} // namespace ferrobank::drive
