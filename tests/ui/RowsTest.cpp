#include "Ferrobank/Components/Theme.h"
#include "support/TestProgram.h"
#include "ui/WindowTest.h"

#include <QtCore/QRandomGenerator>
#include <QtTest/QSignalSpy>

#include <algorithm>
#include <functional>

using namespace Qt::StringLiterals;
using namespace ferrobank;
using State = CheckItem::State;

namespace {

constexpr qreal kGap = 14;
constexpr int kPadding = 32;

CheckItem row(const QString& id, State state)
{
    return {id, u"Part %1 of the drive"_s.arg(id), state, {}, {}, {}};
}

/// A row that is some lines higher than a plain one.
CheckItem tall(const QString& id)
{
    CheckItem item = row(id, State::Fail);
    item.detail =
        u"The drive's service does not answer, and nobody knows since when it does not do so any more."_s;
    item.fix = u"Restart the drive; your files are safe."_s;
    item.action = FixAction::Restart;
    return item;
}

const QStringList kFour{u"running"_s, u"drive"_s, u"login"_s, u"space"_s};
const QStringList kSeven{u"running"_s, u"drive"_s,     u"login"_s,  u"space"_s,
                         u"store"_s,   u"integrity"_s, u"sharing"_s};

QList<CheckItem> rows(const QStringList& ids, const std::function<CheckItem(const QString&)>& make)
{
    QList<CheckItem> made;
    for (const QString& id : ids) {
        made << make(id);
    }
    return made;
}

QList<CheckItem> pending(const QStringList& ids)
{
    return rows(ids, [](const QString& id) { return row(id, State::Pending); });
}

QList<CheckItem> failed(const QStringList& ids)
{
    return rows(ids, tall);
}

} // namespace

/// Where the rows of a list stand: one below the other, 14 points apart, whatever happens to them and however
/// much of it at once; and the window is as high as they are. Things move here as they do for people.
class RowsTest : public WindowTest {
    Q_OBJECT

private:
    void open(Screen screen)
    {
        openOn(screen);
        Theme::of(*stage().mainWindow().engine()).setReducedMotion(false);
    }

    void openWith(const QList<CheckItem>& checks)
    {
        _display = 10'000;
        start();
        model().setScreen(Screen::checks());
        model().checkRows()->replaceAll(checks);
        openWindow();
        Theme::of(*stage().mainWindow().engine()).setReducedMotion(false);
    }

    void letDraw()
    {
        QSignalSpy frames(&window(), &QQuickWindow::frameSwapped);
        for (int frame = 0; frame < 4; ++frame) {
            window().update();
            QVERIFY(frames.wait());
        }
    }

    /// The rows that exist, from the top.
    QList<QQuickItem*> drawn(const QString& list)
    {
        QList<QQuickItem*> found;
        auto* view = item(list).property("view").value<QQuickItem*>();
        auto* content = (view == nullptr ? &item(list) : view)->property("contentItem").value<QQuickItem*>();
        for (QQuickItem* child : content->childItems()) {
            if (child->isVisible() && child->property("checkState").isValid()) {
                found << child;
            }
        }
        std::ranges::sort(found, {}, [](const QQuickItem* each) { return each->property("index").toInt(); });
        return found;
    }

    /// What is wrong with the places of the rows; empty when nothing is.
    QString wrong(const QString& list, int count)
    {
        const QList<QQuickItem*> found = drawn(list);
        const qreal most = item(list).property("maximumHeight").toReal();
        if (found.isEmpty() || (found.size() != count && item(list).height() < most)) {
            return u"%1 of %2 rows, %3 high"_s.arg(found.size()).arg(count).arg(item(list).height());
        }
        const auto number = [&found](qsizetype index) { return found.at(index)->property("index").toInt(); };
        for (qsizetype index = 0; index + 1 < found.size(); ++index) {
            if (number(index + 1) != number(index) + 1) {
                continue; // the row with the keyboard exists wherever it is
            }
            const qreal gap = found.at(index + 1)->y() - found.at(index)->y() - found.at(index)->height();
            if (!qFuzzyCompare(gap, kGap)) {
                return u"%1 points between row %2 and the next"_s.arg(gap).arg(index);
            }
        }
        const qreal height = found.constLast()->y() + found.constLast()->height() - found.constFirst()->y();
        if (const qreal has = item(list).height(); !qFuzzyCompare(has, std::min(height, most))) {
            return u"the list is %1 high, its rows %2"_s.arg(has).arg(height);
        }
        const QQuickItem& buttons = item(u"pageButtons"_s);
        const QQuickItem& last = buttons.height() > 0 ? buttons : item(list);
        const int wanted = qCeil(last.mapToScene(QPointF(0, last.height())).y()) + kPadding;
        if (window().height() != std::min(wanted, _display)) {
            return u"the window is %1 high, its page %2"_s.arg(window().height()).arg(wanted);
        }
        return {};
    }

    /// From the moment on that the change is drawn and until nothing moves any more.
    void verifyPlaces(const QString& list, int count)
    {
        letDraw();
        QCOMPARE(wrong(list, count), QString());
        QSignalSpy frames(&window(), &QQuickWindow::frameSwapped);
        for (int frame = 0; frame < 40 && frames.wait(100); ++frame) {
            QCOMPARE(wrong(list, count), QString());
        }
    }

    int _display = 10'000;

    /// The drive tool's own seven checks, each told when it begins and when it ends.
    void pushBurst()
    {
        for (const QString& id : kSeven) {
            stage().seam.cli.pushLine(toJson(row(id, State::Running)));
            stage().seam.cli.pushLine(toJson(tall(id)));
        }
    }

private Q_SLOTS:

    void rowsThatGrowAtOnceMakeRoomForEachOther()
    {
        stage().seam.cli.holdLines();
        open(Screen::checks());
        for (const QString& id : kFour) {
            stage().seam.cli.pushLine(toJson(tall(id)));
        }
        stage().seam.cli.endLines();
        verifyPlaces(u"checks"_s, 4);
    }

    void rowsThatArriveAtOnceAndGrowStandApart_data()
    {
        QTest::addColumn<int>("framesBefore");
        for (const int frames : {0, 1, 2, 5, 12}) {
            QTest::addRow("%d frames", frames) << frames;
        }
    }

    void rowsThatArriveAtOnceAndGrowStandApart()
    {
        QFETCH(const int, framesBefore);
        stage().seam.cli.holdLines();
        open(Screen::checks());
        QSignalSpy frames(&window(), &QQuickWindow::frameSwapped);
        for (int frame = 0; frame < framesBefore; ++frame) {
            window().update();
            QVERIFY(frames.wait());
        }
        pushBurst();
        stage().seam.cli.endLines();
        verifyPlaces(u"checks"_s, 7);
    }

    void aRunThatIsOverBeforeTheWindowIsThereStandsApart()
    {
        stage().seam.cli.holdLines();
        start();
        model().setScreen(Screen::checks());
        const auto run = model().runChecks();
        pushBurst();
        openWindow();
        Theme::of(*stage().mainWindow().engine()).setReducedMotion(false);
        stage().seam.cli.endLines();
        verifyPlaces(u"checks"_s, 7);
    }

    void rowsThatArriveOneByOneStandApart()
    {
        stage().seam.cli.holdLines();
        open(Screen::checks());
        int rowsSoFar = 0;
        for (const QString& id : kSeven) {
            stage().seam.cli.pushLine(toJson(tall(id)));
            ++rowsSoFar;
            letDraw();
            QCOMPARE(wrong(u"checks"_s, std::max(4, rowsSoFar)), QString());
        }
        stage().seam.cli.endLines();
        verifyPlaces(u"checks"_s, 7);
    }

    void theSameAgainAndAgain()
    {
        openWith(failed(kFour));
        for (int time = 0; time < 4; ++time) {
            stage().seam.cli.holdLines();
            const auto run = model().runChecks();
            if (time % 2 == 0) {
                letDraw();
            }
            pushBurst();
            stage().seam.cli.endLines();
            verifyPlaces(u"checks"_s, 7);
        }
    }

    void theStepsOfASetupStandApart()
    {
        open(Screen::onboarding(Screen::Setup));
        const QStringList ids{u"login"_s, u"mount"_s, u"finder"_s, u"cli"_s};
        model().setupTaskRows()->replaceAll(pending(ids));
        for (const CheckItem& step : failed(ids)) {
            model().setupTaskRows()->put(row(step.id, State::Running));
            model().setupTaskRows()->put(step);
        }
        verifyPlaces(u"setupTasks"_s, 4);
        model().setupTaskRows()->replaceAll(pending(ids));
        verifyPlaces(u"setupTasks"_s, 4);
    }

    void theChecksOfTheFirstRunStandApart()
    {
        stage().seam.cli.holdLines();
        start();
        model().setScreen(Screen::onboarding(Screen::Verify));
        openWindow();
        Theme::of(*stage().mainWindow().engine()).setReducedMotion(false);
        const auto run = model().runChecks();
        pushBurst();
        stage().seam.cli.endLines();
        verifyPlaces(u"checks"_s, 7);
    }

    void rowsInsertedRemovedAndMovedStandApart()
    {
        openWith(failed(kSeven));
        QRandomGenerator random(20261122);
        QStringList ids = kSeven + QStringList{u"one"_s, u"two"_s, u"three"_s};
        for (int round = 0; round < 60; ++round) {
            std::ranges::shuffle(ids, random);
            const auto count = random.bounded(1, int(ids.size()) + 1);
            const QStringList some = ids.first(count);
            model().checkRows()->replaceAll(rows(some, [&random](const QString& id) {
                return random.bounded(2) == 0 ? tall(id) : row(id, State::Pass);
            }));
            if (random.bounded(3) == 0) {
                letDraw();
            }
            model().checkRows()->put(random.bounded(2) == 0 ? tall(some.constLast())
                                                            : row(some.constLast(), State::Skipped));
            model().checkRows()->put(tall(some.constFirst()));
            letDraw();
            QCOMPARE(wrong(u"checks"_s, int(count)), QString());
        }
    }

    void aListThatGrowsBeyondTheDisplayScrollsWithoutGaps()
    {
        openWith(failed(kFour));
        _display = 500;
        Theme::of(*stage().mainWindow().engine()).setDisplayHeight(_display);
        QList<CheckItem> many;
        for (int number = 0; number < 60; ++number) {
            many << (number % 3 == 0 ? tall(QString::number(number))
                                     : row(QString::number(number), State::Pass));
        }
        model().checkRows()->replaceAll(many);
        verifyPlaces(u"checks"_s, 60);
        for (int number = 0; number < 60; ++number) {
            model().checkRows()->put(number % 2 == 0 ? tall(QString::number(number))
                                                     : row(QString::number(number), State::Pass));
        }
        verifyPlaces(u"checks"_s, 60);
        model().checkRows()->replaceAll(failed(kFour));
        verifyPlaces(u"checks"_s, 4);
        _display = 10'000;
    }

    void heightsThatFollowAFontStandApart()
    {
        openWith(failed(kSeven));
        const QFont usual = QGuiApplication::font();
        QFont large = usual;
        large.setPointSizeF(usual.pointSizeF() * 1.5);
        QGuiApplication::setFont(large);
        letDraw();
        const QString larger = wrong(u"checks"_s, 7);
        QGuiApplication::setFont(usual);
        QCOMPARE(larger, QString());
        verifyPlaces(u"checks"_s, 7);
    }
};

FERROBANK_TEST_WITH_WINDOWS(RowsTest)
#include "RowsTest.moc"
