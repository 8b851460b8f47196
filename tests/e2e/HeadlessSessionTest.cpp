#include "support/BundleCopy.h"
#include "support/TestProgram.h"
#include "support/desktop/PrivateSession.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <unistd.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace ferrobank {

using test::BundleCopy;
using test::CommandResult;
using test::PrivateSession;
using test::TestAccount;

namespace {

QByteArray line(const char* loginItem, const char* agent)
{
    return QByteArray(R"({"login_item":")") + loginItem + R"(","agent":")" + agent + "\"}\n";
}

} // namespace

/// The three commands of the built executable in whole sessions: of this process's user and of another one,
/// with a real service manager and without.
class HeadlessSessionTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void registeringRunsTheServiceUntilItIsUnregistered_data() { sessions(); }

    void registeringRunsTheServiceUntilItIsUnregistered();

    void twentyRegistrationsAtOnceMakeOneService_data() { sessions(); }

    void twentyRegistrationsAtOnceMakeOneService();
    void usersSwitchIsRespectedAndToldWithSuccess();
    void entrySwitchedOffIsRespectedAndToldWithSuccess_data();
    void entrySwitchedOffIsRespectedAndToldWithSuccess();
    void unregisteringRemovesTheLoginItemToo();
    void readOnlyFoldersAreToldAndNothingIsHalfWritten_data();
    void readOnlyFoldersAreToldAndNothingIsHalfWritten();
    void unitOfAnotherProgramIsToldAndKept();
    void failedUnregisteringLeavesTheLoginItem();

private:
    static void sessions();
    void begin(PrivateSession::Manager manager, bool otherUser);
    CommandResult ferrobank(const QString& command) const;
    void write(const QString& pathInHome, const QByteArray& content) const;
    QStringList filesInHome() const;

    // In this order, for the account outlives what belongs to it.
    std::unique_ptr<TestAccount> _account;
    std::unique_ptr<QTemporaryDir> _folder;
    std::unique_ptr<BundleCopy> _bundle;
    std::unique_ptr<PrivateSession> _session;
};

void HeadlessSessionTest::sessions()
{
    QTest::addColumn<bool>("realManager");
    QTest::addColumn<bool>("otherUser");
    QTest::newRow("service manager, this user") << true << false;
    QTest::newRow("service manager, another user") << true << true;
    QTest::newRow("no service manager, this user") << false << false;
    QTest::newRow("no service manager, another user") << false << true;
}

void HeadlessSessionTest::init()
{
    _folder = std::make_unique<QTemporaryDir>(u"/tmp/sessiön bundle-XXXXXX"_s);
    _bundle = std::make_unique<BundleCopy>(_folder->path());
}

void HeadlessSessionTest::cleanup()
{
    if (_session && _session->problem().isEmpty()) {
        ferrobank(u"--unregister"_s);
    }
    _session.reset();
    _bundle.reset();
    _folder.reset();
    _account.reset();
}

void HeadlessSessionTest::begin(PrivateSession::Manager manager, bool otherUser)
{
    if (otherUser) {
        _account = std::make_unique<TestAccount>();
        if (_account->name().isEmpty()) {
            QSKIP("only root can make an account");
        }
        _account->own(_folder->path());
    }
    _session = std::make_unique<PrivateSession>(manager, _account ? _account->name() : QString());
    if (_session->cannotBe()) {
        QSKIP(qPrintable(_session->problem()));
    }
    QVERIFY2(_session->problem().isEmpty(), qPrintable(_session->problem()));
}

CommandResult HeadlessSessionTest::ferrobank(const QString& command) const
{
    return _session->run({_bundle->executable(), command});
}

void HeadlessSessionTest::write(const QString& pathInHome, const QByteArray& content) const
{
    const QString path = _session->home() + u'/' + pathInHome;
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(content);
    file.close();
    if (_account) {
        _account->own(_session->home());
    }
}

QStringList HeadlessSessionTest::filesInHome() const
{
    const CommandResult found =
        _session->run({u"find"_s, _session->home(), u"("_s, u"-type"_s, u"f"_s, u"-o"_s, u"-type"_s, u"l"_s,
                       u")"_s, u"-name"_s, u"*erro*"_s, u"-printf"_s, u"%P\\n"_s});
    QStringList files = QString::fromUtf8(found.output).split(u'\n', Qt::SkipEmptyParts);
    files.sort();
    return files;
}

void HeadlessSessionTest::registeringRunsTheServiceUntilItIsUnregistered()
{
    QFETCH(bool, realManager);
    QFETCH(bool, otherUser);
    begin(realManager ? PrivateSession::Manager::Real : PrivateSession::Manager::None, otherUser);
    if (QTest::currentTestFailed() || !_session || !_session->problem().isEmpty()) {
        return;
    }
    CommandResult result = ferrobank(u"--service-status"_s);
    QCOMPARE(result.output, line("not-registered", "not-registered"));

    result = ferrobank(u"--register"_s);
    QCOMPARE(result.errors, QByteArray());
    QCOMPARE(result.output, line("not-registered", "enabled"));
    QCOMPARE(result.status, 0);
    QTRY_COMPARE(_bundle->processes().size(), 1);
    const QStringList expected =
        realManager
            ? QStringList{u".config/systemd/user/default.target.wants/org.ferrobank.Ferrobank.agent.service"_s,
                          u".local/share/systemd/user/org.ferrobank.Ferrobank.agent.service"_s}
            : QStringList{u".config/autostart/org.ferrobank.Ferrobank.agent.desktop"_s};
    QCOMPARE(filesInHome(), expected);
    const QList<int> processes = _bundle->processes();
    QCOMPARE(QFileInfo(u"/proc/%1"_s.arg(processes.constFirst())).ownerId(),
             QFileInfo(_session->runtimeFolder()).ownerId());

    result = ferrobank(u"--register"_s);
    QCOMPARE(result.output, line("not-registered", "enabled"));
    QCOMPARE(_bundle->processes(), processes);

    result = ferrobank(u"--unregister"_s);
    QCOMPARE(result.errors, QByteArray());
    QCOMPARE(result.output, line("not-registered", "not-registered"));
    QCOMPARE(result.status, 0);
    QCOMPARE(_bundle->processes().size(), 0);
    QCOMPARE(filesInHome(), QStringList{});

    result = ferrobank(u"--unregister"_s);
    QCOMPARE(result.output, line("not-registered", "not-registered"));
    QCOMPARE(result.status, 0);
}

void HeadlessSessionTest::twentyRegistrationsAtOnceMakeOneService()
{
    QFETCH(bool, realManager);
    QFETCH(bool, otherUser);
    begin(realManager ? PrivateSession::Manager::Real : PrivateSession::Manager::None, otherUser);
    if (QTest::currentTestFailed() || !_session || !_session->problem().isEmpty()) {
        return;
    }
    const CommandResult result = _session->run(
        {u"bash"_s, u"-c"_s, u"for i in $(seq 20); do \"$0\" --register || echo failed & done; wait"_s,
         _bundle->executable()});
    QCOMPARE(result.errors, QByteArray());
    QCOMPARE(result.output, line("not-registered", "enabled").repeated(20));
    QTRY_COMPARE(_bundle->processes().size(), 1);
    QCOMPARE(filesInHome().size(), realManager ? 2 : 1);
}

void HeadlessSessionTest::usersSwitchIsRespectedAndToldWithSuccess()
{
    begin(PrivateSession::Manager::Real, false);
    if (QTest::currentTestFailed() || !_session->problem().isEmpty()) {
        return;
    }
    const QString unit = u"org.ferrobank.Ferrobank.agent.service"_s;
    QCOMPARE(_session->run({u"systemctl"_s, u"--user"_s, u"mask"_s, unit}).status, 0);
    CommandResult result = ferrobank(u"--register"_s);
    QCOMPARE(result.output, line("not-registered", "requires-approval"));
    QCOMPARE(result.errors, QByteArray());
    QCOMPARE(result.status, 0);
    QCOMPARE(_session->run({u"systemctl"_s, u"--user"_s, u"is-enabled"_s, unit}).output, "masked\n"_ba);
    QCOMPARE(_bundle->processes().size(), 0);
    QCOMPARE(_session->run({u"systemctl"_s, u"--user"_s, u"unmask"_s, unit}).status, 0);
    QCOMPARE(ferrobank(u"--register"_s).output, line("not-registered", "enabled"));
}

void HeadlessSessionTest::entrySwitchedOffIsRespectedAndToldWithSuccess_data()
{
    QTest::addColumn<QByteArray>("off");
    QTest::newRow("as most desktops do") << QByteArray("Hidden=true\n");
    QTest::newRow("as GNOME does") << QByteArray("X-GNOME-Autostart-enabled=false\n");
}

void HeadlessSessionTest::entrySwitchedOffIsRespectedAndToldWithSuccess()
{
    QFETCH(QByteArray, off);
    begin(PrivateSession::Manager::None, false);
    const QString agent = u".config/autostart/org.ferrobank.Ferrobank.agent.desktop"_s;
    const QString loginItem = u".config/autostart/org.ferrobank.Ferrobank.desktop"_s;
    write(agent, "[Desktop Entry]\nExec=\"" + _bundle->driveTool().toUtf8() + "\" serve\n" + off);
    write(loginItem, "[Desktop Entry]\nExec=\"" + _bundle->executable().toUtf8() + "\"\n" + off);
    QCOMPARE(ferrobank(u"--service-status"_s).output, line("requires-approval", "requires-approval"));
    const CommandResult result = ferrobank(u"--register"_s);
    QCOMPARE(result.output, line("requires-approval", "requires-approval"));
    QCOMPARE(result.status, 0);
    QCOMPARE(_bundle->processes().size(), 0);
    QCOMPARE(ferrobank(u"--unregister"_s).output, line("not-registered", "not-registered"));
    QCOMPARE(filesInHome(), QStringList{});
}

void HeadlessSessionTest::unregisteringRemovesTheLoginItemToo()
{
    begin(PrivateSession::Manager::None, false);
    write(u".config/autostart/org.ferrobank.Ferrobank.desktop"_s,
          "[Desktop Entry]\nExec=\"" + _bundle->executable().toUtf8() + "\"\n");
    QCOMPARE(ferrobank(u"--service-status"_s).output, line("enabled", "not-registered"));
    QCOMPARE(ferrobank(u"--unregister"_s).output, line("not-registered", "not-registered"));
    QCOMPARE(filesInHome(), QStringList{});
}

void HeadlessSessionTest::readOnlyFoldersAreToldAndNothingIsHalfWritten_data()
{
    QTest::addColumn<bool>("realManager");
    QTest::addColumn<QString>("readOnly");
    QTest::newRow("configuration, service manager") << true << u".config"_s;
    QTest::newRow("data, service manager") << true << u".local"_s;
    QTest::newRow("configuration, no service manager") << false << u".config"_s;
}

void HeadlessSessionTest::readOnlyFoldersAreToldAndNothingIsHalfWritten()
{
    QFETCH(bool, realManager);
    QFETCH(QString, readOnly);
    begin(realManager ? PrivateSession::Manager::Real : PrivateSession::Manager::None, geteuid() == 0);
    if (QTest::currentTestFailed() || !_session || !_session->problem().isEmpty()) {
        return;
    }
    const QString folder = _session->home() + u'/' + readOnly;
    QCOMPARE(_session->run({u"mkdir"_s, u"-p"_s, folder}).status, 0);
    QCOMPARE(_session->run({u"chmod"_s, u"0555"_s, folder}).status, 0);
    const CommandResult result = ferrobank(u"--register"_s);
    QCOMPARE(result.status, 1);
    QCOMPARE(result.output, QByteArray());
    QVERIFY2(result.errors.startsWith("Cannot write “" + folder.toUtf8()) &&
                 result.errors.endsWith(": Permission denied.\n") && result.errors.count('\n') == 1,
             result.errors.constData());
    QCOMPARE(filesInHome(), QStringList{});
    QCOMPARE(_bundle->processes().size(), 0);
    QCOMPARE(ferrobank(u"--service-status"_s).output, line("not-registered", "not-registered"));
}

void HeadlessSessionTest::unitOfAnotherProgramIsToldAndKept()
{
    begin(PrivateSession::Manager::Real, false);
    if (QTest::currentTestFailed() || !_session->problem().isEmpty()) {
        return;
    }
    const QString path = u".local/share/systemd/user/org.ferrobank.Ferrobank.agent.service"_s;
    const QByteArray foreign = "[Service]\nExecStart=/bin/true\n";
    write(path, foreign);
    const CommandResult result = ferrobank(u"--register"_s);
    QCOMPARE(result.status, 1);
    QCOMPARE(result.output, QByteArray());
    QCOMPARE(
        QString::fromUtf8(result.errors),
        u"“%1/%2” belongs to another program. Move it away, then try again.\n"_s.arg(_session->home(), path));
    QFile file(_session->home() + u'/' + path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), foreign);
}

void HeadlessSessionTest::failedUnregisteringLeavesTheLoginItem()
{
    begin(PrivateSession::Manager::None, geteuid() == 0);
    if (QTest::currentTestFailed() || !_session || !_session->problem().isEmpty()) {
        return;
    }
    const QString autostart = _session->home() + u"/.config/autostart"_s;
    QCOMPARE(ferrobank(u"--register"_s).status, 0);
    write(u".config/autostart/org.ferrobank.Ferrobank.desktop"_s,
          "[Desktop Entry]\nExec=\"" + _bundle->executable().toUtf8() + "\"\n");
    QCOMPARE(_session->run({u"chmod"_s, u"0555"_s, autostart}).status, 0);
    const CommandResult result = ferrobank(u"--unregister"_s);
    QCOMPARE(result.status, 1);
    QCOMPARE(result.output, QByteArray());
    QVERIFY2(result.errors.startsWith("Cannot remove “"), result.errors.constData());
    QCOMPARE(ferrobank(u"--service-status"_s).output, line("enabled", "enabled"));
    QCOMPARE(_session->run({u"chmod"_s, u"0755"_s, autostart}).status, 0);
}

} // namespace ferrobank

FERROBANK_TEST(ferrobank::HeadlessSessionTest)
#include "HeadlessSessionTest.moc"
