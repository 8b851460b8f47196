#include "commands/NearWord.h"
#include "commands/StatusText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace ferrobank::drive::testing {
namespace {

constexpr std::int64_t kNow = 1'800'000'000;

StatusReport mountedDrive()
{
    StatusReport report;
    report.installed = report.mounted = true;
    report.mountpoint = "/home/u/Ferrobank";
    report.volume_used = 12'000'000'000;
    report.store_bytes = 4'000'000'000;
    report.saved = 8'000'000'000;
    report.log = "/log";
    return report;
}

StatusDetails details()
{
    StatusDetails details;
    details.state = State();
    details.state->phase = Phase::Mounted;
    details.state->sharing.last = kNow - 7200;
    details.state->sharing.shared = 1'200'000'000;
    details.free = 212'000'000'000;
    details.now = kNow;
    return details;
}

std::string lineOf(const std::string& text, const std::string& label)
{
    const std::size_t at = ("\n" + text).find("\n" + label);
    return at == std::string::npos ? std::string() : text.substr(at, text.find('\n', at) - at);
}

TEST(StatusText, ofAMountedDriveShowsFiguresRatioFreeSpaceAndPasses)
{
    const std::string text = statusText(mountedDrive(), details());
    EXPECT_EQ(lineOf(text, "Drive"), "Drive         mounted at /home/u/Ferrobank");
    EXPECT_EQ(lineOf(text, "Saved"), "Saved         8 GB (66 %, 3.0 : 1)");
    EXPECT_EQ(lineOf(text, "Free"), "Free          212 GB");
    EXPECT_EQ(
        lineOf(text, "Sharing"),
        "Sharing       last pass 2 hours ago, 1.2 GB shared; the next pass comes when the drive is quiet, "
        "or within the hour");
    EXPECT_EQ(lineOf(text, "At work"), "");
    EXPECT_EQ(lineOf(text, "Next"), "");
}

TEST(StatusText, tellsTheProgressOfEverythingAtWork)
{
    StatusDetails at = details();
    at.state->sharing.running = WorkProgress{.done = 2, .total = 5};
    at.state->integrity.reading = WorkProgress{.done = 1, .total = 3};
    at.state->exportState = ExportState{.done = 1, .total = 10};
    const std::string text = statusText(mountedDrive(), at);
    EXPECT_NE(text.find("copying the files away, 10 %"), std::string::npos) << text;
    EXPECT_NE(text.find("sharing repeated data, 40 %"), std::string::npos) << text;
    EXPECT_NE(text.find("reading every file, 33 %"), std::string::npos) << text;
}

TEST(StatusText, whatTheNextPassWaitsForIsSaidInWordsThatDiffer)
{
    std::vector<std::string> lines;
    for (const SharingWait wait : {SharingWait::Changes, SharingWait::Quiet, SharingWait::Load,
                                   SharingWait::Power, SharingWait::Resume, SharingWait::Export})
    {
        StatusDetails at = details();
        at.state->sharing.waitsFor = wait;
        lines.push_back(lineOf(statusText(mountedDrive(), at), "Sharing"));
    }
    std::sort(lines.begin(), lines.end());
    EXPECT_EQ(std::unique(lines.begin(), lines.end()), lines.end());
    StatusDetails paused = details();
    paused.state->sharing.paused = true;
    EXPECT_NE(statusText(mountedDrive(), paused).find("ferrobank share resume"), std::string::npos);
}

TEST(StatusText, withoutADriveNamesTheStepThatLeadsToOne)
{
    StatusReport report;
    report.mountpoint = "/home/u/Ferrobank";
    const StatusDetails nothing;
    EXPECT_NE(statusText(report, nothing).find("ferrobank restart makes a drive and mounts it"),
              std::string::npos);
    report.installed = true;
    EXPECT_NE(statusText(report, nothing).find("ferrobank restart mounts it"), std::string::npos);
    report.attach_error = "Words.";
    const std::string text = statusText(report, nothing);
    EXPECT_NE(text.find("Words."), std::string::npos);
    EXPECT_NE(text.find("ferrobank check"), std::string::npos);
    EXPECT_NE(text.find("\u2014"), std::string::npos) << "what is unknown is a dash";
}

TEST(TimeAgo, isInWordsAndNeverInTheFuture)
{
    EXPECT_EQ(timeAgo(kNow + 100, kNow), "a moment ago");
    EXPECT_EQ(timeAgo(kNow - 60, kNow), "1 minute ago");
    EXPECT_EQ(timeAgo(kNow - 7199, kNow), "1 hour ago");
    EXPECT_EQ(timeAgo(kNow - 90'000, kNow), "yesterday");
    EXPECT_EQ(timeAgo(kNow - 900'000, kNow), "10 days ago");
}

TEST(RatioText, isLeftOutWhereItWouldMeanNothing)
{
    EXPECT_EQ(ratioText(0, 0), "");
    EXPECT_EQ(ratioText(5, 5), "");
    EXPECT_EQ(ratioText(4, 1), "25 %, 1.3 : 1");
}

TEST(NearWord, forgivesASlipOfTheHandAndNoMore)
{
    const std::vector<std::string> words{"status", "check", "share", "serve", "restart", "uninstall"};
    EXPECT_EQ(nearestWord("statsu", words), "status");
    EXPECT_EQ(nearestWord("chekc", words), "check");
    EXPECT_EQ(nearestWord("sahre", words), "share");
    EXPECT_EQ(nearestWord("uninstal", words), "uninstall");
    EXPECT_EQ(nearestWord("reboot", words), std::nullopt);
    EXPECT_EQ(nearestWord("du", words), std::nullopt);
    EXPECT_EQ(nearestWord(std::string(100'000, 'x'), words), std::nullopt);
}

} // namespace
} // namespace ferrobank::drive::testing
