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
    for (const char* command : {"status", "check", "du", "share", "serve", "restart", "export", "uninstall"})
    {
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
    for (const char* command : {"status", "check", "du", "share", "serve", "restart", "export", "uninstall"})
    {
        inHelp.merge(longOptions(run({command, "--help"}).output));
    }
    std::ifstream file(FERROBANK_MANUAL_PAGE);
    std::string page((std::istreambuf_iterator<char>(file)), {});
    std::erase(page, '\\');
    ASSERT_NE(page.find(".B uninstall"), std::string::npos);
    EXPECT_EQ(longOptions(page), inHelp);
    EXPECT_NE(page.find("FOLDER"), std::string::npos) << "the help calls it so";
}

TEST(CommandLine, exportIntoAnEmptyTextOrAnOptionIsRefusedInWords)
{
    for (const auto& arguments :
         std::vector<std::vector<const char*>>{{"uninstall", "--export", "", "--delete-store"},
                                               {"uninstall", "--delete-store", "--export", ""},
                                               {"uninstall", "--export=", "--delete-store"},
                                               {"uninstall", "--export", "--delete-store"},
                                               {"uninstall", "--export=--delete-store"}})
    {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_NE(outcome.errorText.find("--export"), std::string::npos) << outcome.errorText;
        EXPECT_NE(outcome.errorText.find("Nothing was changed."), std::string::npos) << outcome.errorText;
    }
}

TEST(CommandLine, shellsOfferEveryCommandAndOptionOfTheHelpAndNoOther)
{
    std::set<std::string> inHelp{"--version"};
    for (const char* command : {"status", "check", "du", "share", "serve", "restart", "export", "uninstall"})
    {
        inHelp.merge(longOptions(run({command, "--help"}).output));
    }
    for (const char* name : {"ferrobank.bash", "_ferrobank", "ferrobank.fish"}) {
        std::ifstream file(std::string(FERROBANK_COMPLETIONS "/") + name);
        std::string text((std::istreambuf_iterator<char>(file)), {});
        // How fish writes them, but for its own variable.
        text = std::regex_replace(text, std::regex("set -l "), "");
        text = std::regex_replace(text, std::regex(" -l ([a-z])"), " --$1");
        EXPECT_EQ(longOptions(text), inHelp) << name;
        for (const char* word : {"status", "check", "du", "share", "serve", "restart", "export", "uninstall",
                                 "now", "pause", "resume"})
        {
            EXPECT_TRUE(std::regex_search(text, std::regex("\\b" + std::string(word) + "\\b")))
                << name << word;
        }
        EXPECT_EQ(text.find("helper"), std::string::npos) << name;
    }
}

TEST(CommandLine, bashCompletesCommandsAndTheirOptions)
{
    const auto offers = [](const std::string& words) {
        const TemporaryFolder folder;
        const std::string output = (folder.path() / "offers").string();
        const std::string script = "source '" FERROBANK_COMPLETIONS "/ferrobank.bash'; compopt() { :; }; "
                                   "COMP_WORDS=(" +
                                   words +
                                   "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); "
                                   "_ferrobank; echo \"${COMPREPLY[*]}\" > " +
                                   output;
        EXPECT_EQ(
            ::system(("bash -c '" + std::regex_replace(script, std::regex("'"), "'\\''") + "'").c_str()), 0);
        std::ifstream file(output);
        std::string text;
        std::getline(file, text);
        return text;
    };
    EXPECT_EQ(offers("ferrobank s"), "status share serve");
    EXPECT_EQ(offers("ferrobank check --f"), "--full");
    EXPECT_EQ(offers("ferrobank share p"), "pause");
    EXPECT_EQ(offers("ferrobank restart --"), "--keep-mounted --help");
}

TEST(CommandLine, nonsenseIsRefusedWithTwoAndWordsOnStandardError)
{
    for (const auto& arguments : std::vector<std::vector<const char*>>{{"format"},
                                                                       {"share"},
                                                                       {"share", "later"},
                                                                       {"check", "--full", "--acknowledge"},
                                                                       {"status", "--xml"},
                                                                       {"uninstall", "--export"},
                                                                       {"export"},
                                                                       {"export", ""},
                                                                       {"restart", "now"},
                                                                       {"helper-fstab", "add"}})
    {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.output, "");
        EXPECT_FALSE(outcome.errorText.empty());
    }
}

TEST(CommandLine, mistypedCommandNamesTheNearOne)
{
    const Outcome near = run({"statsu", "--json"});
    EXPECT_EQ(near.status, 2);
    EXPECT_EQ(near.errorText,
              "\u201Cstatsu\u201D is no command of ferrobank. Did you mean: ferrobank status\n");
    EXPECT_NE(run({"unistall"}).errorText.find("ferrobank uninstall"), std::string::npos);
    const std::string far = run({"format"}).errorText;
    EXPECT_NE(far.find("ferrobank --help"), std::string::npos) << far;
    EXPECT_EQ(run({"helper-fstap"}).errorText.find("helper-fstab"), std::string::npos) << "not for people";
}

TEST(CommandLine, aloneItShowsTheStatusAndTheNextStep)
{
    const TemporaryFolder folder;
    ::setenv("HOME", folder.path().c_str(), 1);
    ::setenv("XDG_RUNTIME_DIR", folder.path().c_str(), 1);
    const Outcome outcome = run({});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, run({"status"}).output);
    EXPECT_NE(outcome.output.find("not set up"), std::string::npos);
    EXPECT_NE(outcome.output.find("ferrobank restart makes a drive"), std::string::npos);
}

TEST(CommandLine, checkForPeopleEndsWithOneWhenARowFailed)
{
    const TemporaryFolder folder;
    ::setenv("HOME", folder.path().c_str(), 1);
    ::setenv("XDG_RUNTIME_DIR", folder.path().c_str(), 1);
    const Outcome outcome = run({"check"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.output.find("Mac"), std::string::npos) << outcome.output;
    EXPECT_EQ(outcome.output.find("Show Log"), std::string::npos) << outcome.output;
}

TEST(CommandLine, sharingWithoutADriveIsRefusedWithTheNextStep)
{
    const TemporaryFolder folder;
    ::setenv("HOME", folder.path().c_str(), 1);
    ::setenv("XDG_RUNTIME_DIR", folder.path().c_str(), 1);
    for (const char* what : {"now", "pause", "resume"}) {
        const Outcome outcome = run({"share", what});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_NE(outcome.errorText.find("ferrobank restart"), std::string::npos) << outcome.errorText;
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
