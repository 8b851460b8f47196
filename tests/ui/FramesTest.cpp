#include "Ferrobank/Components/Theme.h"
#include "support/TestProgram.h"
#include "ui/WindowTest.h"

#include <QtTest/QSignalSpy>

#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace ferrobank;

/// What is drawn, and when: a window that nobody touches costs nothing.
class FramesTest : public WindowTest {
    Q_OBJECT

private:
    /// Opens the dashboard of a mounted drive and waits until nothing moves any more.
    void openQuietDashboard()
    {
        stage().seam.finishSetup();
        stage().seam.cli.answerStatus(mountedStatus());
        openOn(Screen::dashboard());
        QTRY_VERIFY(!model().checksRunning());
        _frames = std::make_unique<QSignalSpy>(&window(), &QQuickWindow::frameSwapped);
        QTRY_VERIFY(nothingIsDrawnFor(200ms));
    }

    bool nothingIsDrawnFor(std::chrono::milliseconds time)
    {
        _frames->clear();
        return !_frames->wait(static_cast<int>(time.count()));
    }

    void poll()
    {
        QSignalSpy read(&model(), &AppModel::statusChanged);
        stage().seam.clock.advance(5s);
        QTRY_COMPARE(read.count(), 1);
    }

    std::unique_ptr<QSignalSpy> _frames;

private Q_SLOTS:

    void pollsThatChangeNothingDrawNothing()
    {
        openQuietDashboard();
        constexpr int kPolls = 20;
        for (int count = 0; count < kPolls; ++count) {
            poll();
        }
        QVERIFY(nothingIsDrawnFor(200ms));
    }

    void aFigureThatChangesIsDrawn()
    {
        openQuietDashboard();
        DriveStatus status = mountedStatus();
        status.volume_used = status.volume_used.value_or(0) + 5'000'000'000U;
        stage().seam.cli.answerStatus(status);
        _frames->clear();
        poll();
        QTRY_VERIFY(_frames->count() > 0);
        QTRY_VERIFY(nothingIsDrawnFor(200ms));
    }

    void checksThatRunDrawTheirSpinnerAndThenNothing()
    {
        openQuietDashboard();
        Theme::of(*stage().mainWindow().engine()).setReducedMotion(false);
        stage().seam.cli.holdLines();
        const auto running = model().runChecks();
        QVERIFY(shows(u"healthSpinner"_s));
        QVERIFY(!nothingIsDrawnFor(5s));
        stage().seam.cli.endLines();
        QTRY_VERIFY(!model().checksRunning());
        QTRY_VERIFY(nothingIsDrawnFor(200ms));
    }
};

FERROBANK_TEST_WITH_WINDOWS(FramesTest)
#include "FramesTest.moc"
