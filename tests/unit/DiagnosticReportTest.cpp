#include "Ferrobank/Diagnostics/DiagnosticReport.h"

#include "Ferrobank/Diagnostics/PrivateWords.h"
#include "support/TestProgram.h"

#include <QtTest/QTest>

using namespace Qt::StringLiterals;
using namespace ferrobank;

/// What a problem report tells, and what it never tells.
class DiagnosticReportTest : public QObject {
    Q_OBJECT

private:
    static DiagnosticFacts facts()
    {
        DriveStatus drive;
        drive.installed = true;
        drive.mounted = true;
        drive.mountpoint = u"/home/anna/Ferrobank"_s;
        DiagnosticFacts facts;
        facts.version = u"1.2.3"_s;
        facts.toolVersion = u"ferrobank 1.2.3"_s;
        facts.toolkit = u"Qt 6.4.2 on xcb"_s;
        facts.system = u"Debian GNU/Linux 12 (bookworm)"_s;
        facts.kernel = u"linux 6.1.0 x86_64"_s;
        facts.language = u"en_US"_s;
        facts.surroundings = {.desktop = u"XFCE"_s,
                              .session = u"x11, X display"_s,
                              .installKind = u"package"_s,
                              .serviceManager = u"systemd 252"_s,
                              .trayHost = u"xfce4-panel"_s,
                              .portals = {u"org.freedesktop.portal.Desktop"_s},
                              .mountLine = u"/dev/loop0 /home/anna/Ferrobank btrfs rw,noatime"_s,
                              .user = u"anna"_s,
                              .host = u"violet.example.org"_s};
        facts.agent = LoginServiceStatus::Enabled;
        facts.menu = LoginServiceStatus::RequiresApproval;
        facts.setupComplete = true;
        facts.drive = drive;
        facts.home = u"/home/anna"_s;
        return facts;
    }

    static QStringList lines(const DiagnosticFacts& facts) { return diagnosticReport(facts).split(u'\n'); }

private Q_SLOTS:

    void eachFactHasItsLine()
    {
        QCOMPARE(lines(facts()), (QStringList{u"Ferrobank: 1.2.3, package"_s,
                                              u"Drive tool: ferrobank 1.2.3"_s,
                                              u"Toolkit: Qt 6.4.2 on xcb"_s,
                                              u"System: Debian GNU/Linux 12 (bookworm)"_s,
                                              u"Kernel: linux 6.1.0 x86_64"_s,
                                              u"Language: en_US"_s,
                                              u"Desktop: XFCE"_s,
                                              u"Session: x11, X display"_s,
                                              u"Service manager: systemd 252"_s,
                                              u"Tray host: xfce4-panel"_s,
                                              u"Portals: org.freedesktop.portal.Desktop"_s,
                                              u"Drive's service: enabled"_s,
                                              u"Menu at login: requires-approval"_s,
                                              u"Setup: complete"_s,
                                              u"Drive: installed, mounted"_s,
                                              u"Mount point: ~/Ferrobank"_s,
                                              u"Mount line: /dev/loop0 ~/Ferrobank btrfs rw,noatime"_s,
                                              u"Checks: not run"_s,
                                              u"Tool failures: none"_s,
                                              QString()}));
    }

    void whatIsUnknownIsToldAsUnknown()
    {
        const QStringList told = lines({});
        QVERIFY(told.contains(u"Ferrobank: unknown, unknown"_s));
        QVERIFY(told.contains(u"Drive tool: unknown"_s));
        QVERIFY(told.contains(u"Tray host: unknown"_s));
        QVERIFY(told.contains(u"Portals: none"_s));
        QVERIFY(told.contains(u"Drive: no status yet"_s));
        QVERIFY(told.contains(u"Setup: not complete"_s));
    }

    void checksAndTheirReasonsAreListed()
    {
        DiagnosticFacts given = facts();
        given.checks = {{u"one"_s, u"Drive is mounted"_s, CheckItem::State::Pass, {}, {}, {}},
                        {u"two"_s, u"Starts at login"_s, CheckItem::State::Fail, u"Off for anna."_s, {}, {}}};
        const QStringList told = lines(given);
        QVERIFY(told.contains(u"Check: Drive is mounted: pass"_s));
        QVERIFY(told.contains(u"Check: Starts at login: fail (Off for USER.)"_s));
    }

    void failuresOfTheToolAreListedInOneLineEach()
    {
        DiagnosticFacts given = facts();
        given.toolFailures = {{.args = {u"uninstall"_s, u"--export"_s, u"/home/anna/My Files"_s},
                               .words = u"cannot write\n  /home/anna/My Files: no space"_s,
                               .at = QDateTime::fromSecsSinceEpoch(1'700'000'000, QTimeZone::utc()),
                               .times = 3}};
        QVERIFY(lines(given).contains(
            u"Tool failure: 2023-11-14 22:13:20Z uninstall --export ~/My Files (3 times): cannot write ~/My Files: no space"_s));
    }

    void aFloodOfWordsIsCut()
    {
        DiagnosticFacts given = facts();
        given.drive->attach_error = QString(10'000, u'x');
        for (const QString& line : lines(given)) {
            QVERIFY(line.size() < 450);
        }
        QVERIFY(diagnosticReport(given).contains(u"xxx…"_s));
    }

    void neitherAccountNorComputerIsNamed()
    {
        DiagnosticFacts given = facts();
        given.drive->attach_error =
            u"anna@violet: mount of /run/media/anna/x from violet.example.org refused"_s;
        given.checks = {
            {u"one"_s, u"anna's check"_s, CheckItem::State::Fail, u"/home/anna is full"_s, {}, {}}};
        given.toolFailures = {{.args = {u"status"_s}, .words = u"violet is down"_s, .at = {}, .times = 1}};
        const QString report = diagnosticReport(given);
        QVERIFY2(!report.contains(u"anna"_s), qPrintable(report));
        QVERIFY2(!report.contains(u"violet"_s), qPrintable(report));
        QVERIFY(report.contains(u"USER@HOST: mount of /run/media/USER/x from HOST refused"_s));
    }

    void onlyWholeNamesAreTakenOut_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char* name, const QString& text, const QString& expected) {
            QTest::newRow(name) << text << expected;
        };
        row("home", u"/home/anna"_s, u"~"_s);
        row("inside home", u"in /home/anna/x."_s, u"in ~/x."_s);
        row("home at the end of words", u"“/home/anna”, full"_s, u"“~”, full"_s);
        row("another account's home", u"/home/annabel/x"_s, u"/home/annabel/x"_s);
        row("home with more behind", u"/home/anna-old/x"_s, u"/home/anna-old/x"_s);
        row("account in a word", u"susanna and annabel"_s, u"susanna and annabel"_s);
        row("account", u"user anna (1000)"_s, u"user USER (1000)"_s);
        row("computer with its domain", u"violet.example.org:22"_s, u"HOST:22"_s);
        row("computer alone", u"on violet"_s, u"on HOST"_s);
        row("computer in a word", u"ultraviolet violets"_s, u"ultraviolet violets"_s);
        row("nothing private", u"all is well"_s, u"all is well"_s);
    }

    void onlyWholeNamesAreTakenOut()
    {
        QFETCH(QString, text);
        const PrivateWords words{
            .home = u"/home/anna/"_s, .user = u"anna"_s, .host = u"violet.example.org"_s};
        QTEST(withoutPrivateWords(text, words), "expected");
    }

    void withoutPrivateWordsNothingChanges()
    {
        QCOMPARE(withoutPrivateWords(u"/home/anna on violet"_s, {}), u"/home/anna on violet"_s);
        QCOMPARE(withoutPrivateWords(u"a/b"_s, {.home = u"/"_s, .user = {}, .host = {}}), u"a/b"_s);
    }

    void namesWithSignsInThemAreTakenLiterally()
    {
        const PrivateWords words{.home = u"/home/a.b"_s, .user = u"a.b"_s, .host = {}};
        QCOMPARE(withoutPrivateWords(u"/home/axb a.b"_s, words), u"/home/axb USER"_s);
    }
};

FERROBANK_TEST_WITHOUT_APPLICATION(DiagnosticReportTest)
#include "DiagnosticReportTest.moc"
