#include "sharing/FolderSums.h"
#include "testing/ScanVolume.h"

#include <gtest/gtest.h>

#include <fstream>
#include <random>

namespace ferrobank::drive {

namespace {

namespace fs = std::filesystem;
using testing::kMiB;
using testing::randomBytes;
using testing::runProgram;
using testing::writeFile;

std::vector<std::uint64_t> parts(std::vector<UsedStretch> stretches, std::size_t folders)
{
    std::vector<double> bytes(folders);
    addByParts(std::move(stretches), bytes);
    std::vector<std::uint64_t> rounded;
    for (const double value : bytes) {
        rounded.push_back(static_cast<std::uint64_t>(value + 0.5));
    }
    return rounded;
}

TEST(AddByParts, sharedStretchCountsForEachByItsPart)
{
    EXPECT_EQ(parts({{0, 100, 0, false}, {0, 100, 1, false}, {200, 50, 1, false}}, 2),
              (std::vector<std::uint64_t>{50, 100}));
    EXPECT_EQ(parts({{0, 100, 0, false}, {50, 100, 1, false}}, 2), (std::vector<std::uint64_t>{75, 75}));
    EXPECT_EQ(parts({{0, 300, 0, false}, {100, 100, 1, false}, {100, 100, 2, false}}, 3),
              (std::vector<std::uint64_t>{233, 33, 33}));
    EXPECT_EQ(parts({}, 1), (std::vector<std::uint64_t>{0}));
}

TEST(AddByParts, compressedStretchEndsWhereTheNextBegins)
{
    EXPECT_EQ(parts({{0, 100, 0, true}, {40, 100, 1, true}, {40, 100, 0, true}}, 2),
              (std::vector<std::uint64_t>{90, 50}));
}

TEST(AddByParts, ofManyStretchesIsTheSameAsBlockByBlock)
{
    std::mt19937 random(7);
    for (int turn = 0; turn < 50; ++turn) {
        std::vector<UsedStretch> stretches;
        std::vector<double> expected(5);
        std::vector<std::vector<std::uint32_t>> users(300);
        for (int number = 0; number < 60; ++number) {
            const UsedStretch stretch{random() % 250, random() % 50, static_cast<std::uint32_t>(random() % 5),
                                      false};
            for (std::uint64_t block = stretch.start; block < stretch.start + stretch.length; ++block) {
                users[block].push_back(stretch.folder);
            }
            stretches.push_back(stretch);
        }
        for (const auto& block : users) {
            for (const std::uint32_t folder : block) {
                expected[folder] += 1.0 / static_cast<double>(block.size());
            }
        }
        std::vector<double> bytes(5);
        addByParts(stretches, bytes);
        for (std::size_t folder = 0; folder < 5; ++folder) {
            ASSERT_NEAR(bytes[folder], expected[folder], 1e-6) << turn;
        }
    }
}

class FolderSumsTest : public testing::ScanVolume {
protected:
    [[nodiscard]] FolderSums sumUp() const
    {
        EXPECT_EQ(runProgram({"sync", "-f", root().string()}), 0);
        return sumUpFolders(root(), {}, {}).value();
    }

    [[nodiscard]] static FolderFigures at(const FolderSums& sums, const std::string& path)
    {
        const auto number = sums.find(path);
        EXPECT_TRUE(number) << path;
        return number ? sums.folders[*number] : FolderFigures();
    }
};

TEST_F(FolderSumsTest, copiesTakeTheirPartsAndFoldersHoldWhatIsBelowThem)
{
    writeFile(root() / "one/deep/a", randomBytes(4 * kMiB, 1));
    writeFile(root() / "two/b", randomBytes(4 * kMiB, 1));
    writeFile(root() / "two/c", randomBytes(2 * kMiB, 2));
    writeFile(root() / "tiny", "text");
    fs::create_hard_link(root() / "two/c", root() / "two/again");
    FolderSums sums = sumUp();
    EXPECT_EQ(at(sums, "one").holds, 4 * kMiB);
    EXPECT_EQ(at(sums, "one").takes, 4 * kMiB);
    EXPECT_EQ(at(sums, "two").holds, 6 * kMiB) << "a file with two names counts once";
    EXPECT_TRUE(scan().complete());
    sums = sumUp();
    EXPECT_EQ(at(sums, "one/deep").takes, 2 * kMiB);
    EXPECT_EQ(at(sums, "one").takes, 2 * kMiB);
    EXPECT_EQ(at(sums, "two").takes, 4 * kMiB);
    EXPECT_EQ(at(sums, "").takes, 6 * kMiB + 4) << "the tiny one lies among the names";
    EXPECT_EQ(at(sums, "").holds, 10 * kMiB + 4096);
}

TEST_F(FolderSumsTest, compressedFilesTakeAboutWhatTheFileSystemSays)
{
    for (unsigned number = 0; number < 20; ++number) {
        writeFile(root() / "texts" / std::to_string(number), testing::plainBytes(2 * kMiB, number));
    }
    const std::uint64_t taken = inUse();
    const FolderFigures texts = at(sumUp(), "texts");
    EXPECT_EQ(texts.holds, 40 * kMiB);
    EXPECT_NEAR(static_cast<double>(texts.takes), static_cast<double>(taken),
                0.1 * static_cast<double>(taken));
}

TEST_F(FolderSumsTest, comeBackFromTheirFileUnlessItIsAnotherDrives)
{
    writeFile(root() / "line\nbreak/sub/a", randomBytes(kMiB, 1));
    fs::create_directory(root() / "empty");
    const FolderSums sums = sumUp();
    sums.keep(index(), "uuid");
    EXPECT_EQ(FolderSums::load(index(), "uuid"), sums);
    EXPECT_FALSE(FolderSums::load(index(), "other"));
    EXPECT_TRUE(sums.find("line\nbreak/sub"));
    EXPECT_FALSE(sums.find("sub"));
    EXPECT_EQ(sums.childrenOf(0).size(), 2U);
    std::ofstream(index() / "folders.idx", std::ios::app).put('x');
    EXPECT_FALSE(FolderSums::load(index(), "uuid"));
}

TEST_F(FolderSumsTest, stopEndsIt)
{
    for (int number = 0; number < 600; ++number) {
        writeFile(root() / std::to_string(number), "x");
    }
    std::stop_source stop;
    stop.request_stop();
    EXPECT_FALSE(sumUpFolders(root(), {}, stop.get_token()));
}

} // namespace

} // namespace ferrobank::drive
