#include "Platform/linux/updates/install/InstallKind.h"
#include "Platform/linux/updates/install/Trial.h"
#include "Platform/linux/updates/session/Schedule.h"
#include "support/TestProgram.h"

#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <sys/stat.h>

using namespace ferrobank;
using namespace ferrobank::updates;
using namespace Qt::StringLiterals;
using std::chrono::hours;
using std::chrono::milliseconds;

namespace {

const QDateTime kNow = QDateTime::fromString(u"2026-11-20T12:00:00Z"_s, Qt::ISODate);

ScheduleFacts checkedHoursAgo(int count)
{
    ScheduleFacts facts;
    facts.now = kNow;
    facts.lastCheck = kNow.addSecs(qint64{-3600} * count);
    return facts;
}

UpdateConfiguration configuration(std::optional<bool> automatic = std::nullopt)
{
    UpdateConfiguration one;
    one.feed = QUrl(u"https://example.org/feed.xml"_s);
    one.keys = {"key"};
    one.automaticChecks = automatic;
    return one;
}

UpdateConfiguration fromList(const char* entries)
{
    const std::string text =
        std::string("<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>") + entries + "</dict></plist>";
    return readConfiguration(*PropertyList::parse(text));
}

} // namespace

class UpdateScheduleTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void nextCheckIsOneIntervalAfterTheLast()
    {
        QCOMPARE(untilNextCheck(checkedHoursAgo(4)), hours(20));
        QCOMPARE(untilNextCheck(checkedHoursAgo(24)), hours(0));
        QCOMPARE(untilNextCheck(checkedHoursAgo(1000)), hours(0));
    }

    void firstCheckEverIsDueAtOnce()
    {
        ScheduleFacts facts;
        facts.now = kNow;
        QCOMPARE(untilNextCheck(facts), milliseconds(0));
    }

    void lastCheckInTheFutureCountsAsNow() { QCOMPARE(untilNextCheck(checkedHoursAgo(-500)), hours(24)); }

    void jitterIsATenth()
    {
        ScheduleFacts facts = checkedHoursAgo(0);
        facts.interval = hours(10);
        facts.jitter = 1;
        QCOMPARE(untilNextCheck(facts), hours(11));
        facts.jitter = -1;
        QCOMPARE(untilNextCheck(facts), hours(9));
        facts.jitter = 50;
        QCOMPARE(untilNextCheck(facts), hours(11));
    }

    void failuresBackOffFromAnHourToADay()
    {
        ScheduleFacts facts = checkedHoursAgo(0);
        const std::vector<int> expected{1, 2, 4, 8, 16, 24, 24, 24};
        for (std::size_t i = 0; i < expected.size(); ++i) {
            facts.failures = static_cast<int>(i) + 1;
            QCOMPARE(untilNextCheck(facts), hours(expected[i]));
        }
        facts.failures = 1'000'000;
        QCOMPARE(untilNextCheck(facts), hours(24));
    }

    void waitingUpdateIsAWeekUnlessItNeedsAnAnswer()
    {
        ScheduleFacts facts = checkedHoursAgo(0);
        facts.hasStaged = true;
        QCOMPARE(untilNextCheck(facts), hours(7 * 24));
        facts.needsAnswer = true;
        QCOMPARE(untilNextCheck(facts), hours(24));
        facts.interval = hours(30 * 24);
        QCOMPARE(untilNextCheck(facts), hours(7 * 24));
    }

    void consentIsAskedOnTheSecondLaunchIfNobodyHasDecided_data()
    {
        QTest::addColumn<int>("launches");
        QTest::addColumn<int>("build"); ///< -1 undecided
        QTest::addColumn<int>("user");
        QTest::addColumn<bool>("isAsked");
        QTest::newRow("first launch") << 1 << -1 << -1 << false;
        QTest::newRow("second launch") << 2 << -1 << -1 << true;
        QTest::newRow("later") << 9 << -1 << -1 << true;
        QTest::newRow("build says yes") << 2 << 1 << -1 << false;
        QTest::newRow("build says no") << 2 << 0 << -1 << false;
        QTest::newRow("user said yes") << 2 << -1 << 1 << false;
        QTest::newRow("user said no") << 2 << -1 << 0 << false;
    }

    void consentIsAskedOnTheSecondLaunchIfNobodyHasDecided()
    {
        QFETCH(int, launches);
        QFETCH(int, build);
        QFETCH(int, user);
        QFETCH(bool, isAsked);
        UpdateState state;
        state.launches = launches;
        if (user >= 0)
            state.automaticChecks = user == 1;
        const auto decided = build >= 0 ? std::optional(build == 1) : std::nullopt;
        QCOMPARE(mustAskForConsent(configuration(decided), state), isAsked);
        QVERIFY(!mustAskForConsent(UpdateConfiguration(), state));
    }

    void checksAreAutomaticOnlyWhenSomebodySaidSo()
    {
        UpdateState state;
        QVERIFY(!checksAutomatically(configuration(), state));
        QVERIFY(checksAutomatically(configuration(true), state));
        state.automaticChecks = false;
        QVERIFY(!checksAutomatically(configuration(true), state));
        state.automaticChecks = true;
        QVERIFY(checksAutomatically(configuration(), state));
        UpdateConfiguration never = configuration(true);
        never.interval = std::chrono::seconds(0);
        QVERIFY(!checksAutomatically(never, state));
        QVERIFY(!checksAutomatically(UpdateConfiguration(), state));
    }

    void buildMayForbidAutomaticDownloads()
    {
        UpdateConfiguration one = configuration(true);
        UpdateState state;
        QVERIFY(!downloadsAutomatically(one, state));
        one.automaticDownload = true;
        QVERIFY(downloadsAutomatically(one, state));
        state.automaticDownload = false;
        QVERIFY(!downloadsAutomatically(one, state));
        state.automaticDownload = true;
        one.allowsAutomaticDownload = false;
        QVERIFY(!downloadsAutomatically(one, state));
    }

    void configurationComesFromThePropertyList()
    {
        const UpdateConfiguration read = fromList(
            "<key>CFBundleIdentifier</key><string>id</string><key>CFBundleVersion</key><string>1.2</string>"
            "<key>SUFeedURL</key><string>https://e.org/f</string><key>SUPublicEDKey</key><string>one</string>"
            "<key>SUPublicEDKeys</key><array><string>two</string><string></string></array>"
            "<key>SUEnableAutomaticChecks</key><false/><key>SUScheduledCheckInterval</key><integer>60</"
            "integer>"
            "<key>FBUpdateChannels</key><array><string>beta</string></array>");
        QCOMPARE(read.product, u"id"_s);
        QCOMPARE(read.version, u"1.2"_s);
        QCOMPARE(read.keys, (std::vector<std::string>{"one", "two"}));
        QCOMPARE(read.automaticChecks, std::optional(false));
        QCOMPARE(read.interval, hours(1));
        QCOMPARE(read.channels, QStringList{u"beta"_s});
        QVERIFY(read.isOn());
    }

    void updatesAreOffWithoutFeedOrKeyOrWithPlainHttp()
    {
        QVERIFY(!fromList("").isOn());
        QVERIFY(!fromList("<key>SUFeedURL</key><string>https://e.org/f</string>").isOn());
        QVERIFY(!fromList("<key>SUPublicEDKey</key><string>one</string>").isOn());
        QVERIFY(!fromList("<key>SUFeedURL</key><string>http://e.org/f</string>"
                          "<key>SUPublicEDKey</key><string>one</string>")
                     .isOn());
        QCOMPARE(fromList("<key>SUScheduledCheckInterval</key><integer>0</integer>").interval.count(), 0);
    }

    void stateSurvivesTheDiskAndIsPrivate()
    {
        const QTemporaryDir folder;
        const std::filesystem::path name = folder.filePath(u"a/b/updates.json"_s).toStdString();
        const UpdateStateFile file(name);
        QCOMPARE(file.load(), UpdateState());
        UpdateState state;
        state.launches = 3;
        state.lastCheck = kNow;
        state.lastGenuine = kNow.addDays(-1);
        state.failures = 2;
        state.automaticChecks = false;
        state.skippedVersion = u"1.1"_s;
        state.skippedMajorVersion = u"2"_s;
        state.skippedMajorRelease = u"2.1"_s;
        state.group = 4'000'000'000U;
        state.highestVersionSeen = u"1.2"_s;
        state.newestDateSeen = u"2026-11-20T12:00:00Z"_s;
        state.announced = u"1.2"_s;
        QVERIFY(file.save(state));
        QCOMPARE(file.load(), state);
        struct stat facts{};
        QCOMPARE(::stat(name.c_str(), &facts), 0);
        QCOMPARE(facts.st_mode & 0777U, 0600U);
    }

    void damagedStateReadsAsAFirstRun()
    {
        for (const char* text : {"", "{", "[]", "\"x\"", "{\"launches\":\"many\",\"groupId\":-1e300}"})
            QCOMPARE(readState(text).launches, 0);
    }

    void unwritableStateIsTold() { QVERIFY(!UpdateStateFile("/proc/none/updates.json").save(UpdateState())); }

    void startingProgramKnowsWhatToDoAboutATrial()
    {
        QCOMPARE(actAtStart(std::nullopt, "1.0.1"), StartAct::Run);
        QCOMPARE(actAtStart(Trial{"1.0.1", "1.0.0", 0}, "1.0.1"), StartAct::Count);
        QCOMPARE(actAtStart(Trial{"1.0.1", "1.0.0", 1}, "1.0.1"), StartAct::Count);
        QCOMPARE(actAtStart(Trial{"1.0.1", "1.0.0", 2}, "1.0.1"), StartAct::TakeBack);
        QCOMPARE(actAtStart(Trial{"1.0.1", "1.0.0", 2}, "1.0.0"), StartAct::Forget);
    }

    void trialSurvivesItsText()
    {
        const Trial trial{"1.0.1", "1.0.0", 1};
        QCOMPARE(readTrial(trialText(trial)), std::optional(trial));
        for (const char* text :
             {"", "1.0.1", "1.0.1\n1.0.0\n", "\n1.0.0\n1\n", "1.0.1\n\n1\n", "1\n2\n-3\n", "1\n2\nx\n"})
            QVERIFY2(!readTrial(text), text);
    }

    void markerDecidesHowACopyIsUpdated()
    {
        using Word = InstallKind::Word;
        QCOMPARE(readInstallKind("folder\n").word, Word::Folder);
        QCOMPARE(readInstallKind("store").word, Word::Store);
        QCOMPARE(readInstallKind("development\r\n").word, Word::Development);
        const InstallKind package = readInstallKind("package\nsudo apt install --only-upgrade ferrobank\n");
        QCOMPARE(package.word, Word::Package);
        QCOMPARE(package.advice, "sudo apt install --only-upgrade ferrobank");
        for (const char* text : {"", "\n", "Folder", "folders", " folder"})
            QCOMPARE(readInstallKind(text).word, Word::Unknown);
    }
};

FERROBANK_TEST_WITHOUT_APPLICATION(UpdateScheduleTest)
#include "UpdateScheduleTest.moc"
