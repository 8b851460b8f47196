#include "Ferrobank/Service.h"

namespace ferrobank {

Service::Service(LoginItemRegistry& registry) : _registry(registry) {}

void Service::registerDrive()
{
    if (agentStatus() == LoginServiceStatus::Enabled) {
        return;
    }
    try {
        _registry.registerService(LoginService::Agent, UserSwitch::Respect);
    } catch (const RegistryError&) {
        // The registration stands; the user has to allow it in the login items.
        if (agentStatus() != LoginServiceStatus::RequiresApproval) {
            throw;
        }
    }
}

void Service::unregister()
{
    for (const LoginService service : {LoginService::Agent, LoginService::MainApp}) {
        const LoginServiceStatus status = _registry.status(service);
        if (status != LoginServiceStatus::NotRegistered && status != LoginServiceStatus::NotFound) {
            _registry.unregisterService(service);
        }
    }
}

std::string Service::statusJSON() const
{
    std::string text = R"({"login_item":")";
    text += statusWord(mainAppStatus());
    text += R"(","agent":")";
    text += statusWord(agentStatus());
    text += R"("})";
    return text;
}

bool Service::needsApproval() const
{
    return mainAppStatus() == LoginServiceStatus::RequiresApproval ||
           agentStatus() == LoginServiceStatus::RequiresApproval;
}

void Service::setMenuOpensAtLogin(bool value)
{
    if (value) {
        // Only the user's own toggle leads here, so it may undo an earlier switch-off.
        _registry.registerService(LoginService::MainApp, UserSwitch::Override);
    } else {
        _registry.unregisterService(LoginService::MainApp);
    }
}

LoginServiceStatus Service::mainAppStatus() const
{
    return _registry.status(LoginService::MainApp);
}

LoginServiceStatus Service::agentStatus() const
{
    return _registry.status(LoginService::Agent);
}

void Service::openSystemSettingsLoginItems()
{
    _registry.openSystemSettingsLoginItems();
}

std::string_view statusWord(LoginServiceStatus status)
{
    switch (status) {
    case LoginServiceStatus::NotRegistered:
        return "not-registered";
    case LoginServiceStatus::Enabled:
        return "enabled";
    case LoginServiceStatus::RequiresApproval:
        return "requires-approval";
    case LoginServiceStatus::NotFound:
        return "not-found";
    }
    return "unknown";
}

} // namespace ferrobank
