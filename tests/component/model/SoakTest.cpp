#include "Ferrobank/Async/Spawn.h"
#include "Ferrobank/CLI/ProcessCLI.h"
#include "Ferrobank/FerrobankApp/TrayMenu.h"
#include "Platform/StatusItem.h"
#include "Platform/SystemChanges.h"
#include "support/AllocatedBytes.h"
#include "support/ProcessFacts.h"
#include "support/ScriptedTool.h"
#include "support/TestProgram.h"
#include "support/fakes/FakeSeam.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QDir>
#include <QtTest/QTest>

using namespace ferrobank;
using namespace ferrobank::test;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int kPollsOfTwoHours = 1440;
constexpr int kPollsOfAPhase = 60;
constexpr quint64 kUsed = 12000000000U;

/// A tray without a panel.
class NoPanel : public StatusItem {
public:
    void setFace(const StatusItemFace&) override {}

    void setMenu(const QList<MenuEntry>&) override {}

    void repeatMenu() override {}
};

int threads()
{
    return static_cast<int>(QDir(u"/proc/self/task"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size());
}

QByteArray statusText(int phase)
{
    return R"({"installed":true,"mounted":true,"mountpoint":"/home/anna/Ferrobank","log":"/l","volume_used":)" +
           QByteArray::number(kUsed + static_cast<quint64>(phase)) + "}";
}

} // namespace

/// Two hours of polls with real child processes, in the time that the children take: memory, descriptors,
/// processes, threads and waiting coroutines stay what they are, whatever the tool does.
class SoakTest : public QObject {
    Q_OBJECT

private:
    struct Held {
        std::size_t bytes = allocatedBytes();
        int descriptors = ProcessFacts().openDescriptors;
        int threadCount = threads();
    };

    /// The tool's behaviour changes from phase to phase.
    void play(int phase)
    {
        constexpr int kBehaviours = 5;
        switch (phase % kBehaviours) {
        case 0:
        case 1:
            _tool.prints(statusText(phase));
            break;
        case 2:
            _tool.plays(R"([{"err": "volume busy"}, {"exit": 1}])");
            break;
        case 3:
            _tool.plays(R"([{"out": "installed"}])");
            break;
        case 4:
            _tool.plays(R"([{"flood": {"bytes": 50000, "text": "{}"}}, {"signal": 9}])");
            break;
        }
    }

    bool poll(FakeSeam& seam)
    {
        seam.clock.advance(5s);
        QDeadlineTimer limit(20s);
        while (seam.clock.sleepers() == 0 && !limit.hasExpired()) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        return seam.clock.sleepers() == 1;
    }

    bool poll(FakeSeam& seam, int count)
    {
        for (int done = 0; done < count; ++done) {
            if (done % kPollsOfAPhase == 0) {
                play(done / kPollsOfAPhase);
            }
            if (!poll(seam)) {
                return false;
            }
            if (done % 100 == 0) {
                seam.forgetCalls();
            }
        }
        seam.forgetCalls();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return true;
    }

    ScriptedTool _tool;

private Q_SLOTS:

    void twoHoursOfPollsLeaveNothingBehind()
    {
        FakeSeam seam;
        seam.finishSetup();
        ProcessCLI cli(_tool.path());
        play(0);
        AppModel model(seam.collaborators(cli));
        NoPanel item;
        SystemChanges systemChanges;
        const TrayMenu menu({.model = model,
                             .commandLineTool = seam.commandLineTool,
                             .workspace = seam.workspace,
                             .item = item,
                             .systemChanges = systemChanges,
                             .openWindow = {},
                             .checkForUpdates = {},
                             .showAlert = {},
                             .quit = {}});
        QTRY_COMPARE(seam.clock.sleepers(), 1);
        // Every phase once: what is made at the first time stays.
        QVERIFY(poll(seam, 5 * kPollsOfAPhase));
        const Held before;
        const qsizetype runs = _tool.runs().size();

        QVERIFY(poll(seam, kPollsOfTwoHours));

        QCOMPARE(_tool.runs().size(), runs + kPollsOfTwoHours);
        QCOMPARE(model.status()->volume_used, std::optional<quint64>(kUsed + 21));
        const Held after;
        QCOMPARE(after.descriptors, before.descriptors);
        QCOMPARE(after.threadCount, before.threadCount);
        QCOMPARE(ProcessFacts().children(), 0);
        QCOMPARE(seam.clock.sleepers(), 1);
        QVERIFY(model.lifeline().holds() <= 2);
        // One lost object a poll would be 20,000 bytes and more.
        QVERIFY2(after.bytes < before.bytes + 16'384,
                 qPrintable(u"%1 bytes, then %2"_s.arg(before.bytes).arg(after.bytes)));
    }
};

FERROBANK_TEST(SoakTest)
#include "SoakTest.moc"
