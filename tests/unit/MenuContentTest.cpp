#include "Ferrobank/FerrobankApp/MenuContent.h"

#include "support/TestProgram.h"

#include <QtCore/QStringList>
#include <QtTest/QTest>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <limits>

namespace ferrobank {

namespace {

using namespace Qt::StringLiterals;

DriveStatus mounted()
{
    DriveStatus status;
    status.installed = true;
    status.mounted = true;
    status.mountpoint = u"/home/anna/Ferrobank"_s;
    status.volume_used = 12'400'000'000;
    status.saved = 8'100'000'000;
    status.log = u"/home/anna/ferrobank.log"_s;
    return status;
}

MenuFacts finished(const std::optional<DriveStatus>& status)
{
    return {.status = status, .setupComplete = true, .commandInstalled = true, .menuOpensAtLogin = false};
}

/// One word for each entry as it looks: dividers as "-", text in brackets, toggles with their mark.
QStringList look(const MenuFacts& facts)
{
    QStringList lines;
    for (const MenuEntry& entry : menuContent(facts)) {
        switch (entry.kind) {
        case MenuEntry::Kind::Divider:
            lines << u"-"_s;
            break;
        case MenuEntry::Kind::Text:
            lines << u'[' + entry.text + u']';
            break;
        case MenuEntry::Kind::Toggle:
            lines << (entry.checked ? u"(x) "_s : u"( ) "_s) + entry.text;
            break;
        case MenuEntry::Kind::Button:
            lines << entry.text;
            break;
        }
    }
    return lines;
}

} // namespace

class MenuContentTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }

    void everyEntryOfAFinishedSetupIsInOrder()
    {
        const QStringList expected{
            u"[Ferrobank · Mounted]"_s,
            u"[12.4 GB used · 8.1 GB saved]"_s,
            u"-"_s,
            u"Open Ferrobank"_s,
            u"Check for Updates…"_s,
            u"Run Checks…"_s,
            u"-"_s,
            u"( ) Open Menu at Login"_s,
            u"Show Log"_s,
            u"Uninstall Ferrobank…"_s,
            u"Quit Ferrobank Menu"_s,
        };
        QCOMPARE(look(finished(mounted())), expected);
    }

    void unfinishedSetupOffersSetUpAndTheCommand()
    {
        const QStringList expected{
            u"Set Up Ferrobank…"_s,
            u"Install Command-Line Tool…"_s,
            u"Check for Updates…"_s,
            u"Run Checks…"_s,
            u"-"_s,
            u"(x) Open Menu at Login"_s,
            u"Uninstall Ferrobank…"_s,
            u"Quit Ferrobank Menu"_s,
        };
        QCOMPARE(
            look({.status = {}, .setupComplete = false, .commandInstalled = false, .menuOpensAtLogin = true}),
            expected);
    }

    void beforeTheFirstStatusTheMenuBeginsWithItsButton()
    {
        const QStringList lines = look(finished(std::nullopt));
        QCOMPARE(lines.constFirst(), u"Open Ferrobank"_s);
        QVERIFY(!lines.contains(u"Show Log"_s));
        QCOMPARE(lines.count(u"-"_s), 1);
    }

    void stateWordFollowsTheFirstRuleThatHolds_data()
    {
        QTest::addColumn<bool>("isInstalled");
        QTest::addColumn<bool>("isMounted");
        QTest::addColumn<bool>("hasError");
        QTest::addColumn<QString>("word");
        QTest::newRow("mounted") << true << true << false << u"Mounted"_s;
        QTest::newRow("mounted in spite of an error") << true << true << true << u"Mounted"_s;
        QTest::newRow("error") << true << false << true << u"Needs attention"_s;
        QTest::newRow("error without installation") << false << false << true << u"Needs attention"_s;
        QTest::newRow("installed") << true << false << false << u"Starting…"_s;
        QTest::newRow("nothing") << false << false << false << u"Not set up"_s;
    }

    void stateWordFollowsTheFirstRuleThatHolds()
    {
        QFETCH(bool, isInstalled);
        QFETCH(bool, isMounted);
        QFETCH(bool, hasError);
        QFETCH(QString, word);
        DriveStatus status = mounted();
        status.installed = isInstalled;
        status.mounted = isMounted;
        if (hasError) {
            status.attach_error = u"The store is damaged."_s;
        }
        QCOMPARE(look(finished(status)).constFirst(), u"[Ferrobank · "_s + word + u']');
    }

    void unmountedDriveHasNoUsageLine()
    {
        DriveStatus status = mounted();
        status.mounted = false;
        QCOMPARE(look(finished(status)).at(1), u"-"_s);
    }

    void mountedDriveWithUnknownUsageHasNoUsageLine()
    {
        DriveStatus status = mounted();
        status.volume_used.reset();
        QCOMPARE(look(finished(status)).at(1), u"-"_s);
    }

    void absentSavingsReadAsZeroWithDigits()
    {
        DriveStatus status = mounted();
        status.saved.reset();
        QCOMPARE(look(finished(status)).at(1), u"[12.4 GB used · 0 bytes saved]"_s);
    }

    void idsStayTheSameWhileEntriesComeAndGo()
    {
        const auto idOf = [](const MenuFacts& facts, const QString& text) {
            for (const MenuEntry& entry : menuContent(facts)) {
                if (entry.text == text) {
                    return entry.id;
                }
            }
            return 0;
        };
        MenuFacts bare;
        QCOMPARE(idOf(bare, u"Run Checks…"_s), static_cast<int>(MenuItem::RunChecks));
        QCOMPARE(idOf(finished(mounted()), u"Run Checks…"_s), static_cast<int>(MenuItem::RunChecks));
    }

    void idsAreUniqueAndNotTheRoots()
    {
        QList<int> ids;
        for (const MenuEntry& entry : menuContent(finished(mounted()))) {
            QVERIFY(entry.id > 0);
            QVERIFY(!ids.contains(entry.id));
            ids << entry.id;
        }
    }

    void faceCallsForAttentionInWordsAndShape()
    {
        DriveStatus status = mounted();
        status.mounted = false;
        status.attach_error = u"The store is damaged."_s;
        const StatusItemFace face = menuFace(finished(status));
        QVERIFY(face.needsAttention);
        QCOMPARE(face.title, u"Ferrobank · Needs attention"_s);
        QCOMPARE(face.toolTip, u"The store is damaged."_s);
    }

    void faceOfAHealthyDriveShowsItsFigures()
    {
        const StatusItemFace face = menuFace(finished(mounted()));
        QVERIFY(!face.needsAttention);
        QCOMPARE(face.title, u"Ferrobank"_s);
        QCOMPARE(face.toolTip, u"12.4 GB used · 8.1 GB saved"_s);
    }

    void faceWithoutAStatusIsTheNameAlone()
    {
        const StatusItemFace face = menuFace(finished(std::nullopt));
        QCOMPARE(face.title, u"Ferrobank"_s);
        QVERIFY(face.toolTip.isEmpty());
    }

    void actionsOfOtherProgramsNameButtonsOnly()
    {
        QCOMPARE(menuItemFromAction(u"run-checks"_s), MenuItem::RunChecks);
        QCOMPARE(menuItemFromAction(u"quit"_s), MenuItem::Quit);
        QVERIFY(!menuItemFromAction(u"Run-Checks"_s));
        QVERIFY(!menuItemFromAction(QString()));
    }

    void usageAboveTheSignedRangeStopsTheProgram()
    {
        // In a child process, because it ends it.
        const pid_t child = fork();
        if (child == 0) {
            DriveStatus status = mounted();
            status.volume_used = std::numeric_limits<quint64>::max();
            const rlimit noCore{0, 0};
            setrlimit(RLIMIT_CORE, &noCore);
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
            (void)menuContent(finished(status));
            _exit(0);
        }
        int ended = 0;
        QCOMPARE(waitpid(child, &ended, 0), child);
        QVERIFY(WIFSIGNALED(ended));
    }
};

} // namespace ferrobank

FERROBANK_TEST_WITHOUT_APPLICATION(ferrobank::MenuContentTest)
#include "MenuContentTest.moc"
