#include "commands/CommandLine.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace ferrobank::drive::testing {
namespace {

struct Outcome {
    int status = -1;
    std::string output;
    std::string errorText;
};

Outcome run(std::vector<const char*> arguments)
{
    arguments.insert(arguments.begin(), "ferrobank");
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    Outcome outcome;
    outcome.status = runCommandLine(static_cast<int>(arguments.size()), arguments.data());
    outcome.output = ::testing::internal::GetCapturedStdout();
    outcome.errorText = ::testing::internal::GetCapturedStderr();
    return outcome;
}

std::set<std::string> longOptions(const std::string& text)
{
    std::set<std::string> found;
    const std::regex option("--[a-z]+(-[a-z]+)*");
    for (auto match = std::sregex_iterator(text.begin(), text.end(), option); match != std::sregex_iterator();
         ++match)
    {
        found.insert(match->str());
    }
    return found;
}

TEST(CommandLine, helpAndVersionSucceed)
{
    const Outcome help = run({"--help"});
    EXPECT_EQ(help.status, 0);
    for (const char* command : {"status", "check", "serve", "restart", "uninstall"}) {
        EXPECT_NE(help.output.find(command), std::string::npos) << command;
    }
    EXPECT_EQ(help.output.find("helper"), std::string::npos) << "what root runs is a program of its own";
    const Outcome version = run({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_TRUE(version.output.starts_with("ferrobank "));
}

TEST(CommandLine, manualPageKnowsEveryOptionOfTheHelpAndNoOther)
{
    std::set<std::string> inHelp{"--version"};
    for (const char* command : {"status", "check", "serve", "restart", "uninstall"}) {
        inHelp.merge(longOptions(run({command, "--help"}).output));
    }
    std::ifstream file(FERROBANK_MANUAL_PAGE);
    std::string page((std::istreambuf_iterator<char>(file)), {});
    std::erase(page, '\\');
    ASSERT_NE(page.find(".B uninstall"), std::string::npos);
    EXPECT_EQ(longOptions(page), inHelp);
    EXPECT_NE(page.find("FOLDER"), std::string::npos) << "the help calls it so";
}

TEST(CommandLine, nonsenseIsRefusedWithTwoAndWordsOnStandardError)
{
    for (const auto& arguments : std::vector<std::vector<const char*>>{{},
                                                                       {"format"},
                                                                       {"status", "--xml"},
                                                                       {"uninstall", "--export"},
                                                                       {"restart", "now"},
                                                                       {"helper-fstab", "add"}})
    {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.output, "");
        EXPECT_FALSE(outcome.errorText.empty());
    }
}

TEST(CommandLine, statusOfAnEmptyHomeIsOneLineOfJson)
{
    const TemporaryFolder folder;
    ::setenv("HOME", folder.path().c_str(), 1);
    ::setenv("XDG_RUNTIME_DIR", folder.path().c_str(), 1);
    const Outcome outcome = run({"status", "--json"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errorText, "");
    EXPECT_EQ(outcome.output.find('\n'), outcome.output.size() - 1);
    EXPECT_TRUE(outcome.output.starts_with(R"({"installed":false,"mounted":false,)"));
}

TEST(CommandLine, checkReportsSevenRowsTwiceAndSkipsNone)
{
    const TemporaryFolder folder;
    ::setenv("HOME", folder.path().c_str(), 1);
    ::setenv("XDG_RUNTIME_DIR", folder.path().c_str(), 1);
    const Outcome outcome = run({"check", "--json"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(std::count(outcome.output.begin(), outcome.output.end(), '\n'), 14);
    EXPECT_EQ(outcome.output.find("skipped"), std::string::npos);
    EXPECT_NE(outcome.output.find(R"("id":"running","title":"Ferrobank is running","state":"fail")"),
              std::string::npos);
}

} // namespace
} // namespace ferrobank::drive::testing
