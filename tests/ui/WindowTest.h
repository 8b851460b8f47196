#pragma once

#include "Ferrobank/Views/RootPresenter.h"
#include "support/offline/Stage.h"

#include <QtQuick/QQuickItem>
#include <QtQuick/QQuickWindow>
#include <QtTest/QTest>

#include <memory>

namespace ferrobank {

/// A test of the main window as a person sees it: what is shown, by text or by object name, and clicks and
/// keys. Each test has a stage of its own. Nothing moves, as where the desktop asks for that; with
/// FERROBANK_TEST_MOTION in the environment everything moves as it does for most people.
class WindowTest : public QObject {
    Q_OBJECT

protected:
    /// Before start(), to set up the seam; afterwards for the model.
    Stage& stage() { return *_stage; }

    AppModel& model() { return _stage->model(); }

    /// Makes the model and lets it read its first status.
    void start();

    /// Opens the main window and waits until keys reach it.
    void openWindow();

    /// Both, on a screen.
    void openOn(Screen screen);

    /// Opens one of the windows; everything below is about the one opened last.
    void show(QmlWindow& window);

    QQuickWindow& window();

    /// What is visible and has the object name; null when nothing is.
    QQuickItem* find(const QString& objectName);

    /// The same, for what has to be there; `inside` names what it lies in.
    QQuickItem& item(const QString& objectName, const QString& inside = {});

    bool shows(const QString& objectName) { return find(objectName) != nullptr; }

    QString textOf(const QString& objectName);

    /// Every text on the screen, in the order of the items.
    QStringList texts();

    void click(const QString& objectName) { clickOn(item(objectName)); }

    void clickOn(const QQuickItem& target);
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

    /// Object name of the item that has the keyboard.
    QString focused();

protected Q_SLOTS:
    void init();
    void cleanup();

private:
    std::unique_ptr<Stage> _stage;
    QmlWindow* _shown = nullptr;
};

} // namespace ferrobank
