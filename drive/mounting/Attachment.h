#pragma once

#include "mounting/BackEnd.h"
#include "mounting/HomeEntry.h"
#include "platform/Log.h"
#include "platform/Paths.h"

#include <memory>
#include <optional>

namespace ferrobank::drive {

/// Brings the drive from its store to `~/Ferrobank` and back, with every guard against attaching the image
/// twice. The caller holds the store's lock, and uses it from one thread. All operations throw Failure with
/// the sentence for the user and may be repeated after a failure or a kill at any moment.
///
/// The guards: whatever loop device has the image already is used, never a second one; the store's lock
/// admits one process; the image is read-only to its owner while attached; and a kernel that mounted it as a
/// second, foreign file system all the same ("temp_fsid") makes the attach fail and unmount.
class Attachment {
public:
    Attachment(Paths paths, Log log, std::unique_ptr<BackEnd> backEnd);

    /// Examines the store, makes it on the first run, and mounts the drive or adopts the mount that is there.
    Volume attach(Interaction interaction);
    /// Mounts the drive, which must be detached, so that nobody can write to it. What a kill leaves of that
    /// goes with the next attach.
    Volume attachReadOnly();
    /// Unmounts and makes the image writable again for the next attach. "busy" when programs use the drive.
    void detach(const Volume& volume);
    /// To be called when somebody else has unmounted the drive: makes the store ready for the next attach.
    void settleAfterEjection() const;
    /// Refuses ("store-deleted") when unmounting now would destroy the files for good.
    void requireStoreInPlace() const;

    [[nodiscard]] std::optional<Volume> current() const;

    [[nodiscard]] const HomeEntry& home() const { return _home; }

    [[nodiscard]] std::string backEndName() const { return std::string(_backEnd->name()); }

private:
    Volume adopt(const Volume& volume);
    Volume mountAnew(Interaction interaction, const std::vector<LoopDevice>& loops);
    void makeWritable() const;
    void examine(const std::vector<LoopDevice>& loops);
    void refuseDoubleAttachment(const Volume& volume);
    void pointHomeAt(const Volume& volume) const;
    void markOpen(const Volume& volume) const;

    Paths _paths;
    Log _log;
    std::unique_ptr<BackEnd> _backEnd;
    HomeEntry _home;
};

/// Whether the kernel gave this mount an identity of its own because its image is mounted a second time
/// (Linux 6.7 and later; older kernels have no such file and refuse the second mount themselves).
[[nodiscard]] bool hasTemporaryIdentity(const std::filesystem::path& mountPoint);

} // namespace ferrobank::drive
