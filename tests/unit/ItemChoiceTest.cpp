#include "Platform/linux/updates/feed/ItemChoice.h"

#include "support/TestProgram.h"

#include <QtTest/QTest>

using namespace ferrobank::updates;
using namespace Qt::StringLiterals;

namespace {

const QDateTime kNow = QDateTime::fromString(u"2026-11-20T12:00:00Z"_s, Qt::ISODate);

AppcastItem item(const char* version)
{
    AppcastItem one;
    one.version = version;
    one.archive = QUrl(u"https://example.org/a"_s);
    one.system = u"linux"_s;
    return one;
}

ChoiceFacts facts()
{
    ChoiceFacts one;
    one.installed = "1.0";
    one.systemVersion = "2.36";
    one.systemNames = QStringList{u"linux-x86_64"_s, u"linux"_s};
    one.processors = QStringList{u"x86_64"_s};
    one.now = kNow;
    return one;
}

std::string chosen(const QList<AppcastItem>& items, const ChoiceFacts& with = facts())
{
    const Choice choice = chooseItem(items, with);
    return choice.item ? choice.item->version : "";
}

NoUpdate reason(const AppcastItem& one, const ChoiceFacts& with = facts())
{
    return chooseItem({one}, with).reason;
}

} // namespace

class ItemChoiceTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void highestVersionWinsAndTheFirstOfEquals()
    {
        AppcastItem first = item("1.2");
        first.title = u"first"_s;
        AppcastItem second = item("1.2.0");
        second.title = u"second"_s;
        const Choice choice = chooseItem({item("1.1"), first, second, item("0.9")}, facts());
        QCOMPARE(choice.item->title, u"first"_s);
    }

    void onlyStrictlyNewerIsOffered()
    {
        QCOMPARE(chosen({item("1.0")}), "");
        QCOMPARE(chosen({item("1.0.0")}), "");
        QCOMPARE(chosen({item("0.9")}), "");
        QCOMPARE(chosen({item("1.0.1")}), "1.0.1");
        QCOMPARE(chosen({}), "");
    }

    void foreignSystemsAreLeftOut()
    {
        for (const auto& [system, isOffered] :
             {std::pair(u"linux"_s, true), std::pair(u"linux-x86_64"_s, true),
              std::pair(u"linux-aarch64"_s, false), std::pair(u"macos"_s, false), std::pair(QString(), false),
              std::pair(u"windows"_s, false)})
        {
            AppcastItem one = item("2.0");
            one.system = system;
            QCOMPARE(chosen({one}) == "2.0", isOffered);
        }
    }

    void differencesInstallersAndBadVersionsAreLeftOut()
    {
        AppcastItem delta = item("2.0");
        delta.delta = true;
        AppcastItem package = item("2.1");
        package.package = true;
        ChoiceFacts with = facts();
        with.bannedVersions = {"2.2"};
        QCOMPARE(chosen({delta, package, item("2.2"), item("1.1")}, with), "1.1");
    }

    void versionThatWasTakenBackIsNotCalledTheLatestAndIsOfferedToTheUser()
    {
        ChoiceFacts with = facts();
        with.bannedVersions = {"2.2"};
        QCOMPARE(chosen({item("2.2")}, with), "");
        QVERIFY(reason(item("2.2"), with) == NoUpdate::TakenBack);
        with.kind = CheckKind::ByUser;
        QCOMPARE(chosen({item("2.2")}, with), "2.2");
        with.kind = CheckKind::Scheduled;
        with.bannedVersions.clear();
        QCOMPARE(chosen({item("2.2")}, with), "2.2");
    }

    void toolkitThatIsTooOldIsTold()
    {
        AppcastItem one = item("2.0");
        one.minimumQt = "6.5";
        ChoiceFacts with = facts();
        with.qtVersion = "6.4.2";
        QCOMPARE(chosen({one}, with), "");
        QVERIFY(reason(one, with) == NoUpdate::SystemTooOld);
        with.qtVersion = "6.5";
        QCOMPARE(chosen({one}, with), "2.0");
    }

    void foreignChannelsAreLeftOut()
    {
        AppcastItem beta = item("2.0");
        beta.channel = u"beta"_s;
        QCOMPARE(chosen({beta, item("1.1")}), "1.1");
        ChoiceFacts with = facts();
        with.channels = QStringList{u"beta"_s};
        QCOMPARE(chosen({beta, item("1.1")}, with), "2.0");
    }

    void limitsAreKept()
    {
        AppcastItem one = item("2.0");
        one.minimumSystem = "2.40";
        QCOMPARE(chosen({one}), "");
        one.minimumSystem = "2.36";
        QCOMPARE(chosen({one}), "2.0");
        one.maximumSystem = "2.35";
        QCOMPARE(chosen({one}), "");
        one.maximumSystem.clear();
        one.minimumInstalled = "1.0.1";
        QCOMPARE(chosen({one}), "");
        one.minimumInstalled = "1.0";
        one.hardware = QStringList{u"arm64"_s};
        QCOMPARE(chosen({one}), "");
        one.hardware = QStringList{u"x86_64"_s};
        QCOMPARE(chosen({one}), "2.0");
    }

    void rollOutReachesOneGroupAfterTheOther_data()
    {
        QTest::addColumn<unsigned>("group");
        QTest::addColumn<int>("hoursOld");
        QTest::addColumn<bool>("isVisible");
        QTest::newRow("first group at once") << 0U << 0 << true;
        QTest::newRow("second group too early") << 1U << 23 << false;
        QTest::newRow("second group after a day") << 1U << 24 << true;
        QTest::newRow("last group too early") << 6U << 143 << false;
        QTest::newRow("last group after six days") << 6U << 144 << true;
        QTest::newRow("date in the future") << 0U << -1 << false;
    }

    void rollOutReachesOneGroupAfterTheOther()
    {
        QFETCH(unsigned, group);
        QFETCH(int, hoursOld);
        QFETCH(bool, isVisible);
        AppcastItem one = item("2.0");
        one.phasedRolloutInterval = std::chrono::hours(24);
        one.date = kNow.addSecs(qint64{-3600} * hoursOld);
        ChoiceFacts with = facts();
        with.rolloutGroup = group;
        QCOMPARE(chosen({one}, with) == "2.0", isVisible);
    }

    void rollOutIsIgnoredForUsersCriticalItemsAndItemsWithoutDate()
    {
        AppcastItem one = item("2.0");
        one.phasedRolloutInterval = std::chrono::hours(24);
        one.date = kNow;
        ChoiceFacts with = facts();
        with.rolloutGroup = 6;
        QCOMPARE(chosen({one}, with), "");
        with.kind = CheckKind::ByUser;
        QCOMPARE(chosen({one}, with), "2.0");
        with.kind = CheckKind::Scheduled;
        one.critical = true;
        QCOMPARE(chosen({one}, with), "2.0");
        one.critical = false;
        one.date.reset();
        QCOMPARE(chosen({one}, with), "2.0");
    }

    void skippedVersionHidesItAndWhatIsOlder()
    {
        ChoiceFacts with = facts();
        with.skips.version = "2.0";
        QCOMPARE(chosen({item("2.0"), item("1.5")}, with), "");
        QCOMPARE(chosen({item("2.1")}, with), "2.1");
        AppcastItem critical = item("2.0");
        critical.critical = true;
        QCOMPARE(chosen({critical}, with), "2.0");
        with.kind = CheckKind::ByUser;
        QCOMPARE(chosen({item("2.0")}, with), "2.0");
    }

    void majorUpgradeComesOnlyWhenNothingElseDoes()
    {
        AppcastItem major = item("3.0");
        major.minimumForAutomatic = "2.0";
        const Choice both = chooseItem({major, item("1.1")}, facts());
        QCOMPARE(both.item->version, "1.1");
        QVERIFY(!both.major);
        const Choice alone = chooseItem({major}, facts());
        QCOMPARE(alone.item->version, "3.0");
        QVERIFY(alone.major);
    }

    void skippedMajorUpgradeStaysHiddenUntilItIsForgotten()
    {
        AppcastItem major = item("3.1");
        major.minimumForAutomatic = "2.0";
        ChoiceFacts with = facts();
        with.skips.majorVersion = "2.0";
        with.skips.majorVersionRelease = "3.0";
        QCOMPARE(chosen({major}, with), "");
        major.ignoreSkippedMajorsBelow = "3.0.5";
        QCOMPARE(chosen({major}, with), "3.1");
        major.ignoreSkippedMajorsBelow = "3.0";
        QCOMPARE(chosen({major}, with), "");
        major.minimumForAutomatic = "2.5";
        QCOMPARE(chosen({major}, with), "3.1");
    }

    void criticalMayBeForSomeInstalledVersionsOnly()
    {
        AppcastItem one = item("2.0");
        one.critical = true;
        QVERIFY(chooseItem({one}, facts()).critical);
        one.criticalBelow = "0.9";
        QVERIFY(!chooseItem({one}, facts()).critical);
        one.criticalBelow = "1.0.1";
        QVERIFY(chooseItem({one}, facts()).critical);
    }

    void informationalMayBeForSomeInstalledVersionsOnly()
    {
        AppcastItem one = item("2.0");
        QVERIFY(!chooseItem({one}, facts()).informational);
        one.informationFor = {"0.9"};
        QVERIFY(!chooseItem({one}, facts()).informational);
        one.informationFor = {"0.9", "1.0.0"};
        QVERIFY(chooseItem({one}, facts()).informational);
        one.informationFor.clear();
        one.informationBelow = "1.0";
        QVERIFY(!chooseItem({one}, facts()).informational);
        one.informationBelow = "1.1";
        QVERIFY(chooseItem({one}, facts()).informational);
    }

    void itemWithoutArchiveNeedsNoSystem()
    {
        AppcastItem page = item("2.0");
        page.archive.clear();
        page.system.clear();
        page.informationForAll = true;
        const Choice choice = chooseItem({page}, facts());
        QVERIFY(choice.item && choice.informational);
    }

    void reasonIsTheOneThatHoldsForTheLatest()
    {
        QCOMPARE(reason(item("1.0")), NoUpdate::OnLatest);
        QCOMPARE(reason(item("0.9")), NoUpdate::NewerThanLatest);
        AppcastItem later = item("2.0");
        later.minimumSystem = "3.0";
        QCOMPARE(reason(later), NoUpdate::SystemTooOld);
        later.minimumSystem.clear();
        later.maximumSystem = "2.0";
        QCOMPARE(reason(later), NoUpdate::SystemTooNew);
        AppcastItem foreign = item("2.0");
        foreign.system = u"macos"_s;
        QCOMPARE(reason(foreign), NoUpdate::Unknown);
        QVERIFY(chooseItem({later}, facts()).latest);
        QVERIFY(!chooseItem({foreign}, facts()).latest);
    }
};

FERROBANK_TEST_WITHOUT_APPLICATION(ItemChoiceTest)
#include "ItemChoiceTest.moc"
