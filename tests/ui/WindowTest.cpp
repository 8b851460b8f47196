#include "ui/WindowTest.h"

#include "Ferrobank/Components/Theme.h"

#include <QtCore/QRegularExpression>

#include <functional>

namespace ferrobank {

namespace {

void eachVisible(QQuickItem* root, const std::function<void(QQuickItem*)>& visit)
{
    if (!root->isVisible()) {
        return;
    }
    visit(root);
    for (QQuickItem* child : root->childItems()) {
        eachVisible(child, visit);
    }
}

QQuickItem* findIn(QQuickItem* root, const QString& objectName)
{
    QQuickItem* found = nullptr;
    eachVisible(root, [&](QQuickItem* each) {
        if (found == nullptr && each->objectName() == objectName) {
            found = each;
        }
    });
    return found;
}

} // namespace

void WindowTest::init()
{
    // A complaint from our own QML is a failure, whatever the test is about.
    QTest::failOnWarning(QRegularExpression(QStringLiteral("qrc:/qt/qml/Ferrobank")));
    _stage = std::make_unique<Stage>();
}

void WindowTest::cleanup()
{
    _stage.reset();
}

void WindowTest::start()
{
    _stage->start();
    QCoreApplication::processEvents();
}

void WindowTest::openWindow()
{
    show(_stage->mainWindow());
}

void WindowTest::show(QmlWindow& shown)
{
    _shown = &shown;
    shown.open({});
    Theme::of(*shown.engine()).setReducedMotion(!qEnvironmentVariableIsSet("FERROBANK_TEST_MOTION"));
    if (!QTest::qWaitForWindowActive(&window())) {
        qFatal("The window does not become active");
    }
}

void WindowTest::openOn(Screen screen)
{
    start();
    model().setScreen(screen);
    openWindow();
}

QQuickWindow& WindowTest::window()
{
    auto* shown = _shown == nullptr ? nullptr : qobject_cast<QQuickWindow*>(_shown->window());
    if (shown == nullptr) {
        qFatal("The window is not open");
    }
    return *shown;
}

QQuickItem* WindowTest::find(const QString& objectName)
{
    return findIn(window().contentItem(), objectName);
}

QQuickItem& WindowTest::item(const QString& objectName, const QString& inside)
{
    QQuickItem* found = findIn(inside.isEmpty() ? window().contentItem() : &item(inside), objectName);
    if (found == nullptr) {
        qFatal("Nothing named %s is shown", qPrintable(objectName));
    }
    return *found;
}

QString WindowTest::textOf(const QString& objectName)
{
    return item(objectName).property("text").toString();
}

QStringList WindowTest::texts()
{
    QStringList found;
    eachVisible(window().contentItem(), [&](QQuickItem* each) {
        const QVariant text = each->property("text");
        if (text.isValid() && !text.toString().isEmpty()) {
            found << text.toString();
        }
    });
    found.removeDuplicates();
    return found;
}

void WindowTest::clickOn(const QQuickItem& target)
{
    const QPointF middle = target.mapToScene(QPointF(target.width() / 2, target.height() / 2));
    QTest::mouseClick(&window(), Qt::LeftButton, Qt::NoModifier, middle.toPoint());
}

void WindowTest::press(Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    QTest::keyClick(&window(), key, modifiers);
}

QString WindowTest::focused()
{
    const QQuickItem* focus = window().activeFocusItem();
    return focus == nullptr ? QString() : focus->objectName();
}

} // namespace ferrobank
