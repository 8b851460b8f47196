#include "Platform/linux/login/UserFolders.h"

#include "support/TestProgram.h"

#include <QtTest/QTest>

#include <pwd.h>
#include <unistd.h>

namespace ferrobank {

class UserFoldersTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void homeFolderIsTheStart();
    void ownFoldersOfTheEnvironmentCount();
    void relativeFoldersAreIgnored();
    void accountTellsTheHomeThatTheEnvironmentDoesNot();
    void placesFollowTheFolders();
};

void UserFoldersTest::init()
{
    qputenv("HOME", "/home/some one");
    qunsetenv("XDG_CONFIG_HOME");
    qunsetenv("XDG_DATA_HOME");
}

void UserFoldersTest::homeFolderIsTheStart()
{
    const auto folders = UserFolders::ofProcess();
    QVERIFY(folders.has_value());
    QVERIFY(folders->config == "/home/some one/.config");
    QVERIFY(folders->data == "/home/some one/.local/share");
}

void UserFoldersTest::ownFoldersOfTheEnvironmentCount()
{
    qputenv("XDG_CONFIG_HOME", "/c");
    qputenv("XDG_DATA_HOME", "/d");
    const auto folders = UserFolders::ofProcess();
    QVERIFY(folders.has_value());
    QVERIFY(folders->config == "/c");
    QVERIFY(folders->data == "/d");
}

void UserFoldersTest::relativeFoldersAreIgnored()
{
    qputenv("XDG_CONFIG_HOME", "c");
    qputenv("XDG_DATA_HOME", "");
    const auto folders = UserFolders::ofProcess();
    QVERIFY(folders.has_value());
    QVERIFY(folders->config == "/home/some one/.config");
    QVERIFY(folders->data == "/home/some one/.local/share");
}

void UserFoldersTest::accountTellsTheHomeThatTheEnvironmentDoesNot()
{
    const passwd* account = getpwuid(geteuid());
    if (account == nullptr) {
        QSKIP("this process belongs to no account");
    }
    qunsetenv("HOME");
    const auto folders = UserFolders::ofProcess();
    QVERIFY(folders.has_value());
    QVERIFY(folders->config == std::filesystem::path(account->pw_dir) / ".config");
}

void UserFoldersTest::placesFollowTheFolders()
{
    const UserFolders folders{"/c", "/d"};
    QVERIFY(folders.autostart() == "/c/autostart");
    QVERIFY(folders.userUnits() == "/d/systemd/user");
    QVERIFY(folders.unitSwitches() == "/c/systemd/user");
}

} // namespace ferrobank

FERROBANK_TEST_WITHOUT_APPLICATION(ferrobank::UserFoldersTest)
#include "UserFoldersTest.moc"
