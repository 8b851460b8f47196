#pragma once

#include "Ferrobank/Async/Lifeline.h"
#include "Platform/LoginItemRegistry.h"

#include <QCoro/QCoroTask>
#include <QtCore/QObject>

#include <functional>
#include <optional>

namespace ferrobank {

class WorkQueue;

/// The two login services as the application sees them: the rules of Service, carried out in the background
/// in the order in which they were asked for, because a registry may take seconds to answer and longer to
/// change. Main thread; the collaborators must outlive it.
///
/// Every operation asks the registry anew. What it answered last is kept here, for what is shown between two
/// questions; a registry that does not answer leaves that as it was: not knowing is not "not registered".
///
/// Questions never fail: what cannot be learned is absent. Changes that fail throw the registry's error. Both
/// may outlive this object, and then tell nobody.
class LoginServices : public QObject {
    Q_OBJECT

public:
    LoginServices(LoginItemRegistry& registry, WorkQueue& queue, QObject* parent = nullptr);

    /// The last answer; absent until there was one.
    [[nodiscard]] std::optional<LoginServiceStatus> known(LoginService service) const;

    /// Whether, by the last answers, either service waits for the user's approval.
    [[nodiscard]] bool isKnownToNeedApproval() const;

    /// The status of now; absent where the registry does not answer.
    QCoro::Task<std::optional<LoginServiceStatus>> ask(LoginService service);

    /// Whether either service waits for the user's approval; absent where that cannot be told. The login item
    /// is asked first.
    QCoro::Task<std::optional<bool>> askForApproval();

    /// Asks without anybody waiting: changed() tells if there is news. Questions that come while one for the
    /// same service is on its way become one.
    void look(LoginService service);

    /// Registers again from here what was registered from a bundle that has been moved away, then asks. To be
    /// called once for each service when the application starts, and again while nothing is known.
    QCoro::Task<std::optional<LoginServiceStatus>> followMovedBundle(LoginService service);

    /// Registers the agent unless it is enabled; one that only awaits approval is no failure.
    QCoro::Task<> registerDrive();

    /// Registers or unregisters the login item where the system has it otherwise than wished.
    QCoro::Task<> matchMenuOpensAtLogin(bool wish);

    /// The user's own click on the switch of a service: may undo an earlier switch-off.
    QCoro::Task<> setOn(LoginService service, bool on);

    /// Returns at once.
    void openSystemSettingsLoginItems();

Q_SIGNALS:
    /// known() has changed.
    void changed();

private:
    class Notes;

    struct Known {
        std::optional<LoginServiceStatus> status;
        bool looking = false;
        bool looksAgain = false;
    };

    [[nodiscard]] Known& knownOf(LoginService service)
    {
        return service == LoginService::Agent ? _agent : _mainApp;
    }

    /// Gives the work to the queue, and learns from every status that it read on its way.
    QCoro::Task<> perform(std::function<void(Notes&)> work);
    /// The same for a question: what goes wrong is no answer.
    QCoro::Task<> inquire(std::function<void(Notes&)> work);
    QCoro::Task<> lookUntilNobodyAsks(LoginService service);
    void learn(const Notes& notes);

    LoginItemRegistry& _registry;
    WorkQueue& _queue;
    Known _agent;
    Known _mainApp;
    Lifeline _lifeline;
};

} // namespace ferrobank
