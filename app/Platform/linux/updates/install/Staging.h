#pragma once

#include "Platform/linux/updates/install/InstallPlace.h"
#include "Platform/linux/updates/install/RunningPrograms.h"

#include <array>
#include <optional>
#include <string>

namespace ferrobank::updates {

/// A version that is downloaded, verified, unpacked and forced to the disk, and waits to be installed.
struct StagedUpdate {
    std::string version;
    std::string item; ///< what the application wanted to remember of it, JSON

    friend bool operator==(const StagedUpdate&, const StagedUpdate&) = default;
};

/// The contents of the staging folder. All functions but staged() need a StagingLock.
///
/// | name          | what it is                                                                        |
/// |---------------|-----------------------------------------------------------------------------------|
/// | archive.part  | a download, complete or not; archive.json says of what                            |
/// | unpacking     | garbage unless a process is filling it                                            |
/// | next          | the unpacked version, complete only if staged.json says so; later the old version |
/// | staged.json   | StagedUpdate                                                                      |
/// | kept-…       | an old version that something still runs from                                     |
/// | trial, bad, bad.ready | see Trial                                                                 |
class Staging {
public:
    explicit Staging(InstallPlace place);

    [[nodiscard]] std::filesystem::path archive() const { return _folder / "archive.part"; }

    [[nodiscard]] std::filesystem::path archiveNote() const { return _folder / "archive.json"; }

    [[nodiscard]] std::filesystem::path unpacking() const { return _folder / "unpacking"; }

    [[nodiscard]] std::filesystem::path next() const { return _folder / "next"; }

    [[nodiscard]] std::optional<StagedUpdate> staged() const;

    /// The application's folder of a staged version: in next, or already moved to its place among the
    /// versions.
    [[nodiscard]] std::filesystem::path rootOf(const StagedUpdate& update) const;

    /// Makes the folder to unpack into, empty and private. Throws UpdateFailure.
    void beginUnpacking();

    /// What was unpacked waits from now on. Throws UpdateFailure.
    void record(const StagedUpdate& update);

    void forgetStaged();
    void noteInstalled(); ///< what was staged is installed now; what lies in its place is the old version
    void discardDownload();

    /// Removes what a download that failed has left: all that nothing can run from. Looks at no other
    /// process.
    void dropUnfinished();

    /// Removes what no step needs any more: half-unpacked versions, a kept old version that nothing runs
    /// from, downloads that were staged. An update that waits, a version on trial and a download that may be
    /// resumed stay.
    void removeLeftovers(const std::string& installedVersion);

private:
    void clearNext();
    void removeOldVersions(const std::string& installedVersion);

    InstallPlace _place;
    std::filesystem::path _folder;
};

} // namespace ferrobank::updates
