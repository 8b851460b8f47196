#include "Ferrobank/Words/Catalogue.h"
#include "support/TestProgram.h"
#include "support/offline/Scenes.h"
#include "support/offline/Stage.h"

#include <QtCore/QRegularExpression>
#include <QtQuick/QQuickItem>
#include <QtQuick/QQuickWindow>
#include <QtTest/QTest>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace ferrobank {

namespace {

/// Programs, places, prompts and habits of another system than this one.
const QRegularExpression kForeign(
    uR"(\bMac\b|macOS|Finder|访达|System Settings|Systemeinstellungen|Réglages Système|Ajustes del Sistema|システム設定)"
    uR"(|系统设置|إعدادات النظام|\bTerminal can\b|menu bar|Menüleiste|barre des menus|Don't Allow)"_s);

/// Everything that is shown or said aloud below an item, visible or not yet.
void collect(const QQuickItem& item, QStringList& words)
{
    for (const char* property : {"text", "title", "subtitle", "caption", "label", "value"}) {
        const QVariant value = item.property(property);
        if (value.typeId() == QMetaType::QString && !value.toString().isEmpty() && item.isVisible()) {
            words << value.toString();
        }
    }
    const QList<QQuickItem*> children = item.childItems();
    for (const QQuickItem* child : children) {
        collect(*child, words);
    }
}

} // namespace

/// Every scene, in every language, with this system's words.
class SystemWordsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void noSceneSpeaksOfAnotherSystem_data()
    {
        QTest::addColumn<QString>("language");
        for (const char* language : {"en", "ar", "de", "es", "fr", "ja", "zh_CN"}) {
            QTest::newRow(language) << QString::fromLatin1(language);
        }
    }

    void noSceneSpeaksOfAnotherSystem()
    {
        QFETCH(QString, language);
        installWords(QStringLiteral(FERROBANK_TRANSLATIONS), {language});
        int texts = 0;
        for (const OfflineScene& scene : offlineScenes()) {
            Stage stage;
            const auto call = [&stage](const std::function<void(Stage&)>& step) {
                if (step) {
                    step(stage);
                }
            };
            call(scene.before);
            stage.start();
            QCoreApplication::processEvents();
            call(scene.ready);
            QmlWindow& window = windowOf(stage, scene);
            window.open({});
            call(scene.shown);
            auto* shown = qobject_cast<QQuickWindow*>(window.window());
            QVERIFY(shown != nullptr);
            QTRY_VERIFY(shown->isVisible());
            QCoreApplication::processEvents();
            QStringList words;
            collect(*shown->contentItem(), words);
            texts += static_cast<int>(words.size());
            for (const QString& text : std::as_const(words)) {
                QVERIFY2(!text.contains(kForeign), qPrintable(scene.name + u": "_s + text));
            }
        }
        QVERIFY(texts > 500);
    }

    void cleanup()
    {
        const auto translators = QCoreApplication::instance()->findChildren<QTranslator*>();
        qDeleteAll(translators);
        QGuiApplication::setLayoutDirection(Qt::LayoutDirectionAuto);
    }
};

} // namespace ferrobank

FERROBANK_TEST_WITH_WINDOWS(ferrobank::SystemWordsTest)
#include "SystemWordsTest.moc"
