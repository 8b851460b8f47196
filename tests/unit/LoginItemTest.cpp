#include "Platform/linux/login/LoginItem.h"

#include "Platform/linux/SmallFile.h"
#include "support/TestProgram.h"

#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <unistd.h>

#include <filesystem>
#include <string>

namespace ferrobank {

class LoginItemTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void registeredItemIsOn();
    void unregisteringRemovesTheEntryAndMayBeRepeated();
    void entrySwitchedOffAwaitsTheUser_data();
    void entrySwitchedOffAwaitsTheUser();
    void emptyEntryThatIsHiddenIsTheUsersSwitch();
    void usersClickSwitchesOnAgain();
    void maskedUnitIsTheUsersSwitchToo();
    void usersClickUndoesTheMask();
    void maskWithoutAnEntryIsNoRegistration();
    void entryOfAnotherPlaceIsElsewhereUntilRegisteredAgain();
    void entryOfAnotherProgramIsKept_data();
    void entryOfAnotherProgramIsKept();
    void folderThatCannotBeMadeIsTold();

private:
    LoginItem item() const { return {_folders, "/opt/Ferrobank.app/Contents/Linux/Ferrobank"}; }

    void writeEntry(const std::string& text) const { replaceSmallFile(_entry, text); }

    std::unique_ptr<QTemporaryDir> _home;
    UserFolders _folders;
    std::filesystem::path _entry;
};

void LoginItemTest::init()
{
    _home = std::make_unique<QTemporaryDir>();
    const std::filesystem::path home = _home->path().toStdString();
    _folders = {home / "config", home / "data"};
    _entry = _folders.autostart() / "org.ferrobank.Ferrobank.desktop";
}

void LoginItemTest::registeredItemIsOn()
{
    QVERIFY(item().state() == EntryState::Absent);
    item().registerEntry(UserSwitch::Respect);
    QVERIFY(item().state() == EntryState::On);
    QVERIFY(item().registeredProgram() == "/opt/Ferrobank.app/Contents/Linux/Ferrobank");
}

void LoginItemTest::unregisteringRemovesTheEntryAndMayBeRepeated()
{
    item().registerEntry(UserSwitch::Respect);
    item().unregisterEntry();
    QVERIFY(!std::filesystem::exists(_entry));
    item().unregisterEntry();
    QVERIFY(item().state() == EntryState::Absent);
}

void LoginItemTest::entrySwitchedOffAwaitsTheUser_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("as most desktops do") << QByteArray("Hidden=true\n");
    QTest::newRow("as GNOME does") << QByteArray("X-GNOME-Autostart-enabled=false\n");
}

void LoginItemTest::entrySwitchedOffAwaitsTheUser()
{
    QFETCH(QByteArray, line);
    item().registerEntry(UserSwitch::Respect);
    const std::string text = readSmallFile(_entry, 10000).value_or("") + line.toStdString();
    writeEntry(text);
    QVERIFY(item().state() == EntryState::SwitchedOff);
    QVERIFY_THROWS_EXCEPTION(RegistryError, item().registerEntry(UserSwitch::Respect));
    QVERIFY(readSmallFile(_entry, 10000) == text);
    item().unregisterEntry();
    QVERIFY(item().state() == EntryState::Absent);
}

void LoginItemTest::emptyEntryThatIsHiddenIsTheUsersSwitch()
{
    writeEntry("[Desktop Entry]\nHidden=true\n");
    QVERIFY(item().state() == EntryState::SwitchedOff);
}

void LoginItemTest::usersClickSwitchesOnAgain()
{
    writeEntry("[Desktop Entry]\nExec=\"/opt/Ferrobank.app/Contents/Linux/Ferrobank\"\nHidden=true\n");
    item().registerEntry(UserSwitch::Override);
    QVERIFY(item().state() == EntryState::On);
}

void LoginItemTest::maskedUnitIsTheUsersSwitchToo()
{
    item().registerEntry(UserSwitch::Respect);
    std::filesystem::create_directories(_folders.unitSwitches());
    std::filesystem::create_symlink("/dev/null", _folders.unitSwitches() /
                                                     "app-org.ferrobank.Ferrobank@autostart.service");
    QVERIFY(item().state() == EntryState::SwitchedOff);
    QVERIFY_THROWS_EXCEPTION(RegistryError, item().registerEntry(UserSwitch::Respect));
}

void LoginItemTest::usersClickUndoesTheMask()
{
    std::filesystem::create_directories(_folders.unitSwitches());
    const auto mask = _folders.unitSwitches() / "app-org.ferrobank.Ferrobank@autostart.service";
    std::filesystem::create_symlink("/dev/null", mask);
    item().registerEntry(UserSwitch::Override);
    QVERIFY(item().state() == EntryState::On);
    QVERIFY(!std::filesystem::is_symlink(mask));
}

void LoginItemTest::maskWithoutAnEntryIsNoRegistration()
{
    std::filesystem::create_directories(_folders.unitSwitches());
    std::filesystem::create_symlink("/dev/null", _folders.unitSwitches() /
                                                     "app-org.ferrobank.Ferrobank@autostart.service");
    QVERIFY(item().state() == EntryState::Absent);
}

void LoginItemTest::entryOfAnotherPlaceIsElsewhereUntilRegisteredAgain()
{
    LoginItem(_folders, "/old place/Ferrobank.app/Contents/Linux/Ferrobank")
        .registerEntry(UserSwitch::Respect);
    QVERIFY(item().state() == EntryState::Elsewhere);
    QVERIFY(item().registeredProgram() == "/old place/Ferrobank.app/Contents/Linux/Ferrobank");
    item().registerEntry(UserSwitch::Respect);
    QVERIFY(item().state() == EntryState::On);
}

void LoginItemTest::entryOfAnotherProgramIsKept_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("another program") << QByteArray("[Desktop Entry]\nExec=/usr/bin/other\n");
    QTest::newRow("switched off, too") << QByteArray("[Desktop Entry]\nExec=/usr/bin/other\nHidden=true\n");
    QTest::newRow("nothing to start") << QByteArray("[Desktop Entry]\nName=Something\n");
    QTest::newRow("no entry at all") << QByteArray("\x01\x02\x03");
}

void LoginItemTest::entryOfAnotherProgramIsKept()
{
    QFETCH(QByteArray, text);
    writeEntry(text.toStdString());
    QVERIFY(item().state() == EntryState::Foreign);
    try {
        item().registerEntry(UserSwitch::Override);
        QFAIL("no error");
    } catch (const RegistryError& error) {
        QCOMPARE(QByteArray(error.what()), "“" + QByteArray::fromStdString(_entry.native()) +
                                               "” belongs to another program. Move it away, then try again.");
    }
    item().unregisterEntry();
    QVERIFY(readSmallFile(_entry, 100) == text.toStdString());
}

void LoginItemTest::folderThatCannotBeMadeIsTold()
{
    replaceSmallFile(_folders.config, "a file where the folder should be");
    try {
        item().registerEntry(UserSwitch::Respect);
        QFAIL("no error");
    } catch (const RegistryError& error) {
        QCOMPARE(QByteArray(error.what()),
                 "Cannot write “" + QByteArray::fromStdString(_entry.native()) + "”: Not a directory.");
    }
    QVERIFY(std::filesystem::is_regular_file(_folders.config));
}

} // namespace ferrobank

FERROBANK_TEST_WITHOUT_APPLICATION(ferrobank::LoginItemTest)
#include "LoginItemTest.moc"
