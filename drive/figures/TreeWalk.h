#pragma once

#include "platform/FileDescriptor.h"

#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <stop_token>

namespace ferrobank::drive {

/// The tool's own folder in the root of the drive: the space guard and export snapshots live there. It is
/// never counted, shared or copied.
inline constexpr const char* kToolFolder = ".ferrobank";

/// One folder that the walk has opened. `descriptor` and `status` are valid during the call only.
struct WalkedFolder {
    std::uint32_t id = 0;
    const char* name = "";
    int descriptor = -1;
    const struct statx* status = nullptr;
    /// Number of the subvolume, 0 where the file system has none. With the inode it names one file for good.
    std::uint64_t volume = 0;
    bool inReadOnlyVolume = false;
};

/// One directory entry that is no folder. Everything in it is valid during the call only.
struct WalkedEntry {
    const WalkedFolder* folder = nullptr;
    const char* name = "";
    const struct statx* status = nullptr;
};

/// Receives what a walk meets, on the walking thread. The entries of a folder come before its subfolders;
/// `enterFolder` and `leaveFolder` are nested like the folders. What an implementation throws ends the walk.
class TreeVisitor {
public:
    virtual ~TreeVisitor() = default;

    /// Answers whether to go in. A refused folder gets no `leaveFolder`. The root of the walk has an empty
    /// name.
    [[nodiscard]] virtual bool enterFolder(const WalkedFolder&) { return true; }

    virtual void leaveFolder() {}

    virtual void visit(const WalkedEntry& entry) = 0;

    /// `name`, in the folder that was entered last, could not be read; `error` is the errno. An empty name
    /// stands for the rest of that folder.
    virtual void unreadable(const char* /*name*/, int /*error*/) {}
};

enum class WalkEnd { Complete, Unreadable, Cancelled };

enum class ToolFolder { Skip, Visit };

/// Walks everything below `root`, depth first, with one open descriptor whatever the depth, without following
/// links and without crossing into other mounts; nested subvolumes are entered. Works while others change the
/// tree: what vanishes between two looks is passed over.
///
/// | end        | when                                                     |
/// |------------|----------------------------------------------------------|
/// | Complete   | all was seen                                             |
/// | Unreadable | some folder or entry could not be read, the rest was seen |
/// | Cancelled  | `stop` was requested, noticed within 256 entries          |
///
/// Throws Failure when the root itself cannot be opened.
WalkEnd walkTree(const std::filesystem::path& root, TreeVisitor& visitor, const std::stop_token& stop,
                 ToolFolder toolFolder = ToolFolder::Skip);

/// The same below a folder that is open already.
WalkEnd walkTree(FileDescriptor root, TreeVisitor& visitor, const std::stop_token& stop,
                 ToolFolder toolFolder = ToolFolder::Skip);

/// One number for a file of the drive, the same after every mount: subvolume and inode together. Never 0.
[[nodiscard]] std::uint64_t fileIdentity(std::uint64_t volume, std::uint64_t inode);

} // namespace ferrobank::drive
