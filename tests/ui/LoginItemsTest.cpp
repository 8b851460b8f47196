#include "Ferrobank/Views/LoginItemsPresenter.h"
#include "support/TestProgram.h"
#include "ui/WindowTest.h"

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
