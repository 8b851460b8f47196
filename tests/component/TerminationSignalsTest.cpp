#include "Platform/TerminationSignals.h"

#include "support/TestProgram.h"

#include <QtTest/QTest>

#include <csignal>

namespace ferrobank {

class TerminationSignalsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void eachSignalReachesTheEventLoop_data()
    {
        QTest::addColumn<int>("number");
        QTest::newRow("SIGTERM") << SIGTERM;
        QTest::newRow("SIGINT") << SIGINT;
        QTest::newRow("SIGHUP") << SIGHUP;
    }

    void eachSignalReachesTheEventLoop()
    {
        QFETCH(int, number);
        int requests = 0;
        const auto watch = TerminationSignals::watch([&] { ++requests; });
        QCOMPARE(raise(number), 0);
        QCOMPARE(requests, 0);
        QTRY_COMPARE(requests, 1);
        QCOMPARE(raise(number), 0);
        QTRY_COMPARE(requests, 2);
    }

    void whatWasSetBeforeIsRestored()
    {
        struct sigaction before{};
        struct sigaction after{};
        QCOMPARE(sigaction(SIGTERM, nullptr, &before), 0);
        TerminationSignals::watch([] {});
        QCOMPARE(sigaction(SIGTERM, nullptr, &after), 0);
        QVERIFY(after.sa_handler == before.sa_handler);
    }
};

} // namespace ferrobank

FERROBANK_TEST(ferrobank::TerminationSignalsTest)
#include "TerminationSignalsTest.moc"
