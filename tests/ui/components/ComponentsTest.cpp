// Each component alone: runs the tst_*.qml files of this folder.

#include <QtQml/QQmlEngine>
#include <QtQuick/QQuickWindow>
#include <QtQuickTest/QtQuickTest>

class ComponentsSetup : public QObject {
    Q_OBJECT

public Q_SLOTS:

    void applicationAvailable() { QQuickWindow::setGraphicsApi(QSGRendererInterface::Software); }

    void qmlEngineAvailable(QQmlEngine* engine) { engine->addImportPath(QStringLiteral("qrc:/qt/qml")); }
};

QUICK_TEST_MAIN_WITH_SETUP(components, ComponentsSetup)
#include "ComponentsTest.moc"
