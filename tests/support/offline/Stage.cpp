#include "support/offline/Stage.h"

#include "Ferrobank/Views/RootPresenter.h"

namespace ferrobank {

Stage::Stage() = default;

Stage::~Stage()
{
    _mainWindow.reset();
    _loginItems.reset();
    _diagnostics.reset();
    _model.reset();
}

void Stage::start()
{
    _model = std::make_unique<AppModel>(seam.collaborators());
    _diagnostics = std::make_unique<Diagnostics>(DiagnosticsCollaborators{.model = *_model,
                                                                          .service = seam.service,
                                                                          .cli = seam.cli,
                                                                          .journal = toolJournal,
                                                                          .system = systemReport,
                                                                          .version = QStringLiteral("1.0.0"),
                                                                          .toolkit = QStringLiteral("Qt 6"),
                                                                          .home = FakeSeam::kHome});
    const WindowCollaborators with = collaborators();
    _mainWindow = std::make_unique<QmlWindow>(QmlWindow::mainScene(with), host);
    _loginItems = std::make_unique<QmlWindow>(QmlWindow::loginItemsScene(with), host);
}

WindowCollaborators Stage::collaborators()
{
    return {.model = *_model,
            .service = seam.service,
            .commandLineTool = seam.commandLineTool,
            .workspace = seam.workspace,
            .settingsPages = seam.settingsPages,
            .volumes = seam.volumes,
            .registry = seam.registry,
            .diagnostics = *_diagnostics,
            .host = host,
            .home = FakeSeam::kHome};
}

RootPresenter& Stage::root()
{
    const auto* window = _mainWindow->engine()->rootObjects().constFirst();
    return *window->property("presenter").value<RootPresenter*>();
}

} // namespace ferrobank
