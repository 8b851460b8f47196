#include "support/TestProgram.h"
#include "support/updates/Fleet.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QMap>
#include <QtTest/QTest>

using namespace ferrobank;
using namespace Qt::StringLiterals;

namespace {

/// Somebody who is not on the newest version has read why within this time, in days.
constexpr int kRecently = 30;

QString describe(const CopyEnd& copy, std::size_t number)
{
    return u"copy %1: %2, %3 starts, %4 checks, %5 downloads, told on day %6: %7"_s.arg(number)
        .arg(copy.installed)
        .arg(copy.starts)
        .arg(copy.checks)
        .arg(copy.downloads)
        .arg(copy.lastToldDay)
        .arg(copy.lastNotice);
}

/// Drops the words about failures, of which there are a million, each of them expected.
class Quiet {
public:
    Quiet()
    {
        _before = qInstallMessageHandler(
            [](QtMsgType type, const QMessageLogContext& context, const QString& text) {
                const bool isExpected =
                    text.startsWith(u"Updates: "_s) || text == u"The updater's state could not be saved."_s;
                if (!isExpected)
                    _before(type, context, text);
            });
    }

    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;

    ~Quiet() { qInstallMessageHandler(_before); }

private:
    static inline QtMessageHandler _before = nullptr;
};

} // namespace

/// A thousand copies over two years in which everything goes wrong that can.
class UpdateFleetTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void initTestCase()
    {
        const Quiet quiet;
        QElapsedTimer timer;
        timer.start();
        // Fewer where the compiler makes them slow; the product's build has them all.
        FleetOptions options;
        options.copies =
            qEnvironmentVariable("FERROBANK_FLEET_COPIES", QString::number(options.copies)).toInt();
        _fleet = runFleet(options);
        qInfo("%d copies lived for %d days in %lld ms", static_cast<int>(_fleet.copies.size()),
              static_cast<int>(_fleet.days.size()), static_cast<long long>(timer.elapsed()));
        QFile picture(QStringLiteral(FERROBANK_FLEET_PICTURE));
        QVERIFY(picture.open(QIODevice::WriteOnly));
        picture.write(fleetPicture(_fleet));
    }

    void everyCopyEndsOnTheNewestGoodVersionOrSomebodyWasToldWhy()
    {
        const int last = static_cast<int>(_fleet.days.size()) - 1;
        QMap<QString, int> reasons;
        int newest = 0;
        for (std::size_t i = 0; i < _fleet.copies.size(); ++i) {
            const CopyEnd& copy = _fleet.copies[i];
            if (copy.installed == _fleet.releases.last()) {
                ++newest;
                continue;
            }
            const bool wasTold = copy.lastToldDay >= last - kRecently && !copy.lastNotice.isEmpty();
            QVERIFY2(wasTold, qPrintable(describe(copy, i)));
            ++reasons[copy.lastNotice.section(u'.', 0, 1).left(60)];
        }
        for (const auto& [reason, count] : reasons.asKeyValueRange())
            qInfo("%d told: %s", count, qPrintable(reason));
        qInfo("%d on the newest", newest);
        // One in twenty has a system that the later releases do not run on; few others are left over.
        QVERIFY2(newest >= static_cast<int>(_fleet.copies.size()) * 85 / 100,
                 qPrintable(QString::number(newest)));
    }

    void everyCopyOnAnOldSystemStaysOnTheLastReleaseForIt()
    {
        int old = 0;
        for (std::size_t i = 0; i < _fleet.copies.size(); ++i) {
            const CopyEnd& copy = _fleet.copies[i];
            if (!copy.isOnOldSystem)
                continue;
            ++old;
            QVERIFY2(_fleet.releases.indexOf(copy.installed) <= _fleet.releases.indexOf(u"1.7.0"_s),
                     qPrintable(describe(copy, i)));
        }
        QVERIFY(old > 0);
    }

    void badReleasesAreTakenBackEverywhereAndLastForNobody()
    {
        int takenBack = 0;
        for (std::size_t i = 0; i < _fleet.copies.size(); ++i) {
            const CopyEnd& copy = _fleet.copies[i];
            takenBack += copy.takenBack;
            QVERIFY2(copy.installed != u"1.3.0"_s && copy.installed != u"1.11.0"_s,
                     qPrintable(describe(copy, i)));
            // Two failed starts for each time that it is tried, and it is tried seldom.
            QVERIFY2(copy.failedStarts <= 12, qPrintable(describe(copy, i)));
        }
        QVERIFY2(takenBack > 100, qPrintable(QString::number(takenBack)));
    }

    void nobodyDownloadsWithoutEnd()
    {
        const auto releases = static_cast<int>(_fleet.releases.size());
        qint64 all = 0;
        for (std::size_t i = 0; i < _fleet.copies.size(); ++i) {
            const CopyEnd& copy = _fleet.copies[i];
            all += copy.downloads;
            QVERIFY2(copy.downloads <= 3 * releases, qPrintable(describe(copy, i)));
        }
        const qint64 mean = all / static_cast<qint64>(_fleet.copies.size());
        qInfo("%lld downloads a copy", static_cast<long long>(mean));
        QVERIFY(mean <= releases * 3 / 2);
    }

    void feedThatNobodyRenewsIsToldOfAndThenForgotten()
    {
        // It ends on day 425; a fortnight later people begin to read of it, until it is renewed on day 465.
        int before = 0;
        int during = 0;
        for (const FleetDay& day : _fleet.days) {
            before += day.day >= 400 && day.day < 425 ? day.told : 0;
            during += day.day >= 439 && day.day < 464 ? day.told : 0;
        }
        QVERIFY2(during > 10 * std::max(before, 1), qPrintable(u"%1 %2"_s.arg(before).arg(during)));
    }

    void sameSeedGivesTheSameFleetAndAnotherSeedAnother()
    {
        FleetOptions options;
        options.copies = 20;
        options.days = 250;
        const Quiet quiet;
        const FleetResult one = runFleet(options);
        QVERIFY(runFleet(options) == one);
        QCOMPARE(fleetPicture(runFleet(options)), fleetPicture(one));
        options.seed = 2;
        QVERIFY(!(runFleet(options) == one));
    }

private:
    FleetResult _fleet;
};

FERROBANK_TEST(UpdateFleetTest)
#include "UpdateFleetTest.moc"
