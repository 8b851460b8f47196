#include "Ferrobank/Views/LoginItemsPresenter.h"
#include "support/TestProgram.h"
#include "ui/WindowTest.h"

#include <QtGui/QClipboard>

using namespace Qt::StringLiterals;
using namespace ferrobank;

/// The Login Items window.
class LoginItemsTest : public WindowTest {
    Q_OBJECT

private:
    void openLoginItems()
    {
        start();
        show(stage().loginItems());
    }

    QQuickItem& switchOf(const QString& row) { return item(u"switch"_s, row); }

    static QString state(const QQuickItem& toggle) { return toggle.property("caption").toString(); }

    static bool isOn(const QQuickItem& toggle) { return toggle.property("checked").toBool(); }

private Q_SLOTS:

    void bothServicesAreToldInWords()
    {
        stage().seam.registry.agent.status = LoginServiceStatus::Enabled;
        openLoginItems();
        QCOMPARE(window().title(), u"Login Items"_s);
        QVERIFY(isOn(switchOf(u"agent"_s)));
        QVERIFY(state(switchOf(u"agent"_s)).startsWith(u"On."));
        QVERIFY(!isOn(switchOf(u"menu"_s)));
        QVERIFY(state(switchOf(u"menu"_s)).startsWith(u"Off."));
    }

    void eachSwitchWorksItsOwnService()
    {
        openLoginItems();
        clickOn(switchOf(u"menu"_s));
        QCOMPARE(stage().seam.registry.calls, QStringList{u"register login item"_s});
        QVERIFY(isOn(switchOf(u"menu"_s)));
        QVERIFY(!isOn(switchOf(u"agent"_s)));
        clickOn(switchOf(u"menu"_s));
        QCOMPARE(stage().seam.registry.calls.constLast(), u"unregister login item"_s);
    }

    void theUsersClickUndoesAnEarlierSwitchOff()
    {
        stage().seam.registry.agent.status = LoginServiceStatus::RequiresApproval;
        openLoginItems();
        QVERIFY(state(switchOf(u"agent"_s)).startsWith(u"Switched off."));
        clickOn(switchOf(u"agent"_s));
        QCOMPARE(stage().seam.registry.agent.lastSwitch, std::optional(UserSwitch::Override));
        QVERIFY(isOn(switchOf(u"agent"_s)));
    }

    void aRefusalIsToldUnderItsSwitchAndTheSwitchGoesBack()
    {
        stage().seam.registry.agent.registerError = "The unit file cannot be written.";
        stage().seam.registry.agent.statusAfterRegister = LoginServiceStatus::NotRegistered;
        openLoginItems();
        clickOn(switchOf(u"agent"_s));
        QCOMPARE(textOf(u"failure"_s), u"The unit file cannot be written."_s);
        QVERIFY(!isOn(switchOf(u"agent"_s)));
    }

    void whatIsMissingCannotBeSwitched()
    {
        stage().seam.registry.agent.status = LoginServiceStatus::NotFound;
        openLoginItems();
        QVERIFY(!switchOf(u"agent"_s).isEnabled());
        clickOn(switchOf(u"agent"_s));
        QVERIFY(stage().seam.registry.calls.isEmpty());
    }

    void aChangeElsewhereIsSeenWithTheNextPoll()
    {
        stage().seam.cli.answerStatus(mountedStatus());
        openLoginItems();
        stage().seam.registry.mainApp.status = LoginServiceStatus::Enabled;
        stage().seam.clock.advance(std::chrono::seconds(5));
        QTRY_VERIFY(isOn(switchOf(u"menu"_s)));
    }

    void diagnosticsAreCopiedAndTold()
    {
        stage().toolJournal.note({u"restart"_s}, u"The drive in /home/anna/Ferrobank is in use."_s,
                                 QDateTime::fromSecsSinceEpoch(1'700'000'000));
        openLoginItems();
        QCOMPARE(textOf(u"copyDiagnostics"_s), u"Copy Diagnostics"_s);
        click(u"copyDiagnostics"_s);
        QTRY_COMPARE(textOf(u"copyDiagnostics"_s), u"Copied"_s);
        const QString report = QGuiApplication::clipboard()->text();
        QVERIFY(report.contains(u"restart: The drive in ~/Ferrobank is in use."_s));
        QVERIFY(!report.contains(u"anna"_s));
        QVERIFY(!report.contains(u"violet"_s));
    }

    void closingWhileTheDiagnosticsAreGatheredIsHarmless()
    {
        stage().seam.cli.hold({u"--version"_s});
        openLoginItems();
        QGuiApplication::clipboard()->setText(u"before"_s);
        click(u"copyDiagnostics"_s);
        QVERIFY(!item(u"copyDiagnostics"_s).isEnabled());
        stage().loginItems().close();
        QTRY_COMPARE(stage().host.closings, 1);
        stage().seam.cli.finish({u"--version"_s}, FakeCLI::Answer::text(u"ferrobank 1.0.0"_s));
        QCOMPARE(QGuiApplication::clipboard()->text(), u"before"_s);
    }

    void returnAndEscapeClose_data()
    {
        QTest::addColumn<Qt::Key>("key");
        QTest::newRow("Return") << Qt::Key_Return;
        QTest::newRow("Escape") << Qt::Key_Escape;
    }

    void returnAndEscapeClose()
    {
        QFETCH(Qt::Key, key);
        openLoginItems();
        press(key);
        QTRY_COMPARE(stage().host.closings, 1);
    }
};

FERROBANK_TEST_WITH_WINDOWS(LoginItemsTest)
#include "LoginItemsTest.moc"
