#include "Platform/linux/login/AgentService.h"

#include "Platform/linux/SmallFile.h"
#include "support/TestProgram.h"
#include "support/fakes/FakeUserManager.h"

#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <filesystem>
#include <memory>
#include <string>

using namespace Qt::StringLiterals;

namespace ferrobank {

/// The agent's decisions over a manager in memory and real files.
class AgentServiceTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void registrationWritesEnablesReloadsAndStarts();
    void unregistrationStopsDisablesRemovesAndForgets();
    void serviceThatIsStillStoppingKeepsItsUnitInTheManagersMemory();
    void wordsOfTheManagerBecomeStates_data();
    void wordsOfTheManagerBecomeStates();
    void maskedUnitIsSwitchedOffAlsoWithoutAFile();
    void switchedOffUnitIsLeftAlone_data();
    void switchedOffUnitIsLeftAlone();
    void usersClickEnablesAgain();
    void usersClickUnmasks();
    void unitOfAnotherPlaceIsRewritten();
    void unitOfAnotherProgramIsKept();
    void unitOfAnotherProgramInAMoreImportantFolderIsKept();
    void failureOfEachStepUndoesANewRegistration_data();
    void failureOfEachStepUndoesANewRegistration();
    void failureLeavesAnOldRegistrationAsItWas();
    void silentManagerIsAnErrorAndLeavesTheStateUnanswered();
    void managerOfAnotherHomeIsNotUsed();
    void withoutAManagerAnEntryStandsIn();
    void entryFromASessionWithoutAManagerGivesWayToTheUnit();
    void hiddenEntryIsTheUsersSwitchBesideAManager();
    void unregisteringWhatIsNotThereSucceeds();

private:
    AgentService agent() { return {_manager, _folders, _description}; }

    std::string unitText() const { return readSmallFile(_unit, 10000).value_or("(none)"); }

    std::unique_ptr<QTemporaryDir> _home;
    FakeUserManager _manager;
    UserFolders _folders;
    AgentDescription _description;
    std::filesystem::path _unit;
    std::filesystem::path _entry;
};

void AgentServiceTest::init()
{
    _home = std::make_unique<QTemporaryDir>();
    const std::filesystem::path home = _home->path().toStdString();
    _folders = {home / "config", home / "data"};
    _description = {{home / "Ferrobank.app/Contents/Helpers/ferrobank", {"serve"}}, KeepAlive::AfterFailure};
    // Exits at once: enough of a program for the way without a manager.
    std::filesystem::create_directories(_description.command.program.parent_path());
    std::filesystem::copy_file("/bin/true", _description.command.program);
    _manager = {};
    _manager.folders = {_folders.unitSwitches(), _folders.userUnits()};
    _unit = _folders.userUnits() / "org.ferrobank.Ferrobank.agent.service";
    _entry = _folders.autostart() / "org.ferrobank.Ferrobank.agent.desktop";
}

void AgentServiceTest::registrationWritesEnablesReloadsAndStarts()
{
    QVERIFY(agent().state() == EntryState::Absent);
    agent().registerAgent(UserSwitch::Respect);
    QCOMPARE(_manager.calls, (QStringList{u"enable"_s, u"reload"_s, u"start"_s}));
    QVERIFY(agent().state() == EntryState::On);
    QVERIFY(agent().registeredProgram() == _description.command.program);
    QVERIFY(!std::filesystem::exists(_entry));
}

void AgentServiceTest::unregistrationStopsDisablesRemovesAndForgets()
{
    agent().registerAgent(UserSwitch::Respect);
    _manager.calls.clear();
    agent().unregisterAgent();
    QCOMPARE(_manager.calls, (QStringList{u"stop"_s, u"disable"_s, u"reload"_s, u"reset failed"_s}));
    QVERIFY(!std::filesystem::exists(_unit));
    QVERIFY(agent().state() == EntryState::Absent);
}

void AgentServiceTest::serviceThatIsStillStoppingKeepsItsUnitInTheManagersMemory()
{
    agent().registerAgent(UserSwitch::Respect);
    _manager.calls.clear();
    _manager.stopResult = UserManager::Stop::StillStopping;
    agent().unregisterAgent();
    QVERIFY(!_manager.calls.contains(u"reload"_s));
    QVERIFY(!std::filesystem::exists(_unit));
}

void AgentServiceTest::wordsOfTheManagerBecomeStates_data()
{
    QTest::addColumn<QByteArray>("word");
    QTest::addColumn<int>("state");
    const auto row = [](const char* word, EntryState state) {
        QTest::newRow(word) << QByteArray(word) << static_cast<int>(state);
    };
    row("enabled", EntryState::On);
    row("enabled-runtime", EntryState::On);
    row("disabled", EntryState::SwitchedOff);
    row("linked", EntryState::SwitchedOff);
    row("static", EntryState::SwitchedOff);
    row("masked", EntryState::SwitchedOff);
    row("masked-runtime", EntryState::SwitchedOff);
    row("bad", EntryState::Elsewhere);
    row("", EntryState::Absent);
}

void AgentServiceTest::wordsOfTheManagerBecomeStates()
{
    QFETCH(QByteArray, word);
    QFETCH(int, state);
    agent().registerAgent(UserSwitch::Respect);
    _manager.otherWord = word.toStdString();
    QCOMPARE(static_cast<int>(agent().state()), state);
}

void AgentServiceTest::maskedUnitIsSwitchedOffAlsoWithoutAFile()
{
    _manager.masked = true;
    QVERIFY(agent().state() == EntryState::SwitchedOff);
}

void AgentServiceTest::switchedOffUnitIsLeftAlone_data()
{
    QTest::addColumn<bool>("masked");
    QTest::newRow("disabled") << false;
    QTest::newRow("masked") << true;
}

void AgentServiceTest::switchedOffUnitIsLeftAlone()
{
    QFETCH(bool, masked);
    agent().registerAgent(UserSwitch::Respect);
    _manager.enabled = masked;
    _manager.masked = masked;
    _manager.calls.clear();
    const std::string before = unitText();
    QVERIFY_THROWS_EXCEPTION(RegistryError, agent().registerAgent(UserSwitch::Respect));
    QCOMPARE(_manager.calls, QStringList{});
    QVERIFY(unitText() == before);
    QVERIFY(agent().state() == EntryState::SwitchedOff);
}

void AgentServiceTest::usersClickEnablesAgain()
{
    agent().registerAgent(UserSwitch::Respect);
    _manager.enabled = false;
    agent().registerAgent(UserSwitch::Override);
    QVERIFY(agent().state() == EntryState::On);
    QVERIFY(!_manager.calls.contains(u"unmask"_s));
}

void AgentServiceTest::usersClickUnmasks()
{
    _manager.masked = true;
    agent().registerAgent(UserSwitch::Override);
    QCOMPARE(_manager.calls, (QStringList{u"unmask"_s, u"enable"_s, u"reload"_s, u"start"_s}));
    QVERIFY(agent().state() == EntryState::On);
}

void AgentServiceTest::unitOfAnotherPlaceIsRewritten()
{
    AgentDescription old = _description;
    old.command.program = "/gone/Ferrobank.app/Contents/Helpers/ferrobank";
    AgentService(_manager, _folders, old).registerAgent(UserSwitch::Respect);
    QVERIFY(agent().state() == EntryState::Elsewhere);
    QVERIFY(agent().registeredProgram() == old.command.program);
    agent().registerAgent(UserSwitch::Respect);
    QVERIFY(agent().state() == EntryState::On);
    QVERIFY(agent().registeredProgram() == _description.command.program);
}

void AgentServiceTest::unitOfAnotherProgramIsKept()
{
    const std::string foreign = "[Service]\nExecStart=/bin/true\n[Install]\nWantedBy=default.target\n";
    replaceSmallFile(_unit, foreign);
    _manager.enabled = true;
    QVERIFY(agent().state() == EntryState::Foreign);
    try {
        agent().registerAgent(UserSwitch::Override);
        QFAIL("no error");
    } catch (const RegistryError& error) {
        QVERIFY(QByteArray(error.what()).contains(QByteArray::fromStdString(_unit.native())));
    }
    agent().unregisterAgent();
    QVERIFY(unitText() == foreign);
    QCOMPARE(_manager.calls, QStringList{});
}

void AgentServiceTest::unitOfAnotherProgramInAMoreImportantFolderIsKept()
{
    const std::filesystem::path foreign = _folders.unitSwitches() / _unit.filename();
    replaceSmallFile(foreign, "[Service]\nExecStart=/bin/true\n");
    QVERIFY_THROWS_EXCEPTION(RegistryError, agent().registerAgent(UserSwitch::Override));
    QVERIFY(!std::filesystem::exists(_unit));
    QCOMPARE(_manager.calls, QStringList{});
}

void AgentServiceTest::failureOfEachStepUndoesANewRegistration_data()
{
    QTest::addColumn<QByteArray>("call");
    QTest::newRow("enable") << QByteArray("enable");
    QTest::newRow("reload") << QByteArray("reload");
    QTest::newRow("start") << QByteArray("start");
}

void AgentServiceTest::failureOfEachStepUndoesANewRegistration()
{
    QFETCH(QByteArray, call);
    _manager.failingCall = call.toStdString();
    try {
        agent().registerAgent(UserSwitch::Respect);
        QFAIL("no error");
    } catch (const RegistryError& error) {
        QCOMPARE(QByteArray(error.what()), call + " failed");
    }
    QVERIFY(!std::filesystem::exists(_unit));
    QVERIFY(!_manager.enabled);
    QVERIFY(agent().state() == EntryState::Absent);
}

void AgentServiceTest::failureLeavesAnOldRegistrationAsItWas()
{
    AgentDescription old = _description;
    old.command.program = "/gone/Ferrobank.app/Contents/Helpers/ferrobank";
    AgentService(_manager, _folders, old).registerAgent(UserSwitch::Respect);
    const std::string before = unitText();
    _manager.failingCall = "start";
    QVERIFY_THROWS_EXCEPTION(RegistryError, agent().registerAgent(UserSwitch::Respect));
    QVERIFY(unitText() == before);
    QVERIFY(_manager.enabled);
}

void AgentServiceTest::silentManagerIsAnErrorAndLeavesTheStateUnanswered()
{
    _manager.reach = ManagerReach::Silent;
    QVERIFY(agent().state() == EntryState::Unanswered);
    QVERIFY(statusOf(agent().state()) == kNoAnswer);
    QVERIFY_THROWS_EXCEPTION(RegistryError, agent().registerAgent(UserSwitch::Override));
    QVERIFY_THROWS_EXCEPTION(RegistryError, agent().unregisterAgent());
    QVERIFY(!std::filesystem::exists(_unit));
    QVERIFY(!std::filesystem::exists(_entry));
}

void AgentServiceTest::managerOfAnotherHomeIsNotUsed()
{
    _manager.folders = {"/somewhere else/systemd/user"};
    agent().registerAgent(UserSwitch::Respect);
    QCOMPARE(_manager.calls, QStringList{});
    QVERIFY(!std::filesystem::exists(_unit));
    QVERIFY(agent().state() == EntryState::On);
    agent().unregisterAgent();
    QVERIFY(agent().state() == EntryState::Absent);
}

void AgentServiceTest::withoutAManagerAnEntryStandsIn()
{
    _manager.reach = ManagerReach::Absent;
    agent().registerAgent(UserSwitch::Respect);
    QVERIFY(agent().state() == EntryState::On);
    QVERIFY(readSmallFile(_entry, 10000)
                .value_or("")
                .find("Ferrobank.app/Contents/Helpers/ferrobank\" \"serve\"\n") != std::string::npos);
    agent().unregisterAgent();
    QVERIFY(!std::filesystem::exists(_entry));
    QVERIFY(agent().state() == EntryState::Absent);
}

void AgentServiceTest::entryFromASessionWithoutAManagerGivesWayToTheUnit()
{
    _manager.reach = ManagerReach::Absent;
    agent().registerAgent(UserSwitch::Respect);
    _manager.reach = ManagerReach::Answers;
    QVERIFY(agent().state() == EntryState::Elsewhere);
    agent().registerAgent(UserSwitch::Respect);
    QVERIFY(agent().state() == EntryState::On);
    QVERIFY(std::filesystem::exists(_unit));
    QVERIFY(!std::filesystem::exists(_entry));
}

void AgentServiceTest::hiddenEntryIsTheUsersSwitchBesideAManager()
{
    replaceSmallFile(_entry, "[Desktop Entry]\nHidden=true\n");
    QVERIFY(agent().state() == EntryState::SwitchedOff);
    QVERIFY_THROWS_EXCEPTION(RegistryError, agent().registerAgent(UserSwitch::Respect));
    QVERIFY(!std::filesystem::exists(_unit));
    agent().registerAgent(UserSwitch::Override);
    QVERIFY(agent().state() == EntryState::On);
    QVERIFY(!std::filesystem::exists(_entry));
}

void AgentServiceTest::unregisteringWhatIsNotThereSucceeds()
{
    agent().unregisterAgent();
    agent().unregisterAgent();
    QCOMPARE(_manager.calls, QStringList{});
}

} // namespace ferrobank

FERROBANK_TEST_WITHOUT_APPLICATION(ferrobank::AgentServiceTest)
#include "AgentServiceTest.moc"
