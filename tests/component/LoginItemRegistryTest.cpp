#include "Ferrobank/Service.h"
#include "Platform/linux/SmallFile.h"
#include "Platform/linux/desktop/LinuxSystemChanges.h"
#include "Platform/linux/login/BusUserManager.h"
#include "Platform/linux/login/LinuxLoginItemRegistry.h"
#include "support/AwkwardPaths.h"
#include "support/BundleCopy.h"
#include "support/TestProgram.h"
#include "support/desktop/PrivateSession.h"

#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QScopeGuard>
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

/// The registry over a real user service manager, which the test also speaks to as a user would, with
/// systemctl.
class LoginItemRegistryTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();

    void registeringStartsTheDriveToolServing();
    void unregisteringEndsItAndLeavesNothing();
    void serviceThatFailsIsStartedAgain();
    void serviceThatEndsWellIsNotStartedAgain();
    void maskByTheUserAwaitsApproval();
    void maskUntilTheNextStartAwaitsApprovalToo();
    void disablingByTheUserAwaitsApproval();
    void registrationRespectsTheUsersSwitch_data();
    void registrationRespectsTheUsersSwitch();
    void usersClickUndoesTheSwitch_data();
    void usersClickUndoesTheSwitch();
    void unregisteringWhatAwaitsApprovalRemovesIt();
    void movedBundleIsRegisteredAgainFromItsNewPlace();
    void movedBundleIsFollowedAtTheStartOfTheApplication();
    void otherCopyOfTheBundleIsNotDisplacedAtTheStart();
    void unitOfAnotherProgramIsKept();
    void linkOfTheUserOverOurUnitIsLeftToTheUser();
    void awkwardPathsWork_data();
    void awkwardPathsWork();
    void missingDriveToolIsNotFound();
    void missingPropertyListIsNotFound();
    void propertyListThatIsNoneIsNotFound();
    void missingExecutableIsNotFound();
    void everyChangeShowsInTheFilesThatAreWatched();
    void managerIsReachedWithoutABus();
    void managerIsReachedOverTheBusAlone();
    void managerThatComesBackIsFoundAgain();
    void loginItemsPageIsTheApplicationsOwn();

private:
    struct Fixture {
        QTemporaryDir folder{u"/tmp/bündle-XXXXXX"_s};
        BundleCopy bundle{folder.path()};
    };

    static constexpr const char* kUnit = "org.ferrobank.Ferrobank.agent.service";

    LinuxLoginItemRegistry registry() const { return registryOf(_fixture->bundle); }

    static LinuxLoginItemRegistry registryOf(const BundleCopy& bundle)
    {
        return {Bundle(bundle.root().toStdString()), UserFolders::ofProcess(),
                std::make_unique<BusUserManager>()};
    }

    LoginServiceStatus agentStatus() const { return registry().status(LoginService::Agent); }

    QByteArray systemctl(const QStringList& arguments) const
    {
        return _session->run(QStringList{u"systemctl"_s, u"--user"_s} + arguments).output.trimmed();
    }

    QByteArray property(const char* name) const
    {
        return systemctl(
            {u"show"_s, u"--value"_s, u"-p"_s, QLatin1StringView(name), QLatin1StringView(kUnit)});
    }

    QString unitFile() const
    {
        return _session->home() + u"/.local/share/systemd/user/"_s + QLatin1StringView(kUnit);
    }

    std::unique_ptr<PrivateSession> _session;
    std::unique_ptr<Fixture> _fixture;
};

void LoginItemRegistryTest::initTestCase()
{
    _session = std::make_unique<PrivateSession>(PrivateSession::Manager::Real);
    if (_session->cannotBe()) {
        QSKIP(qPrintable(_session->problem()));
    }
    QVERIFY2(_session->problem().isEmpty(), qPrintable(_session->problem()));
    _session->enter();
}

void LoginItemRegistryTest::init()
{
    _fixture = std::make_unique<Fixture>();
}

void LoginItemRegistryTest::cleanup()
{
    registry().unregisterService(LoginService::Agent);
    QFile::remove(unitFile());
    QFile::remove(_session->home() + u"/.config/systemd/user/"_s + QLatin1StringView(kUnit));
    QFile::remove(_session->runtimeFolder() + u"/systemd/user/"_s + QLatin1StringView(kUnit));
    _fixture.reset();
}

void LoginItemRegistryTest::cleanupTestCase()
{
    _session.reset();
}

void LoginItemRegistryTest::registeringStartsTheDriveToolServing()
{
    QVERIFY(agentStatus() == LoginServiceStatus::NotRegistered);
    LinuxLoginItemRegistry registered = registry();
    registered.registerService(LoginService::Agent, UserSwitch::Respect);
    QVERIFY(registered.status(LoginService::Agent) == LoginServiceStatus::Enabled);
    QTRY_COMPARE(property("ActiveState"), "active"_ba);
    QTRY_COMPARE(_fixture->bundle.processes().size(), 1);
    QCOMPARE(systemctl({u"is-enabled"_s, QLatin1StringView(kUnit)}), "enabled"_ba);
    QCOMPARE(property("Restart"), "on-failure"_ba);
    QCOMPARE(property("WantedBy"), "default.target"_ba);
    QVERIFY(registered.status(LoginService::MainApp) == LoginServiceStatus::NotRegistered);
}

void LoginItemRegistryTest::unregisteringEndsItAndLeavesNothing()
{
    registry().registerService(LoginService::Agent, UserSwitch::Respect);
    QTRY_COMPARE(_fixture->bundle.processes().size(), 1);
    registry().unregisterService(LoginService::Agent);
    QCOMPARE(_fixture->bundle.processes().size(), 0);
    QVERIFY(!QFile::exists(unitFile()));
    QCOMPARE(systemctl({u"list-units"_s, u"--all"_s, u"--no-legend"_s, QLatin1StringView(kUnit)}),
             QByteArray());
    QVERIFY(agentStatus() == LoginServiceStatus::NotRegistered);
    registry().unregisterService(LoginService::Agent);
    QVERIFY(agentStatus() == LoginServiceStatus::NotRegistered);
}

void LoginItemRegistryTest::serviceThatFailsIsStartedAgain()
{
    registry().registerService(LoginService::Agent, UserSwitch::Respect);
    QTRY_COMPARE(_fixture->bundle.processes().size(), 1);
    const QList<int> first = _fixture->bundle.processes();
    ::kill(first.constFirst(), SIGKILL);
    const auto startedAgain = [this, &first] {
        const QList<int> now = _fixture->bundle.processes();
        return now.size() == 1 && now != first;
    };
    QTRY_VERIFY_WITH_TIMEOUT(startedAgain(), 15'000);
}

void LoginItemRegistryTest::serviceThatEndsWellIsNotStartedAgain()
{
    QFile scenario(_fixture->bundle.driveTool() + u".scenario"_s);
    QVERIFY(scenario.open(QIODevice::WriteOnly | QIODevice::Truncate));
    scenario.write(R"({"runs": [{"play": [{"exit": 0}]}]})");
    scenario.close();
    registry().registerService(LoginService::Agent, UserSwitch::Respect);
    QTRY_COMPARE(property("SubState"), "dead"_ba);
    QCOMPARE(property("NRestarts"), "0"_ba);
}

void LoginItemRegistryTest::maskByTheUserAwaitsApproval()
{
    systemctl({u"mask"_s, QLatin1StringView(kUnit)});
    QVERIFY(agentStatus() == LoginServiceStatus::RequiresApproval);
    systemctl({u"unmask"_s, QLatin1StringView(kUnit)});
    QVERIFY(agentStatus() == LoginServiceStatus::NotRegistered);
    registry().registerService(LoginService::Agent, UserSwitch::Respect);
    systemctl({u"mask"_s, QLatin1StringView(kUnit)});
    QVERIFY(agentStatus() == LoginServiceStatus::RequiresApproval);
    systemctl({u"unmask"_s, QLatin1StringView(kUnit)});
    QVERIFY(agentStatus() == LoginServiceStatus::Enabled);
}

void LoginItemRegistryTest::maskUntilTheNextStartAwaitsApprovalToo()
{
    registry().registerService(LoginService::Agent, UserSwitch::Respect);
    systemctl({u"mask"_s, u"--runtime"_s, QLatin1StringView(kUnit)});
    QVERIFY(agentStatus() == LoginServiceStatus::RequiresApproval);
    registry().registerService(LoginService::Agent, UserSwitch::Override);
    QVERIFY(agentStatus() == LoginServiceStatus::Enabled);
}

void LoginItemRegistryTest::disablingByTheUserAwaitsApproval()
{
    registry().registerService(LoginService::Agent, UserSwitch::Respect);
    systemctl({u"disable"_s, QLatin1StringView(kUnit)});
    QVERIFY(agentStatus() == LoginServiceStatus::RequiresApproval);
    systemctl({u"enable"_s, QLatin1StringView(kUnit)});
    QVERIFY(agentStatus() == LoginServiceStatus::Enabled);
}

void LoginItemRegistryTest::registrationRespectsTheUsersSwitch_data()
{
    QTest::addColumn<QString>("switchOff");
    QTest::newRow("mask") << u"mask"_s;
    QTest::newRow("disable") << u"disable"_s;
}

void LoginItemRegistryTest::registrationRespectsTheUsersSwitch()
{
    QFETCH(QString, switchOff);
    LinuxLoginItemRegistry registered = registry();
    registered.registerService(LoginService::Agent, UserSwitch::Respect);
    systemctl({switchOff, u"--now"_s, QLatin1StringView(kUnit)});
    Service service(registered);
    service.registerDrive();
    QCOMPARE(QByteArray::fromStdString(service.statusJSON()),
             QByteArray(R"({"login_item":"not-registered","agent":"requires-approval"})"));
    QCOMPARE(_fixture->bundle.processes().size(), 0);
}

void LoginItemRegistryTest::usersClickUndoesTheSwitch_data()
{
    registrationRespectsTheUsersSwitch_data();
}

void LoginItemRegistryTest::usersClickUndoesTheSwitch()
{
    QFETCH(QString, switchOff);
    registry().registerService(LoginService::Agent, UserSwitch::Respect);
    systemctl({switchOff, u"--now"_s, QLatin1StringView(kUnit)});
    registry().registerService(LoginService::Agent, UserSwitch::Override);
    QVERIFY(agentStatus() == LoginServiceStatus::Enabled);
    QTRY_COMPARE(_fixture->bundle.processes().size(), 1);
}

void LoginItemRegistryTest::unregisteringWhatAwaitsApprovalRemovesIt()
{
    LinuxLoginItemRegistry registered = registry();
    registered.registerService(LoginService::Agent, UserSwitch::Respect);
    systemctl({u"disable"_s, QLatin1StringView(kUnit)});
    Service(registered).unregister();
    QVERIFY(registered.status(LoginService::Agent) == LoginServiceStatus::NotRegistered);
    QCOMPARE(_fixture->bundle.processes().size(), 0);
    QVERIFY(!QFile::exists(unitFile()));
}

void LoginItemRegistryTest::movedBundleIsRegisteredAgainFromItsNewPlace()
{
    registry().registerService(LoginService::Agent, UserSwitch::Respect);
    _fixture->bundle.moveTo(_fixture->folder.filePath(u"new place"_s));
    LinuxLoginItemRegistry moved = registry();
    QCOMPARE(statusWord(moved.status(LoginService::Agent)), std::string_view("unknown"));
    Service(moved).registerDrive();
    QVERIFY(moved.status(LoginService::Agent) == LoginServiceStatus::Enabled);
    systemctl({u"restart"_s, QLatin1StringView(kUnit)});
    QTRY_COMPARE(_fixture->bundle.processes().size(), 1);
}

void LoginItemRegistryTest::movedBundleIsFollowedAtTheStartOfTheApplication()
{
    LinuxLoginItemRegistry before = registry();
    before.registerService(LoginService::Agent, UserSwitch::Respect);
    before.registerService(LoginService::MainApp, UserSwitch::Respect);
    _fixture->bundle.moveTo(_fixture->folder.filePath(u"new place"_s));
    LinuxLoginItemRegistry moved = registry();
    moved.followMovedBundle(LoginService::Agent);
    QCOMPARE(statusWord(moved.status(LoginService::MainApp)), std::string_view("unknown"));
    moved.followMovedBundle(LoginService::MainApp);
    QVERIFY(moved.status(LoginService::Agent) == LoginServiceStatus::Enabled);
    QVERIFY(moved.status(LoginService::MainApp) == LoginServiceStatus::Enabled);
    moved.unregisterService(LoginService::MainApp);
}

void LoginItemRegistryTest::otherCopyOfTheBundleIsNotDisplacedAtTheStart()
{
    registry().registerService(LoginService::Agent, UserSwitch::Respect);
    Fixture second;
    LinuxLoginItemRegistry other = registryOf(second.bundle);
    other.followMovedBundle(LoginService::Agent);
    other.followMovedBundle(LoginService::MainApp);
    QCOMPARE(statusWord(other.status(LoginService::Agent)), std::string_view("unknown"));
    QVERIFY(agentStatus() == LoginServiceStatus::Enabled);
}

void LoginItemRegistryTest::unitOfAnotherProgramIsKept()
{
    const std::string foreign = "[Service]\nExecStart=/bin/sleep 60\n[Install]\nWantedBy=default.target\n";
    replaceSmallFile(unitFile().toStdString(), foreign);
    systemctl({u"enable"_s, QLatin1StringView(kUnit)});
    QVERIFY(agentStatus() == LoginServiceStatus::NotRegistered);
    LinuxLoginItemRegistry registered = registry();
    QVERIFY_THROWS_EXCEPTION(RegistryError, Service(registered).registerDrive());
    Service(registered).unregister();
    QVERIFY(readSmallFile(unitFile().toStdString(), 1000) == foreign);
    QCOMPARE(systemctl({u"is-enabled"_s, QLatin1StringView(kUnit)}), "enabled"_ba);
    systemctl({u"disable"_s, QLatin1StringView(kUnit)});
}

void LoginItemRegistryTest::linkOfTheUserOverOurUnitIsLeftToTheUser()
{
    registry().registerService(LoginService::Agent, UserSwitch::Respect);
    const QString link = _session->home() + u"/.config/systemd/user/"_s + QLatin1StringView(kUnit);
    QVERIFY(QFile::link(unitFile(), link));
    const auto before = readSmallFile(unitFile().toStdString(), 10'000);
    try {
        registry().registerService(LoginService::Agent, UserSwitch::Override);
        QFAIL("no error");
    } catch (const RegistryError& error) {
        QVERIFY2(QByteArray(error.what()).startsWith("The drive's service could not be enabled: "),
                 error.what());
    }
    QVERIFY(readSmallFile(unitFile().toStdString(), 10'000) == before);
    QVERIFY(QFile::exists(link));
    QFile::remove(link);
}

void LoginItemRegistryTest::awkwardPathsWork_data()
{
    QTest::addColumn<QString>("name");
    for (const std::string& name : test::kAwkwardNames) {
        const QString text = QString::fromStdString(name);
        // Names that are no text are beyond what a test in Qt can make.
        if (text.toStdString() == name) {
            QTest::addRow("%s", name.c_str()) << text;
        }
    }
}

void LoginItemRegistryTest::awkwardPathsWork()
{
    QFETCH(QString, name);
    _fixture->bundle.moveTo(_fixture->folder.filePath(name));
    registry().registerService(LoginService::Agent, UserSwitch::Respect);
    QTRY_COMPARE(_fixture->bundle.processes().size(), 1);
    QVERIFY(agentStatus() == LoginServiceStatus::Enabled);
    QCOMPARE(property("MainPID"), QByteArray::number(_fixture->bundle.processes().constFirst()));
    registry().unregisterService(LoginService::Agent);
    QCOMPARE(_fixture->bundle.processes().size(), 0);
}

void LoginItemRegistryTest::missingDriveToolIsNotFound()
{
    QVERIFY(QFile::remove(_fixture->bundle.driveTool()));
    QVERIFY(agentStatus() == LoginServiceStatus::NotFound);
    try {
        registry().registerService(LoginService::Agent, UserSwitch::Override);
        QFAIL("no error");
    } catch (const RegistryError& error) {
        QCOMPARE(QString::fromUtf8(error.what()),
                 u"Ferrobank is incomplete: “%1” is missing or cannot be run."_s.arg(
                     _fixture->bundle.driveTool()));
    }
    QVERIFY(QDir().mkpath(_fixture->bundle.driveTool()));
    QVERIFY(agentStatus() == LoginServiceStatus::NotFound);
    QVERIFY(QDir().rmdir(_fixture->bundle.driveTool()));
}

void LoginItemRegistryTest::missingPropertyListIsNotFound()
{
    QVERIFY(QFile::rename(_fixture->bundle.agentPropertyList(), _fixture->folder.filePath(u"list"_s)));
    QVERIFY(agentStatus() == LoginServiceStatus::NotFound);
    QVERIFY_THROWS_EXCEPTION(RegistryError,
                             registry().registerService(LoginService::Agent, UserSwitch::Override));
    QVERIFY(QFile::rename(_fixture->folder.filePath(u"list"_s), _fixture->bundle.agentPropertyList()));
}

void LoginItemRegistryTest::propertyListThatIsNoneIsNotFound()
{
    const std::filesystem::path list = _fixture->bundle.agentPropertyList().toStdString();
    const std::string text = readSmallFile(list, 10000).value_or("");
    replaceSmallFile(list, "Label = org.ferrobank.Ferrobank.agent");
    QVERIFY(agentStatus() == LoginServiceStatus::NotFound);
    replaceSmallFile(list, text);
}

void LoginItemRegistryTest::missingExecutableIsNotFound()
{
    QVERIFY(QFile::remove(_fixture->bundle.executable()));
    QVERIFY(registry().status(LoginService::MainApp) == LoginServiceStatus::NotFound);
}

void LoginItemRegistryTest::everyChangeShowsInTheFilesThatAreWatched()
{
    const auto entries = [] {
        QStringList all;
        for (const std::filesystem::path& place : LinuxSystemChanges::filesOfUser()) {
            const QFileInfo info(QString::fromStdString(place.native()));
            if (info.isSymLink() || info.exists()) {
                all << info.filePath() + info.symLinkTarget();
            }
        }
        return all;
    };
    QStringList before = entries();
    const auto changed = [&before, &entries] { return std::exchange(before, entries()) != before; };
    registry().registerService(LoginService::Agent, UserSwitch::Respect);
    QVERIFY(changed());
    systemctl({u"disable"_s, QLatin1StringView(kUnit)});
    QVERIFY(changed());
    systemctl({u"enable"_s, QLatin1StringView(kUnit)});
    QVERIFY(changed());
    systemctl({u"mask"_s, QLatin1StringView(kUnit)});
    QVERIFY(changed());
    systemctl({u"unmask"_s, QLatin1StringView(kUnit)});
    QVERIFY(changed());
    registry().registerService(LoginService::MainApp, UserSwitch::Respect);
    QVERIFY(changed());
    registry().unregisterService(LoginService::MainApp);
    QVERIFY(changed());
    registry().unregisterService(LoginService::Agent);
    QVERIFY(changed());
}

void LoginItemRegistryTest::managerIsReachedWithoutABus()
{
    const QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    const auto back = qScopeGuard([&address] { qputenv("DBUS_SESSION_BUS_ADDRESS", address); });
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
    registry().registerService(LoginService::Agent, UserSwitch::Respect);
    QVERIFY(agentStatus() == LoginServiceStatus::Enabled);
    QTRY_COMPARE(_fixture->bundle.processes().size(), 1);
}

void LoginItemRegistryTest::managerIsReachedOverTheBusAlone()
{
    const QByteArray folder = qgetenv("XDG_RUNTIME_DIR");
    const auto back = qScopeGuard([&folder] { qputenv("XDG_RUNTIME_DIR", folder); });
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(_fixture->folder.path()));
    registry().registerService(LoginService::Agent, UserSwitch::Respect);
    QVERIFY(agentStatus() == LoginServiceStatus::Enabled);
    QTRY_COMPARE(_fixture->bundle.processes().size(), 1);
}

void LoginItemRegistryTest::managerThatComesBackIsFoundAgain()
{
    LinuxLoginItemRegistry kept = registry();
    const QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    const QByteArray folder = qgetenv("XDG_RUNTIME_DIR");
    kept.registerService(LoginService::Agent, UserSwitch::Respect);
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(_fixture->folder.path()));
    const LoginServiceStatus away = kept.status(LoginService::Agent);
    qputenv("DBUS_SESSION_BUS_ADDRESS", address);
    qputenv("XDG_RUNTIME_DIR", folder);
    QVERIFY(away == LoginServiceStatus::NotRegistered);
    QVERIFY(kept.status(LoginService::Agent) == LoginServiceStatus::Enabled);
}

void LoginItemRegistryTest::loginItemsPageIsTheApplicationsOwn()
{
    LinuxLoginItemRegistry headless = registry();
    headless.openSystemSettingsLoginItems();
    int opened = 0;
    headless.setLoginItemsPage([&opened] { ++opened; });
    headless.openSystemSettingsLoginItems();
    QCOMPARE(opened, 1);
}

} // namespace ferrobank

FERROBANK_TEST(ferrobank::LoginItemRegistryTest)
#include "LoginItemRegistryTest.moc"
