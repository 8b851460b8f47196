#pragma once

#include "platform/Paths.h"
#include "testing/TemporaryFolder.h"
#include "testing/TestVolume.h"

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ferrobank::drive::testing {

/// How one run of the built tool ended.
struct ToolRun {
    int status = -1;
    std::string output;
    std::string errorText;
};

/// A computer for the drive tool: a small disk of its own with a home folder on it, a runtime folder, and the
/// built program. Whatever the tool still runs, mounts or attaches there is ended when this goes, also after
/// a failure. Needs root and loop devices.
class DriveHost {
public:
    /// `kind` and `bytes` are those of the host's disk.
    explicit DriveHost(const std::string& kind = "ext4", std::uint64_t bytes = std::uint64_t{4} << 30U);
    DriveHost(const DriveHost&) = delete;
    DriveHost& operator=(const DriveHost&) = delete;
    ~DriveHost();

    [[nodiscard]] const Paths& paths() const { return _paths; }

    [[nodiscard]] const std::filesystem::path& folder() const { return _folder.path(); }

    [[nodiscard]] TestVolume& disk() { return *_disk; }

    /// Runs the tool to its end. Runs at the same time need other names for the file that takes their errors.
    ToolRun run(const std::vector<std::string>& arguments, const std::string& errorName = "errors") const;
    /// Starts it as a child of this process, with its output thrown away.
    [[nodiscard]] pid_t start(const std::vector<std::string>& arguments) const;
    /// Becomes it, in a child that was forked for that.
    [[noreturn]] void become(const std::vector<std::string>& arguments) const;
    /// Gives the home a new store, of 64 GB unless told, whose space guard is grown in no time; else the
    /// first start makes 8 TB.
    void makeSmallStore(std::uint64_t bytes = std::uint64_t{64} << 30U) const;
    /// Starts `serve` as a child and returns at once.
    pid_t startServing();
    /// Starts it and waits until the drive is mounted or the attach has failed; true when mounted.
    bool serveAndMount();
    /// Ends all serving processes with a signal and waits for them.
    void endServing(int signal);
    /// The process that holds the drive, 0 without one.
    [[nodiscard]] pid_t servingProcess() const;

    [[nodiscard]] bool isMounted() const;
    /// The parsed JSON of `status --json` is left to the caller; this is one key's text or nothing.
    [[nodiscard]] std::string status() const;
    [[nodiscard]] std::string attachError() const;
    [[nodiscard]] std::string logText() const;

    /// Other variables, or none with an empty value, for the runs that follow.
    void setVariable(const std::string& name, const std::string& value);

    /// Uses another copy of the program, for updates.
    void useProgram(const std::filesystem::path& program) { _program = program; }

    /// Unmounts and detaches everything of the drive by force, as a crash of the computer would.
    void dropDrive();

private:
    [[nodiscard]] std::vector<pid_t> ownProcesses() const;
    pid_t spawn(const std::vector<std::string>& arguments, int output, int errors) const;

    TemporaryFolder _folder;
    std::unique_ptr<TestVolume> _disk;
    Paths _paths;
    std::map<std::string, std::string> _variables;
    std::filesystem::path _program;
    /// The last one started, which may not have become the tool yet.
    pid_t _started = 0;
};

/// Puts a copy of both programs of the built tool into a folder, in place of those that are there, and gives
/// the path to start it by.
std::filesystem::path installTool(const std::filesystem::path& folder);

/// Waits until the condition holds; false when it does not within the limit.
bool waitUntil(const std::function<bool()>& condition,
               std::chrono::milliseconds limit = std::chrono::seconds(20));

/// Hash, size and kind of everything below a folder by relative path, without the tool's own folder.
[[nodiscard]] std::map<std::string, std::string> fingerprint(const std::filesystem::path& folder);

/// Writes a file of `bytes` pseudo-random bytes that depend on `seed`, synced; false when the disk refuses.
bool writeRandomFile(const std::filesystem::path& file, std::size_t bytes, unsigned seed);

} // namespace ferrobank::drive::testing
