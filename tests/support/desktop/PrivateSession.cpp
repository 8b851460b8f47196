#include "support/desktop/PrivateSession.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QProcess>

#include <unistd.h>

namespace ferrobank::test {

using namespace Qt::StringLiterals;

namespace {

constexpr int kLimitInMilliseconds = 30'000;
constexpr int kCannotBe = 77;

} // namespace

CommandResult runCommand(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    const bool finished = process.waitForFinished(kLimitInMilliseconds);
    CommandResult result;
    result.output = process.readAllStandardOutput();
    result.errors = process.readAllStandardError();
    if (finished && process.exitStatus() == QProcess::NormalExit) {
        result.status = process.exitCode();
    }
    return result;
}

PrivateSession::PrivateSession(Manager manager, const QString& user) : _folder(u"/tmp/session-XXXXXX"_s)
{
    QStringList arguments{u"up"_s,
                          _folder.path(),
                          u"--no-x"_s,
                          u"--home"_s,
                          home(),
                          u"--with"_s,
                          QString::number(QCoreApplication::applicationPid())};
    if (manager == Manager::None) {
        arguments << u"--no-systemd"_s;
    }
    if (!user.isEmpty()) {
        arguments << u"--user"_s << user;
    }
    const CommandResult result = runCommand(QStringLiteral(FERROBANK_DESKTOP_SCRIPT), arguments);
    if (result.status != 0) {
        _problem = QString::fromUtf8(result.errors).trimmed();
        _cannotBe = result.status == kCannotBe;
    }
}

PrivateSession::~PrivateSession()
{
    if (_problem.isEmpty()) {
        const CommandResult result =
            runCommand(QStringLiteral(FERROBANK_DESKTOP_SCRIPT), {u"down"_s, _folder.path()});
        if (result.status != 0) {
            qWarning("the private session did not end: %s", result.errors.constData());
        }
    }
}

QString PrivateSession::home() const
{
    return _folder.filePath(u"höme folder"_s);
}

QString PrivateSession::runtimeFolder() const
{
    return _folder.filePath(u"run"_s);
}

CommandResult PrivateSession::run(const QStringList& command) const
{
    return runCommand(QStringLiteral(FERROBANK_DESKTOP_SCRIPT),
                      QStringList{u"exec"_s, _folder.path()} + command);
}

void PrivateSession::enter() const
{
    qputenv("HOME", home().toUtf8());
    qputenv("XDG_RUNTIME_DIR", runtimeFolder().toUtf8());
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + runtimeFolder().toUtf8() + "/bus");
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME"}) {
        qunsetenv(name);
    }
}

TestAccount::TestAccount()
{
    const QString name = u"fbtest%1"_s.arg(QCoreApplication::applicationPid());
    if (geteuid() == 0 && runCommand(u"useradd"_s, {u"--no-create-home"_s, u"--system"_s, name}).status == 0)
    {
        _name = name;
    }
}

TestAccount::~TestAccount()
{
    if (!_name.isEmpty() && runCommand(u"userdel"_s, {_name}).status != 0) {
        qWarning("the account of the test is left: %s", qPrintable(_name));
    }
}

void TestAccount::own(const QString& folder) const
{
    if (runCommand(u"chown"_s, {u"-R"_s, _name + u':', folder}).status != 0) {
        qFatal("cannot give a folder to the account of the test");
    }
}

} // namespace ferrobank::test
