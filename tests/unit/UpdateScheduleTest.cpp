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
        UpdateStateFile file(name);
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
        state.silentSince = kNow.addDays(-3);
        state.silentSessions = 4;
        state.validUntilSeen = u"2027-01-20T12:00:00Z"_s;
        state.toldTakenBack = u"1.1 1"_s;
        state.installing = u"1.2"_s;
        state.installingSignature = u"abc="_s;
        state.failedOffers = {{u"1.2"_s, u"abc="_s, 2, kNow, u"It failed."_s},
                              {u"1.1"_s, u"x"_s, 1, kNow, {}}};
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
        QCOMPARE(actAtStart(std::nullopt, "1.0.1", false), StartAct::Run);
        QCOMPARE(actAtStart(Trial{"1.0.1", "1.0.0", 0}, "1.0.1", false), StartAct::Run);
        QCOMPARE(actAtStart(Trial{"1.0.1", "1.0.0", 1}, "1.0.1", false), StartAct::Run);
        QCOMPARE(actAtStart(Trial{"1.0.1", "1.0.0", 2}, "1.0.1", false), StartAct::TakeBack);
        QCOMPARE(actAtStart(Trial{"1.0.1", "1.0.0", 2}, "1.0.1", true), StartAct::Run);
        QCOMPARE(actAtStart(Trial{"1.0.1", "1.0.0", 2}, "1.0.0", false), StartAct::Forget);
    }

    void bansEndAndAreLongerEachTime()
    {
        constexpr std::int64_t kDay = 86'400;
        const std::int64_t now = kNow.toSecsSinceEpoch();
        std::vector<Ban> bans;
        for (const int days : {7, 30, 90, 90}) {
            bans = withFailure(bans, "1.0.1", now);
            QCOMPARE(bans.size(), 1U);
            QVERIFY(isInForce(bans[0], now));
            QVERIFY(isInForce(bans[0], now + days * kDay - 1));
            QVERIFY(!isInForce(bans[0], now + days * kDay));
        }
        QCOMPARE(timesBanned(bans, "1.0.1"), 4);
        QCOMPARE(timesBanned(bans, "1.0.2"), 0);
        QCOMPARE(readBans(bansText(bans)), bans);
        // Noted with a clock that was years ahead.
        bans = startedInTime(withFailure({}, "1.0.1", now + 4000 * kDay), now);
        QVERIFY(isInForce(bans[0], now) && !isInForce(bans[0], now + 7 * kDay));
    }

    void bansOfEarlierVersionsHaveEndedAndRubbishIsNone()
    {
        const std::vector<Ban> old = readBans("1.0.1\n\n1.0.2 x\n");
        QCOMPARE(old.size(), 2U);
        for (const Ban& ban : old)
            QVERIFY(!isInForce(ban, kNow.toSecsSinceEpoch()));
        for (const char* text : {"1 2", "1 -5 -7", "1 9999999999999999999 1", "1 1 9223372036854775807"}) {
            for (const Ban& ban : readBans(text))
                QVERIFY2(ban.times >= 1 && ban.since >= 0 && endOf(ban) >= ban.since, text);
        }
    }

    void timesInTheFutureAreBroughtBackAndThatIsToBeSaved()
    {
        UpdateState state;
        QVERIFY(!endAtNow(state, kNow));
        state.lastCheck = kNow.addYears(4);
        state.lastGenuine = kNow.addDays(-1);
        state.silentSince = kNow.addDays(3);
        state.failedOffers = {{u"2"_s, u"s"_s, 1, kNow.addYears(1), {}}};
        QVERIFY(endAtNow(state, kNow));
        QCOMPARE(state.lastCheck, kNow);
        QCOMPARE(state.lastGenuine, kNow.addDays(-1));
        QCOMPARE(state.silentSince, kNow);
        QCOMPARE(state.failedOffers[0].last, kNow);
        QVERIFY(!endAtNow(state, kNow));
    }

    void clockThatIsBehindIsLookedAtAgainSoon()
    {
        ScheduleFacts facts = checkedHoursAgo(0);
        facts.clockIsBehind = true;
        QCOMPARE(untilNextCheck(facts), hours(1));
    }

    void refusedOfferIsTriedDailyAndThenWeekly()
    {
        Offer offer;
        offer.version = u"2"_s;
        offer.signature = u"one"_s;
        Offer other = offer;
        other.signature = u"two"_s;
        UpdateState state;
        QDateTime now = kNow;
        int hoursBetween = 22;
        for (int attempt = 1; attempt <= 6; ++attempt) {
            QVERIFY(mayFetch(state, offer, now));
            noteRefusal(state, offer, now, u"why"_s);
            QCOMPARE(refusalOf(state, offer)->attempts, attempt);
            hoursBetween = attempt <= 3 ? 22 : 7 * 24;
            QVERIFY(!mayFetch(state, offer, now.addSecs(qint64{3600} * (hoursBetween * 8 / 10))));
            now = now.addSecs(qint64{3600} * hoursBetween);
        }
        QVERIFY(mayFetch(state, other, kNow));
        for (int i = 0; i < 20; ++i) {
            offer.version = QString::number(i);
            noteRefusal(state, offer, now, {});
        }
        QCOMPARE(state.failedOffers.size(), UpdateState::kMostFailedOffers);
    }

    void onlyFailuresOfTheOfferItselfAreRefusals()
    {
        for (const Problem one :
             {Problem::Signature, Problem::Version, Problem::Archive, Problem::Install, Problem::Feed})
            QVERIFY(isRefusal(one));
        for (const Problem one :
             {Problem::Network, Problem::Space, Problem::Busy, Problem::Place, Problem::Off, Problem::Stale})
            QVERIFY(!isRefusal(one));
    }

    void silenceIsAFortnightOfSessionsThatCameToNothing()
    {
        UpdateState state;
        QVERIFY(!countsAsSilence(state, kNow));
        QVERIFY(!countsAsSilence(state, kNow.addDays(13)));
        QVERIFY(countsAsSilence(state, kNow.addDays(14)));
        QVERIFY(!countsAsSilence(state, kNow.addDays(15)));
        endSilence(state);
        // A computer that was off for a month is not a silence.
        QVERIFY(!countsAsSilence(state, kNow));
        QVERIFY(!countsAsSilence(state, kNow.addDays(30)));
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
