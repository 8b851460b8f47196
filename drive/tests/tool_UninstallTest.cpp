#include "mounting/Volume.h"
#include "platform/FileDescriptor.h"
#include "platform/Files.h"
#include "testing/DriveFiles.h"
#include "testing/DriveHost.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <nlohmann/json.hpp>

namespace ferrobank::drive::testing {
namespace {

class Uninstall : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (!volumesUnavailable().empty()) {
            GTEST_SKIP() << volumesUnavailable();
        }
        host = std::make_unique<DriveHost>();
    }

    void makeFiles()
    {
        host->makeSmallStore();
        ASSERT_TRUE(host->serveAndMount()) << host->logText();
        const std::filesystem::path& drive = host->paths().drive;
        std::filesystem::create_directories(drive / "folder/inner");
        for (unsigned number = 0; number < 40; ++number) {
            ASSERT_TRUE(writeRandomFile(drive / "folder" / std::to_string(number), 30'000 + number, number));
        }
        ASSERT_TRUE(writeRandomFile(drive / "line\nbreak", 100, 1));
        ASSERT_TRUE(writeRandomFile(drive / "invalid\xFF", 100, 2));
        std::filesystem::create_symlink("folder/1", drive / "link");
        std::filesystem::create_hard_link(drive / "folder/2", drive / "folder/inner/same");
        files = fingerprint(drive);
    }

    std::unique_ptr<DriveHost> host;
    std::map<std::string, std::string> files;
};

TEST_F(Uninstall, withNothingInstalledSucceedsAndLeavesNothing)
{
    EXPECT_EQ(host->run({"uninstall"}).status, 0);
    EXPECT_EQ(host->run({"uninstall", "--delete-store"}).status, 0);
    EXPECT_TRUE(std::filesystem::is_empty(host->paths().home));
}

TEST_F(Uninstall, keepsTheStoreAndTheNextStartBringsTheFilesBack)
{
    makeFiles();
    const ToolRun run = host->run({"uninstall"});
    EXPECT_EQ(run.status, 0) << run.errorText;
    EXPECT_EQ(host->servingProcess(), 0);
    EXPECT_FALSE(host->isMounted());
    EXPECT_FALSE(std::filesystem::exists(host->paths().drive));
    EXPECT_EQ(nlohmann::json::parse(host->status())["installed"], true);
    EXPECT_EQ(host->run({"uninstall"}).status, 0);
    ASSERT_EQ(host->run({"restart"}).status, 0);
    EXPECT_EQ(fingerprint(host->paths().drive), files);
}

TEST_F(Uninstall, deletedStoreLeavesOnlyTheLog)
{
    makeFiles();
    const ToolRun run = host->run({"uninstall", "--delete-store"});
    EXPECT_EQ(run.status, 0) << run.errorText;
    EXPECT_FALSE(std::filesystem::exists(host->paths().store));
    EXPECT_FALSE(std::filesystem::exists(host->paths().index));
    EXPECT_TRUE(std::filesystem::exists(host->paths().log));
    EXPECT_EQ(nlohmann::json::parse(host->status())["installed"], false);
}

TEST_F(Uninstall, foreignFileInTheStoreSurvivesItsDeletion)
{
    makeFiles();
    std::ofstream(host->paths().store / "mine") << "text";
    EXPECT_EQ(host->run({"uninstall", "--delete-store"}).status, 0);
    EXPECT_EQ(readSmallFile(host->paths().store / "mine"), "text");
}

TEST_F(Uninstall, removesTheAutostartEntry)
{
    makeFiles();
    std::filesystem::create_directories(host->paths().autostartEntry.parent_path());
    std::ofstream(host->paths().autostartEntry) << "[Desktop Entry]\nType=Application\n";
    EXPECT_NE(host->run({"check", "--json"}).output.find(R"("title":"Starts at login","state":"pass")"),
              std::string::npos);
    EXPECT_EQ(host->run({"uninstall"}).status, 0);
    EXPECT_FALSE(std::filesystem::exists(host->paths().autostartEntry));
}

TEST_F(Uninstall, busyDriveStaysAndEverythingWithIt)
{
    makeFiles();
    std::filesystem::create_directories(host->paths().autostartEntry.parent_path());
    std::ofstream(host->paths().autostartEntry) << "[Desktop Entry]\n";
    const FileDescriptor open(::open((host->paths().drive / "link").c_str(), O_RDONLY | O_CLOEXEC));
    const ToolRun run = host->run({"uninstall", "--delete-store"});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.errorText.find("The drive is in use by tool_uninstall"), std::string::npos)
        << run.errorText;
    EXPECT_NE(host->servingProcess(), 0);
    EXPECT_TRUE(std::filesystem::exists(host->paths().autostartEntry));
    EXPECT_EQ(fingerprint(host->paths().drive), files);
}

TEST_F(Uninstall, mountLeftByAKilledServeIsUnmountedToo)
{
    makeFiles();
    host->endServing(SIGKILL);
    ASSERT_TRUE(host->isMounted());
    EXPECT_EQ(host->run({"uninstall"}).status, 0);
    EXPECT_FALSE(host->isMounted());
    EXPECT_TRUE(loopsOf(host->paths().image, Recognise::ByFile).empty());
}

TEST_F(Uninstall, exportCopiesEveryFileBeforeTheStoreIsDeleted)
{
    makeFiles();
    const std::filesystem::path copy = host->paths().home / "Copy of files";
    const ToolRun run = host->run({"uninstall", "--export", copy.string(), "--delete-store"});
    ASSERT_EQ(run.status, 0) << run.errorText;
    EXPECT_EQ(fingerprint(copy), files);
    struct stat one{};
    struct stat other{};
    ::stat((copy / "folder/2").c_str(), &one);
    ::stat((copy / "folder/inner/same").c_str(), &other);
    EXPECT_EQ(one.st_ino, other.st_ino);
    EXPECT_FALSE(std::filesystem::exists(host->paths().store));
    EXPECT_FALSE(std::filesystem::exists(copy / ".ferrobank-incomplete"));
}

TEST_F(Uninstall, exportStartsADriveThatIsNotRunning)
{
    makeFiles();
    host->endServing(SIGTERM);
    const std::filesystem::path copy = host->paths().home / "copy";
    const ToolRun run = host->run({"uninstall", "--export", copy.string()});
    ASSERT_EQ(run.status, 0) << run.errorText;
    EXPECT_EQ(fingerprint(copy), files);
    EXPECT_EQ(host->servingProcess(), 0);
}

TEST_F(Uninstall, refusedDestinationsChangeNothing)
{
    makeFiles();
    const std::filesystem::path occupied = host->paths().home / "occupied";
    std::filesystem::create_directories(occupied);
    std::ofstream(occupied / "mine") << "text";
    for (const std::filesystem::path& refused :
         {occupied, host->paths().drive / "inside", host->paths().store / "inside",
          host->paths().home / "missing/folder", occupied / "mine"})
    {
        const ToolRun run = host->run({"uninstall", "--export", refused.string(), "--delete-store"});
        EXPECT_EQ(run.status, 1) << refused;
        EXPECT_FALSE(run.errorText.empty());
        EXPECT_TRUE(host->isMounted());
    }
    EXPECT_EQ(fingerprint(host->paths().drive), files);
    EXPECT_EQ(readSmallFile(occupied / "mine"), "text");
}

TEST_F(Uninstall, interruptedExportKeepsTheDriveAndGoesOnLater)
{
    makeFiles();
    for (unsigned number = 0; number < 12; ++number) {
        ASSERT_TRUE(
            writeRandomFile(host->paths().drive / ("large" + std::to_string(number)), 40'000'000, number));
    }
    files = fingerprint(host->paths().drive);
    const std::filesystem::path copy = host->paths().home / "copy";
    const pid_t child = ::fork();
    if (child == 0) {
        const ToolRun run = host->run({"uninstall", "--export", copy.string(), "--delete-store"});
        ::_exit(run.status);
    }
    ASSERT_TRUE(
        waitUntil([&] { return std::filesystem::exists(copy / ".ferrobank-incomplete/files/large0"); }));
    const std::string group = std::to_string(child);
    EXPECT_EQ(::system(("kill -TERM $(cat /proc/" + group + "/task/" + group + "/children)").c_str()), 0);
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 1);
    EXPECT_TRUE(std::filesystem::exists(copy / ".ferrobank-incomplete"));
    EXPECT_EQ(fingerprint(host->paths().drive), files);

    const ToolRun again = host->run({"uninstall", "--export", copy.string(), "--delete-store"});
    ASSERT_EQ(again.status, 0) << again.errorText;
    EXPECT_EQ(fingerprint(copy), files);
}

TEST_F(Uninstall, killedExportKeepsTheDriveAndGoesOnLater)
{
    makeFiles();
    for (unsigned number = 0; number < 12; ++number) {
        ASSERT_TRUE(
            writeRandomFile(host->paths().drive / ("large" + std::to_string(number)), 40'000'000, number));
    }
    files = fingerprint(host->paths().drive);
    const std::filesystem::path copy = host->paths().home / "copy";
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(host->run({"uninstall", "--export", copy.string()}).status);
    }
    ASSERT_TRUE(
        waitUntil([&] { return std::filesystem::exists(copy / ".ferrobank-incomplete/files/large0"); }));
    const std::string group = std::to_string(child);
    EXPECT_EQ(::system(("kill -KILL $(cat /proc/" + group + "/task/" + group + "/children)").c_str()), 0);
    ::waitpid(child, nullptr, 0);
    EXPECT_EQ(fingerprint(host->paths().drive), files);
    const ToolRun again = host->run({"uninstall", "--export", copy.string()});
    ASSERT_EQ(again.status, 0) << again.errorText;
    EXPECT_EQ(fingerprint(copy), files);
}

TEST_F(Uninstall, fileWrittenWhileTheCopyIsMadeIsInTheCopy)
{
    makeFiles();
    for (unsigned number = 0; number < 8; ++number) {
        ASSERT_TRUE(
            writeRandomFile(host->paths().drive / ("large" + std::to_string(number)), 40'000'000, number));
    }
    const std::filesystem::path copy = host->paths().home / "copy";
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(host->run({"uninstall", "--export", copy.string(), "--delete-store"}).status);
    }
    ASSERT_TRUE(
        waitUntil([&] { return std::filesystem::exists(copy / ".ferrobank-incomplete/files/large0"); }));
    std::ofstream(host->paths().drive / "late") << "text";
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_FALSE(std::filesystem::exists(host->paths().image));
    EXPECT_EQ(readSmallFile(copy / "late"), "text");
}

TEST_F(Uninstall, exportOfADamagedStoreIsRefusedAndDeletesNothing)
{
    makeFiles();
    host->endServing(SIGTERM);
    writeMagics(host->paths().image, "XXXXXXXX");
    const ToolRun run =
        host->run({"uninstall", "--export", (host->paths().home / "copy").string(), "--delete-store"});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.errorText.find("holds no volume"), std::string::npos) << run.errorText;
    EXPECT_TRUE(std::filesystem::exists(host->paths().image));
}

} // namespace
} // namespace ferrobank::drive::testing
