#include "Ferrobank/Components/Theme.h"
#include "support/TestProgram.h"
#include "ui/WindowTest.h"

using namespace Qt::StringLiterals;
using namespace ferrobank;

/// The uninstall screen.
class UninstallScreenTest : public WindowTest {
    Q_OBJECT

private:
    void openForm() { openOn(Screen::uninstall()); }

    static QStringList commandLine(const QStringList& more) { return QStringList{u"uninstall"_s} + more; }

    bool isWarning()
    {
        return item(u"consequence"_s).property("color").value<QColor>() ==
               Theme::of(*stage().mainWindow().engine()).red();
    }

private Q_SLOTS:

    void theFormOpensInItsSafestSetting()
    {
        openForm();
        QCOMPARE(textOf(u"pageTitle"_s), u"Uninstall Ferrobank"_s);
        QCOMPARE(textOf(u"pageSubtitle"_s),
                 u"This detaches the drive and stops Ferrobank from starting at login."_s);
        QCOMPARE(textOf(u"copiesFiles"_s), u"Copy my files to a folder first"_s);
        QVERIFY(item(u"copiesFiles"_s).property("checked").toBool());
        QCOMPARE(textOf(u"folder"_s), u"/home/anna/Ferrobank Files"_s);
        QCOMPARE(textOf(u"deletesData"_s), u"Delete the drive's data from this Mac"_s);
        QVERIFY(!item(u"deletesData"_s).property("checked").toBool());
        QCOMPARE(textOf(u"consequence"_s), u"The data stays, so reinstalling brings your drive back."_s);
        QVERIFY(!isWarning());
        QVERIFY(!shows(u"failure"_s));
    }

    void theSentenceFollowsTheAnswers()
    {
        openForm();
        click(u"deletesData"_s);
        QCOMPARE(textOf(u"consequence"_s), u"Your files will be in the folder above."_s);
        QVERIFY(!isWarning());
        click(u"copiesFiles"_s);
        QCOMPARE(textOf(u"consequence"_s), u"Your files on Ferrobank will be gone."_s);
        QVERIFY(isWarning());
        click(u"copiesFiles"_s);
        QCOMPARE(textOf(u"consequence"_s), u"Your files will be in the folder above."_s);
        QVERIFY(!isWarning());
        click(u"deletesData"_s);
        click(u"copiesFiles"_s);
        QCOMPARE(textOf(u"consequence"_s), u"The data stays, so reinstalling brings your drive back."_s);
    }

    void uninstallIsRedExactlyWhenFilesWillBeGone()
    {
        openForm();
        const auto fill = [this] { return item(u"uninstall"_s).property("fill").value<QColor>(); };
        const Theme& theme = Theme::of(*stage().mainWindow().engine());
        QCOMPARE(fill(), theme.accent());
        click(u"deletesData"_s);
        QCOMPARE(fill(), theme.accent());
        click(u"copiesFiles"_s);
        QCOMPARE(fill(), theme.danger());
        click(u"deletesData"_s);
        QCOMPARE(fill(), theme.accent());
    }

    void turningTheCopyOffHidesTheFolderButKeepsIt()
    {
        openForm();
        click(u"choose"_s);
        stage().host.choosers.constLast()(u"/home/anna/Desktop"_s);
        click(u"copiesFiles"_s);
        QVERIFY(!shows(u"folder"_s));
        QVERIFY(!shows(u"choose"_s));
        click(u"copiesFiles"_s);
        QCOMPARE(textOf(u"folder"_s), u"/home/anna/Desktop/Ferrobank Files"_s);
    }

    void theCopyLandsInAFolderOfItsOwnInsideTheChosenOne()
    {
        openForm();
        click(u"choose"_s);
        QCOMPARE(stage().host.choosers.size(), 1);
        stage().host.choosers.constLast()(u"/home/anna/Desktop"_s);
        QCOMPARE(textOf(u"folder"_s), u"/home/anna/Desktop/Ferrobank Files"_s);
    }

    void aCancelledChooserChangesNothing()
    {
        openForm();
        click(u"choose"_s);
        stage().host.choosers.constLast()({});
        QCOMPARE(textOf(u"folder"_s), u"/home/anna/Ferrobank Files"_s);
    }

    void aFolderChosenAfterTheWindowClosedIsForgotten()
    {
        openForm();
        click(u"choose"_s);
        stage().mainWindow().close();
        QTRY_COMPARE(stage().host.closings, 1);
        stage().host.choosers.constLast()(u"/home/anna/Desktop"_s);
        openWindow();
        QCOMPARE(textOf(u"folder"_s), u"/home/anna/Ferrobank Files"_s);
    }

    void leavingAndComingBackStartsFromTheSafestSetting()
    {
        openForm();
        click(u"deletesData"_s);
        click(u"copiesFiles"_s);
        model().setScreen(Screen::checks());
        model().setScreen(Screen::uninstall());
        QVERIFY(item(u"copiesFiles"_s).property("checked").toBool());
        QVERIFY(!item(u"deletesData"_s).property("checked").toBool());
    }

    void closingTheWindowIsLeavingToo()
    {
        openForm();
        click(u"deletesData"_s);
        press(Qt::Key_Escape);
        QTRY_COMPARE(stage().host.closings, 1);
        openWindow();
        QVERIFY(!item(u"deletesData"_s).property("checked").toBool());
    }

    void escapeCancelsAndReturnDoesNothing()
    {
        openForm();
        press(Qt::Key_Return);
        QCOMPARE(model().uninstallState(), AppModel::UninstallState{});
        QVERIFY(stage().mainWindow().isVisible());
        press(Qt::Key_Escape);
        QTRY_COMPARE(stage().host.closings, 1);
        QCOMPARE(model().screen(), Screen::uninstall());
        QCOMPARE(model().uninstallState(), AppModel::UninstallState{});
    }

    void nothingHasTheFocusAtFirst()
    {
        openForm();
        QVERIFY(focused() != u"uninstall"_s);
        press(Qt::Key_Tab);
        QCOMPARE(focused(), u"copiesFiles"_s);
    }

    void theAnswersBecomeTheCommandLine_data()
    {
        QTest::addColumn<bool>("copies");
        QTest::addColumn<bool>("deletes");
        QTest::addColumn<QStringList>("expected");
        const QString folder = u"/home/anna/Ferrobank Files"_s;
        QTest::newRow("copy, keep") << true << false << commandLine({u"--export"_s, folder});
        QTest::newRow("no copy, keep") << false << false << commandLine({});
        QTest::newRow("copy, delete")
            << true << true << commandLine({u"--export"_s, folder, u"--delete-store"_s});
        QTest::newRow("no copy, delete") << false << true << commandLine({u"--delete-store"_s});
    }

    void theAnswersBecomeTheCommandLine()
    {
        QFETCH(bool, copies);
        QFETCH(bool, deletes);
        QFETCH(QStringList, expected);
        openForm();
        if (!copies) {
            click(u"copiesFiles"_s);
        }
        if (deletes) {
            click(u"deletesData"_s);
        }
        click(u"uninstall"_s);
        QCOMPARE(stage().seam.cli.callsOf(expected), 1);
    }

    void duringTheRunThereIsASpinnerAndNoButton()
    {
        const QStringList args = commandLine({u"--export"_s, u"/home/anna/Ferrobank Files"_s});
        stage().seam.cli.hold(args);
        openForm();
        click(u"uninstall"_s);
        QCOMPARE(textOf(u"pageTitle"_s), u"Uninstalling Ferrobank"_s);
        QCOMPARE(textOf(u"pageSubtitle"_s), u"Copying your files, then detaching the drive."_s);
        QVERIFY(shows(u"uninstallSpinner"_s));
        for (const QString& name : {u"uninstall"_s, u"cancel"_s, u"quit"_s, u"moveToTrash"_s}) {
            QVERIFY(!shows(name));
        }
        press(Qt::Key_Return);
        press(Qt::Key_Escape);
        QVERIFY(stage().mainWindow().isVisible());
        QCOMPARE(stage().seam.cli.callsOf(args), 1);
    }

    void withoutACopyTheProgressSaysSo()
    {
        stage().seam.cli.hold(commandLine({}));
        openForm();
        click(u"copiesFiles"_s);
        click(u"uninstall"_s);
        QCOMPARE(textOf(u"pageSubtitle"_s), u"Detaching the drive."_s);
    }

    void aFailedRunComesBackToTheFormWithTheAnswersKept()
    {
        stage().seam.cli.answer(commandLine({u"--delete-store"_s}),
                                FakeCLI::Answer::fails(u"The drive is in use."_s));
        openForm();
        click(u"copiesFiles"_s);
        click(u"deletesData"_s);
        click(u"uninstall"_s);
        QTRY_VERIFY(shows(u"failure"_s));
        QCOMPARE(textOf(u"failure"_s), u"The drive is in use."_s);
        QVERIFY(!item(u"copiesFiles"_s).property("checked").toBool());
        QVERIFY(item(u"deletesData"_s).property("checked").toBool());
        click(u"uninstall"_s);
        QCOMPARE(stage().seam.cli.callsOf(commandLine({u"--delete-store"_s})), 2);
    }

    void theEndFaceTellsTheOutcomeAndOffersThreeWays()
    {
        openForm();
        click(u"uninstall"_s);
        QTRY_COMPARE(textOf(u"pageTitle"_s), u"Ferrobank is uninstalled"_s);
        QCOMPARE(
            textOf(u"pageSubtitle"_s),
            u"Your files are in ~/Ferrobank Files. The drive's data is kept, so reinstalling Ferrobank brings your drive back."_s);
        QCOMPARE(textOf(u"openCopiedFiles"_s), u"Open Copied Files"_s);
        QCOMPARE(textOf(u"moveToTrash"_s), u"Move Ferrobank to Trash"_s);
        QCOMPARE(textOf(u"quit"_s), u"Quit"_s);
        click(u"openCopiedFiles"_s);
        QCOMPARE(stage().seam.workspace.openedPaths, QStringList{u"/home/anna/Ferrobank Files"_s});
        click(u"moveToTrash"_s);
        QCOMPARE(stage().host.trashings, 1);
        click(u"quit"_s);
        QCOMPARE(stage().host.quits, 1);
    }

    void withoutACopyThereIsNothingToOpen()
    {
        openForm();
        click(u"copiesFiles"_s);
        click(u"uninstall"_s);
        QTRY_VERIFY(shows(u"quit"_s));
        QVERIFY(!shows(u"openCopiedFiles"_s));
    }

    void theOutcomeOutlivesTheWindow()
    {
        openForm();
        click(u"uninstall"_s);
        QTRY_VERIFY(shows(u"quit"_s));
        stage().mainWindow().close();
        QTRY_COMPARE(stage().host.closings, 1);
        openWindow();
        QCOMPARE(textOf(u"pageTitle"_s), u"Ferrobank is uninstalled"_s);
    }
};

FERROBANK_TEST_WITH_WINDOWS(UninstallScreenTest)
#include "UninstallScreenTest.moc"
