#include "component/model/ModelTest.h"
#include "support/TestProgram.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace ferrobank;

namespace {

using Kind = AppModel::UninstallState::Kind;

const auto kKept = u"The drive's data is kept, so reinstalling Ferrobank brings your drive back."_s;
const auto kDeleted = u"The drive's data is deleted from this Mac."_s;
const QStringList kUninstall{u"uninstall"_s};

} // namespace

/// Removing the drive.
class AppModelUninstallTest : public ModelTest {
    Q_OBJECT

private Q_SLOTS:

    void argumentsAndWordsFollowTheAnswers_data()
    {
        QTest::addColumn<bool>("exports");
        QTest::addColumn<bool>("deletes");
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QString>("text");

        const auto home = u"/home/anna/Ferrobank Files"_s;
        const auto outside = u"/mnt/disk/Ferrobank Files"_s;
        const auto uninstall = u"uninstall"_s;
        const auto exportTo = u"--export"_s;
        const auto deleteStore = u"--delete-store"_s;
        QTest::newRow("neither") << false << false << QString() << kUninstall << kKept;
        QTest::newRow("copy, spaces in the path")
            << true << false << home << QStringList{uninstall, exportTo, home}
            << u"Your files are in ~/Ferrobank Files. "_s + kKept;
        QTest::newRow("delete") << false << true << QString() << QStringList{uninstall, deleteStore}
                                << kDeleted;
        QTest::newRow("both, outside the home folder")
            << true << true << outside << QStringList{uninstall, exportTo, outside, deleteStore}
            << u"Your files are in /mnt/disk/Ferrobank Files. "_s + kDeleted;
        QTest::newRow("a folder beside the home folder")
            << true << false << u"/home/annabel/F"_s << QStringList{uninstall, exportTo, u"/home/annabel/F"_s}
            << u"Your files are in /home/annabel/F. "_s + kKept;
        QTest::newRow("a percent sign in the path")
            << true << false << u"/mnt/%1 %2"_s << QStringList{uninstall, exportTo, u"/mnt/%1 %2"_s}
            << u"Your files are in /mnt/%1 %2. "_s + kKept;
    }

    void argumentsAndWordsFollowTheAnswers()
    {
        QFETCH(const bool, exports);
        QFETCH(const bool, deletes);
        QFETCH(const QString, folder);
        QFETCH(const QStringList, args);
        seam().finishSetup();
        start();
        uninstall(exports ? std::optional(folder) : std::nullopt, deletes);
        QCOMPARE(seam().cli.callsOf(args), 1);
        QVERIFY(model().uninstallState().kind == Kind::Done);
        QTEST(model().uninstallState().text, "text");
        QVERIFY(isIdle());
    }

    void successClearsTheSetupRecord()
    {
        seam().finishSetup();
        start();
        QSignalSpy told(&model(), &AppModel::setupCompleteChanged);
        uninstall({}, false);
        QCOMPARE(seam().defaults.values.value(u"setupComplete"_s), false);
        QCOMPARE(told.count(), 1);
        QVERIFY(!model().setupComplete());
    }

    void failureKeepsTheSetupRecordAndShowsTheToolsWords()
    {
        seam().finishSetup();
        start();
        seam().cli.answer(kUninstall, FakeCLI::Answer::fails(u"volume busy"_s));
        uninstall({}, false);
        QCOMPARE(model().uninstallState(), state(Kind::Failed, u"volume busy"_s));
        QVERIFY(model().setupComplete());
    }

    void missingToolIsAFailure()
    {
        seam().finishSetup();
        start();
        seam().cli.answer(kUninstall, FakeCLI::Answer::missing());
        uninstall({}, false);
        QCOMPARE(model().uninstallState(), state(Kind::Failed, u"No such file or directory"_s));
        QVERIFY(model().setupComplete());
    }

    void stateIsRunningWhileTheToolWorks()
    {
        start();
        seam().cli.hold(kUninstall);
        uninstall({}, false);
        QCOMPARE(model().uninstallState(), state(Kind::Running));
        seam().cli.finish(kUninstall, {});
        QVERIFY(model().uninstallState().kind == Kind::Done);
    }

    void outcomeShowsBeforeTheClosingRead_data()
    {
        QTest::addColumn<bool>("fails");
        QTest::newRow("success") << false;
        QTest::newRow("failure") << true;
    }

    void outcomeShowsBeforeTheClosingRead()
    {
        QFETCH(const bool, fails);
        seam().finishSetup();
        start();
        if (fails) {
            seam().cli.answer(kUninstall, FakeCLI::Answer::fails(u"volume busy"_s));
        }
        seam().cli.hold(FakeCLI::kStatus);
        uninstall({}, false);
        QCOMPARE(seam().cli.waiting(FakeCLI::kStatus), 1);
        QVERIFY(model().uninstallState().kind == (fails ? Kind::Failed : Kind::Done));
        seam().cli.answerStatus(unmountedStatus());
        QVERIFY(isIdle());
    }

    void statusIsReadAgainAtTheEnd_data()
    {
        QTest::addColumn<bool>("fails");
        QTest::newRow("after success") << false;
        QTest::newRow("after failure") << true;
    }

    void statusIsReadAgainAtTheEnd()
    {
        QFETCH(const bool, fails);
        seam().cli.answerStatus(mountedStatus());
        start();
        if (fails) {
            seam().cli.answer(kUninstall, FakeCLI::Answer::fails(u"volume busy"_s));
        }
        seam().cli.answerStatus(unmountedStatus());
        uninstall({}, false);
        QVERIFY(!model().status()->mounted);
    }

    void anotherCallWhileRunningIsSilentAtItsBeginning()
    {
        start();
        seam().cli.hold(kUninstall);
        QSignalSpy told(&model(), &AppModel::uninstallStateChanged);
        uninstall({}, false);
        QCOMPARE(told.count(), 1);
        uninstall({}, false);
        QCOMPARE(told.count(), 1);
        QCOMPARE(seam().cli.waiting(kUninstall), 2);
    }

    void ofTwoCallsTheLastToEndSetsTheState()
    {
        seam().finishSetup();
        start();
        seam().cli.hold(kUninstall);
        uninstall({}, false);
        uninstall({}, false);
        seam().cli.finish(kUninstall, {});
        QVERIFY(model().uninstallState().kind == Kind::Done);
        seam().cli.finish(kUninstall, FakeCLI::Answer::fails(u"not installed"_s));
        QCOMPARE(model().uninstallState(), state(Kind::Failed, u"not installed"_s));
        QVERIFY(isIdle());
    }

    void anotherCallAfterAFailureStartsAgain()
    {
        start();
        seam().cli.answer(kUninstall, FakeCLI::Answer::fails(u"volume busy"_s));
        uninstall({}, false);
        seam().cli.answer(kUninstall, {});
        QSignalSpy told(&model(), &AppModel::uninstallStateChanged);
        uninstall({}, false);
        QCOMPARE(told.count(), 2); // running, done
        QCOMPARE(model().uninstallState(), state(Kind::Done, kKept));
    }

    void uninstallDuringAChecksRunLeavesTheRunAlone()
    {
        start();
        seam().cli.holdLines();
        runChecks();
        uninstall({}, true);
        QVERIFY(model().uninstallState().kind == Kind::Done);
        QVERIFY(model().checksRunning());
        seam().cli.pushLine(line(u"drive"_s, State::Fail));
        seam().cli.endLines();
        QVERIFY(!model().checksRunning());
        QCOMPARE(model().checks().at(1).state, State::Fail);
        QVERIFY(isIdle());
    }

    void pollGoesOnBesideAnUninstall()
    {
        seam().cli.answerStatus(mountedStatus());
        start();
        seam().cli.hold(kUninstall);
        uninstall({}, false);
        seam().cli.answerStatus(unmountedStatus());
        advance(5s);
        QVERIFY(!model().status()->mounted);
        QCOMPARE(model().uninstallState(), state(Kind::Running));
    }

    void recordThatCannotBeClearedOnDiskIsNoFailure()
    {
        seam().finishSetup();
        start();
        seam().defaults.reachesDisk = false;
        uninstall({}, false);
        QCOMPARE(model().uninstallState(), state(Kind::Done, kKept));
        QVERIFY(!model().setupComplete());
    }

private:
    static AppModel::UninstallState state(Kind kind, const QString& text = {})
    {
        return {.kind = kind, .text = text};
    }

    void uninstall(const std::optional<QString>& exportTo, bool deleteData)
    {
        spawn(&model(), model().uninstall(exportTo, deleteData));
    }
};

FERROBANK_TEST(AppModelUninstallTest)
#include "AppModelUninstallTest.moc"
