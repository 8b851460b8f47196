#include "platform/Failure.h"
#include "platform/Files.h"
#include "store/StoreCreation.h"
#include "store/StoreExamination.h"
#include "store/StoreLength.h"
#include "store/Superblock.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <fstream>

namespace ferrobank::drive::testing {
namespace {

class Store : public ::testing::Test {
protected:
    void SetUp() override { ensurePrivateFolder(paths.store); }

    TemporaryFolder folder;
    Paths paths = Paths::of(folder.path(), folder.path() / "run", {});
    Log log{paths.log};
};

TEST_F(Store, newOneIsSparseSoundAndStillToBePrepared)
{
    createStore(paths, log);
    EXPECT_EQ(examineStore(paths), StoreState::Sound);
    const auto superblock = readSuperblock(paths.image);
    ASSERT_TRUE(superblock);
    EXPECT_EQ(superblock->totalBytes, std::filesystem::file_size(paths.image));
    EXPECT_EQ(superblock->uuid.size(), 36U);
    struct stat status{};
    ::stat(paths.image.c_str(), &status);
    EXPECT_EQ(status.st_mode & 07777, 0600U);
    EXPECT_LT(status.st_blocks * 512, 32 << 20);
    EXPECT_TRUE(std::filesystem::exists(paths.unprepared));
    checkStructures(paths, log);
}

TEST_F(Store, newOneIsAsLongAsItsDiskInWholeGibibytesButNotTooShort)
{
    constexpr std::uint64_t kGiB = std::uint64_t{1} << 30U;
    EXPECT_EQ(storeLength(252 * kGiB), 252 * kGiB);
    EXPECT_EQ(storeLength(252 * kGiB + 1), 253 * kGiB);
    EXPECT_EQ(storeLength(3 * kGiB), 16 * kGiB);
    createStore(paths, log);
    EXPECT_EQ(std::filesystem::file_size(paths.image), storeLength(hostBytes(folder.path())));
}

TEST_F(Store, hostThatAllowsNoSuchLongFilesGetsAShorterOne)
{
    ::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const rlimit low{.rlim_cur = storeLength(hostBytes(folder.path())) - 1, .rlim_max = before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &low);
    createStore(paths, log);
    ::setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(std::filesystem::file_size(paths.image), storeLength(hostBytes(folder.path())) / 2);
    EXPECT_EQ(examineStore(paths), StoreState::Sound);
}

TEST_F(Store, oneOnADiskThatHasGrownBecomesLongerAndNeverShorter)
{
    const std::uint64_t whole = storeLength(hostBytes(folder.path()));
    createStore(paths, log);
    std::filesystem::resize_file(paths.image, whole + 1);
    lengthenStore(paths, log);
    EXPECT_EQ(std::filesystem::file_size(paths.image), whole + 1);
    std::filesystem::resize_file(paths.image, whole / 2);
    lengthenStore(paths, log);
    EXPECT_EQ(std::filesystem::file_size(paths.image), whole);
    std::filesystem::rename(paths.image, paths.store / "elsewhere");
    std::filesystem::resize_file(paths.store / "elsewhere", whole / 2);
    std::filesystem::create_symlink("elsewhere", paths.image);
    lengthenStore(paths, log);
    EXPECT_EQ(std::filesystem::file_size(paths.store / "elsewhere"), whole / 2);
}

TEST_F(Store, leftoversOfAKilledCreationAreSweptAway)
{
    std::ofstream(paths.store / "drive.btrfs.new") << "half";
    std::filesystem::create_directories(paths.store / "skeleton.new/u");
    createStore(paths, log);
    EXPECT_FALSE(std::filesystem::exists(paths.store / "drive.btrfs.new"));
    EXPECT_FALSE(std::filesystem::exists(paths.store / "skeleton.new"));
}

TEST_F(Store, nothingThereIsMissingButNotAfterItHadFigures)
{
    EXPECT_EQ(examineStore(paths), StoreState::Missing);
    replaceFile(paths.figures, "{}");
    EXPECT_THROW(static_cast<void>(examineStore(paths)), Failure);
}

TEST_F(Store, shorterFileThanTheVolumeIsSeenAndGetsItsLengthBack)
{
    createStore(paths, log);
    const auto length = std::filesystem::file_size(paths.image);
    std::filesystem::resize_file(paths.image, length / 2);
    EXPECT_EQ(examineStore(paths), StoreState::TailCutOff);
    restoreLength(paths, log);
    EXPECT_EQ(std::filesystem::file_size(paths.image), length);
    EXPECT_EQ(examineStore(paths), StoreState::Sound);
}

TEST_F(Store, linkFolderAndRubbishAreRefused)
{
    std::filesystem::create_symlink("elsewhere", paths.image);
    EXPECT_THROW(static_cast<void>(examineStore(paths)), Failure);
    std::filesystem::remove(paths.image);
    std::filesystem::create_directories(paths.image);
    EXPECT_THROW(static_cast<void>(examineStore(paths)), Failure);
    std::filesystem::remove(paths.image);
    std::ofstream(paths.image) << "rubbish";
    EXPECT_THROW(static_cast<void>(examineStore(paths)), Failure);
    EXPECT_FALSE(readSuperblock(paths.image));
}

TEST_F(Store, damagedStructuresAreReportedAndLogged)
{
    createStore(paths, log);
    std::fstream image(paths.image, std::ios::in | std::ios::out | std::ios::binary);
    const std::string garbage(std::size_t{4} << 20U, 'x');
    image.seekp(20 << 20U);
    image.write(garbage.data(), static_cast<std::streamsize>(garbage.size()));
    for (std::streamoff at = 1 << 20U; at < 100 << 20U; at += 4 << 20U) {
        if (at != 0) {
            image.seekp(at);
            image.write(garbage.data(), static_cast<std::streamsize>(garbage.size()));
        }
    }
    image.close();
    EXPECT_THROW(checkStructures(paths, log), Failure);
    EXPECT_NE(readSmallFile(paths.log).value_or("").find("btrfs check ended with"), std::string::npos);
}

TEST_F(Store, everyCopyOfTheSuperblockIsReadAndOneWrongByteIsNoticed)
{
    createStore(paths, log);
    const auto first = readWholeSuperblock(paths.image, 0);
    ASSERT_TRUE(first);
    for (const std::size_t copy : {1U, 2U}) {
        if (std::filesystem::file_size(paths.image) > kSuperblockPlaces[copy]) {
            const auto found = readWholeSuperblock(paths.image, copy);
            ASSERT_TRUE(found) << copy;
            EXPECT_EQ(found->uuid, first->uuid);
            EXPECT_EQ(found->generation, first->generation);
        }
    }
    std::fstream image(paths.image, std::ios::in | std::ios::out | std::ios::binary);
    image.seekp(static_cast<std::streamoff>(kSuperblockPlaces[0] + 0x800));
    image.put('x');
    image.close();
    EXPECT_FALSE(readWholeSuperblock(paths.image, 0));
    EXPECT_TRUE(readSuperblock(paths.image)) << "its facts can still be told";
    EXPECT_EQ(examineStore(paths), StoreState::FirstSuperblockDamaged);
    ASSERT_TRUE(bestMirror(paths.image));
    restoreSuperblock(paths, log);
    EXPECT_EQ(examineStore(paths), StoreState::Sound);
    EXPECT_EQ(readSmallFile(paths.readingDue), "superblock");
    EXPECT_TRUE(std::filesystem::exists(paths.image.string() + ".superblock-damaged"));
}

TEST_F(Store, cutShortImageLeavesWordThatEverythingHasToBeRead)
{
    createStore(paths, log);
    std::filesystem::resize_file(paths.image, std::filesystem::file_size(paths.image) / 2);
    restoreLength(paths, log);
    EXPECT_EQ(readSmallFile(paths.readingDue), "cut-short");
}

TEST(StoreIdentity, isTheSameOlderOrAnother)
{
    const Superblock found{.uuid = "a", .totalBytes = 1, .generation = 10};
    EXPECT_EQ(compareIdentity("", 99, found), StoreIdentity::Same) << "nothing was recorded";
    EXPECT_EQ(compareIdentity("a", 0, found), StoreIdentity::Same);
    EXPECT_EQ(compareIdentity("a", 12, found), StoreIdentity::Same) << "a crash leaves it so";
    EXPECT_EQ(compareIdentity("a", 13, found), StoreIdentity::Older);
    EXPECT_EQ(compareIdentity("b", 1, found), StoreIdentity::Other);
}

TEST(ReadOnlyHost, isAskedOfTheNearestFolderThatIsThere)
{
    const TemporaryFolder folder;
    EXPECT_FALSE(isReadOnlyHost(folder.path() / "not there/at all"));
}

TEST(NetworkFileSystem, remoteKindsAreToldFromLocalOnes)
{
    EXPECT_TRUE(isNetworkFileSystem(0x6969));
    EXPECT_TRUE(isNetworkFileSystem(static_cast<std::int32_t>(0xFF534D42)));
    EXPECT_TRUE(isNetworkFileSystem(0x65735546));
    EXPECT_FALSE(isNetworkFileSystem(0xEF53));
    EXPECT_FALSE(isNetworkFileSystem(0x9123683E));
    EXPECT_FALSE(isNetworkFileSystem(0x01021994));
}

} // namespace
} // namespace ferrobank::drive::testing
