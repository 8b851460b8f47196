#include "Ferrobank/Headless.h"

#include "support/TestProgram.h"
#include "support/fakes/FakeRegistry.h"

#include <QtTest/QTest>

#include <cstdio>
#include <memory>

using namespace Qt::StringLiterals;

namespace ferrobank {

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

using File = std::unique_ptr<std::FILE, CloseFile>;

QByteArray contentOf(std::FILE* file)
{
    std::rewind(file);
    QByteArray content(4096, '\0');
    content.resize(static_cast<qsizetype>(std::fread(content.data(), 1, 4096, file)));
    return content;
}

/// One command over a registry, with what it wrote.
struct Run {
    std::int32_t status = -1;
    QByteArray output;
    QByteArray errors;

    Run(Headless command, FakeRegistry& registry)
    {
        Service service(registry);
        const File outputFile(std::tmpfile());
        const File errorsFile(std::tmpfile());
        status = runHeadless(command, service, outputFile.get(), errorsFile.get());
        output = contentOf(outputFile.get());
        errors = contentOf(errorsFile.get());
    }
};

} // namespace

class HeadlessTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void onlyTheThreeWordsAreCommands_data();
    void onlyTheThreeWordsAreCommands();
    void serviceStatusPrintsTheLineAndChangesNothing();
    void registerPrintsTheStatusAfterwards();
    void registerThatAwaitsApprovalSucceeds();
    void unregisterPrintsTheStatusAfterwards();
    void failurePrintsOnlyTheErrorsSentence();
    void failedUnregisterPrintsNoStatusThoughTheAgentIsGone();
    void lineThatCannotBeWrittenIsAFailure();
};

void HeadlessTest::onlyTheThreeWordsAreCommands_data()
{
    QTest::addColumn<QByteArray>("word");
    QTest::addColumn<int>("command");
    QTest::newRow("register") << QByteArray("--register") << 0;
    QTest::newRow("unregister") << QByteArray("--unregister") << 1;
    QTest::newRow("service status") << QByteArray("--service-status") << 2;
    QTest::newRow("another letter case") << QByteArray("--Register") << -1;
    QTest::newRow("something appended") << QByteArray("--service-status=json") << -1;
    QTest::newRow("a space appended") << QByteArray("--register ") << -1;
    QTest::newRow("shortened") << QByteArray("--service-statu") << -1;
    QTest::newRow("without dashes") << QByteArray("register") << -1;
    QTest::newRow("empty") << QByteArray("") << -1;
    QTest::newRow("process serial number") << QByteArray("-psn_0_12345") << -1;
    QTest::newRow("document") << QByteArray("/home/user/notes.txt") << -1;
}

void HeadlessTest::onlyTheThreeWordsAreCommands()
{
    QFETCH(QByteArray, word);
    QFETCH(int, command);
    const std::optional<Headless> found = headlessCommand(word.toStdString());
    QCOMPARE(found ? static_cast<int>(*found) : -1, command);
}

void HeadlessTest::serviceStatusPrintsTheLineAndChangesNothing()
{
    FakeRegistry registry;
    registry.agent.status = LoginServiceStatus::NotFound;
    const Run run(Headless::ServiceStatus, registry);
    QCOMPARE(run.status, 0);
    QCOMPARE(run.output, "{\"login_item\":\"not-registered\",\"agent\":\"not-found\"}\n"_ba);
    QCOMPARE(run.errors, QByteArray());
    QCOMPARE(registry.calls, QStringList{});
}

void HeadlessTest::registerPrintsTheStatusAfterwards()
{
    FakeRegistry registry;
    const Run run(Headless::Register, registry);
    QCOMPARE(run.status, 0);
    QCOMPARE(run.output, "{\"login_item\":\"not-registered\",\"agent\":\"enabled\"}\n"_ba);
    QCOMPARE(run.errors, QByteArray());
}

void HeadlessTest::registerThatAwaitsApprovalSucceeds()
{
    FakeRegistry registry;
    registry.agent.registerError = "Operation not permitted";
    registry.agent.statusAfterRegister = LoginServiceStatus::RequiresApproval;
    const Run run(Headless::Register, registry);
    QCOMPARE(run.status, 0);
    QCOMPARE(run.output, "{\"login_item\":\"not-registered\",\"agent\":\"requires-approval\"}\n"_ba);
    QCOMPARE(run.errors, QByteArray());
}

void HeadlessTest::unregisterPrintsTheStatusAfterwards()
{
    FakeRegistry registry;
    registry.agent.status = LoginServiceStatus::Enabled;
    registry.mainApp.status = LoginServiceStatus::Enabled;
    const Run run(Headless::Unregister, registry);
    QCOMPARE(run.status, 0);
    QCOMPARE(run.output, "{\"login_item\":\"not-registered\",\"agent\":\"not-registered\"}\n"_ba);
}

void HeadlessTest::failurePrintsOnlyTheErrorsSentence()
{
    FakeRegistry registry;
    registry.agent.registerError = "Cannot write “/tmp/ä”: read-only file system.";
    const Run run(Headless::Register, registry);
    QCOMPARE(run.status, 1);
    QCOMPARE(run.output, QByteArray());
    QCOMPARE(run.errors, QByteArray("Cannot write “/tmp/ä”: read-only file system.\n"));
}

void HeadlessTest::failedUnregisterPrintsNoStatusThoughTheAgentIsGone()
{
    FakeRegistry registry;
    registry.agent.status = LoginServiceStatus::Enabled;
    registry.mainApp.status = LoginServiceStatus::Enabled;
    registry.mainApp.unregisterError = "Cannot remove.";
    const Run run(Headless::Unregister, registry);
    QCOMPARE(run.status, 1);
    QCOMPARE(run.output, QByteArray());
    QCOMPARE(run.errors, "Cannot remove.\n"_ba);
    QVERIFY(registry.agent.status == LoginServiceStatus::NotRegistered);
}

void HeadlessTest::lineThatCannotBeWrittenIsAFailure()
{
    FakeRegistry registry;
    Service service(registry);
    const File full(std::fopen("/dev/full", "w"));
    const File errors(std::tmpfile());
    QCOMPARE(runHeadless(Headless::ServiceStatus, service, full.get(), errors.get()), 1);
    QCOMPARE(contentOf(errors.get()), "Cannot write the status: No space left on device\n"_ba);
}

} // namespace ferrobank

FERROBANK_TEST_WITHOUT_APPLICATION(ferrobank::HeadlessTest)
#include "HeadlessTest.moc"
