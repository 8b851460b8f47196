#pragma once

#include "Ferrobank/Views/MainWindow.h"
#include "Platform/DesktopAppearance.h"

#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtCore/QUrl>
#include <QtGui/QWindow>
#include <QtQml/QQmlEngine>
#include <QtQuick/QQuickWindow>

#include <functional>
#include <memory>

namespace ferrobank {

class Theme;

/// A window drawn in QML. Main thread. Engine and presenter are made by open() and are gone soon after the
/// window has closed: not inside the close itself, because that comes from within the engine.
class QmlWindow : public QObject, public MainWindow {
    Q_OBJECT

public:
    struct Scene {
        QUrl document; ///< its root is a window with a required property "presenter"
        std::function<std::unique_ptr<QObject>()> makePresenter;
        /// What the document will load by its address as soon as it is there, so that it can be read
        /// meanwhile; empty for nothing. None: there is no such thing.
        std::function<QUrl()> loadedNext = {};

        QPointer<QWindow> transientParent = nullptr; ///< the window it belongs to; null for none
    };

    QmlWindow(Scene scene, WindowHost& host);
    ~QmlWindow() override;

    void open(const QString& activationToken) override;
    void close() override;
    [[nodiscard]] bool isVisible() const override;
    [[nodiscard]] QWindow* window() const override;

    /// While open, for tests and pictures; null otherwise.
    [[nodiscard]] QQmlEngine* engine() const { return _engine.get(); }

    static Scene mainScene(const WindowCollaborators& with);
    static Scene loginItemsScene(const WindowCollaborators& with);

private:
    void appearAnewUnlessActive();
    void build();
    void centreOver(QWindow& parent);
    static void dim(QWindow* parent, bool dimmed);
    void tearDown();
    void followDesktop(Theme& theme);
    void followDisplay(Theme& theme);
    void applyDesktop(Theme& theme) const;
    static void followFont(const DesktopAppearance::Wishes& wishes);
    bool eventFilter(QObject* watched, QEvent* event) override;

    Scene _scene;
    WindowHost& _host;
    std::unique_ptr<DesktopAppearance> _desktop;
    std::unique_ptr<QObject> _presenter;
    // After the presenter: their bindings read it to the last.
    std::unique_ptr<QQmlEngine> _engine;
    std::unique_ptr<QQuickWindow> _window;
};

} // namespace ferrobank
