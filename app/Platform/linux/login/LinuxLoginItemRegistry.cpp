#include "Platform/linux/login/LinuxLoginItemRegistry.h"

#include "Ferrobank/Service.h"
#include "Platform/linux/login/AgentDescription.h"
#include "Platform/linux/login/AgentService.h"
#include "Platform/linux/login/BusUserManager.h"
#include "Platform/linux/login/LoginItem.h"

#include <unistd.h>

#include <system_error>
#include <utility>

namespace ferrobank {

namespace {

bool canBeStarted(const std::filesystem::path& program)
{
    std::error_code error;
    return std::filesystem::is_regular_file(program, error) && access(program.c_str(), X_OK) == 0;
}

AgentDescription requireDescription(const Bundle& bundle)
{
    std::optional<AgentDescription> description = readAgentDescription(bundle);
    if (!description) {
        throw RegistryError("Ferrobank is incomplete: “" + bundle.agentPropertyList().native() +
                            "” is missing or damaged.");
    }
    return std::move(*description);
}

AgentDescription requireStartableAgent(const Bundle& bundle)
{
    AgentDescription description = requireDescription(bundle);
    if (!canBeStarted(description.command.program)) {
        throw RegistryError("Ferrobank is incomplete: “" + description.command.program.native() +
                            "” is missing or cannot be run.");
    }
    return description;
}

} // namespace

LinuxLoginItemRegistry::LinuxLoginItemRegistry(Bundle bundle, std::optional<UserFolders> folders,
                                               std::unique_ptr<UserManager> manager)
    : _bundle(std::move(bundle)), _folders(std::move(folders)), _manager(std::move(manager))
{}

LinuxLoginItemRegistry& LinuxLoginItemRegistry::shared()
{
    static LinuxLoginItemRegistry registry(Bundle::main().atStablePath(), UserFolders::ofProcess(),
                                           std::make_unique<BusUserManager>());
    return registry;
}

LoginServiceStatus LinuxLoginItemRegistry::status(LoginService service)
{
    switch (service) {
    case LoginService::Agent: {
        const std::optional<AgentDescription> agent = readAgentDescription(_bundle);
        if (!agent || !canBeStarted(agent->command.program)) {
            return LoginServiceStatus::NotFound;
        }
        return _folders ? statusOf(AgentService(*_manager, *_folders, *agent).state())
                        : LoginServiceStatus::NotRegistered;
    }
    case LoginService::MainApp:
        if (!canBeStarted(_bundle.executable())) {
            return LoginServiceStatus::NotFound;
        }
        return _folders ? statusOf(LoginItem(*_folders, _bundle.executable()).state())
                        : LoginServiceStatus::NotRegistered;
    }
    return LoginServiceStatus::NotFound;
}

void LinuxLoginItemRegistry::registerService(LoginService service, UserSwitch userSwitch)
{
    switch (service) {
    case LoginService::Agent:
        AgentService(*_manager, requireFolders(), requireStartableAgent(_bundle)).registerAgent(userSwitch);
        break;
    case LoginService::MainApp:
        LoginItem(requireFolders(), _bundle.executable()).registerEntry(userSwitch);
        break;
    }
}

void LinuxLoginItemRegistry::unregisterService(LoginService service)
{
    switch (service) {
    case LoginService::Agent:
        AgentService(*_manager, requireFolders(), requireDescription(_bundle)).unregisterAgent();
        break;
    case LoginService::MainApp:
        LoginItem(requireFolders(), _bundle.executable()).unregisterEntry();
        break;
    }
}

void LinuxLoginItemRegistry::openSystemSettingsLoginItems()
{
    if (_openLoginItemsPage) {
        _openLoginItemsPage();
    }
}

void LinuxLoginItemRegistry::setLoginItemsPage(std::function<void()> open)
{
    _openLoginItemsPage = std::move(open);
}

void LinuxLoginItemRegistry::followMovedBundle(LoginService service)
{
    if (status(service) != kRegisteredElsewhere) {
        return;
    }
    const std::optional<std::filesystem::path> program = registeredProgram(service);
    if (program && !canBeStarted(*program)) {
        try {
            registerService(service, UserSwitch::Respect);
        } catch (const RegistryError&) { // NOLINT(bugprone-empty-catch)
            // The status goes on telling that it is not registered from here.
        }
    }
}

std::optional<std::filesystem::path> LinuxLoginItemRegistry::registeredProgram(LoginService service)
{
    switch (service) {
    case LoginService::Agent:
        return AgentService(*_manager, requireFolders(), requireDescription(_bundle)).registeredProgram();
    case LoginService::MainApp:
        return LoginItem(requireFolders(), _bundle.executable()).registeredProgram();
    }
    return std::nullopt;
}

const UserFolders& LinuxLoginItemRegistry::requireFolders() const
{
    if (!_folders) {
        throw RegistryError("Your account has no home folder.");
    }
    return *_folders;
}

Service& Service::shared()
{
    static Service service(LinuxLoginItemRegistry::shared());
    return service;
}

} // namespace ferrobank
