#include "testing/ExportVolume.h"

#include "platform/Failure.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>

namespace ferrobank::drive::testing {

namespace fs = std::filesystem;

void ExportVolume::SetUpTestSuite()
{
    enterPrivateMounts();
}

void ExportVolume::SetUp()
{
    if (const std::string reason = volumesUnavailable(); !reason.empty()) {
        GTEST_SKIP() << reason;
    }
    _folder.emplace();
    fs::permissions(_folder->path(), fs::perms(0755));
    fs::create_directory(home() / "store");
    _volume.emplace(home(), "drive", "btrfs", driveBytes(), "noatime,compress=zstd:1");
}

std::string ExportVolume::refusal(const fs::path& destination) const
{
    try {
        checkDestination({.drive = root(), .store = home() / "store", .destination = destination}, {});
    } catch (const Failure& failure) {
        return failure.text();
    }
    return {};
}

void ExportVolume::fillDrive() const
{
    writeFile(root() / "plain.txt", "plain");
    writeFile(root() / "empty", "");
    writeFile(root() / "large", plainBytes(5 * kMiB + 77, 1));
    writeFile(root() / "line\nbreak/caf\xe9 \xff", "strange");
    writeFile(root() / "locked/deep/readonly", "read only");
    writeFile(root() / "program", "#!/bin/sh\n");
    writeFile(root() / "sparse", "start");
    fs::resize_file(root() / "sparse", 20 * kMiB);
    fs::create_hard_link(root() / "large", root() / "locked/second name");
    fs::create_hard_link(root() / "large", root() / "third name");
    fs::create_symlink("plain.txt", root() / "link");
    fs::create_symlink("/nowhere/at all", root() / "dangling");
    fs::create_directory(root() / "empty folder");
    ASSERT_EQ(::mkfifo((root() / "pipe").c_str(), 0640), 0);
    ASSERT_EQ(::setxattr((root() / "plain.txt").c_str(), "user.note", "kept", 4, 0), 0);
    ASSERT_EQ(::setxattr((root() / "empty folder").c_str(), "user.note", "too", 3, 0), 0);
    fs::permissions(root() / "program", fs::perms(04755));
    fs::permissions(root() / "locked/deep/readonly", fs::perms(0400));
    const std::array<timespec, 2> times{timespec{1'000'000'000, 123'456'789},
                                        timespec{1'111'111'111, 987'654'321}};
    ASSERT_EQ(::utimensat(AT_FDCWD, (root() / "plain.txt").c_str(), times.data(), 0), 0);
    ASSERT_EQ(::utimensat(AT_FDCWD, (root() / "link").c_str(), times.data(), AT_SYMLINK_NOFOLLOW), 0);
    fs::permissions(root() / "locked/deep", fs::perms(0500));
    ASSERT_EQ(::utimensat(AT_FDCWD, (root() / "locked").c_str(), times.data(), 0), 0);
}

bool ExportVolume::hasSnapshots() const
{
    return fs::exists(root() / ".ferrobank") && !fs::is_empty(root() / ".ferrobank");
}

} // namespace ferrobank::drive::testing
