#include "testing/ScanVolume.h"

#include "figures/DeviceCounters.h"
#include "platform/FileDescriptor.h"
#include "sharing/SharedRange.h"

#include <fcntl.h>

namespace ferrobank::drive::testing {

void ScanVolume::SetUpTestSuite()
{
    enterPrivateMounts();
}

void ScanVolume::SetUp()
{
    if (const std::string reason = volumesUnavailable(); !reason.empty()) {
        GTEST_SKIP() << reason;
    }
    _folder.emplace();
    std::filesystem::permissions(_folder->path(), std::filesystem::perms(0755));
    _volume.emplace(_folder->path(), "drive", "btrfs", 384 * kMiB, "noatime,compress=zstd:1");
}

ScanSettings ScanVolume::settings() const
{
    ScanSettings settings;
    settings.root = root();
    settings.indexFolder = index();
    settings.quietSeconds = 0;
    settings.processorShare = 1;
    return settings;
}

std::uint64_t ScanVolume::inUse() const
{
    EXPECT_EQ(runProgram({"sync", "-f", root().string()}), 0);
    const FileDescriptor folder(::open(root().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const auto state = volumeState(folder.get());
    return state ? bytesInUse(state->uuid, 0).value_or(0) : 0;
}

bool ScanVolume::shares(const std::string& one, const std::string& other, std::uint64_t offset,
                        std::optional<std::uint64_t> otherOffset) const
{
    const FileDescriptor first(::open((root() / one).c_str(), O_RDONLY | O_CLOEXEC));
    const FileDescriptor second(::open((root() / other).c_str(), O_RDONLY | O_CLOEXEC));
    EXPECT_TRUE(first && second);
    const std::uint64_t place = devicePlace({first.get(), offset});
    return place != 0 && place == devicePlace({second.get(), otherOffset.value_or(offset)});
}

} // namespace ferrobank::drive::testing
