#pragma once

#include "Ferrobank/Async/Lifeline.h"
#include "Ferrobank/FerrobankApp/MenuContent.h"
#include "Ferrobank/Model/Screen.h"

#include <QCoro/QCoroTask>
#include <QtCore/QObject>
#include <QtCore/QString>

#include <functional>
#include <optional>
#include <utility>

namespace ferrobank {

class AppModel;
class CommandLineTool;
class StatusItem;
class SystemChanges;
class Workspace;

/// What the menu works with. References must outlive it.
struct TrayMenuCollaborators {
    AppModel& model;
    CommandLineTool& commandLineTool;
    Workspace& workspace;
    StatusItem& item;
    SystemChanges& systemChanges;
    std::function<void(const QString& activationToken)> openWindow;
    std::function<void()> checkForUpdates;
    std::function<void(const QString& text)> showAlert;
    std::function<void()> quit;
};

/// The tray item's menu: keeps it equal to the facts as they change, and carries out what is chosen. Main
/// thread, for the life of the program.
///
/// Hosts measure a menu before they open it, so entries come and go when their facts change; everything is
/// read once more when the menu is about to be shown.
class TrayMenu : public QObject {
    Q_OBJECT

public:
    explicit TrayMenu(TrayMenuCollaborators collaborators, QObject* parent = nullptr);

    /// Carries out an entry that was chosen in the menu, or by another program by its name. Nothing, and
    /// false, unless it is a button of the menu as the facts are now: who cannot see the menu cannot know.
    bool choose(MenuItem item, const QString& activationToken);

    /// The token of the last choice that opened no window of ours, once: another program's window may need
    /// it.
    [[nodiscard]] QString takeActivationToken() { return std::exchange(_activationToken, QString()); }

private:
    enum class Read {
        Everything,
        StatusOnly, ///< the rest is followed by other means; asking the registry at each poll would cost more
    };

    void update(Read read);
    [[nodiscard]] bool offers(MenuItem item);
    void carryOut(MenuItem item, const QString& activationToken);
    void openWindowAt(const Screen& screen, const QString& activationToken);
    void showLog();
    QCoro::Task<> installCommand();

    TrayMenuCollaborators _with;
    std::optional<MenuFacts> _facts; ///< of the menu as it is; absent until there is one
    QString _activationToken;
    bool _installingCommand = false;
    Lifeline _lifeline;
};

} // namespace ferrobank
