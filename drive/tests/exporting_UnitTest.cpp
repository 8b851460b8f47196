#include "exporting/Differences.h"
#include "exporting/Progress.h"
#include "exporting/Survey.h"
#include "testing/DriveFiles.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <vector>

namespace ferrobank::drive {

namespace {

namespace fs = std::filesystem;
using testing::TemporaryFolder;
using testing::writeFile;

TEST(RoomNeeded, addsFourKilobytesAnEntryAndTwoPercent)
{
    EXPECT_EQ(roomNeeded(0, 0), 0U);
    EXPECT_EQ(roomNeeded(1'000'000, 0), 1'020'000U);
    EXPECT_EQ(roomNeeded(0, 1000), 4'177'920U);
}

TEST(PlainName, refusesWhatFatCannotHold)
{
    EXPECT_TRUE(isPlainName("notes.txt"));
    EXPECT_TRUE(isPlainName("Ärger.txt"));
    EXPECT_FALSE(isPlainName("a:b"));
    EXPECT_FALSE(isPlainName("what?"));
    EXPECT_FALSE(isPlainName("line\nbreak"));
    EXPECT_FALSE(isPlainName("caf\xe9"));
    EXPECT_FALSE(isPlainName("ends with."));
    EXPECT_FALSE(isPlainName("ends with "));
    EXPECT_FALSE(isPlainName("back\\slash"));
}

TEST(Differences, nameTheFirstThreeAndCountAll)
{
    Differences differences;
    differences.add("a\nb", "could not be read", EIO);
    differences.add("c", "is missing in the copy");
    differences.add("d", "is missing in the copy");
    differences.add("e", "is missing in the copy");
    EXPECT_EQ(differences.count(), 4U);
    EXPECT_EQ(differences.first(),
              (std::vector<std::string>{"“a\\nb” could not be read: Input/output error.",
                                        "“c” is missing in the copy.", "“d” is missing in the copy."}));
}

TEST(Progress, isReportedAtStartAndEndAndNeverBeyondTheTotal)
{
    std::vector<ExportProgress> reports;
    ProgressMeter meter([&](const ExportProgress& progress) { reports.push_back(progress); }, 100);
    meter.start(ExportProgress::Phase::Copying);
    meter.add(60);
    meter.add(600);
    meter.finish();
    meter.start(ExportProgress::Phase::Verifying);
    ASSERT_EQ(reports.size(), 3U);
    EXPECT_EQ(reports[0].done, 0U);
    EXPECT_EQ(reports[1].done, 100U);
    EXPECT_EQ(reports[1].total, 100U);
    EXPECT_EQ(reports[2].phase, ExportProgress::Phase::Verifying);
    EXPECT_EQ(reports[2].done, 0U);
}

TEST(Abilities, ordinaryDiskHoldsEverythingAndKeepsNoTrace)
{
    const TemporaryFolder folder;
    const Abilities abilities = tryAbilities(folder.path(), "shown");
    EXPECT_TRUE(abilities.symbolicLinks);
    EXPECT_TRUE(abilities.hardLinks);
    EXPECT_TRUE(abilities.modes);
    EXPECT_TRUE(abilities.anyName);
    EXPECT_TRUE(abilities.holes);
    EXPECT_TRUE(fs::is_empty(folder.path()));
}

class SurveyTest : public ::testing::Test {
protected:
    [[nodiscard]] std::string refusal(const Abilities& abilities) const
    {
        return surveyDrive(_drive.path(), abilities, "/media/stick", {}).unfit.value_or("");
    }

    static Abilities poor()
    {
        Abilities abilities;
        abilities.symbolicLinks = false;
        abilities.hardLinks = false;
        abilities.modes = false;
        abilities.anyName = false;
        abilities.holes = false;
        abilities.largestFile = 100'000;
        return abilities;
    }

    TemporaryFolder _drive;
};

TEST_F(SurveyTest, countsAllocatedBytesAndEntries)
{
    writeFile(_drive.path() / "a/b", std::string(10'000, 'x'));
    fs::create_hard_link(_drive.path() / "a/b", _drive.path() / "c");
    writeFile(_drive.path() / "sparse", "x");
    fs::resize_file(_drive.path() / "sparse", 1U << 30U);
    const ExportSize size = surveyDrive(_drive.path(), {}, "/media/disk", {});
    EXPECT_EQ(size.entries, 5U);
    EXPECT_EQ(size.bytes, 12'288U + 4096U);
    EXPECT_FALSE(size.unfit);
}

TEST_F(SurveyTest, countsHolesWhereTheDestinationHasNone)
{
    writeFile(_drive.path() / "sparse", "x");
    fs::resize_file(_drive.path() / "sparse", 50'000);
    EXPECT_EQ(surveyDrive(_drive.path(), poor(), "/media/stick", {}).bytes, 50'000U);
}

TEST_F(SurveyTest, plainFilesFitAPoorDisk)
{
    writeFile(_drive.path() / "folder/notes.txt", "x");
    EXPECT_EQ(refusal(poor()), "");
}

TEST_F(SurveyTest, namesTheFirstFileThatDoesNotFit)
{
    fs::create_directory(_drive.path() / "docs");
    fs::create_symlink("nowhere", _drive.path() / "docs/link");
    EXPECT_EQ(
        refusal(poor()),
        "“docs/link” is a symbolic link, which /media/stick cannot hold. Choose a folder on another disk.");
    EXPECT_EQ(refusal({}), "");
}

TEST_F(SurveyTest, refusesHardLinksLargeFilesPermissionsAndNames)
{
    writeFile(_drive.path() / "a", "x");
    fs::create_hard_link(_drive.path() / "a", _drive.path() / "b");
    EXPECT_NE(refusal(poor()).find("is a hard link"), std::string::npos);
    fs::remove(_drive.path() / "b");
    fs::resize_file(_drive.path() / "a", 100'001);
    EXPECT_NE(refusal(poor()).find("“a” is larger than 4 GB"), std::string::npos);
    fs::resize_file(_drive.path() / "a", 100'000);
    fs::permissions(_drive.path() / "a", fs::perms(0755));
    EXPECT_NE(refusal(poor()).find("“a” has permissions"), std::string::npos);
    fs::permissions(_drive.path() / "a", fs::perms(0644));
    fs::rename(_drive.path() / "a", _drive.path() / "a:b");
    EXPECT_NE(refusal(poor()).find("“a:b” has a name"), std::string::npos);
}

TEST_F(SurveyTest, fileNamedLikeTheMarkIsRefusedEverywhere)
{
    writeFile(_drive.path() / ".ferrobank-incomplete", "an earlier copy");
    EXPECT_NE(refusal({}).find("Rename it and try again."), std::string::npos);
}

TEST_F(SurveyTest, toolsOwnFolderDoesNotCount)
{
    writeFile(_drive.path() / ".ferrobank/guard", std::string(1'000'000, 'x'));
    EXPECT_EQ(surveyDrive(_drive.path(), {}, "/media/disk", {}).bytes, 0U);
}

} // namespace

} // namespace ferrobank::drive
