#include "Ferrobank/LoginServices.h"

#include "support/Await.h"
#include "support/TestProgram.h"
#include "support/fakes/FakeRegistry.h"
#include "support/fakes/FakeWorkQueue.h"

#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace ferrobank;

namespace {

constexpr auto kEnabled = LoginServiceStatus::Enabled;
constexpr auto kNotRegistered = LoginServiceStatus::NotRegistered;
constexpr auto kNeedsApproval = LoginServiceStatus::RequiresApproval;

} // namespace

/// What the application knows of its login services, and in which order it learns and changes that.
class LoginServicesTest : public QObject {
    Q_OBJECT

private:
    template <typename T>
    static std::shared_ptr<test::Settled<T>> begin(QCoro::Task<T> task)
    {
        auto result = std::make_shared<test::Settled<T>>();
        const auto settling = test::settle(std::move(task), result);
        return result;
    }

    FakeRegistry _registry;
    std::unique_ptr<FakeWorkQueue> _queue;
    std::unique_ptr<LoginServices> _services;

private Q_SLOTS:

    void init()
    {
        _registry = {};
        _queue = std::make_unique<FakeWorkQueue>();
        _services = std::make_unique<LoginServices>(_registry, *_queue);
    }

    void cleanup()
    {
        _services.reset();
        _queue.reset();
    }

    void nothingIsKnownBeforeTheFirstAnswer()
    {
        QVERIFY(!_services->known(LoginService::Agent));
        QVERIFY(!_services->known(LoginService::MainApp));
        QVERIFY(!_services->isKnownToNeedApproval());
        QCOMPARE(_registry.agent.statusReads + _registry.mainApp.statusReads, 0);
    }

    void everyAnswerIsRememberedAndNewsIsToldOnce()
    {
        QSignalSpy told(_services.get(), &LoginServices::changed);
        _registry.agent.status = kEnabled;
        QCOMPARE(test::await(_services->ask(LoginService::Agent)), std::optional(kEnabled));
        QCOMPARE(_services->known(LoginService::Agent), std::optional(kEnabled));
        QVERIFY(!_services->known(LoginService::MainApp));
        QCOMPARE(told.count(), 1);
        test::await(_services->ask(LoginService::Agent));
        QCOMPARE(told.count(), 1);
        QCOMPARE(_registry.agent.statusReads, 2); // asked anew all the same
    }

    void silenceKeepsTheLastAnswer()
    {
        _registry.agent.status = kEnabled;
        test::await(_services->ask(LoginService::Agent));
        QSignalSpy told(_services.get(), &LoginServices::changed);
        _registry.agent.status = kNoAnswer;
        QVERIFY(!test::await(_services->ask(LoginService::Agent)));
        QCOMPARE(_services->known(LoginService::Agent), std::optional(kEnabled));
        QCOMPARE(told.count(), 0);
    }

    void approvalIsNeededNotNeededOrUnknown_data()
    {
        QTest::addColumn<LoginServiceStatus>("agent");
        QTest::addColumn<LoginServiceStatus>("mainApp");
        QTest::addColumn<int>("needed"); // -1: cannot be told
        QTest::newRow("neither") << kEnabled << kNotRegistered << 0;
        QTest::newRow("agent") << kNeedsApproval << kEnabled << 1;
        QTest::newRow("login item") << kEnabled << kNeedsApproval << 1;
        QTest::newRow("agent silent") << kNoAnswer << kEnabled << -1;
        QTest::newRow("agent silent, login item") << kNoAnswer << kNeedsApproval << 1;
        QTest::newRow("login item silent") << kEnabled << kNoAnswer << -1;
        QTest::newRow("login item silent, agent") << kNeedsApproval << kNoAnswer << 1;
        QTest::newRow("both silent") << kNoAnswer << kNoAnswer << -1;
    }

    void approvalIsNeededNotNeededOrUnknown()
    {
        QFETCH(const LoginServiceStatus, agent);
        QFETCH(const LoginServiceStatus, mainApp);
        QFETCH(const int, needed);
        _registry.agent.status = agent;
        _registry.mainApp.status = mainApp;
        const std::optional<bool> answer = test::await(_services->askForApproval());
        QCOMPARE(answer ? int(*answer) : -1, needed);
        QCOMPARE(_services->isKnownToNeedApproval(), needed == 1);
    }

    void loginItemThatAwaitsApprovalSparesTheQuestionForTheAgent()
    {
        _registry.mainApp.status = kNeedsApproval;
        test::await(_services->askForApproval());
        QCOMPARE(_registry.agent.statusReads, 0);
    }

    void callerWaitsUntilTheWorkIsDone()
    {
        _queue->hold();
        const auto asked = begin(_services->ask(LoginService::Agent));
        QVERIFY(!asked->done);
        QCOMPARE(_registry.agent.statusReads, 0);
        _queue->doNext();
        QVERIFY(asked->done);
    }

    void changesAndQuestionsKeepTheirOrder()
    {
        _queue->hold();
        const auto first = begin(_services->matchMenuOpensAtLogin(true));
        const auto between = begin(_services->ask(LoginService::MainApp));
        const auto second = begin(_services->matchMenuOpensAtLogin(false));
        _queue->letGo();
        QCOMPARE(_registry.calls, (QStringList{u"register login item"_s, u"unregister login item"_s}));
        QCOMPARE(between->value, std::optional(std::optional(kEnabled)));
        QCOMPARE(_services->known(LoginService::MainApp), std::optional(kNotRegistered));
    }

    void questionsThatComeWhileOneIsOnItsWayBecomeOne()
    {
        _queue->hold();
        for (int i = 0; i < 5; ++i) {
            _services->look(LoginService::Agent);
        }
        QCOMPARE(_queue->waiting(), 1);
        _registry.agent.status = kEnabled;
        _queue->doNext();
        QCOMPARE(_queue->waiting(), 1); // somebody has asked since the first began
        _queue->doNext();
        QCOMPARE(_queue->waiting(), 0);
        QCOMPARE(_registry.agent.statusReads, 2);
        _services->look(LoginService::Agent);
        QCOMPARE(_queue->waiting(), 1);
    }

    void lookingAtOneServiceDoesNotSpareTheOther()
    {
        _queue->hold();
        _services->look(LoginService::Agent);
        _services->look(LoginService::MainApp);
        QCOMPARE(_queue->waiting(), 2);
    }

    void registrationIsLearnedFrom_data()
    {
        QTest::addColumn<LoginServiceStatus>("after");
        QTest::addColumn<bool>("fails");
        QTest::addColumn<bool>("throws");
        QTest::newRow("enabled") << kEnabled << false << false;
        QTest::newRow("awaits approval") << kNeedsApproval << true << false;
        QTest::newRow("refused") << kNotRegistered << true << true;
    }

    void registrationIsLearnedFrom()
    {
        QFETCH(const LoginServiceStatus, after);
        QFETCH(const bool, fails);
        QFETCH(const bool, throws);
        _registry.agent.statusAfterRegister = after;
        if (fails) {
            _registry.agent.registerError = "no";
        }
        const auto registered = begin(_services->registerDrive());
        QVERIFY(registered->done);
        QCOMPARE(registered->error != nullptr, throws);
        QCOMPARE(_services->known(LoginService::Agent), std::optional(after));
        QCOMPARE(_registry.calls, QStringList{u"register agent"_s});
    }

    void enabledAgentIsOnlyReadOnce()
    {
        _registry.agent.status = kEnabled;
        test::await(_services->registerDrive());
        QCOMPARE(_registry.agent.statusReads, 1);
        QCOMPARE(_registry.calls, QStringList());
    }

    void wishThatTheSystemHasAlreadyCallsNothing()
    {
        _registry.mainApp.status = kEnabled;
        test::await(_services->matchMenuOpensAtLogin(true));
        QCOMPARE(_registry.calls, QStringList());
        _registry.mainApp.status = kNeedsApproval;
        test::await(_services->matchMenuOpensAtLogin(false));
        QCOMPARE(_registry.calls, QStringList());
    }

    void clickOnASwitchOverridesAndItsRefusalIsLearnedFrom()
    {
        _registry.agent.registerError = "The unit file cannot be written.";
        _registry.agent.statusAfterRegister = kNeedsApproval;
        const auto refused = begin(_services->setOn(LoginService::Agent, true));
        QVERIFY(refused->error);
        QCOMPARE(_registry.agent.lastSwitch, std::optional(UserSwitch::Override));
        QCOMPARE(_services->known(LoginService::Agent), std::optional(kNeedsApproval));
        _registry.agent.registerError.reset();
        _registry.agent.statusAfterRegister.reset();
        test::await(_services->setOn(LoginService::Agent, true));
        QCOMPARE(_services->known(LoginService::Agent), std::optional(kEnabled));
        test::await(_services->setOn(LoginService::Agent, false));
        QCOMPARE(_services->known(LoginService::Agent), std::optional(kNotRegistered));
    }

    void movedBundleIsFollowedAndThenAsked()
    {
        _registry.mainApp.moved = true;
        QCOMPARE(test::await(_services->followMovedBundle(LoginService::MainApp)), std::optional(kEnabled));
        QCOMPARE(_registry.followed, QList{LoginService::MainApp});
        _registry.agent.status = kNoAnswer;
        QVERIFY(!test::await(_services->followMovedBundle(LoginService::Agent)));
    }

    void settingsPageOpensAtOnceBesideAnythingThatWaits()
    {
        _queue->hold();
        _services->look(LoginService::Agent);
        _services->openSystemSettingsLoginItems();
        QCOMPARE(_registry.calls, QStringList{u"open settings"_s});
    }

    void questionsWithoutAnAnswererEndWithTheQueue()
    {
        _queue->hold();
        const auto asked = begin(_services->ask(LoginService::Agent));
        const auto approval = begin(_services->askForApproval());
        const auto change = begin(_services->registerDrive());
        _services->look(LoginService::MainApp);
        _services.reset();
        _queue.reset();
        QVERIFY(asked->done && !asked->error && !asked->value->has_value());
        QVERIFY(approval->done && !approval->error && !approval->value->has_value());
        QVERIFY(change->done && change->error);
        QCOMPARE(_registry.agent.statusReads + _registry.mainApp.statusReads, 0);
    }
};

FERROBANK_TEST(LoginServicesTest)
#include "LoginServicesTest.moc"
