#pragma once

#include "platform/FileDescriptor.h"
#include "platform/Paths.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace ferrobank::drive {

/// What a command that copies, unmounts or deletes is doing to the drive, and how far it is. Plain value.
///
/// | phase     | meaning                                              | done, total                | may be
/// cancelled |
/// |-----------|------------------------------------------------------|----------------------------|------------------|
/// | Starting  | looking at the drive and the destination             | 0                          | yes | |
/// Copying   | from the snapshot; programs may go on writing        | bytes of the drive's files | yes | |
/// Verifying | reading the copy back                                | bytes of the drive's files | yes | |
/// Detaching | unmounting and ending the server                     | 0                          | yes | |
/// Comparing | what was changed meanwhile, nobody can write any more | bytes of what was changed  | yes | |
/// Removing  | taking away what starts the drive, and the data      | 0                          | no |
struct Work {
    enum class Phase { Starting, Copying, Verifying, Detaching, Comparing, Removing };

    /// "uninstall", "export", "restart"; "serve" while the server clears up what a killed export left.
    std::string command;
    int process = 0;
    Phase phase = Phase::Starting;
    std::uint64_t done = 0;
    std::uint64_t total = 0;

    bool operator==(const Work&) const = default;

    [[nodiscard]] std::string toText() const;
    [[nodiscard]] static std::optional<Work> fromText(const std::string& text);

    /// What is at work now, from the file that its lock is on; nothing otherwise. Cheap without any.
    [[nodiscard]] static std::optional<Work> atWork(const Paths& paths);
};

/// The word in the file and in the status: "starting", "copying", "verifying", "detaching", "comparing",
/// "removing".
[[nodiscard]] std::string phaseWord(Work::Phase phase);

/// The one lock of everything that copies the drive's files out, unmounts it or deletes it, in the drive's
/// own folder, so that all environments of the user share it. It goes with its process, however that ends.
/// One thread.
class WorkLock {
public:
    /// Throws Failure ("at-work") that names who has it. Waits while the server clears up, at most
    /// `patience`.
    [[nodiscard]] static WorkLock take(const Paths& paths, const std::string& command,
                                       std::chrono::milliseconds patience = std::chrono::seconds(30));
    /// The same, but nothing when somebody has it.
    [[nodiscard]] static std::optional<WorkLock> tryTake(const Paths& paths, const std::string& command);

    WorkLock(WorkLock&&) = default;
    WorkLock& operator=(WorkLock&&) = delete;
    WorkLock(const WorkLock&) = delete;
    WorkLock& operator=(const WorkLock&) = delete;
    ~WorkLock();

    /// Says how far it is to whoever asks for the status.
    void tell(Work::Phase phase, std::uint64_t done = 0, std::uint64_t total = 0);

private:
    WorkLock(FileDescriptor file, std::filesystem::path path, std::string command);

    FileDescriptor _file;
    std::filesystem::path _path;
    Work _work;
};

} // namespace ferrobank::drive
