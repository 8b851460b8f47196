#include "Platform/linux/login/DesktopEntry.h"

#include "support/AwkwardPaths.h"
#include "support/TestProgram.h"

#include <QtTest/QTest>

#include <string>

namespace ferrobank {

class DesktopEntryTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void wholeEntryReadsAsWritten();
    void awkwardLettersAreQuoted_data();
    void awkwardLettersAreQuoted();
    void awkwardProgramsAreReadBack();
    void programIsWhatIsStarted_data();
    void programIsWhatIsStarted();
    void switches_data();
    void switches();
    void otherGroupsAreLeftAlone();
    void lastValueOfAKeyCounts();
    void lineEndsOfOtherSystemsAreRead();
};

void DesktopEntryTest::wholeEntryReadsAsWritten()
{
    const std::string text = desktopEntryText({"Ferrobank", "Shows the Ferrobank menu"},
                                              {"/opt/Ferro bank.app/Contents/Linux/Ferrobank", {}});
    const char* const expected = R"([Desktop Entry]
Type=Application
Version=1.0
Name=Ferrobank
Comment=Shows the Ferrobank menu
Icon=org.ferrobank.Ferrobank
Exec="/opt/Ferro bank.app/Contents/Linux/Ferrobank"
TryExec=/opt/Ferro bank.app/Contents/Linux/Ferrobank
Terminal=false
X-GNOME-Autostart-enabled=true
)";
    QCOMPARE(QByteArray::fromStdString(text), QByteArray(expected));
    QVERIFY(!parseDesktopEntry(text).switchedOff);
}

void DesktopEntryTest::awkwardLettersAreQuoted_data()
{
    QTest::addColumn<QByteArray>("program");
    QTest::addColumn<QByteArray>("lines");
    QTest::newRow("percent") << QByteArray("/a%f")
                             << QByteArray("Exec=/usr/bin/nice -n 0 \"/a%%f\"\nTryExec=/a%f\n");
    QTest::newRow("dollar") << QByteArray("/a$b") << QByteArray("Exec=\"/a\\\\$b\"\nTryExec=/a$b\n");
    QTest::newRow("quote") << QByteArray("/a\"b")
                           << QByteArray("Exec=/usr/bin/nice -n 0 \"/a\\\\\"b\"\nTryExec=/a\"b\n");
    QTest::newRow("tick") << QByteArray("/a`b") << QByteArray("Exec=\"/a\\\\`b\"\nTryExec=/a`b\n");
    QTest::newRow("backslash") << QByteArray("/a\\b")
                               << QByteArray("Exec=/usr/bin/nice -n 0 \"/a\\\\\\\\b\"\nTryExec=/a\\\\b\n");
    QTest::newRow("line break") << QByteArray("/a\nb")
                                << QByteArray("Exec=/usr/bin/nice -n 0 \"/a\\nb\"\nTryExec=/a\\nb\n");
    QTest::newRow("space at the end") << QByteArray("/a ") << QByteArray("Exec=\"/a \"\nTryExec=/a\\s\n");
    QTest::newRow("letters beyond ASCII") << QByteArray("/ä") << QByteArray("Exec=\"/ä\"\nTryExec=/ä\n");
}

void DesktopEntryTest::awkwardLettersAreQuoted()
{
    QFETCH(QByteArray, program);
    QFETCH(QByteArray, lines);
    const QByteArray text =
        QByteArray::fromStdString(desktopEntryText({"Ferrobank", "Menu"}, {program.toStdString(), {}}));
    QVERIFY2(text.contains(lines), text.constData());
}

void DesktopEntryTest::awkwardProgramsAreReadBack()
{
    test::AwkwardNames names(2);
    for (int round = 0; round < 5000; ++round) {
        const auto index = static_cast<std::size_t>(round);
        const std::string name =
            index < test::kAwkwardNames.size() ? test::kAwkwardNames[index] : names.next();
        const std::filesystem::path program = "/" + name + "/Ferrobank";
        const std::string text = desktopEntryText({"Ferrobank", "Menu"}, {program, {name}});
        QVERIFY2(parseDesktopEntry(text).program == program, text.c_str());
    }
}

void DesktopEntryTest::programIsWhatIsStarted_data()
{
    QTest::addColumn<QByteArray>("exec");
    QTest::addColumn<QByteArray>("program");
    QTest::newRow("bare") << QByteArray("/usr/bin/x --flag %U") << QByteArray("/usr/bin/x");
    QTest::newRow("quoted") << QByteArray(R"("/a b/x" y)") << QByteArray("/a b/x");
    QTest::newRow("quoted in part") << QByteArray(R"(/a" "b)") << QByteArray("/a b");
    QTest::newRow("doubled percent") << QByteArray("/a%%b") << QByteArray("/a%b");
    QTest::newRow("unknown escape stays") << QByteArray(R"("/a\qb")") << QByteArray("/aqb");
    QTest::newRow("behind the starter") << QByteArray(R"(/usr/bin/nice -n 0 "/a b" c)") << QByteArray("/a b");
    QTest::newRow("behind the starter with another value")
        << QByteArray(R"(/usr/bin/nice -n 5 "/a b")") << QByteArray("/usr/bin/nice");
    QTest::newRow("the starter alone") << QByteArray("/usr/bin/nice -n 0") << QByteArray("/usr/bin/nice");
    QTest::newRow("an empty word") << QByteArray(R"("" x)") << QByteArray();
    QTest::newRow("empty") << QByteArray("") << QByteArray();
    QTest::newRow("open quote") << QByteArray(R"("/a b)") << QByteArray();
}

void DesktopEntryTest::programIsWhatIsStarted()
{
    QFETCH(QByteArray, exec);
    QFETCH(QByteArray, program);
    const DesktopEntry entry = parseDesktopEntry("[Desktop Entry]\nExec=" + exec.toStdString() + "\n");
    QCOMPARE(QByteArray::fromStdString(entry.program.value_or("").native()), program);
}

void DesktopEntryTest::switches_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<bool>("off");
    QTest::newRow("none") << QByteArray("") << false;
    QTest::newRow("hidden") << QByteArray("Hidden=true") << true;
    QTest::newRow("not hidden") << QByteArray("Hidden=false") << false;
    QTest::newRow("hidden with spaces") << QByteArray("  Hidden =  true ") << true;
    QTest::newRow("hidden in capitals") << QByteArray("Hidden=True") << true;
    QTest::newRow("hidden as a number") << QByteArray("Hidden=1") << true;
    QTest::newRow("gnome off") << QByteArray("X-GNOME-Autostart-enabled=false") << true;
    QTest::newRow("gnome on") << QByteArray("X-GNOME-Autostart-enabled=true") << false;
    QTest::newRow("gnome off as a number") << QByteArray("X-GNOME-Autostart-enabled=0") << true;
    QTest::newRow("in a comment") << QByteArray("#Hidden=true") << false;
    QTest::newRow("another key") << QByteArray("NoDisplay=true") << false;
    QTest::newRow("another letter case of the key") << QByteArray("hidden=true") << false;
    QTest::newRow("a translated key") << QByteArray("Hidden[de]=true") << false;
}

void DesktopEntryTest::switches()
{
    QFETCH(QByteArray, line);
    QFETCH(bool, off);
    const std::string text = "[Desktop Entry]\nExec=/a\n" + line.toStdString() + "\n";
    QCOMPARE(parseDesktopEntry(text).switchedOff, off);
}

void DesktopEntryTest::otherGroupsAreLeftAlone()
{
    const DesktopEntry entry = parseDesktopEntry(
        "Exec=/0\n[Other]\nExec=/1\nHidden=true\n[Desktop Entry]\nExec=/2\n[More]\nExec=/3\n");
    QVERIFY(entry.program == "/2");
    QVERIFY(!entry.switchedOff);
}

void DesktopEntryTest::lastValueOfAKeyCounts()
{
    QVERIFY(!parseDesktopEntry("[Desktop Entry]\nHidden=true\nHidden=false\n").switchedOff);
}

void DesktopEntryTest::lineEndsOfOtherSystemsAreRead()
{
    const DesktopEntry entry = parseDesktopEntry("[Desktop Entry]\r\nExec=/a\r\nHidden=true\r\n");
    QVERIFY(entry.program == "/a");
    QVERIFY(entry.switchedOff);
}

} // namespace ferrobank

FERROBANK_TEST_WITHOUT_APPLICATION(ferrobank::DesktopEntryTest)
#include "DesktopEntryTest.moc"
