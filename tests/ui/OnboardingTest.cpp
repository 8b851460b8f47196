#include "support/TestProgram.h"
#include "ui/WindowTest.h"

using namespace Qt::StringLiterals;
using namespace ferrobank;
using State = CheckItem::State;

/// The onboarding, page by page.
class OnboardingTest : public WindowTest {
    Q_OBJECT

private:
    void openOnStep(Screen::Step step) { openOn(Screen::onboarding(step)); }

    /// Setup rows in these states, in their order.
    static QList<CheckItem> rows(const QList<State>& states)
    {
        const QStringList ids{u"login"_s, u"mount"_s, u"finder"_s, u"cli"_s};
        QList<CheckItem> items;
        for (qsizetype index = 0; index < states.size(); ++index) {
            items << CheckItem{ids.at(index), u"Title of "_s + ids.at(index), states.at(index), {}, {}, {}};
        }
        return items;
    }

    void openOnSetupWith(const QList<State>& states)
    {
        start();
        model().setScreen(Screen::onboarding(Screen::Setup));
        model().setupTaskRows()->replaceAll(rows(states));
        openWindow();
    }

    QStringList buttons()
    {
        QStringList found;
        for (const QString& name :
             {u"openLoginItems"_s, u"openPrivacySettings"_s, u"tryAgain"_s, u"continue"_s})
        {
            if (shows(name)) {
                found << textOf(name);
            }
        }
        return found;
    }

private Q_SLOTS:

    void theWelcomePageSaysWhatFerrobankIs()
    {
        openOnStep(Screen::Welcome);
        const QStringList said = texts();
        QVERIFY(said.contains(u"Welcome to Ferrobank"_s));
        QVERIFY(said.contains(
            u"Ferrobank is a drive at ~/Ferrobank that stores repeated data once, so clones, worktrees and build output take a fraction of the space. Finder, Terminal and your tools all use the same path."_s));
        QVERIFY(said.contains(u"Setup takes about a minute."_s));
    }

    void returnContinuesFromTheWelcomePage()
    {
        openOnStep(Screen::Welcome);
        press(Qt::Key_Return);
        QCOMPARE(model().screen(), Screen::onboarding(Screen::Consent));
    }

    void theEnterKeyContinuesToo()
    {
        openOnStep(Screen::Welcome);
        press(Qt::Key_Enter);
        QCOMPARE(model().screen(), Screen::onboarding(Screen::Consent));
    }

    void theConsentPageTellsEverythingThatWillHappen()
    {
        openOnStep(Screen::Consent);
        QCOMPARE(textOf(u"pageTitle"_s), u"Before setup"_s);
        QCOMPARE(textOf(u"pageSubtitle"_s), u"Setup changes a few things on this Mac. You choose which."_s);
        const QStringList said = texts();
        for (
            const QString& text :
            {u"The drive's background service starts when you log in, so ~/Ferrobank is there when you need it. The drive needs this."_s,
             u"Open the Ferrobank menu at login"_s, u"Install the ferrobank command"_s,
             u"Adds ferrobank to /usr/local/bin so Terminal can run it. macOS may ask for your password once."_s,
             u"macOS will show a few things along the way:"_s,
             u"A “Login Item Added” notification. That is Ferrobank registering so your drive mounts when you log in. Nothing to do."_s,
             u"A prompt asking whether Ferrobank may access files on a network volume. Your drive is served from this Mac over a private connection that never leaves it. Click Allow."_s,
             u"A password prompt, if this Mac needs it to add the command. Cancel it to skip; you can install the command later from the Ferrobank menu."_s,
             u"Allow and Set Up"_s})
        {
            QVERIFY2(said.contains(text), qPrintable(text));
        }
        QCOMPARE(item(u"noticeLoginItem"_s).property("symbol").toString(), u"bell.badge"_s);
        QCOMPARE(item(u"noticeNetwork"_s).property("symbol").toString(), u"network"_s);
        QCOMPARE(item(u"noticePassword"_s).property("symbol").toString(), u"key"_s);
    }

    void bothChoicesAreOnAtFirst()
    {
        openOnStep(Screen::Consent);
        QVERIFY(item(u"menuAtLogin"_s).property("checked").toBool());
        QVERIFY(item(u"installCLI"_s).property("checked").toBool());
    }

    void theTogglesAreTheModelsChoices()
    {
        openOnStep(Screen::Consent);
        click(u"menuAtLogin"_s);
        QCOMPARE(model().choices(), (SetupChoices{false, true}));
        click(u"installCLI"_s);
        QCOMPARE(model().choices(), (SetupChoices{false, false}));
    }

    void togglingOnTheConsentPageRegistersNothing()
    {
        openOnStep(Screen::Consent);
        for (int round = 0; round < 2; ++round) {
            click(u"menuAtLogin"_s);
            click(u"installCLI"_s);
        }
        QCOMPARE(stage().seam.registry.calls, QStringList());
        QVERIFY(!model().menuOpensAtLogin());
        QVERIFY(!stage().seam.commandLineTool.isInstalled());
        QVERIFY(stage().seam.privilegedLink.requests.isEmpty());
    }

    void windowClosedDuringTheSetupLetsTheRunGoOn()
    {
        stage().seam.cli.answerStatus(unmountedStatus());
        openOnStep(Screen::Consent);
        click(u"allow"_s);
        QVERIFY(!model().setupDone());
        stage().mainWindow().close();
        QTRY_VERIFY(stage().mainWindow().window() == nullptr);
        stage().seam.cli.answerStatus(mountedStatus());
        stage().seam.clock.advance(std::chrono::seconds(1));
        QTRY_VERIFY(model().setupDone());
        QCOMPARE(model().screen(), Screen::onboarding(Screen::Setup));
        openWindow();
        QCOMPARE(buttons(), QStringList{u"Continue"_s});
    }

    void withoutTheCommandTheNoticeHasTwoItemsAndTheSetupThreeRows()
    {
        openOnStep(Screen::Consent);
        click(u"installCLI"_s);
        QVERIFY(shows(u"noticeLoginItem"_s));
        QVERIFY(shows(u"noticeNetwork"_s));
        QVERIFY(!shows(u"noticePassword"_s));
        click(u"allow"_s);
        QCOMPARE(model().setupTasks().size(), 3);
    }

    void allowAndSetUpStartsTheSetup()
    {
        openOnStep(Screen::Consent);
        press(Qt::Key_Return);
        QCOMPARE(model().screen(), Screen::onboarding(Screen::Setup));
        QCOMPARE(model().setupTasks().size(), 4);
        QVERIFY(stage().seam.registry.calls.contains(u"register agent"_s));
        QCOMPARE(textOf(u"pageTitle"_s), u"Set up your drive"_s);
        QVERIFY(!shows(u"pageSubtitle"_s));
    }

    void aSetupAtWorkHasNoButtons()
    {
        openOnSetupWith({State::Pass, State::Running, State::Pending, State::Pending});
        QCOMPARE(buttons(), QStringList());
    }

    void aFinishedSetupContinues()
    {
        openOnSetupWith({State::Pass, State::Pass, State::Pass, State::Skipped});
        QCOMPARE(buttons(), QStringList{u"Continue"_s});
        press(Qt::Key_Return);
        QCOMPARE(model().screen(), Screen::onboarding(Screen::Verify));
        QCOMPARE(stage().seam.cli.callsOf(FakeCLI::kCheck), 1);
    }

    void aFailedCommandInstallContinuesAllTheSame()
    {
        openOnSetupWith({State::Pass, State::Pass, State::Pass, State::Fail});
        QCOMPARE(buttons(), QStringList{u"Continue"_s});
    }

    void aFailedMountOffersThePrivacySettingsAndAnotherTry()
    {
        openOnSetupWith({State::Pass, State::Fail, State::Pending, State::Pending});
        QCOMPARE(buttons(), (QStringList{u"Open Privacy Settings"_s, u"Try Again"_s}));
        click(u"openPrivacySettings"_s);
        QCOMPARE(stage().seam.settingsPages.opened, QList{SettingsPage::FilesAndFolders});
    }

    void loginItemsAreOfferedOnlyWhileApprovalIsMissing()
    {
        stage().seam.registry.agent.status = LoginServiceStatus::RequiresApproval;
        openOnSetupWith({State::Fail, State::Pending, State::Pending, State::Pending});
        QCOMPARE(buttons(), (QStringList{u"Open Login Items"_s, u"Try Again"_s}));
        click(u"openLoginItems"_s);
        QVERIFY(stage().seam.registry.calls.contains(u"open settings"_s));
        stage().seam.registry.agent.status = LoginServiceStatus::Enabled;
        stage().seam.cli.answerStatus(unmountedStatus());
        stage().seam.clock.advance(std::chrono::seconds(5));
        QTRY_COMPARE(buttons(), QStringList{u"Try Again"_s});
    }

    void bothRemediesStandInOrder()
    {
        stage().seam.registry.mainApp.status = LoginServiceStatus::RequiresApproval;
        openOnSetupWith({State::Pass, State::Fail, State::Pending, State::Pending});
        QCOMPARE(buttons(), (QStringList{u"Open Login Items"_s, u"Open Privacy Settings"_s, u"Try Again"_s}));
        QVERIFY(item(u"openLoginItems"_s).x() < item(u"openPrivacySettings"_s).x());
        QVERIFY(item(u"openPrivacySettings"_s).x() < item(u"tryAgain"_s).x());
    }

    void returnTriesAgain()
    {
        stage().seam.registry.agent.registerError = "no";
        openOnSetupWith({State::Fail, State::Pending, State::Pending, State::Pending});
        const auto before = stage().seam.registry.calls.count(u"register agent"_s);
        press(Qt::Key_Return);
        QCOMPARE(stage().seam.registry.calls.count(u"register agent"_s), before + 1);
    }

    void setupRowsHaveNoFixButtons()
    {
        start();
        model().setScreen(Screen::onboarding(Screen::Setup));
        QList<CheckItem> items = rows({State::Fail});
        items[0].action = FixAction::Restart;
        items[0].fix = u"Advice"_s;
        model().setupTaskRows()->replaceAll(items);
        openWindow();
        QVERIFY(!shows(u"rowFix"_s));
        QCOMPARE(textOf(u"rowAdvice"_s), u"Advice"_s);
    }

    void theSetupContinuesByItselfOnceApproved()
    {
        stage().seam.registry.agent.statusAfterRegister = LoginServiceStatus::RequiresApproval;
        stage().seam.registry.agent.registerError = "waiting for approval";
        openOnStep(Screen::Consent);
        press(Qt::Key_Return);
        QTRY_COMPARE(buttons(), (QStringList{u"Open Login Items"_s, u"Try Again"_s}));
        stage().seam.registry.agent.status = LoginServiceStatus::Enabled;
        stage().seam.cli.answerStatus(mountedStatus());
        stage().seam.clock.advance(std::chrono::seconds(1));
        stage().seam.clock.advance(std::chrono::seconds(1));
        QTRY_COMPARE(buttons(), QStringList{u"Continue"_s});
    }

    void theVerifyPageRunsAgainWhileSomethingFails()
    {
        stage().seam.cli.answerStatus(mountedStatus());
        start();
        model().setScreen(Screen::onboarding(Screen::Verify));
        model().checkRows()->replaceAll(rows({State::Pass, State::Fail}));
        openWindow();
        QCOMPARE(textOf(u"pageTitle"_s), u"Checking your drive"_s);
        QCOMPARE(textOf(u"pageSubtitle"_s),
                 u"Ferrobank checks the parts of your setup that keep the drive working."_s);
        QVERIFY(shows(u"runAgain"_s));
        QVERIFY(!shows(u"continue"_s));
        press(Qt::Key_Return);
        QCOMPARE(stage().seam.cli.callsOf(FakeCLI::kCheck), 1);
        QVERIFY(!stage().seam.defaults.values.contains(u"setupComplete"_s));
    }

    void runAgainStaysDuringARun()
    {
        stage().seam.cli.holdLines();
        start();
        model().setScreen(Screen::onboarding(Screen::Verify));
        openWindow();
        click(u"runAgain"_s);
        QVERIFY(model().checksRunning());
        QVERIFY(shows(u"runAgain"_s));
    }

    void aFixButtonOnTheVerifyPageCarriesOutItsRemedy()
    {
        start();
        model().setScreen(Screen::onboarding(Screen::Verify));
        QList<CheckItem> items = rows({State::Fail});
        items[0].action = FixAction::StorageSettings;
        model().checkRows()->replaceAll(items);
        openWindow();
        click(u"rowFix"_s);
        QCOMPARE(stage().seam.settingsPages.opened, QList{SettingsPage::Storage});
    }

    void setupIsRecordedOnlyByContinueAfterAllChecksPassed()
    {
        start();
        model().setScreen(Screen::onboarding(Screen::Verify));
        model().checkRows()->replaceAll(rows({State::Pass, State::Pass}));
        openWindow();
        QVERIFY(!shows(u"runAgain"_s));
        QVERIFY(!stage().seam.defaults.values.value(u"setupComplete"_s));
        press(Qt::Key_Return);
        QVERIFY(stage().seam.defaults.values.value(u"setupComplete"_s));
        QCOMPARE(model().screen(), Screen::onboarding(Screen::Done));
    }

    void theLastPageOpensTheDashboard()
    {
        openOnStep(Screen::Done);
        const QStringList said = texts();
        QVERIFY(said.contains(u"Ferrobank is ready"_s));
        QVERIFY(said.contains(
            u"Your drive is at ~/Ferrobank and in Finder's sidebar under Locations. The Ferrobank menu in the menu bar shows its status and space saved, and can run these checks again."_s));
        QCOMPARE(textOf(u"openFerrobank"_s), u"Open Ferrobank"_s);
        press(Qt::Key_Return);
        QCOMPARE(model().screen(), Screen::dashboard());
    }

    void aFirstRunWithTheKeyboardOnly()
    {
        stage().seam.cli.answerStatus(mountedStatus());
        QStringList lines;
        for (const CheckItem& row : rows({State::Pass, State::Pass})) {
            lines << toJson(row);
        }
        for (const QString& id : {u"running"_s, u"drive"_s, u"space"_s}) {
            lines << toJson(CheckItem{id, id, State::Pass, {}, {}, {}});
        }
        stage().seam.cli.streamLines(lines);
        start();
        QCOMPARE(model().screen(), Screen::onboarding(Screen::Welcome));
        openWindow();
        press(Qt::Key_Return);
        press(Qt::Key_Tab);
        QCOMPARE(focused(), u"menuAtLogin"_s);
        press(Qt::Key_Space);
        QCOMPARE(model().choices().menuAtLogin, false);
        press(Qt::Key_Return);
        QTRY_VERIFY(shows(u"continue"_s));
        press(Qt::Key_Return);
        QTRY_VERIFY(shows(u"continue"_s) && model().checksPassed());
        press(Qt::Key_Return);
        QTRY_COMPARE(model().screen(), Screen::onboarding(Screen::Done));
        press(Qt::Key_Return);
        QCOMPARE(model().screen(), Screen::dashboard());
        QVERIFY(model().setupComplete());
    }
};

FERROBANK_TEST_WITH_WINDOWS(OnboardingTest)
#include "OnboardingTest.moc"
