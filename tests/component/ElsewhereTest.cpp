#include "Platform/linux/files/Elsewhere.h"

#include "Platform/linux/files/CachedLookup.h"
#include "Platform/linux/files/LinuxVolumes.h"
#include "Platform/linux/time/SystemClock.h"
#include "support/Await.h"
#include "support/ProcessFacts.h"
#include "support/TestProgram.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <atomic>
#include <future>
#include <limits>
#include <thread>

using namespace ferrobank;
using namespace ferrobank::test;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

/// What blocks, and what takes time, without holding up the main thread.
class ElsewhereTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void whatIsInTheKernelsCacheIsAnsweredAtOnce()
    {
        const QTemporaryDir folder;
        QFile file(folder.filePath(u"there"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(QFile::link(u"/nowhere"_s, folder.filePath(u"dangling"_s)));
        const auto inCache = [&folder](const QString& name) {
            const QString path = folder.filePath(name);
            QFile::exists(path); // now it is known, also when nothing is there
            return existsInCache(QFile::encodeName(path).constData());
        };
        if (!inCache(u"there"_s)) {
            QSKIP("The kernel cannot be asked for what it has in memory");
        }
        QCOMPARE(inCache(u"there"_s), std::optional(true));
        QCOMPARE(inCache(u"dangling"_s), std::optional(true));
        // What is not there may also be unknown.
        QVERIFY(inCache(u"there/below"_s) != std::optional(true));
        QVERIFY(inCache(u"missing"_s) != std::optional(true));

        QVERIFY(file.remove());
        QVERIFY(inCache(u"there"_s) != std::optional(true));
    }

    void answerComesFromAnotherThread()
    {
        Elsewhere elsewhere;
        const std::function<std::thread::id()> question = [] { return std::this_thread::get_id(); };
        const auto answer = await(elsewhere.ask(u"who"_s, question, 10s));
        QVERIFY(answer);
        QVERIFY(*answer != std::this_thread::get_id());
    }

    void questionThatThrowsHasNoAnswer()
    {
        Elsewhere elsewhere;
        const std::function<int()> question = []() -> int { throw std::runtime_error("no"); };
        QVERIFY(!await(elsewhere.ask(u"x"_s, question, 10s)));
    }

    void questionThatBlocksIsGivenUpAndHoldsOneThreadOnly()
    {
        Elsewhere elsewhere;
        std::promise<void> release;
        const std::shared_future<void> released = release.get_future();
        const auto asked = std::make_shared<std::atomic<int>>(0);
        const std::function<int()> question = [released, asked] {
            ++*asked;
            released.wait();
            return 7;
        };
        QElapsedTimer timer;
        timer.start();
        QVERIFY(!await(elsewhere.ask(u"dead"_s, question, 30ms)));
        QVERIFY(timer.elapsed() >= 25); // timers may be a twentieth early
        QVERIFY(!await(elsewhere.ask(u"dead"_s, question, 1h)));
        QCOMPARE(asked->load(), 1);

        const std::function<int()> quick = [] { return 1; };
        QCOMPARE(await(elsewhere.ask(u"alive"_s, quick, 10s)), std::optional(1));

        release.set_value();
        std::optional<int> answer;
        QTRY_VERIFY((answer = await(elsewhere.ask(u"dead"_s, quick, 10s))));
        QCOMPARE(answer, std::optional(1));
    }

    void twoQuestionsAtATimeAreBothAnswered()
    {
        Elsewhere elsewhere;
        const auto present = std::make_shared<std::atomic<int>>(0);
        const std::function<int()> question = [present] {
            ++*present;
            while (*present < 2) {
                std::this_thread::yield();
            }
            return 1;
        };
        auto one = elsewhere.ask(u"same"_s, question, 10s);
        auto other = elsewhere.ask(u"same"_s, question, 10s);
        QCOMPARE(await(std::move(one)), std::optional(1));
        QCOMPARE(await(std::move(other)), std::optional(1));
    }

    void taskOutlivesTheOneThatAsked()
    {
        auto elsewhere = std::make_unique<Elsewhere>();
        std::promise<void> release;
        const std::shared_future<void> released = release.get_future();
        const std::function<int()> question = [released] {
            released.wait();
            return 3;
        };
        auto task = elsewhere->ask(u"x"_s, question, 10s);
        elsewhere.reset();
        release.set_value();
        QCOMPARE(await(std::move(task)), std::optional(3));
    }

    void noDescriptorsAreLeft()
    {
        Elsewhere elsewhere;
        const std::function<int()> question = [] { return 1; };
        await(elsewhere.ask(u"x"_s, question, 10s));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        const ProcessFacts before;
        constexpr int kQuestions = 200;
        for (int i = 0; i < kQuestions; ++i) {
            await(elsewhere.ask(u"x"_s, question, 10s));
        }
        QTRY_VERIFY(ProcessFacts().openDescriptors <= before.openDescriptors);
    }

    void capacityIsTheFileSystemsOwn()
    {
        LinuxVolumes volumes;
        const auto capacity = await(volumes.capacity(u"/"_s));
        QVERIFY(capacity.total);
        QVERIFY(capacity.available);
        QVERIFY(*capacity.total >= *capacity.available);
    }

    void capacityOfNothingIsUnknown()
    {
        LinuxVolumes volumes;
        const auto capacity = await(volumes.capacity(u"/nonexistent/volume"_s));
        QVERIFY(!capacity.total);
        QVERIFY(!capacity.available);
    }

    void fileSystemWithoutBlocksDoesNotTell()
    {
        const auto capacity = await(LinuxVolumes().capacity(u"/proc"_s));
        QVERIFY(!capacity.total);
        QVERIFY(!capacity.available);
    }

    void capacitiesStayInTheSignedRange()
    {
        constexpr quint64 kMost = std::numeric_limits<quint64>::max();
        constexpr quint64 kMostSigned = std::numeric_limits<qint64>::max();
        QCOMPARE(capacityOf(4096, kMost, 10).total, std::optional(kMostSigned));
        QCOMPARE(capacityOf(4096, kMost, 10).available, std::optional<quint64>(40960));
        QCOMPARE(capacityOf(1, kMostSigned + 1, 0).total, std::optional(kMostSigned));
        QCOMPARE(capacityOf(4096, 5, 0).available, std::optional<quint64>(0));
        QVERIFY(!capacityOf(4096, 0, 0).total);
    }

    void existenceCountsDanglingLinks()
    {
        const QTemporaryDir folder;
        QVERIFY(QFile::link(u"/nonexistent"_s, folder.filePath(u"link"_s)));
        LinuxVolumes volumes;
        QCOMPARE(await(volumes.exists(folder.path())), std::optional(true));
        QCOMPARE(await(volumes.exists(folder.filePath(u"link"_s))), std::optional(true));
        QCOMPARE(await(volumes.exists(folder.filePath(u"nothing"_s))), std::optional(false));
        QCOMPARE(await(volumes.exists(folder.filePath(u"link/below"_s))), std::optional(false));
    }

    void existenceBehindAnErrorIsUnknown()
    {
        const QString tooLong(5000, u'x');
        QVERIFY(!await(LinuxVolumes().exists(u'/' + tooLong)));
    }

    void sleepLastsAsLongAsAsked()
    {
        SystemClock clock;
        QElapsedTimer timer;
        timer.start();
        await(clock.sleep(50ms));
        QVERIFY2(timer.elapsed() >= 50, qPrintable(QString::number(timer.elapsed())));
    }

    void sleepEndsSoonAfterItsTime()
    {
        SystemClock clock;
        // The shortest of several, because a loaded machine makes any of them late.
        qint64 shortest = std::numeric_limits<qint64>::max();
        for (int attempt = 0; attempt < 20 && shortest >= 60; ++attempt) {
            QElapsedTimer timer;
            timer.start();
            await(clock.sleep(50ms));
            shortest = std::min(shortest, timer.elapsed());
        }
        QVERIFY2(shortest < 60, qPrintable(QString::number(shortest)));
    }

    void sleepsOfDifferentLengthEndInTheirOrder()
    {
        SystemClock clock;
        const auto longer = std::make_shared<Settled<void>>();
        const auto settling = settle(clock.sleep(60ms), longer);
        await(clock.sleep(10ms));
        QVERIFY(!longer->done);
        QTRY_VERIFY(longer->done);
    }

    void sleepOfNothingStillLetsTheEventLoopTurn()
    {
        SystemClock clock;
        const auto result = std::make_shared<Settled<void>>();
        const auto settling = settle(clock.sleep(0ms), result);
        QVERIFY(!result->done);
        QTRY_VERIFY(result->done);
    }

    void clockThatGoesAwayEndsEverySleep()
    {
        auto clock = std::make_unique<SystemClock>();
        const auto one = std::make_shared<Settled<void>>();
        const auto other = std::make_shared<Settled<void>>();
        const auto settlingOne = settle(clock->sleep(1h), one);
        const auto settlingOther = settle(clock->sleep(2h), other);
        clock.reset();
        QVERIFY(one->done);
        QVERIFY(other->done);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void wallTimeIsTheTimeOfDay()
    {
        const auto before = std::chrono::system_clock::now();
        const auto now = SystemClock().wallTime();
        QVERIFY(before <= now);
        QVERIFY(now <= std::chrono::system_clock::now());
    }
};

FERROBANK_TEST(ElsewhereTest)
#include "ElsewhereTest.moc"
