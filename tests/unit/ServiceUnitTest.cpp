#include "Platform/linux/login/ServiceUnit.h"

#include "support/AwkwardPaths.h"
#include "support/TestProgram.h"

#include <QtTest/QTest>

#include <string>

namespace ferrobank {

class ServiceUnitTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void wholeUnitReadsAsWritten();
    void keepAliveBecomesRestart();
    void awkwardLettersAreQuoted_data();
    void awkwardLettersAreQuoted();
    void argumentsAreQuotedOneByOne();
    void awkwardProgramsAreReadBack();
    void everyLineIsOneLine();
    void unitOfOthersHasNoProgramOfOurs_data();
    void unitOfOthersHasNoProgramOfOurs();

private:
    static QByteArray lineOf(const std::string& text, const char* key);
};

QByteArray ServiceUnitTest::lineOf(const std::string& text, const char* key)
{
    const QList<QByteArray> lines = QByteArray::fromStdString(text).split('\n');
    for (const QByteArray& line : lines) {
        if (line.startsWith(QByteArray(key) + '=')) {
            return line;
        }
    }
    return {};
}

void ServiceUnitTest::wholeUnitReadsAsWritten()
{
    const AgentDescription agent{{"/opt/Ferro bank.app/Contents/Helpers/ferrobank", {"serve"}},
                                 KeepAlive::AfterFailure};
    const char* const expected = R"(# Written by Ferrobank when its drive was registered to start at login.
[Unit]
Description=Ferrobank drive
StartLimitIntervalSec=0

[Service]
Type=exec
ExecStart=":/opt/Ferro bank.app/Contents/Helpers/ferrobank" "serve"
Restart=on-failure
RestartSec=2
KillMode=mixed
NotifyAccess=main
FileDescriptorStoreMax=1
TimeoutStopSec=60

[Install]
WantedBy=default.target

[X-Ferrobank]
Program="/opt/Ferro bank.app/Contents/Helpers/ferrobank"
)";
    QCOMPARE(QByteArray::fromStdString(serviceUnitText(agent)), QByteArray(expected));
}

void ServiceUnitTest::keepAliveBecomesRestart()
{
    AgentDescription agent{{"/a/ferrobank", {}}, KeepAlive::Never};
    QCOMPARE(lineOf(serviceUnitText(agent), "Restart"), QByteArray("Restart=no"));
    agent.keepAlive = KeepAlive::AfterFailure;
    QCOMPARE(lineOf(serviceUnitText(agent), "Restart"), QByteArray("Restart=on-failure"));
    agent.keepAlive = KeepAlive::Always;
    QCOMPARE(lineOf(serviceUnitText(agent), "Restart"), QByteArray("Restart=always"));
}

void ServiceUnitTest::awkwardLettersAreQuoted_data()
{
    QTest::addColumn<QByteArray>("program");
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("percent") << QByteArray("/a%h/t") << QByteArray(R"(ExecStart=":/a%%h/t")");
    QTest::newRow("dollar") << QByteArray("/a$b/t") << QByteArray(R"(ExecStart=":/a$b/t")");
    QTest::newRow("letters beyond ASCII") << QByteArray("/Größe/t") << QByteArray("ExecStart=\":/Größe/t\"");
    QTest::newRow("double quote") << QByteArray("/a\"b/t")
                                  << QByteArray(R"(ExecStart=:/usr/bin/nice -n 0 "/a\"b/t")");
    QTest::newRow("single quote") << QByteArray("/a'b/t")
                                  << QByteArray(R"(ExecStart=:/usr/bin/nice -n 0 "/a'b/t")");
    QTest::newRow("backslash") << QByteArray("/a\\b/t")
                               << QByteArray(R"(ExecStart=:/usr/bin/nice -n 0 "/a\\b/t")");
    QTest::newRow("line break") << QByteArray("/a\nb/t")
                                << QByteArray(R"(ExecStart=:/usr/bin/nice -n 0 "/a\x0ab/t")");
    QTest::newRow("no text") << QByteArray("/a\xff/t") << QByteArray(R"(ExecStart=":/a\xff/t")");
}

void ServiceUnitTest::awkwardLettersAreQuoted()
{
    QFETCH(QByteArray, program);
    QFETCH(QByteArray, line);
    const AgentDescription agent{{program.toStdString(), {}}, KeepAlive::Never};
    QCOMPARE(lineOf(serviceUnitText(agent), "ExecStart"), line);
}

void ServiceUnitTest::argumentsAreQuotedOneByOne()
{
    const AgentDescription agent{{"/t", {"a b", "", "%", "\""}}, KeepAlive::Never};
    QCOMPARE(lineOf(serviceUnitText(agent), "ExecStart"),
             QByteArray(R"(ExecStart=":/t" "a b" "" "%%" "\"")"));
}

void ServiceUnitTest::awkwardProgramsAreReadBack()
{
    test::AwkwardNames names(1);
    for (int round = 0; round < 5000; ++round) {
        const auto index = static_cast<std::size_t>(round);
        const std::string name =
            index < test::kAwkwardNames.size() ? test::kAwkwardNames[index] : names.next();
        const std::filesystem::path program = "/" + name + "/ferrobank";
        const AgentDescription agent{{program, {name}}, KeepAlive::Always};
        const std::string text = serviceUnitText(agent);
        QVERIFY2(programOfServiceUnit(text) == program, text.c_str());
    }
}

void ServiceUnitTest::everyLineIsOneLine()
{
    for (const std::string& name : test::kAwkwardNames) {
        const AgentDescription agent{{"/" + name, {name}}, KeepAlive::Always};
        const std::string text = serviceUnitText(agent);
        QCOMPARE(QByteArray::fromStdString(text).count('\n'), 20);
        QVERIFY(text.find("\\\n") == std::string::npos);
    }
}

void ServiceUnitTest::unitOfOthersHasNoProgramOfOurs_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("no section of ours") << QByteArray("[Service]\nExecStart=/bin/true\nProgram=\"/a\"\n");
    QTest::newRow("not quoted") << QByteArray("[X-Ferrobank]\nProgram=/a\n");
    QTest::newRow("one quote") << QByteArray("[X-Ferrobank]\nProgram=\"\n");
    QTest::newRow("unknown escape") << QByteArray("[X-Ferrobank]\nProgram=\"/a\\q\"\n");
    QTest::newRow("short escape") << QByteArray("[X-Ferrobank]\nProgram=\"/a\\x1\"\n");
    QTest::newRow("lonely percent") << QByteArray("[X-Ferrobank]\nProgram=\"/a%h\"\n");
    QTest::newRow("quote within") << QByteArray("[X-Ferrobank]\nProgram=\"/a\"b\"\n");
    QTest::newRow("trailing backslash") << QByteArray("[X-Ferrobank]\nProgram=\"/a\\\"\n");
}

void ServiceUnitTest::unitOfOthersHasNoProgramOfOurs()
{
    QFETCH(QByteArray, text);
    QVERIFY(!programOfServiceUnit(text.toStdString()));
}

} // namespace ferrobank

FERROBANK_TEST_WITHOUT_APPLICATION(ferrobank::ServiceUnitTest)
#include "ServiceUnitTest.moc"
