#include "Ferrobank/LoginServices.h"

#include "Ferrobank/Async/Spawn.h"
#include "Ferrobank/Async/WorkQueue.h"
#include "Ferrobank/Service.h"

#include <QtCore/QDebug>

#include <exception>
#include <memory>
#include <utility>

namespace ferrobank {

/// The registry during one piece of work, which notes what was answered. Made on the main thread, used by the
/// work, read on the main thread again.
class LoginServices::Notes final : public LoginItemRegistry {
public:
    explicit Notes(LoginItemRegistry& registry) : _registry(registry) {}

    LoginServiceStatus status(LoginService service) override
    {
        const LoginServiceStatus answer = _registry.status(service);
        if (answer != kNoAnswer) {
            note(service) = answer;
        }
        return answer;
    }

    void registerService(LoginService service, UserSwitch userSwitch) override
    {
        _registry.registerService(service, userSwitch);
    }

    void unregisterService(LoginService service) override { _registry.unregisterService(service); }

    void followMovedBundle(LoginService service) override { _registry.followMovedBundle(service); }

    void openSystemSettingsLoginItems() override { _registry.openSystemSettingsLoginItems(); }

    [[nodiscard]] std::optional<LoginServiceStatus> answer(LoginService service) const
    {
        return service == LoginService::Agent ? _agent : _mainApp;
    }

private:
    std::optional<LoginServiceStatus>& note(LoginService service)
    {
        return service == LoginService::Agent ? _agent : _mainApp;
    }

    LoginItemRegistry& _registry;
    std::optional<LoginServiceStatus> _agent;
    std::optional<LoginServiceStatus> _mainApp;
};

LoginServices::LoginServices(LoginItemRegistry& registry, WorkQueue& queue, QObject* parent)
    : QObject(parent), _registry(registry), _queue(queue)
{}

std::optional<LoginServiceStatus> LoginServices::known(LoginService service) const
{
    return service == LoginService::Agent ? _agent.status : _mainApp.status;
}

bool LoginServices::isKnownToNeedApproval() const
{
    return _mainApp.status == LoginServiceStatus::RequiresApproval ||
           _agent.status == LoginServiceStatus::RequiresApproval;
}

QCoro::Task<> LoginServices::perform(std::function<void(Notes&)> work)
{
    const auto life = _lifeline.hold();
    const auto notes = std::make_shared<Notes>(_registry);
    const std::function<void()> piece = [notes, work] { work(*notes); };
    std::exception_ptr failure;
    try {
        co_await _queue.run(piece);
    } catch (const std::exception&) {
        failure = std::current_exception();
    }
    if (!life.isCut()) {
        learn(*notes);
    }
    if (failure) {
        std::rethrow_exception(failure);
    }
}

QCoro::Task<> LoginServices::inquire(std::function<void(Notes&)> work)
{
    try {
        co_await perform(work);
    } catch (const WorkQueue::Dropped&) { // NOLINT(bugprone-empty-catch)
        // The program ends; nobody waits for the answer.
    } catch (const std::exception& error) {
        qWarning("The login services could not be asked for: %s", error.what());
    }
}

void LoginServices::learn(const Notes& notes)
{
    bool isNews = false;
    for (const LoginService service : {LoginService::Agent, LoginService::MainApp}) {
        const auto answer = notes.answer(service);
        auto& status = knownOf(service).status;
        if (answer && status != answer) {
            status = answer;
            isNews = true;
        }
    }
    if (isNews) {
        Q_EMIT changed();
    }
}

QCoro::Task<std::optional<LoginServiceStatus>> LoginServices::ask(LoginService service)
{
    const auto answer = std::make_shared<LoginServiceStatus>(kNoAnswer);
    const std::function<void(Notes&)> work = [service, answer](Notes& registry) {
        *answer = registry.status(service);
    };
    co_await inquire(work);
    co_return *answer == kNoAnswer ? std::nullopt : std::optional(*answer);
}

QCoro::Task<std::optional<bool>> LoginServices::askForApproval()
{
    const auto answer = std::make_shared<std::optional<bool>>();
    const std::function<void(Notes&)> work = [answer](Notes& registry) {
        const LoginServiceStatus mainApp = registry.status(LoginService::MainApp);
        if (mainApp == LoginServiceStatus::RequiresApproval) {
            *answer = true;
            return;
        }
        const LoginServiceStatus agent = registry.status(LoginService::Agent);
        if (agent == LoginServiceStatus::RequiresApproval) {
            *answer = true;
        } else if (agent != kNoAnswer && mainApp != kNoAnswer) {
            *answer = false;
        }
    };
    co_await inquire(work);
    co_return *answer;
}

void LoginServices::look(LoginService service)
{
    Known& known = knownOf(service);
    if (known.looking) {
        known.looksAgain = true;
    } else {
        spawn(this, lookUntilNobodyAsks(service));
    }
}

QCoro::Task<> LoginServices::lookUntilNobodyAsks(LoginService service)
{
    const auto life = _lifeline.hold();
    knownOf(service).looking = true;
    do {
        knownOf(service).looksAgain = false;
        co_await ask(service);
    } while (!life.isCut() && knownOf(service).looksAgain);
    if (!life.isCut()) {
        knownOf(service).looking = false;
    }
}

QCoro::Task<std::optional<LoginServiceStatus>> LoginServices::followMovedBundle(LoginService service)
{
    const auto answer = std::make_shared<LoginServiceStatus>(kNoAnswer);
    const std::function<void(Notes&)> work = [service, answer](Notes& registry) {
        registry.followMovedBundle(service);
        *answer = registry.status(service);
    };
    co_await inquire(work);
    co_return *answer == kNoAnswer ? std::nullopt : std::optional(*answer);
}

QCoro::Task<> LoginServices::registerDrive()
{
    const std::function<void(Notes&)> work = [](Notes& registry) {
        Service(registry).registerDrive();
        if (registry.answer(LoginService::Agent) != LoginServiceStatus::Enabled) {
            static_cast<void>(registry.status(LoginService::Agent));
        }
    };
    return perform(work);
}

QCoro::Task<> LoginServices::matchMenuOpensAtLogin(bool wish)
{
    const std::function<void(Notes&)> work = [wish](Notes& registry) {
        const bool enabled = registry.status(LoginService::MainApp) == LoginServiceStatus::Enabled;
        if (enabled != wish) {
            Service(registry).setMenuOpensAtLogin(wish);
            static_cast<void>(registry.status(LoginService::MainApp));
        }
    };
    return perform(work);
}

QCoro::Task<> LoginServices::setOn(LoginService service, bool on)
{
    const std::function<void(Notes&)> work = [service, on](Notes& registry) {
        try {
            if (on) {
                registry.registerService(service, UserSwitch::Override);
            } else {
                registry.unregisterService(service);
            }
        } catch (const RegistryError&) {
            static_cast<void>(registry.status(service)); // what is there now, for whoever shows the failure
            throw;
        }
        static_cast<void>(registry.status(service));
    };
    return perform(work);
}

void LoginServices::openSystemSettingsLoginItems()
{
    _registry.openSystemSettingsLoginItems();
}

} // namespace ferrobank
