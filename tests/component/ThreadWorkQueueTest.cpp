#include "Ferrobank/Async/ThreadWorkQueue.h"

#include "support/Await.h"
#include "support/TestProgram.h"

#include <QtCore/QThread>
#include <QtTest/QTest>

#include <future>
#include <memory>
#include <optional>

using namespace ferrobank;
using namespace ferrobank::test;

/// Work in the background, in the order in which it was given.
class ThreadWorkQueueTest : public QObject {
    Q_OBJECT

private:
    static std::shared_ptr<Settled<void>> begin(QCoro::Task<> task)
    {
        auto result = std::make_shared<Settled<void>>();
        const auto settling = settle(std::move(task), result);
        return result;
    }

private Q_SLOTS:

    void workIsDoneOnAnotherThreadAndEndsOnThisOne()
    {
        ThreadWorkQueue queue;
        const auto where = std::make_shared<QThread*>(nullptr);
        await(queue.run([where] { *where = QThread::currentThread(); }));
        QVERIFY(*where != nullptr);
        QVERIFY(*where != QThread::currentThread());
    }

    void callerIsSuspendedWhileTheEventLoopTurns()
    {
        ThreadWorkQueue queue;
        std::promise<void> go;
        const auto gone = go.get_future().share();
        const auto ran = begin(queue.run([gone] { gone.wait(); }));
        bool turned = false;
        QMetaObject::invokeMethod(this, [&turned] { turned = true; }, Qt::QueuedConnection);
        QTRY_VERIFY(turned);
        QVERIFY(!ran->done);
        go.set_value();
        QTRY_VERIFY(ran->done);
    }

    void piecesAreDoneOneAfterTheOtherInTheOrderOfTheCalls()
    {
        ThreadWorkQueue queue;
        const auto order = std::make_shared<QList<int>>();
        const auto atWork = std::make_shared<std::atomic<int>>(0);
        QList<std::shared_ptr<Settled<void>>> all;
        for (int number = 0; number < 200; ++number) {
            all.append(begin(queue.run([order, atWork, number] {
                if (++*atWork == 1) {
                    order->append(number);
                }
                --*atWork;
            })));
        }
        QTRY_VERIFY(all.constLast()->done);
        QCOMPARE(order->size(), 200);
        QVERIFY(std::is_sorted(order->cbegin(), order->cend()));
        for (const auto& each : all) {
            QVERIFY(each->done);
        }
    }

    void whatTheWorkThrowsReachesItsCallerAlone()
    {
        ThreadWorkQueue queue;
        const auto bad = begin(queue.run([] { throw std::runtime_error("no"); }));
        const auto good = begin(queue.run([] {}));
        QTRY_VERIFY(good->done);
        QVERIFY(bad->done && bad->error);
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, std::rethrow_exception(bad->error));
        QVERIFY(!good->error);
    }

    void waiterMayGiveMoreWork()
    {
        ThreadWorkQueue queue;
        const auto second = std::make_shared<Settled<void>>();
        const auto chain = [](ThreadWorkQueue* to) -> QCoro::Task<> {
            co_await to->run([] {});
            co_await to->run([] {});
        };
        const auto chained = begin(chain(&queue));
        QTRY_VERIFY(chained->done);
        QVERIFY(!chained->error);
    }

    void endWaitsForThePieceAtWorkAndDropsTheOthers()
    {
        auto queue = std::make_unique<ThreadWorkQueue>();
        std::promise<void> begun;
        auto beginning = begun.get_future();
        std::promise<void> go;
        const auto gone = go.get_future().share();
        const auto finished = std::make_shared<std::atomic<bool>>(false);
        const auto first = begin(queue->run([&begun, gone, finished] {
            begun.set_value();
            gone.wait();
            *finished = true;
        }));
        const auto ran = std::make_shared<std::atomic<bool>>(false);
        const auto second = begin(queue->run([ran] { *ran = true; }));
        beginning.wait();
        std::thread other([&go] { go.set_value(); });
        queue.reset();
        other.join();
        QVERIFY(*finished);
        QVERIFY(!*ran);
        QVERIFY(first->done && !first->error);
        QVERIFY(second->done);
        QVERIFY_THROWS_EXCEPTION(WorkQueue::Dropped, std::rethrow_exception(second->error));
    }

    void queueThatWasNeverUsedEndsAtOnce() { const ThreadWorkQueue queue; }
};

FERROBANK_TEST(ThreadWorkQueueTest)
#include "ThreadWorkQueueTest.moc"
