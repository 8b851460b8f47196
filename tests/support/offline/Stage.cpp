#include "support/offline/Stage.h"

#include "Ferrobank/Views/RootPresenter.h"

namespace ferrobank {

Stage::Stage() = default;

Stage::~Stage()
{
    _update.reset();
    _message.reset();
    _mainWindow.reset();
    _loginItems.reset();
    _diagnostics.reset();
    _model.reset();
}

void Stage::start()
{
    _model = std::make_unique<AppModel>(seam.collaborators());
    _diagnostics = std::make_unique<Diagnostics>(DiagnosticsCollaborators{.model = *_model,
                                                                          .loginServices = seam.loginServices,
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

QmlWindow& Stage::showMessage(const Message& message)
{
    _message = std::make_unique<QmlMessage>(host);
    _message->show(message, nullptr, nullptr);
    return _message->window();
}

QmlWindow& Stage::showUpdate(const UpdatePrompt& prompt)
{
    _update = std::make_unique<UpdateWindow>(collaborators());
    _update->show(prompt);
    return _update->window();
}

WindowCollaborators Stage::collaborators()
{
    return {.model = *_model,
            .loginServices = seam.loginServices,
            .commandLineTool = seam.commandLineTool,
            .workspace = seam.workspace,
            .settingsPages = seam.settingsPages,
            .volumes = seam.volumes,
            .diagnostics = *_diagnostics,
            .host = host,
            .home = FakeSeam::kHome};
}

RootPresenter& Stage::root()
{
    return *_mainWindow->window()->property("presenter").value<RootPresenter*>();
}

} // namespace ferrobank
