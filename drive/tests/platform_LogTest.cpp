#include "platform/Files.h"
#include "platform/Log.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace ferrobank::drive::testing {
namespace {

TEST(Log, eachEventIsADatedLineAndFurtherLinesAreIndented)
{
    const TemporaryFolder folder;
    const Log log(folder.path() / "log/ferrobank.log");
    log.write("first\nsecond\n");
    const std::string text = readSmallFile(log.path()).value_or("");
    EXPECT_NE(text.find("] first\n    second\n"), std::string::npos) << text;
    EXPECT_TRUE(text.starts_with("2"));
}

TEST(Log, keepsFiveFilesOfAboutOneMegabyte)
{
    const TemporaryFolder folder;
    const Log log(folder.path() / "ferrobank.log");
    const std::string line(50'000, 'x');
    for (int number = 0; number < 160; ++number) {
        log.write(line);
    }
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
        ++files;
        EXPECT_LT(entry.file_size(), 1'100'000U) << entry.path();
    }
    EXPECT_EQ(files, Log::kFiles);
}

TEST(Log, linesOfManyThreadsStayWholeAlsoAcrossARotation)
{
    const TemporaryFolder folder;
    const Log log(folder.path() / "ferrobank.log");
    {
        std::vector<std::jthread> writers;
        for (int writer = 0; writer < 4; ++writer) {
            writers.emplace_back([&log] {
                for (int number = 0; number < 100; ++number) {
                    log.write(std::string(5000, 'y'));
                }
            });
        }
    }
    std::size_t lines = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
        const std::string text = readSmallFile(entry.path(), 4'000'000).value_or("");
        for (std::size_t at = text.find(std::string(5000, 'y') + "\n"); at != std::string::npos;
             at = text.find(std::string(5000, 'y') + "\n", at + 5000))
        {
            ++lines;
        }
    }
    EXPECT_EQ(lines, 400U);
}

TEST(Log, unwritableLogStopsNobody)
{
    const Log log("/proc/nowhere/ferrobank.log");
    ::testing::internal::CaptureStderr();
    log.write("words");
    EXPECT_NE(::testing::internal::GetCapturedStderr().find("words"), std::string::npos);
}

} // namespace
} // namespace ferrobank::drive::testing
