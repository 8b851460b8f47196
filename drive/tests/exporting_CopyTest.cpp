#include "exporting/Snapshot.h"
#include "testing/ExportVolume.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <fstream>
#include <thread>
#include <vector>

namespace ferrobank::drive {

namespace {

namespace fs = std::filesystem;
using testing::contents;
using testing::inventory;
using testing::kMiB;
using testing::plainBytes;
using testing::readFile;
using testing::runProgram;
using testing::writeFile;
using End = ExportResult::End;

using Copy = testing::ExportVolume;

TEST_F(Copy, everythingArrivesAndTheDriveIsAsBefore)
{
    fillDrive();
    const auto before = inventory(root());
    const ExportResult result = run();
    EXPECT_EQ(result.end, End::Verified) << result.text;
    EXPECT_EQ(result.text, "");
    EXPECT_EQ(result.differences, 0U);
    EXPECT_EQ(inventory(copy()), before);
    EXPECT_EQ(inventory(root()), before);
    EXPECT_FALSE(hasMark());
    EXPECT_FALSE(hasSnapshots());
    EXPECT_FALSE(fs::exists(copy() / ".ferrobank"));
}

TEST_F(Copy, attributesHolesAndLinksArriveToo)
{
    fillDrive();
    ASSERT_EQ(run().end, End::Verified);
    std::string value(10, '\0');
    EXPECT_EQ(::getxattr((copy() / "plain.txt").c_str(), "user.note", value.data(), value.size()), 4);
    EXPECT_EQ(value.substr(0, 4), "kept");
    EXPECT_EQ(::getxattr((copy() / "empty folder").c_str(), "user.note", value.data(), value.size()), 3);
    struct stat sparse{};
    ASSERT_EQ(::stat((copy() / "sparse").c_str(), &sparse), 0);
    EXPECT_LT(sparse.st_blocks * 512, static_cast<blkcnt_t>(kMiB));
    EXPECT_TRUE(fs::equivalent(copy() / "large", copy() / "locked/second name"));
    EXPECT_TRUE(fs::equivalent(copy() / "large", copy() / "third name"));
}

TEST_F(Copy, accessListsAndOwnersArrive)
{
    writeFile(root() / "mine", "x");
    ASSERT_EQ(::chown((root() / "mine").c_str(), testing::kOrdinaryUser, testing::kOrdinaryUser), 0);
    fs::permissions(root() / "mine", fs::perms(06755));
    ASSERT_EQ(run().end, End::Verified);
    struct stat status{};
    ASSERT_EQ(::stat((copy() / "mine").c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, testing::kOrdinaryUser);
    EXPECT_EQ(status.st_mode & 07777U, 06755U);
}

TEST_F(Copy, emptyDriveIsVerified)
{
    const ExportResult result = run();
    EXPECT_EQ(result.end, End::Verified) << result.text;
    EXPECT_TRUE(fs::is_empty(copy()));
}

TEST_F(Copy, emptyFolderThatExistsIsUsedAndKeepsItsPermissions)
{
    writeFile(root() / "a", "x");
    fs::create_directory(copy());
    fs::permissions(copy(), fs::perms(0711));
    EXPECT_EQ(run().end, End::Verified);
    EXPECT_EQ(fs::status(copy()).permissions(), fs::perms(0711));
}

TEST_F(Copy, programsMayGoOnWriting)
{
    for (int number = 0; number < 50; ++number) {
        writeFile(root() / std::to_string(number), plainBytes(kMiB, static_cast<std::uint64_t>(number)));
    }
    const auto before = contents(root());
    std::atomic<bool> done = false;
    std::thread writer([&] {
        for (int turn = 0; !done; ++turn) {
            std::ofstream(root() / std::to_string(turn % 50)) << "new content " << turn;
            std::ofstream(root() / ("new" + std::to_string(turn))) << turn;
            if (turn > 200) {
                break;
            }
        }
    });
    bool started = false;
    const ExportResult result = exportFiles(request(), [&](const ExportProgress&) { started = true; }, {});
    done = true;
    writer.join();
    EXPECT_TRUE(started);
    EXPECT_EQ(result.end, End::Verified) << result.text;
    // One moment's picture: each copied file is a whole one, old or new.
    for (const auto& [path, hash] : contents(copy())) {
        if (before.contains(path) && before.at(path) != hash) {
            EXPECT_LT(fs::file_size(copy() / path), 100U);
        }
    }
}

TEST_F(Copy, subvolumesOnTheDriveAreCopiedToo)
{
    fs::create_directory(root() / "folder");
    for (const char* place : {"one", "folder/two", "one/three"}) {
        ASSERT_EQ(runProgram({"btrfs", "-q", "subvolume", "create", (root() / place).string()}), 0);
        writeFile(root() / place / "file", place);
        writeFile(root() / place / ".ferrobank/mine", "a folder of that name anywhere else is the user's");
    }
    fs::permissions(root() / "one", fs::perms(0750));
    const auto before = contents(root());
    ASSERT_EQ(before.size(), 6U);
    const ExportResult result = run();
    EXPECT_EQ(result.end, End::Verified) << result.text;
    EXPECT_EQ(contents(copy()), before);
    EXPECT_EQ(fs::status(copy() / "one").permissions(), fs::perms(0750));
    EXPECT_FALSE(hasSnapshots());
    EXPECT_EQ(contents(root()), before);
}

TEST_F(Copy, ordinaryUserNeedsNoPrivilege)
{
    fillDrive();
    ASSERT_EQ(runProgram({"chown", "-Rh", std::to_string(testing::kOrdinaryUser), home().string()}), 0);
    const auto before = contents(root());
    EXPECT_TRUE(testing::asOrdinaryUser([&] {
        const ExportResult result = run();
        if (result.end != End::Verified) {
            std::puts(result.text.c_str());
        }
        return result.end == End::Verified;
    }));
    EXPECT_EQ(contents(copy()), before);
    EXPECT_FALSE(hasSnapshots());
}

TEST_F(Copy, socketsAreLeftOut)
{
    writeFile(root() / "a", "x");
    const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = (root() / "socket").string();
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(run().end, End::Verified);
    EXPECT_FALSE(fs::exists(copy() / "socket"));
    ::close(listener);
}

TEST_F(Copy, hugeSparseFileTakesNeitherRoomNorTime)
{
    writeFile(root() / "sparse", "start");
    fs::resize_file(root() / "sparse", std::uintmax_t{1} << 40U);
    const ExportResult result = run();
    EXPECT_EQ(result.end, End::Verified) << result.text;
    EXPECT_EQ(fs::file_size(copy() / "sparse"), std::uintmax_t{1} << 40U);
}

/// A drive with room for many files, and a disk of its own for their copy: that one goes with its image,
/// where removing the files one by one takes minutes on a disk that is told of every freed block.
class ManyFiles : public testing::ExportVolume {
protected:
    void SetUp() override
    {
        ExportVolume::SetUp();
        if (!IsSkipped()) {
            _disk.emplace(home(), "disk", "ext4", 2048 * kMiB);
        }
    }

    [[nodiscard]] std::uint64_t driveBytes() const override { return 4096 * kMiB; }

    [[nodiscard]] fs::path copy() const override { return _disk->mountPoint() / "copy"; }

private:
    std::optional<testing::TestVolume> _disk;
};

TEST_F(ManyFiles, hundredThousandAreCopiedAndVerified)
{
    for (int folder = 0; folder < 100; ++folder) {
        const fs::path path = root() / std::to_string(folder);
        fs::create_directory(path);
        for (int number = 0; number < 1000; ++number) {
            std::ofstream(path / std::to_string(number)) << folder << ' ' << number;
        }
    }
    const ExportResult result = run();
    EXPECT_EQ(result.end, End::Verified) << result.text;
    EXPECT_EQ(result.files, 100'000U);
    EXPECT_EQ(contents(copy()), contents(root()));
}

TEST_F(Copy, progressGrowsToTheTotalInBothPhases)
{
    writeFile(root() / "a", plainBytes(3 * kMiB, 1));
    std::vector<ExportProgress> reports;
    ASSERT_EQ(
        exportFiles(request(), [&](const ExportProgress& progress) { reports.push_back(progress); }, {}).end,
        End::Verified);
    ASSERT_GE(reports.size(), 4U);
    EXPECT_EQ(reports.front().phase, ExportProgress::Phase::Copying);
    EXPECT_EQ(reports.front().done, 0U);
    EXPECT_EQ(reports.back().phase, ExportProgress::Phase::Verifying);
    EXPECT_EQ(reports.back().done, 3 * kMiB);
    EXPECT_EQ(reports.back().total, 3 * kMiB);
}

TEST_F(Copy, snapshotIsAPictureAndGoesWithItsObject)
{
    writeFile(root() / "a", "before");
    writeFile(root() / ".ferrobank/guard", "guard");
    {
        const DriveSnapshot snapshot(root(), {});
        writeFile(root() / "a", "after");
        ASSERT_EQ(snapshot.parts().size(), 1U);
        EXPECT_EQ(readFile(snapshot.parts()[0].folder / "a"), "before");
        EXPECT_FALSE(fs::exists(snapshot.parts()[0].folder / ".ferrobank"));
    }
    EXPECT_EQ(readFile(root() / "a"), "after");
    EXPECT_EQ(readFile(root() / ".ferrobank/guard"), "guard");
    EXPECT_EQ(std::distance(fs::directory_iterator(root() / ".ferrobank"), {}), 1);
}

} // namespace

} // namespace ferrobank::drive
