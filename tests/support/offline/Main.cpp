// The application's windows on fakes, without a drive: for trying a screen by hand and for taking pictures.
//
//   ferrobank-offline --list
//   ferrobank-offline --scene dashboard [--dark] [--rtl] [--long] [--words de] [--font "Inter,10"] [--picture
//   file.png]

#include "Ferrobank/Components/Theme.h"
#include "Ferrobank/Words/Catalogue.h"
#include "support/offline/LongTexts.h"
#include "support/offline/Scenes.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QElapsedTimer>
#include <QtCore/QTextStream>
#include <QtGui/QGuiApplication>
#include <QtQuick/QQuickItem>
#include <QtQuick/QQuickWindow>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace ferrobank;

namespace {

void call(const std::function<void(Stage&)>& step, Stage& stage)
{
    if (step) {
        step(stage);
    }
}

// Long enough for layouts to settle and for every animation to end.
void letSettle()
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < 600) {
        QGuiApplication::processEvents(QEventLoop::AllEvents, 20);
    }
}

} // namespace

int main(int argc, char** argv)
{
    QGuiApplication app(argc, argv);
    QGuiApplication::setApplicationName(u"ferrobank-offline"_s);
    QGuiApplication::setApplicationVersion(u"1.0.0"_s);

    QCommandLineParser parser;
    const QCommandLineOption list(u"list"_s, u"Print the names of all scenes."_s);
    const QCommandLineOption sceneName(u"scene"_s, u"The scene to show."_s, u"name"_s, u"dashboard"_s);
    const QCommandLineOption dark(u"dark"_s, u"Dark colours."_s);
    const QCommandLineOption light(u"light"_s, u"Light colours."_s);
    const QCommandLineOption contrast(u"contrast"_s, u"High contrast."_s);
    const QCommandLineOption rightToLeft(u"rtl"_s, u"Mirrored."_s);
    const QCommandLineOption longTexts(u"long"_s, u"Longer words."_s);
    const QCommandLineOption words(u"words"_s, u"Words of this system in a language, or the given ones."_s,
                                   u"en|de|…|given"_s, u"en"_s);
    const QCommandLineOption font(u"font"_s, u"Family and size in points."_s, u"family,size"_s);
    const QCommandLineOption picture(u"picture"_s, u"Take a picture and end."_s, u"file"_s);
    parser.addOptions({list, sceneName, dark, light, contrast, rightToLeft, longTexts, words, font, picture});
    parser.addHelpOption();
    parser.process(app);

    LongTexts longWords;
    if (parser.isSet(longTexts)) {
        QGuiApplication::installTranslator(&longWords);
    } else if (parser.value(words) != u"given") {
        QLocale::setDefault(QLocale(parser.value(words)));
        installWords(QStringLiteral(FERROBANK_TRANSLATIONS), {parser.value(words)});
    }
    const auto& scenes = offlineScenes();
    if (parser.isSet(list)) {
        QTextStream out(stdout);
        for (const auto& scene : scenes) {
            out << scene.name << '\n';
        }
        return 0;
    }
    const auto found = std::ranges::find(scenes, parser.value(sceneName), &OfflineScene::name);
    if (found == scenes.end()) {
        qCritical("There is no scene named %s", qPrintable(parser.value(sceneName)));
        return 1;
    }
    if (parser.isSet(rightToLeft)) {
        QGuiApplication::setLayoutDirection(Qt::RightToLeft);
    }
    if (parser.isSet(font)) {
        const QStringList parts = parser.value(font).split(u',');
        QGuiApplication::setFont(QFont(parts.constFirst(), parts.constLast().toInt()));
    }
    Stage stage;
    call(found->before, stage);
    stage.start();
    QGuiApplication::processEvents();
    call(found->ready, stage);
    QmlWindow& window = windowOf(stage, *found);
    window.open({});
    call(found->shown, stage);
    Theme& theme = Theme::of(*window.engine());
    if (parser.isSet(dark) || parser.isSet(light)) {
        theme.setDark(parser.isSet(dark));
    }
    theme.setHighContrast(parser.isSet(contrast));
    if (!parser.isSet(picture)) {
        QObject::connect(window.window(), &QWindow::visibleChanged, &app, &QGuiApplication::quit,
                         Qt::QueuedConnection);
        return QGuiApplication::exec();
    }
    theme.setComposited(true);
    letSettle();
    auto* shown = qobject_cast<QQuickWindow*>(window.window());
    return shown->grabWindow().save(parser.value(picture)) ? 0 : 1;
}
