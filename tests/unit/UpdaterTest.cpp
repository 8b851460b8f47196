#include "Ferrobank/Updater.h"

#include "support/TestProgram.h"

#include <QtTest/QTest>

#include <sys/wait.h>
#include <unistd.h>

#include <thread>

using namespace ferrobank;
using namespace Qt::StringLiterals;

namespace {

constexpr WindowFacts kMainOnScreen{.visible = true, .canBecomeMain = true};
constexpr WindowFacts kMainHidden{.visible = false, .canBecomeMain = true};
constexpr WindowFacts kPanelOnScreen{.visible = true, .canBecomeMain = false};

class SpyController final : public UpdateController {
public:
    void checkForUpdates() override { ++checks; }

    void reconsider() override { ++reconsidered; }

    int checks = 0;
    int reconsidered = 0;
};

struct Stage {
    bool setupComplete = true;
    std::vector<WindowFacts> windows;
    int windowQuestions = 0;
    SpyController* controller = nullptr;
    UpdateDelegate* delegate = nullptr;

    UpdaterCollaborators collaborators()
    {
        return {.makeController =
                    [this](UpdateDelegate& itsDelegate) {
                        auto made = std::make_unique<SpyController>();
                        controller = made.get();
                        delegate = &itsDelegate;
                        return made;
                    },
                .setupComplete = [this] { return setupComplete; },
                .windows =
                    [this] {
                        ++windowQuestions;
                        return windows;
                    }};
    }
};

} // namespace

class UpdaterTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void updateIsInstalledOnlyAfterSetupAndWithoutAMainWindow_data()
    {
        QTest::addColumn<bool>("setupComplete");
        QTest::addColumn<QList<int>>("windows"); ///< 1 main on screen, 2 main hidden, 3 panel on screen
        QTest::addColumn<bool>("answer");
        QTest::newRow("setup incomplete, no windows") << false << QList<int>{} << false;
        QTest::newRow("setup incomplete, main window") << false << QList<int>{1} << false;
        QTest::newRow("no windows") << true << QList<int>{} << true;
        QTest::newRow("main window on screen") << true << QList<int>{1} << false;
        QTest::newRow("main window closed") << true << QList<int>{2} << true;
        QTest::newRow("panel on screen") << true << QList<int>{3} << true;
        QTest::newRow("panel and hidden main window") << true << QList<int>{3, 2} << true;
        QTest::newRow("panel, then main window") << true << QList<int>{3, 1} << false;
    }

    void updateIsInstalledOnlyAfterSetupAndWithoutAMainWindow()
    {
        QFETCH(bool, setupComplete);
        QFETCH(QList<int>, windows);
        QFETCH(bool, answer);
        Stage stage;
        stage.setupComplete = setupComplete;
        for (const int kind : windows)
            stage.windows.push_back(kind == 1 ? kMainOnScreen : kind == 2 ? kMainHidden : kPanelOnScreen);
        QCOMPARE(mayInstallUpdateNow(setupComplete, stage.windows), answer);

        Updater updater(stage.collaborators());
        int called = 0;
        const bool told = updater.willInstallUpdateOnQuit({u"1.0.1"_s, u"1.0.1"_s}, [&called] { ++called; });
        QCOMPARE(told, answer);
        QCOMPARE(called, answer ? 1 : 0);
    }

    void blockIsCalledBeforeTheAnswer()
    {
        Stage stage;
        Updater updater(stage.collaborators());
        bool hasAnswered = false;
        bool wasEarly = false;
        hasAnswered = updater.willInstallUpdateOnQuit({}, [&] { wasEarly = !hasAnswered; });
        QVERIFY(hasAnswered && wasEarly);
    }

    void windowsAreNotAskedBeforeSetupIsComplete()
    {
        Stage stage;
        stage.setupComplete = false;
        Updater updater(stage.collaborators());
        QVERIFY(!updater.willInstallUpdateOnQuit({}, [] {}));
        QCOMPARE(stage.windowQuestions, 0);
    }

    void decisionIsTakenAnewEachTime()
    {
        Stage stage;
        stage.windows = {kMainOnScreen};
        Updater updater(stage.collaborators());
        QVERIFY(!updater.willInstallUpdateOnQuit({}, [] {}));
        stage.windows.clear();
        QVERIFY(updater.willInstallUpdateOnQuit({}, [] {}));
    }

    void controllerIsMadeOnceWithTheUpdaterAsDelegateAndGetsTheWishes()
    {
        Stage stage;
        Updater updater(stage.collaborators());
        QCOMPARE(stage.delegate, static_cast<UpdateDelegate*>(&updater));
        updater.checkForUpdates();
        updater.checkForUpdates();
        updater.reconsider();
        QCOMPARE(stage.controller->checks, 2);
        QCOMPARE(stage.controller->reconsidered, 1);
    }

    void decisionOutsideTheMainThreadStopsTheProgram()
    {
        const pid_t child = ::fork();
        if (child == 0) {
            qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString&) {
                if (type == QtFatalMsg)
                    ::_exit(42);
            });
            Stage stage;
            Updater updater(stage.collaborators());
            std::thread([&updater] { updater.willInstallUpdateOnQuit({}, [] {}); }).join();
            ::_exit(0);
        }
        int status = 0;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QVERIFY(WIFEXITED(status));
        QCOMPARE(WEXITSTATUS(status), 42);
    }
};

FERROBANK_TEST(UpdaterTest)
#include "UpdaterTest.moc"
