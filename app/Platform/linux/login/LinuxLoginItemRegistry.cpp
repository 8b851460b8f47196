#include "Platform/linux/login/LinuxLoginItemRegistry.h"

#include "Ferrobank/Service.h"

namespace ferrobank {

LinuxLoginItemRegistry& LinuxLoginItemRegistry::shared()
{
    static LinuxLoginItemRegistry registry;
    return registry;
}

LoginServiceStatus LinuxLoginItemRegistry::status(LoginService)
{
    return LoginServiceStatus::NotRegistered;
}

void LinuxLoginItemRegistry::registerService(LoginService, UserSwitch)
{
    throw RegistryError("Not available yet.");
}

void LinuxLoginItemRegistry::unregisterService(LoginService)
{
    throw RegistryError("Not available yet.");
}

void LinuxLoginItemRegistry::openSystemSettingsLoginItems()
{
    if (_openLoginItems) {
        _openLoginItems();
    }
}

Service& Service::shared()
{
    static Service service(LinuxLoginItemRegistry::shared());
    return service;
}

} // namespace ferrobank
