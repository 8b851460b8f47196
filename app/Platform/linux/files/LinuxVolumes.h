#pragma once

#include "Platform/Volumes.h"
#include "Platform/linux/files/Elsewhere.h"

namespace ferrobank {

/// statvfs(3) and lstat(2) on other threads, with a limit of a second; what the kernel knows without asking
/// the file system is answered at once. Main thread; must outlive its tasks.
class LinuxVolumes final : public Volumes {
public:
    QCoro::Task<VolumeCapacity> capacity(QString path) override;
    QCoro::Task<std::optional<bool>> exists(QString path) override;

private:
    Elsewhere _elsewhere;
};

/// Blocks in file sizes times their number, as statvfs(3) tells them; within the signed 64-bit range. No
/// blocks at all means that the file system does not tell.
[[nodiscard]] VolumeCapacity capacityOf(quint64 blockSize, quint64 blocks, quint64 availableBlocks);

} // namespace ferrobank
