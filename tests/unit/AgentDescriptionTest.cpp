#include "Platform/linux/login/AgentDescription.h"

#include "support/TestProgram.h"

#include <QtCore/QFile>
#include <QtTest/QTest>

#include <string>

namespace ferrobank {

namespace {

/// A whole property list, of which a test replaces one piece.
struct Document {
    std::string label = "<key>Label</key><string>org.ferrobank.Ferrobank.agent</string>";
    std::string program = "<key>BundleProgram</key><string>Contents/Helpers/ferrobank</string>";
    std::string arguments =
        "<key>ProgramArguments</key><array><string>ferrobank</string><string>serve</string></array>";
    std::string runAtLoad = "<key>RunAtLoad</key><true/>";
    std::string keepAlive = "";

    [[nodiscard]] std::optional<AgentDescription> parsed() const
    {
        return parseAgentDescription("<plist version=\"1.0\"><dict>" + label + program + arguments +
                                         runAtLoad + keepAlive + "</dict></plist>",
                                     "/opt/Ferro bank.app");
    }
};

} // namespace

class AgentDescriptionTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void propertyListOfTheProductStartsTheDriveToolServing();
    void commandLiesInTheBundleAndLosesItsOwnName();
    void keepAliveIsReadInBothForms();
    void argumentsKeepEveryLetter();
    void incompleteOrStrangeDescriptionIsRefused();
    void programOutsideTheBundleIsRefused();
    void missingPropertyListReadsAsNone();
};

void AgentDescriptionTest::propertyListOfTheProductStartsTheDriveToolServing()
{
    QFile file(QStringLiteral(FERROBANK_AGENT_PLIST));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const auto agent = parseAgentDescription(file.readAll().toStdString(), "/opt/Ferrobank.app");
    QVERIFY(agent.has_value());
    QVERIFY(agent->command == (CommandLine{"/opt/Ferrobank.app/Contents/Helpers/ferrobank", {"serve"}}));
    QVERIFY(agent->keepAlive == KeepAlive::AfterFailure);
}

void AgentDescriptionTest::commandLiesInTheBundleAndLosesItsOwnName()
{
    const auto agent = Document().parsed();
    QVERIFY(agent.has_value());
    QVERIFY(agent->command == (CommandLine{"/opt/Ferro bank.app/Contents/Helpers/ferrobank", {"serve"}}));
}

void AgentDescriptionTest::keepAliveIsReadInBothForms()
{
    Document document;
    QVERIFY(document.parsed()->keepAlive == KeepAlive::Never);
    document.keepAlive = "<key>KeepAlive</key><true/>";
    QVERIFY(document.parsed()->keepAlive == KeepAlive::Always);
    document.keepAlive = "<key>KeepAlive</key><false/>";
    QVERIFY(document.parsed()->keepAlive == KeepAlive::Never);
    document.keepAlive = "<key>KeepAlive</key><dict><key>SuccessfulExit</key><false/></dict>";
    QVERIFY(document.parsed()->keepAlive == KeepAlive::AfterFailure);
    document.keepAlive = "<key>KeepAlive</key><dict><key>SuccessfulExit</key><true/></dict>";
    QVERIFY(document.parsed()->keepAlive == KeepAlive::Never);
}

void AgentDescriptionTest::argumentsKeepEveryLetter()
{
    Document document;
    document.arguments = "<key>ProgramArguments</key><array><string>ferrobank</string>"
                         "<string>a b</string><string>%h \"$x\" \\</string><string></string></array>";
    QVERIFY(document.parsed()->command.arguments == (std::vector<std::string>{"a b", "%h \"$x\" \\", ""}));
}

void AgentDescriptionTest::incompleteOrStrangeDescriptionIsRefused()
{
    QVERIFY(!Document{.label = ""}.parsed());
    QVERIFY(!Document{.label = "<key>Label</key><string>org.example.other</string>"}.parsed());
    QVERIFY(!Document{.program = ""}.parsed());
    QVERIFY(!Document{.arguments = ""}.parsed());
    QVERIFY(!Document{.arguments = "<key>ProgramArguments</key><array/>"}.parsed());
    QVERIFY(!Document{.arguments = "<key>ProgramArguments</key><string>serve</string>"}.parsed());
    QVERIFY(!Document{.runAtLoad = ""}.parsed());
    QVERIFY(!Document{.runAtLoad = "<key>RunAtLoad</key><false/>"}.parsed());
    QVERIFY(!parseAgentDescription("", "/opt/Ferrobank.app"));
}

void AgentDescriptionTest::programOutsideTheBundleIsRefused()
{
    QVERIFY(!Document{.program = "<key>BundleProgram</key><string>/bin/true</string>"}.parsed());
    QVERIFY(!Document{.program = "<key>BundleProgram</key><string>Contents/../../evil</string>"}.parsed());
    QVERIFY(!Document{.program = "<key>BundleProgram</key><string></string>"}.parsed());
}

void AgentDescriptionTest::missingPropertyListReadsAsNone()
{
    QVERIFY(!readAgentDescription(Bundle("/nonexistent/Ferrobank.app")));
}

} // namespace ferrobank

FERROBANK_TEST_WITHOUT_APPLICATION(ferrobank::AgentDescriptionTest)
#include "AgentDescriptionTest.moc"
