#include "commands/CheckRow.h"
#include "commands/ProgressBar.h"
#include "commands/StatusReport.h"
#include "login/LoginStart.h"

#include <gtest/gtest.h>

#include <limits>

namespace ferrobank::drive::testing {
namespace {

const CheckRow kRow{
    .id = "drive", .title = "Drive is mounted and writable", .detail = {}, .fix = {}, .action = {}};

TEST(CheckRow, doesNotSayBesideAButtonWhatTheButtonSays)
{
    const CheckRow row{.id = "running", .title = "Runs", .detail = {}, .fix = {}, .action = {}};
    const CheckRow failed = row.failed("It does not.", "Restart Ferrobank.", "restart");
    EXPECT_EQ(failed.toJson().find("\"fix\""), std::string::npos);
    // In a terminal there is no button, but a command.
    EXPECT_NE(failed.forTerminal().toText(false).find("restart"), std::string::npos);
    EXPECT_NE(row.failed("It does not.", "Restart Ferrobank.").toJson().find("\"fix\""), std::string::npos);
    EXPECT_NE(row.failed("It does not.", "Free some space.", "restart").toJson().find("\"fix\""),
              std::string::npos);
}

TEST(CheckRow, runningAndPassedHaveOnlyWhatTheyNeed)
{
    EXPECT_EQ(kRow.toJson(), R"({"id":"drive","title":"Drive is mounted and writable","state":"running"})");
    EXPECT_EQ(kRow.passed("Fine.").toJson(),
              R"({"id":"drive","title":"Drive is mounted and writable","state":"pass","detail":"Fine."})");
}

TEST(CheckRow, failedOneCarriesDetailFixAndAction)
{
    EXPECT_EQ(kRow.failed("No.", "Restart.", "restart").toJson(),
              R"({"id":"drive","title":"Drive is mounted and writable","state":"fail","detail":"No.",)"
              R"("fix":"Restart.","action":"restart"})");
    EXPECT_EQ(kRow.failed("No.", "Look.").toJson().find("action"), std::string::npos);
}

TEST(CheckRow, oneRowIsOneLineWhateverTheNames)
{
    const std::string line = kRow.failed("a\nb\xFF", "c").toJson();
    EXPECT_EQ(line.find('\n'), std::string::npos);
}

TEST(CheckRow, peopleSeeColoursOnlyWhereTheyAreWanted)
{
    EXPECT_EQ(kRow.failed("No.", "Restart.").toText(false),
              "failed  Drive is mounted and writable\n        No.\n        Restart.");
    EXPECT_NE(kRow.passed().toText(true).find("\033[32m"), std::string::npos);
}

TEST(CheckRow, peopleAreToldCommandsAndNoWordsOfAnotherSystem)
{
    EXPECT_EQ(kRow.failed("No.", kRestartAdvice, "restart").forTerminal().toText(false),
              "failed  Drive is mounted and writable\n        No.\n        Run: ferrobank restart");
    EXPECT_EQ(kRow.failed("No.", "Turn on Ferrobank in the login items.", "login-items")
                  .forTerminal()
                  .toText(false)
                  .find("items"),
              std::string::npos);
}

TEST(StatusReport, unknownFiguresAreAbsentAndLargeOnesExact)
{
    StatusReport report;
    report.mountpoint = "/home/u/Ferrobank";
    report.log = "/log";
    EXPECT_EQ(report.toJson(),
              R"({"installed":false,"mounted":false,"mountpoint":"/home/u/Ferrobank","log":"/log"})");
    report.saved = std::numeric_limits<std::uint64_t>::max();
    report.attach_error = "Words.";
    report.update_pending = true;
    EXPECT_EQ(report.toJson(),
              R"({"installed":false,"mounted":false,"mountpoint":"/home/u/Ferrobank",)"
              R"("saved":18446744073709551615,"attach_error":"Words.","update_pending":true,)"
              R"("log":"/log"})");
}

TEST(ProgressBar, showsShareAndSizesAndNeverOverflows)
{
    EXPECT_EQ(progressLine("Copying", 1'000'000'000, 4'000'000'000),
              "Copying    [#######-----------------------]  25 %  1 GB of 4 GB");
    EXPECT_NE(progressLine("Verifying", 5, 4).find("100 %"), std::string::npos);
    EXPECT_NE(progressLine("Copying", 0, 0).find("100 %"), std::string::npos);
}

TEST(LoginStart, entryIsOffWhenEitherKeyOfItsMainGroupSaysSo)
{
    EXPECT_FALSE(isSwitchedOff("[Desktop Entry]\nType=Application\n"));
    EXPECT_TRUE(isSwitchedOff("[Desktop Entry]\nHidden=true\n"));
    EXPECT_TRUE(isSwitchedOff("[Desktop Entry]\nX-GNOME-Autostart-enabled=false\n"));
    EXPECT_FALSE(isSwitchedOff("[Desktop Entry]\nHidden=false\n[Desktop Action x]\nHidden=true\n"));
}

} // namespace
} // namespace ferrobank::drive::testing
