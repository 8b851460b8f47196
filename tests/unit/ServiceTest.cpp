#include "Ferrobank/Service.h"

#include "support/TestProgram.h"
#include "support/fakes/FakeRegistry.h"

#include <QtTest/QTest>

using namespace Qt::StringLiterals;

namespace ferrobank {

class ServiceTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void registerDriveRegistersTheAgentAndLeavesTheLoginItemAlone();
    void registerDriveRespectsTheUsersSwitch();
    void registerDriveOnlyReadsTheStatusWhenTheAgentIsEnabled();
    void registerDriveIsContentWhenTheFailedRegistrationAwaitsApproval();
    void registerDriveThrowsTheRegistrysErrorWhenNothingIsRegistered();
    void registerDriveAsksTheRegistryAnewAfterAFailure();
    void unregisterRemovesTheAgentThenTheLoginItem();
    void unregisterSkipsWhatIsNotThere();
    void unregisterRemovesWhatAwaitsApprovalAndWhatIsUnknown();
    void unregisterStopsAtTheFirstFailureAndLeavesTheLoginItem();
    void unregisterTwiceSucceeds();
    void statusJsonIsExact_data();
    void statusJsonIsExact();
    void needsApproval_data();
    void needsApproval();
    void needsApprovalAsksTheLoginItemFirst();
    void menuOpensAtLoginRegistersWithTheUsersConsent();
    void menuOpensAtLoginUnregistersWithoutAskingForTheStatus();
    void menuOpensAtLoginThrowsTheRegistrysError();
    void openingTheLoginItemsIsLeftToTheRegistry();

private:
    static void setStatus(FakeRegistry& registry, int mainApp, int agent);
};

void ServiceTest::setStatus(FakeRegistry& registry, int mainApp, int agent)
{
    registry.mainApp.status = static_cast<LoginServiceStatus>(mainApp);
    registry.agent.status = static_cast<LoginServiceStatus>(agent);
}

void ServiceTest::registerDriveRegistersTheAgentAndLeavesTheLoginItemAlone()
{
    FakeRegistry registry;
    Service(registry).registerDrive();
    QCOMPARE(registry.calls, QStringList{u"register agent"_s});
    QCOMPARE(registry.mainApp.statusReads, 0);
}

void ServiceTest::registerDriveRespectsTheUsersSwitch()
{
    FakeRegistry registry;
    Service(registry).registerDrive();
    QVERIFY(registry.agent.lastSwitch == UserSwitch::Respect);
}

void ServiceTest::registerDriveOnlyReadsTheStatusWhenTheAgentIsEnabled()
{
    FakeRegistry registry;
    registry.agent.status = LoginServiceStatus::Enabled;
    Service(registry).registerDrive();
    QCOMPARE(registry.calls, QStringList{});
    QCOMPARE(registry.agent.statusReads, 1);
}

void ServiceTest::registerDriveIsContentWhenTheFailedRegistrationAwaitsApproval()
{
    FakeRegistry registry;
    registry.agent.registerError = "Operation not permitted";
    registry.agent.statusAfterRegister = LoginServiceStatus::RequiresApproval;
    Service service(registry);
    service.registerDrive();
    QCOMPARE(service.statusJSON(),
             std::string(R"({"login_item":"not-registered","agent":"requires-approval"})"));
}

void ServiceTest::registerDriveThrowsTheRegistrysErrorWhenNothingIsRegistered()
{
    FakeRegistry registry;
    registry.agent.registerError = "No space left on device";
    try {
        Service(registry).registerDrive();
        QFAIL("no error");
    } catch (const RegistryError& error) {
        QCOMPARE(error.what(), "No space left on device");
    }
}

void ServiceTest::registerDriveAsksTheRegistryAnewAfterAFailure()
{
    FakeRegistry registry;
    registry.agent.registerError = "Operation not permitted";
    registry.agent.statusAfterRegister = LoginServiceStatus::RequiresApproval;
    Service(registry).registerDrive();
    QCOMPARE(registry.agent.statusReads, 2);
}

void ServiceTest::unregisterRemovesTheAgentThenTheLoginItem()
{
    FakeRegistry registry;
    setStatus(registry, 1, 1);
    Service(registry).unregister();
    QCOMPARE(registry.calls, (QStringList{u"unregister agent"_s, u"unregister login item"_s}));
}

void ServiceTest::unregisterSkipsWhatIsNotThere()
{
    FakeRegistry registry;
    setStatus(registry, 0, 3);
    Service(registry).unregister();
    QCOMPARE(registry.calls, QStringList{});
}

void ServiceTest::unregisterRemovesWhatAwaitsApprovalAndWhatIsUnknown()
{
    FakeRegistry registry;
    setStatus(registry, 2, 17);
    Service(registry).unregister();
    QCOMPARE(registry.calls, (QStringList{u"unregister agent"_s, u"unregister login item"_s}));
}

void ServiceTest::unregisterStopsAtTheFirstFailureAndLeavesTheLoginItem()
{
    FakeRegistry registry;
    setStatus(registry, 1, 1);
    registry.agent.unregisterError = "The service is busy";
    QVERIFY_THROWS_EXCEPTION(RegistryError, Service(registry).unregister());
    QCOMPARE(registry.calls, QStringList{u"unregister agent"_s});
    QVERIFY(registry.mainApp.status == LoginServiceStatus::Enabled);
}

void ServiceTest::unregisterTwiceSucceeds()
{
    FakeRegistry registry;
    setStatus(registry, 1, 1);
    Service service(registry);
    service.unregister();
    service.unregister();
    QCOMPARE(registry.calls.size(), 2);
}

void ServiceTest::statusJsonIsExact_data()
{
    QTest::addColumn<int>("mainApp");
    QTest::addColumn<int>("agent");
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("neither") << 0 << 0
                             << QByteArray(R"({"login_item":"not-registered","agent":"not-registered"})");
    QTest::newRow("example") << 1 << 2
                             << QByteArray(R"({"login_item":"enabled","agent":"requires-approval"})");
    QTest::newRow("not found") << 3 << 1 << QByteArray(R"({"login_item":"not-found","agent":"enabled"})");
    QTest::newRow("above the words") << 4 << 0
                                     << QByteArray(R"({"login_item":"unknown","agent":"not-registered"})");
    QTest::newRow("below the words") << 0 << -1
                                     << QByteArray(R"({"login_item":"not-registered","agent":"unknown"})");
}

void ServiceTest::statusJsonIsExact()
{
    QFETCH(int, mainApp);
    QFETCH(int, agent);
    QFETCH(QByteArray, line);
    FakeRegistry registry;
    setStatus(registry, mainApp, agent);
    QCOMPARE(QByteArray::fromStdString(Service(registry).statusJSON()), line);
    QCOMPARE(registry.calls, QStringList{});
}

void ServiceTest::needsApproval_data()
{
    QTest::addColumn<int>("mainApp");
    QTest::addColumn<int>("agent");
    QTest::addColumn<bool>("needed");
    QTest::newRow("neither") << 1 << 1 << false;
    QTest::newRow("login item") << 2 << 0 << true;
    QTest::newRow("agent") << 0 << 2 << true;
    QTest::newRow("both") << 2 << 2 << true;
    QTest::newRow("unknown and not found") << 9 << 3 << false;
}

void ServiceTest::needsApproval()
{
    QFETCH(int, mainApp);
    QFETCH(int, agent);
    QFETCH(bool, needed);
    FakeRegistry registry;
    setStatus(registry, mainApp, agent);
    QCOMPARE(Service(registry).needsApproval(), needed);
}

void ServiceTest::needsApprovalAsksTheLoginItemFirst()
{
    FakeRegistry registry;
    setStatus(registry, 2, 2);
    QVERIFY(Service(registry).needsApproval());
    QCOMPARE(registry.agent.statusReads, 0);
}

void ServiceTest::menuOpensAtLoginRegistersWithTheUsersConsent()
{
    FakeRegistry registry;
    Service(registry).setMenuOpensAtLogin(true);
    QCOMPARE(registry.calls, QStringList{u"register login item"_s});
    QVERIFY(registry.mainApp.lastSwitch == UserSwitch::Override);
    QCOMPARE(registry.mainApp.statusReads, 0);
}

void ServiceTest::menuOpensAtLoginUnregistersWithoutAskingForTheStatus()
{
    FakeRegistry registry;
    Service(registry).setMenuOpensAtLogin(false);
    QCOMPARE(registry.calls, QStringList{u"unregister login item"_s});
    QCOMPARE(registry.mainApp.statusReads, 0);
}

void ServiceTest::menuOpensAtLoginThrowsTheRegistrysError()
{
    FakeRegistry registry;
    registry.mainApp.registerError = "Cannot write";
    registry.mainApp.unregisterError = "Not registered";
    Service service(registry);
    QVERIFY_THROWS_EXCEPTION(RegistryError, service.setMenuOpensAtLogin(true));
    QVERIFY_THROWS_EXCEPTION(RegistryError, service.setMenuOpensAtLogin(false));
}

void ServiceTest::openingTheLoginItemsIsLeftToTheRegistry()
{
    FakeRegistry registry;
    Service(registry).openSystemSettingsLoginItems();
    QCOMPARE(registry.calls, QStringList{u"open settings"_s});
}

} // namespace ferrobank

FERROBANK_TEST_WITHOUT_APPLICATION(ferrobank::ServiceTest)
#include "ServiceTest.moc"
