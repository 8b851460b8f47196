#include "Platform/linux/login/DetachedAgent.h"

#include "Platform/LoginItemRegistry.h"
#include "support/BundleCopy.h"
#include "support/ProcessFacts.h"
#include "support/TestProgram.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace ferrobank {

using test::BundleCopy;
using test::ProcessFacts;

class DetachedAgentTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void startedAgentRunsApartFromThisProgram();
    void startingTwiceRunsItOnce();
    void stoppingEndsItAndMayBeRepeated();
    void agentThatTheDesktopStartedIsFoundAndEnded();
    void scriptIsFoundToo();
    void replacedProgramIsStillFound();
    void programWithOtherArgumentsIsLeftAlone();
    void programThatOnlyMentionsTheAgentIsLeftAlone();
    void whatCannotBeStartedIsTold_data();
    void whatCannotBeStartedIsTold();
    void agentThatDoesNotEndIsToldAndNotForced();
    void noDescriptorAndNoChildIsLeftHere();

private:
    DetachedAgent agent() const { return DetachedAgent(command()); }

    CommandLine command() const { return {_bundle->driveTool().toStdString(), {"serve"}}; }

    static QByteArray fact(int process, const char* name);
    void replaceTool(const QByteArray& content) const;

    std::unique_ptr<QTemporaryDir> _folder;
    std::unique_ptr<BundleCopy> _bundle;
};

QByteArray DetachedAgentTest::fact(int process, const char* name)
{
    QFile file(u"/proc/%1/%2"_s.arg(process).arg(QLatin1StringView(name)));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void DetachedAgentTest::replaceTool(const QByteArray& content) const
{
    QVERIFY(QFile::remove(_bundle->driveTool()));
    QFile file(_bundle->driveTool());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

void DetachedAgentTest::init()
{
    _folder = std::make_unique<QTemporaryDir>(u"/tmp/agent ä-XXXXXX"_s);
    _bundle = std::make_unique<BundleCopy>(_folder->path());
}

void DetachedAgentTest::cleanup()
{
    for (const int process : _bundle->processes()) {
        ::kill(process, SIGKILL);
    }
}

void DetachedAgentTest::startedAgentRunsApartFromThisProgram()
{
    agent().start();
    QVERIFY(agent().runs());
    const QList<int> processes = _bundle->processes();
    QCOMPARE(processes.size(), 1);
    const int process = processes.constFirst();
    QVERIFY(getsid(process) != getsid(0));
    QVERIFY(!fact(process, "stat").contains(") S " + QByteArray::number(getpid())));
    for (const char* descriptor : {"fd/0", "fd/1", "fd/2"}) {
        QCOMPARE(QFile::symLinkTarget(u"/proc/%1/%2"_s.arg(process).arg(QLatin1StringView(descriptor))),
                 u"/dev/null"_s);
    }
    // The tool itself opens its scenario and its record for a moment.
    QTRY_COMPARE(
        QDir(u"/proc/%1/fd"_s.arg(process)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size(), 3);
    QCOMPARE(QFile::symLinkTarget(u"/proc/%1/cwd"_s.arg(process)), u"/"_s);
}

void DetachedAgentTest::startingTwiceRunsItOnce()
{
    agent().start();
    agent().start();
    QCOMPARE(_bundle->processes().size(), 1);
}

void DetachedAgentTest::stoppingEndsItAndMayBeRepeated()
{
    agent().start();
    agent().stop(5s);
    QVERIFY(!agent().runs());
    QCOMPARE(_bundle->processes().size(), 0);
    agent().stop(5s);
}

void DetachedAgentTest::agentThatTheDesktopStartedIsFoundAndEnded()
{
    QProcess desktop;
    desktop.start(_bundle->driveTool(), {u"serve"_s});
    QVERIFY(desktop.waitForStarted());
    QVERIFY(agent().runs());
    agent().stop(5s);
    QVERIFY(desktop.waitForFinished());
    QCOMPARE(desktop.exitStatus(), QProcess::CrashExit);
}

void DetachedAgentTest::scriptIsFoundToo()
{
    replaceTool("#!/bin/sh\nwhile :; do sleep 0.05; done\n");
    agent().start();
    QVERIFY(agent().runs());
    agent().stop(5s);
    QVERIFY(!agent().runs());
}

void DetachedAgentTest::replacedProgramIsStillFound()
{
    agent().start();
    QVERIFY(QFile::rename(_bundle->driveTool(), _folder->filePath(u"old"_s)));
    QVERIFY(QFile::copy(_folder->filePath(u"old"_s), _bundle->driveTool()));
    QVERIFY(QFile::remove(_folder->filePath(u"old"_s)));
    QVERIFY(agent().runs());
    agent().stop(5s);
    QVERIFY(!agent().runs());
}

void DetachedAgentTest::programWithOtherArgumentsIsLeftAlone()
{
    QProcess other;
    other.start(_bundle->driveTool(), {u"check"_s, u"--json"_s});
    QVERIFY(other.waitForStarted());
    QVERIFY(!agent().runs());
    agent().stop(5s);
    QCOMPARE(other.state(), QProcess::Running);
    other.kill();
    QVERIFY(other.waitForFinished());
}

void DetachedAgentTest::programThatOnlyMentionsTheAgentIsLeftAlone()
{
    QProcess other;
    other.start(u"/bin/sh"_s, {u"-c"_s, u"while :; do sleep 0.05; done"_s, _bundle->driveTool(), u"serve"_s});
    QVERIFY(other.waitForStarted());
    QVERIFY(!agent().runs());
    agent().stop(5s);
    QCOMPARE(other.state(), QProcess::Running);
    other.kill();
    QVERIFY(other.waitForFinished());
}

void DetachedAgentTest::whatCannotBeStartedIsTold_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("executable");
    QTest::addColumn<QByteArray>("reason");
    QTest::newRow("no program") << QByteArray("\x01\x02") << true << QByteArray("Exec format error");
    QTest::newRow("no interpreter") << QByteArray("#!/nonexistent\n") << true
                                    << QByteArray("No such file or directory");
    QTest::newRow("not executable") << QByteArray("#!/bin/sh\n") << false << QByteArray("Permission denied");
}

void DetachedAgentTest::whatCannotBeStartedIsTold()
{
    QFETCH(QByteArray, content);
    QFETCH(bool, executable);
    QFETCH(QByteArray, reason);
    replaceTool(content);
    if (!executable) {
        QFile::setPermissions(_bundle->driveTool(), QFile::ReadOwner);
    }
    try {
        agent().start();
        QFAIL("no error");
    } catch (const RegistryError& error) {
        QCOMPARE(QByteArray(error.what()), "The drive's service could not be started: " + reason + ".");
    }
}

void DetachedAgentTest::agentThatDoesNotEndIsToldAndNotForced()
{
    replaceTool("#!/bin/sh\ntrap '' TERM\ntouch \"$0.ready\"\nwhile :; do sleep 0.05; done\n");
    agent().start();
    QTRY_VERIFY(QFile::exists(_bundle->driveTool() + u".ready"_s));
    try {
        agent().stop(100ms);
        QFAIL("no error");
    } catch (const RegistryError& error) {
        const QByteArray text = error.what();
        QVERIFY2(text.startsWith("The drive's service (process "), text.constData());
        const int process = text.mid(29, text.indexOf(')') - 29).toInt();
        QCOMPARE(::kill(process, 0), 0);
        ::kill(process, SIGKILL);
    }
    QTRY_VERIFY(!agent().runs());
}

void DetachedAgentTest::noDescriptorAndNoChildIsLeftHere()
{
    const ProcessFacts before;
    const int children = before.children();
    for (int round = 0; round < 5; ++round) {
        agent().start();
        agent().stop(5s);
    }
    const ProcessFacts after;
    QCOMPARE(after.openDescriptors, before.openDescriptors);
    QCOMPARE(after.children(), children);
}

} // namespace ferrobank

FERROBANK_TEST(ferrobank::DetachedAgentTest)
#include "DetachedAgentTest.moc"
