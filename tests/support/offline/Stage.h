#pragma once

#include "Ferrobank/Diagnostics/Diagnostics.h"
#include "Ferrobank/Diagnostics/ToolJournal.h"
#include "Ferrobank/Views/QmlWindow.h"
#include "support/fakes/FakeSeam.h"
#include "support/fakes/FakeSystemReport.h"

#include <memory>

namespace ferrobank {

class RootPresenter;

/// A host that remembers what the windows asked of it.
class FakeWindowHost : public WindowHost {
public:
    QStringList alerts;
    QList<std::function<void(QString)>> choosers;
    int quits = 0;
    int trashings = 0;
    int closings = 0;

    void showAlert(const QString& text) override { alerts.append(text); }

    void chooseFolder(std::function<void(QString)> chosen) override { choosers.append(std::move(chosen)); }

    void quit() override { ++quits; }

    void trashAndQuit() override { ++trashings; }

    void windowClosed() override { ++closings; }
};

/// The whole window side of the program on the fakes: a seam, a model and the two windows. Main thread.
///
/// Set up the seam first, then call start(): the model reads the status with the next turns of the event
/// loop.
class Stage {
public:
    Stage();
    ~Stage();

    FakeSeam seam;
    FakeWindowHost host;
    FakeSystemReport systemReport;
    ToolJournal toolJournal;

    void start();

    [[nodiscard]] AppModel& model() { return *_model; }

    [[nodiscard]] QmlWindow& mainWindow() { return *_mainWindow; }

    [[nodiscard]] QmlWindow& loginItems() { return *_loginItems; }

    [[nodiscard]] Diagnostics& diagnostics() { return *_diagnostics; }

    [[nodiscard]] WindowCollaborators collaborators();

    /// While the main window is open.
    [[nodiscard]] RootPresenter& root();

private:
    std::unique_ptr<AppModel> _model;
    std::unique_ptr<Diagnostics> _diagnostics;
    std::unique_ptr<QmlWindow> _mainWindow;
    std::unique_ptr<QmlWindow> _loginItems;
};

} // namespace ferrobank
