#include "Ferrobank/Views/QmlWindow.h"

#include "Ferrobank/Components/Theme.h"
#include "Ferrobank/Model/AppModel.h"
#include "Ferrobank/Views/LoginItemsPresenter.h"
#include "Ferrobank/Views/RootPresenter.h"
#include "Platform/NativeWindow.h"

#include <QtCore/QEvent>
#include <QtCore/QTimer>
#include <QtGui/QGuiApplication>
#include <QtGui/QPalette>
#include <QtGui/QPlatformSurfaceEvent>
#include <QtGui/QScreen>
#include <QtQml/QQmlComponent>

#include <algorithm>
#include <chrono>

namespace ferrobank {

namespace {

using namespace Qt::StringLiterals;

// For the desktop to bring a window to the front that has leave to be there.
constexpr std::chrono::milliseconds kRaisePatience(300);

// Where no theme sets one, Qt's own palette carries this blue; it says nothing about the desktop.
constexpr QRgb kQtHighlight = 0xff308cc6;

bool isDark(const QPalette& palette)
{
    return palette.color(QPalette::WindowText).lightness() > palette.color(QPalette::Window).lightness();
}

// A running spinner takes a whole core where no graphics card helps; the software renderer needs next to
// nothing for screens like these. Can be said only once in a process.
void chooseRenderer()
{
    static const bool chosen = [] {
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
        QQuickWindow::setDefaultAlphaBuffer(true);
        return true;
    }();
    Q_UNUSED(chosen)
}

QColor accentOf(const QPalette& palette)
{
    const QColor highlight = palette.color(QPalette::Highlight);
    return highlight.rgb() == kQtHighlight ? QColor() : highlight;
}

} // namespace

QmlWindow::QmlWindow(Scene scene, WindowHost& host)
    : _scene(std::move(scene)), _host(host), _desktop(DesktopAppearance::make())
{
    chooseRenderer();
    qGuiApp->installEventFilter(this);
}

QmlWindow::~QmlWindow()
{
    _window.reset();
    _engine.reset();
}

QmlWindow::Scene QmlWindow::mainScene(const WindowCollaborators& with)
{
    return {QUrl(u"qrc:/qt/qml/Ferrobank/Main.qml"_s),
            [with] { return std::unique_ptr<QObject>(new RootPresenter(with)); },
            [&model = with.model] {
                const bool dashboard = model.screen() == Screen::dashboard();
                return dashboard ? QUrl(u"qrc:/qt/qml/Ferrobank/Dashboard/Dashboard.qml"_s) : QUrl();
            }};
}

QmlWindow::Scene QmlWindow::loginItemsScene(const WindowCollaborators& with)
{
    return {QUrl(u"qrc:/qt/qml/Ferrobank/Views/LoginItems.qml"_s),
            [with] { return std::unique_ptr<QObject>(new LoginItemsPresenter(with)); }};
}

void QmlWindow::open(const QString& activationToken)
{
    if (_window != nullptr && !_window->isVisible()) {
        tearDown();
    }
    if (_window == nullptr) {
        build();
    }
    if (!activationToken.isEmpty()) {
        // Where Qt's Wayland plugin looks for the token that lets a window take the focus.
        qputenv("XDG_ACTIVATION_TOKEN", activationToken.toUtf8());
    }
    // Where a minimised window comes back only with leave, appearing anew is the only way. Any other stays
    // where it is: the desktop brings it to the front, or tells the user that it wants to be there.
    if (!_window->isVisible() && _scene.transientParent) {
        centreOver(*_scene.transientParent);
    }
    const bool wasMinimised = _window->visibility() == QWindow::Minimized;
    if (wasMinimised) {
        _window->showNormal();
    } else {
        _window->show();
    }
    _window->raise();
    _window->requestActivate();
    qunsetenv("XDG_ACTIVATION_TOKEN"); // good for this window alone
    if (wasMinimised && raisingNeedsLeave()) {
        QTimer::singleShot(kRaisePatience, _window.get(), [this] { appearAnewUnlessActive(); });
    }
}

void QmlWindow::centreOver(QWindow& parent)
{
    const QRect over = parent.geometry();
    const QRect area = parent.screen()->availableGeometry();
    QRect place(QPoint(), _window->size());
    place.moveCenter(over.center());
    place.moveLeft(
        std::clamp(place.left(), area.left(), std::max(area.left(), area.right() + 1 - place.width())));
    place.moveTop(
        std::clamp(place.top(), area.top(), std::max(area.top(), area.bottom() + 1 - place.height())));
    _window->setPosition(place.topLeft());
    dim(&parent, true);
}

void QmlWindow::dim(QWindow* parent, bool dimmed)
{
    // One of our own windows, or none of our business.
    if (parent != nullptr && parent->property("dimmed").isValid()) {
        parent->setProperty("dimmed", dimmed);
    }
}

void QmlWindow::appearAnewUnlessActive()
{
    if (_window->isVisible() && !_window->isActive()) {
        // Back before the close that this looks like is acted upon.
        _window->hide();
        _window->show();
    }
}

void QmlWindow::build()
{
    _presenter = _scene.makePresenter();
    _engine = std::make_unique<QQmlEngine>();
    _engine->addImportPath(u"qrc:/qt/qml"_s);
    QQmlComponent document(_engine.get(), _scene.document);
    // The engine reads on a thread of its own, while this one makes the window.
    QQmlComponent next(_engine.get());
    if (const QUrl address = _scene.loadedNext ? _scene.loadedNext() : QUrl(); !address.isEmpty()) {
        next.loadUrl(address, QQmlComponent::Asynchronous);
    }
    const QVariantMap inputs{{u"presenter"_s, QVariant::fromValue(_presenter.get())}};
    std::unique_ptr<QObject> root(document.createWithInitialProperties(inputs));
    if (qobject_cast<QQuickWindow*>(root.get()) == nullptr) {
        qFatal("The window's QML could not be loaded: %s", qPrintable(document.errorString()));
    }
    _window.reset(static_cast<QQuickWindow*>(root.release()));
    _window->setTransientParent(_scene.transientParent);
    _window->installEventFilter(this);
    Theme& theme = Theme::of(*_engine);
    theme.setMinimisable(NativeWindow::canBeMinimised());
    followDesktop(theme);
    followDisplay(theme);
    connect(_window.get(), &QWindow::visibleChanged, this, [this](bool visible) {
        if (!visible) {
            QMetaObject::invokeMethod(this, &QmlWindow::tearDown, Qt::QueuedConnection);
        }
    });
}

void QmlWindow::tearDown()
{
    if (_window == nullptr || _window->isVisible()) {
        return;
    }
    dim(_scene.transientParent, false);
    _window.reset();
    _engine.reset();
    _presenter.reset();
    _host.windowClosed();
}

void QmlWindow::close()
{
    if (_window != nullptr) {
        _window->close();
    }
}

bool QmlWindow::isVisible() const
{
    return _window != nullptr && _window->isVisible() && _window->visibility() != QWindow::Minimized;
}

QWindow* QmlWindow::window() const
{
    return _window.get();
}

void QmlWindow::followDesktop(Theme& theme)
{
    _desktop->settle();
    applyDesktop(theme);
    connect(_desktop.get(), &DesktopAppearance::changed, &theme, [this, &theme] { applyDesktop(theme); });
}

void QmlWindow::followDisplay(Theme& theme)
{
    const auto measure = [this, &theme] {
        const QSize area = NativeWindow::usableArea(*_window);
        theme.setDisplayHeight(area.height());
        theme.setDisplayWidth(area.width());
    };
    const auto follow = [measure, &theme](QScreen* screen) {
        if (screen != nullptr) {
            connect(screen, &QScreen::availableGeometryChanged, &theme, measure);
            connect(screen, &QScreen::geometryChanged, &theme, measure);
            measure();
        }
    };
    connect(_window.get(), &QWindow::screenChanged, &theme, follow);
    follow(_window->screen());
}

void QmlWindow::applyDesktop(Theme& theme) const
{
    const auto& wishes = _desktop->wishes();
    const QPalette palette = QGuiApplication::palette();
    theme.setDark(wishes.dark.value_or(isDark(palette)));
    theme.setAccent(wishes.accent.value_or(accentOf(palette)));
    theme.setHighContrast(wishes.highContrast);
    theme.setReducedMotion(wishes.reducedMotion);
    followFont(wishes);
    if (_window) {
        NativeWindow::setBackground(*_window, theme.window());
    }
    theme.setComposited(windowsAreComposited());
}

void QmlWindow::followFont(const DesktopAppearance::Wishes& wishes)
{
    // The toolkit's own idea of the desktop's font, for parts that the desktop does not tell.
    static const QFont toolkit = QGuiApplication::font();
    QFont font = toolkit;
    if (wishes.fontFamily) {
        font.setFamily(*wishes.fontFamily);
    }
    if (wishes.fontSize) {
        font.setPointSizeF(*wishes.fontSize);
    }
    if ((wishes.fontFamily || wishes.fontSize) && QGuiApplication::font() != font) {
        QGuiApplication::setFont(font);
    }
}

bool QmlWindow::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == _window.get() && event->type() == QEvent::PlatformSurface &&
        static_cast<QPlatformSurfaceEvent*>(event)->surfaceEventType() ==
            QPlatformSurfaceEvent::SurfaceCreated)
    {
        NativeWindow::setDesktopFile(*_window, QGuiApplication::desktopFileName().toUtf8());
        NativeWindow::setBackground(*_window, Theme::of(*_engine).window());
    }
    if (watched == qGuiApp && event->type() == QEvent::ApplicationPaletteChange && _engine) {
        applyDesktop(Theme::of(*_engine));
    }
    return QObject::eventFilter(watched, event);
}

} // namespace ferrobank

ferrobank::MainWindow* ferrobankMakeMainWindow(const ferrobank::WindowCollaborators& with)
{
    return new ferrobank::QmlWindow(ferrobank::QmlWindow::mainScene(with), with.host);
}

ferrobank::MainWindow* ferrobankMakeLoginItemsWindow(const ferrobank::WindowCollaborators& with)
{
    return new ferrobank::QmlWindow(ferrobank::QmlWindow::loginItemsScene(with), with.host);
}
