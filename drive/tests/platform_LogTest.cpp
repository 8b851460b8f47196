#include "platform/Failure.h"
#include "platform/Files.h"
#include "platform/Guarded.h"
#include "platform/Log.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <new>
#include <stdexcept>
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

TEST(RepeatedLog, sameWordsAreWrittenOnceAnHour)
{
    const TemporaryFolder folder;
    const Log log(folder.path() / "ferrobank.log");
    auto now = std::chrono::steady_clock::time_point();
    RepeatedLog repeated(log, [&] { return now; });
    const auto count = [&](const std::string& words) {
        const std::string text = readSmallFile(log.path()).value_or("");
        int found = 0;
        for (std::size_t at = text.find(words); at != std::string::npos; at = text.find(words, at + 1)) {
            ++found;
        }
        return found;
    };
    for (int turn = 0; turn < 100; ++turn) {
        repeated.write("no room");
        repeated.write("no folder");
        now += std::chrono::seconds(5);
    }
    EXPECT_EQ(count("no room"), 1);
    EXPECT_EQ(count("no folder"), 1);
    now += RepeatedLog::kSilence;
    repeated.write("no room");
    EXPECT_EQ(count("no room"), 2);
    for (std::size_t number = 0; number < 2 * RepeatedLog::kTexts; ++number) {
        repeated.write("failure " + std::to_string(number) + ".");
    }
    repeated.write("no room");
    EXPECT_EQ(count("no room"), 3) << "it remembers only so many";
}

TEST(Guarded, whateverIsThrownIsToldInWords)
{
    std::string told;
    const auto tell = [&](const std::string& words) { told = words; };
    EXPECT_TRUE(guarded([] {}, tell));
    EXPECT_EQ(told, "");
    EXPECT_FALSE(guarded([] { throw Failure("No room."); }, tell));
    EXPECT_EQ(told, "No room.");
    EXPECT_FALSE(guarded([] { throw std::out_of_range("index"); }, tell));
    EXPECT_EQ(told, "Something unforeseen happened: index.");
    EXPECT_FALSE(guarded([] { throw std::bad_alloc(); }, [](const std::string&) { throw std::bad_alloc(); }));
}

} // namespace
} // namespace ferrobank::drive::testing
