#include "Ferrobank/Async/Spawn.h"

#include "Ferrobank/Async/Lifeline.h"
#include "support/TestProgram.h"
#include "support/fakes/Gate.h"

#include <QtTest/QtTest>

#include <memory>
#include <stdexcept>

using namespace ferrobank;

namespace {

QCoro::Task<> waitThenThrow(Gate* gate)
{
    auto passage = gate->passage();
    co_await passage;
    throw std::runtime_error("it broke");
}

QCoro::Task<int> waitThenCount(Gate* gate, std::shared_ptr<int> count)
{
    auto passage = gate->passage();
    co_await passage;
    ++*count;
    co_return *count;
}

QCoro::Task<> throwAnInteger()
{
    throw 5;
    co_return;
}

QCoro::Task<> holdOn(Lifeline::Hold life, Gate* gate, std::shared_ptr<int> afterwards)
{
    auto passage = gate->passage();
    co_await passage;
    if (!life.isCut()) {
        ++*afterwards;
    }
}

} // namespace

/// Tasks that nobody waits for, and how they learn that their object is gone.
class SpawnTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void aSpawnedTaskRunsToItsEnd()
    {
        Gate gate;
        const auto count = std::make_shared<int>(0);
        spawn(this, waitThenCount(&gate, count));
        QCOMPARE(*count, 0);
        gate.open();
        QCOMPARE(*count, 1);
        QCOMPARE(count.use_count(), 1);
    }

    void whatATaskThrowsIsReported()
    {
        Gate gate;
        spawn(this, waitThenThrow(&gate));
        QTest::ignoreMessage(QtCriticalMsg, "A task of SpawnTest threw: it broke");
        gate.open();
    }

    void whatIsNoExceptionIsReportedToo()
    {
        QTest::ignoreMessage(QtCriticalMsg, "A task of SpawnTest threw something that is not an exception");
        spawn(this, throwAnInteger());
    }

    void nothingIsReportedForAnOwnerThatIsGone()
    {
        QTest::failOnWarning(QRegularExpression(QStringLiteral(".*")));
        Gate gate;
        {
            QObject owner;
            spawn(&owner, waitThenThrow(&gate));
        }
        gate.open();
    }

    void aHoldTellsWhetherTheLineIsCut()
    {
        Gate gate;
        const auto afterwards = std::make_shared<int>(0);
        auto lifeline = std::make_unique<Lifeline>();
        const std::weak_ptr<const void> trace = lifeline->trace();
        spawn(this, holdOn(lifeline->hold(), &gate, afterwards));
        QCOMPARE(lifeline->holds(), 1);
        lifeline.reset();
        QVERIFY(!trace.expired());
        gate.open();
        QCOMPARE(*afterwards, 0);
        QVERIFY(trace.expired());
    }

    void aLineThatIsNotCutLetsGoOn()
    {
        Gate gate;
        const auto afterwards = std::make_shared<int>(0);
        const Lifeline lifeline;
        spawn(this, holdOn(lifeline.hold(), &gate, afterwards));
        gate.open();
        QCOMPARE(*afterwards, 1);
        QCOMPARE(lifeline.holds(), 0);
    }
};

FERROBANK_TEST(SpawnTest)
#include "SpawnTest.moc"
