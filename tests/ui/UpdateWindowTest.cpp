#include "Ferrobank/Views/UpdateWindow.h"

#include "Ferrobank/Views/UpdatePresenter.h"
#include "support/TestProgram.h"
#include "support/offline/Stage.h"

#include <QtGui/QClipboard>
#include <QtQuick/QQuickItem>
#include <QtQuick/QQuickWindow>
#include <QtTest/QTest>

#include <memory>

using namespace ferrobank;
using namespace Qt::StringLiterals;

namespace {

UpdatePrompt found()
{
    UpdatePrompt prompt;
    prompt.headline = u"A new version of Ferrobank is available"_s;
    prompt.text = u"Ferrobank 1.0.1 is now available; you have 1.0.0."_s;
    prompt.notes = u"Faster.\n<b>No tags</b>"_s;
    prompt.automaticTitle = u"Automatically download"_s;
    prompt.buttons = {{UpdateAction::Install, u"Install Update"_s},
                      {UpdateAction::RemindLater, u"Remind Me Later"_s},
                      {UpdateAction::Skip, u"Skip This Version"_s}};
    prompt.dismiss = UpdateAction::RemindLater;
    return prompt;
}

UpdatePrompt downloading(double progress)
{
    UpdatePrompt prompt;
    prompt.headline = u"Downloading update…"_s;
    prompt.isBusy = true;
    prompt.progress = progress;
    prompt.buttons = {{UpdateAction::Cancel, u"Cancel"_s}};
    prompt.dismiss = UpdateAction::Cancel;
    return prompt;
}

QQuickItem* findVisible(QQuickItem* root, const QString& name)
{
    if (!root->isVisible())
        return nullptr;
    if (root->objectName() == name)
        return root;
    for (QQuickItem* child : root->childItems()) {
        if (QQuickItem* const item = findVisible(child, name))
            return item;
    }
    return nullptr;
}

} // namespace

class UpdateWindowTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        _stage = std::make_unique<Stage>();
        _stage->start();
        _update = std::make_unique<UpdateWindow>(_stage->collaborators());
        _acts.clear();
        _automatic.clear();
        _update->act = [this](UpdateAction action) { _acts.append(action); };
        _update->automaticChanged = [this](bool automatic) { _automatic.append(automatic); };
    }

    void cleanup()
    {
        _update.reset();
        _stage.reset();
    }

    void everythingOfAPromptIsShown()
    {
        show(found());
        QCOMPARE(textOf(u"pageTitle"_s), u"A new version of Ferrobank is available"_s);
        QCOMPARE(textOf(u"notesText"_s), u"Faster.\n<b>No tags</b>"_s);
        QCOMPARE(textOf(u"button2"_s), u"Install Update"_s);
        QCOMPARE(textOf(u"button1"_s), u"Remind Me Later"_s);
        QCOMPARE(textOf(u"button0"_s), u"Skip This Version"_s);
        QVERIFY(item(u"automatic"_s) && !item(u"progress"_s));
    }

    void buttonsActByMouseAndKeyboard()
    {
        show(found());
        click(u"button0"_s);
        QTRY_COMPARE(_acts, QList{UpdateAction::Skip});
        QTest::keyClick(window(), Qt::Key_Return);
        QTRY_COMPARE(_acts.size(), 2);
        QCOMPARE(_acts.last(), UpdateAction::Install);
    }

    void escapeAndTheCloseControlDismiss()
    {
        show(found());
        QTest::keyClick(window(), Qt::Key_Escape);
        QTRY_COMPARE(_acts, QList{UpdateAction::RemindLater});
        QTRY_VERIFY(window() == nullptr);
        QCOMPARE(_stage->host.closings, 1);
        show(found());
        click(u"close"_s);
        QTRY_COMPARE(_acts.size(), 2);
    }

    void closingByTheUpdaterDismissesNothing()
    {
        show(found());
        _update->close();
        QTRY_VERIFY(window() == nullptr);
        QCoreApplication::processEvents();
        QVERIFY(_acts.isEmpty());
    }

    void progressMovesWithoutTakingTheKeyboardFromTheButton()
    {
        show(downloading(0.25));
        QTest::keyClick(window(), Qt::Key_Tab);
        while (window()->activeFocusItem() && window()->activeFocusItem()->objectName() != u"button0"_s)
            QTest::keyClick(window(), Qt::Key_Tab);
        QQuickItem* const button = item(u"button0"_s);
        QVERIFY(button->hasActiveFocus());
        _update->show(downloading(0.5));
        QCOMPARE(item(u"progress"_s)->property("value").toDouble(), 0.5);
        QCOMPARE(item(u"button0"_s), button);
        QVERIFY(button->hasActiveFocus());
    }

    void promptsFollowEachOtherInOneWindow()
    {
        show(found());
        QQuickWindow* const first = window();
        _update->show(downloading(0));
        QCOMPARE(window(), first);
        QCOMPARE(textOf(u"pageTitle"_s), u"Downloading update…"_s);
        QVERIFY(!item(u"notes"_s) && !item(u"automatic"_s) && !item(u"button1"_s));
        QCOMPARE(textOf(u"button0"_s), u"Cancel"_s);
    }

    void checkBoxTellsItsChange()
    {
        show(found());
        click(u"automatic"_s);
        QTRY_COMPARE(_automatic, QList{true});
    }

    void theRunningVersionIsToldAndItsDiagnosticsCopied()
    {
        show(found());
        QCOMPARE(textOf(u"about"_s), u"Ferrobank %1"_s.arg(QCoreApplication::applicationVersion()));
        click(u"copyDiagnostics"_s);
        QTRY_COMPARE(textOf(u"copyDiagnostics"_s), u"Copied"_s);
        QVERIFY(QGuiApplication::clipboard()->text().startsWith(u"Ferrobank: 1.0.0, folder"_s));
        QVERIFY(_acts.isEmpty());
    }

    void nothingIsAskedAboutWhileTheUpdaterWorks()
    {
        show(downloading(0.5));
        QVERIFY(!item(u"about"_s) && !item(u"copyDiagnostics"_s));
    }

    void longNotesScrollAndTheWindowStaysSmall()
    {
        UpdatePrompt prompt = found();
        prompt.notes = QString(u"line\n"_s).repeated(500);
        show(prompt);
        QVERIFY(item(u"notes"_s)->height() <= 220);
        QVERIFY(window()->height() < 700);
    }

    void presenterMapsButtonsFromTheTrailingEdge()
    {
        UpdatePresenter presenter(found(), _stage->diagnostics());
        QList<UpdateAction> pressed;
        connect(&presenter, &UpdatePresenter::pressed, this,
                [&pressed](UpdateAction action) { pressed.append(action); });
        presenter.press(2);
        presenter.press(0);
        presenter.press(3);
        presenter.press(-1);
        QCOMPARE(pressed, (QList{UpdateAction::Install, UpdateAction::Skip}));
    }

private:
    void show(const UpdatePrompt& prompt)
    {
        _update->show(prompt);
        QVERIFY(QTest::qWaitForWindowActive(window()));
    }

    [[nodiscard]] QQuickWindow* window() { return qobject_cast<QQuickWindow*>(_update->window().window()); }

    [[nodiscard]] QQuickItem* item(const QString& name) { return findVisible(window()->contentItem(), name); }

    [[nodiscard]] QString textOf(const QString& name)
    {
        QQuickItem* const found = item(name);
        return found ? found->property("text").toString() : u"(not shown)"_s;
    }

    void click(const QString& name)
    {
        QQuickItem* const target = item(name);
        QVERIFY(target);
        const QPointF middle = target->mapToScene({target->width() / 2, target->height() / 2});
        QTest::mouseClick(window(), Qt::LeftButton, {}, middle.toPoint());
    }

    std::unique_ptr<Stage> _stage;
    std::unique_ptr<UpdateWindow> _update;
    QList<UpdateAction> _acts;
    QList<bool> _automatic;
};

FERROBANK_TEST_WITH_WINDOWS(UpdateWindowTest)
#include "UpdateWindowTest.moc"
