#include "Platform/linux/login/AutostartEntry.h"

#include "support/AwkwardPaths.h"
#include "support/BundleCopy.h"
#include "support/TestProgram.h"
#include "support/desktop/PrivateSession.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <csignal>
#include <filesystem>
#include <memory>

using namespace Qt::StringLiterals;

namespace ferrobank {

using test::BundleCopy;
using test::CommandResult;
using test::PrivateSession;

/// Entries as the desktops start them: by GLib, and by the units that the service manager makes of them.
class AutostartEntryTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();

    void desktopsStartTheProgram_data() { names(); }

    void desktopsStartTheProgram();

    void serviceManagerStartsTheProgram_data() { names(); }

    void serviceManagerStartsTheProgram();
    void hiddenEntryIsNotStartedByTheServiceManager();
    void entryWhoseProgramIsGoneIsNotStarted();

private:
    static void names();
    void writeEntry() const;
    CommandResult launchByDesktop() const;
    QByteArray unitState() const;

    QString entryFile() const
    {
        return _session->home() + u"/.config/autostart/org.ferrobank.Ferrobank.agent.desktop"_s;
    }

    std::unique_ptr<PrivateSession> _session;
    std::unique_ptr<QTemporaryDir> _folder;
    std::unique_ptr<BundleCopy> _bundle;
};

void AutostartEntryTest::names()
{
    QTest::addColumn<QString>("name");
    for (const std::string& name : test::kAwkwardNames) {
        const QString text = QString::fromStdString(name);
        if (text.toStdString() == name) {
            QTest::addRow("%s", name.c_str()) << text;
        }
    }
}

void AutostartEntryTest::initTestCase()
{
    _session = std::make_unique<PrivateSession>(PrivateSession::Manager::Real);
    if (_session->cannotBe()) {
        QSKIP(qPrintable(_session->problem()));
    }
    QVERIFY2(_session->problem().isEmpty(), qPrintable(_session->problem()));
}

void AutostartEntryTest::init()
{
    _folder = std::make_unique<QTemporaryDir>(u"/tmp/entry-XXXXXX"_s);
    _bundle = std::make_unique<BundleCopy>(_folder->path());
}

void AutostartEntryTest::cleanup()
{
    for (const int process : _bundle->processes()) {
        ::kill(process, SIGKILL);
    }
    QFile::remove(entryFile());
}

void AutostartEntryTest::cleanupTestCase()
{
    _session.reset();
}

void AutostartEntryTest::writeEntry() const
{
    AutostartEntry(entryFile().toStdString(), {"Ferrobank Drive", "Test"},
                   {_bundle->driveTool().toStdString(), {"serve"}})
        .write(UserSwitch::Override);
}

CommandResult AutostartEntryTest::launchByDesktop() const
{
    const QString script =
        u"import sys\n"
        "from gi.repository import Gio\n"
        "sys.exit(0 if Gio.DesktopAppInfo.new_from_filename(sys.argv[1]).launch([]) else 1)\n"_s;
    return _session->run({u"/usr/bin/python3"_s, u"-c"_s, script, entryFile()});
}

QByteArray AutostartEntryTest::unitState() const
{
    // What stands in the autostart folder becomes units whenever the manager reads its units.
    static_cast<void>(_session->run({u"systemctl"_s, u"--user"_s, u"daemon-reload"_s}));
    return _session
        ->run({u"systemctl"_s, u"--user"_s, u"show"_s, u"--value"_s, u"-p"_s, u"LoadState"_s,
               u"app-org.ferrobank.Ferrobank.agent@autostart.service"_s})
        .output.trimmed();
}

void AutostartEntryTest::desktopsStartTheProgram()
{
    QFETCH(QString, name);
    _bundle->moveTo(_folder->filePath(name));
    writeEntry();
    const CommandResult result = launchByDesktop();
    QVERIFY2(result.status == 0, result.errors.constData());
    QTRY_COMPARE(_bundle->processes().size(), 1);
}

void AutostartEntryTest::serviceManagerStartsTheProgram()
{
    QFETCH(QString, name);
    if (name.contains(u'$') || name.contains(u'`') || name.contains(u'\\')) {
        QSKIP("systemd 252 misreads the backslash that the format wants before a dollar sign, tick or "
              "backslash");
    }
    _bundle->moveTo(_folder->filePath(name));
    writeEntry();
    QCOMPARE(unitState(), "loaded"_ba);
    const CommandResult result = _session->run(
        {u"systemctl"_s, u"--user"_s, u"start"_s, u"app-org.ferrobank.Ferrobank.agent@autostart.service"_s});
    QVERIFY2(result.status == 0, result.errors.constData());
    QTRY_COMPARE(_bundle->processes().size(), 1);
}

void AutostartEntryTest::hiddenEntryIsNotStartedByTheServiceManager()
{
    writeEntry();
    QFile file(entryFile());
    QVERIFY(file.open(QIODevice::Append));
    file.write("Hidden=true\n");
    file.close();
    QCOMPARE(unitState(), "not-found"_ba);
}

void AutostartEntryTest::entryWhoseProgramIsGoneIsNotStarted()
{
    writeEntry();
    QVERIFY(QFile::remove(_bundle->driveTool()));
    QCOMPARE(unitState(), "not-found"_ba);
}

} // namespace ferrobank

FERROBANK_TEST(ferrobank::AutostartEntryTest)
#include "AutostartEntryTest.moc"
