#include "Platform/Bundle.h"
#include "Platform/System.h"
#include "Platform/linux/files/LinuxVolumes.h"
#include "Platform/linux/files/SettingsFile.h"
#include "Platform/linux/link/PolkitLink.h"
#include "Platform/linux/login/LinuxLoginItemRegistry.h"
#include "Platform/linux/report/LinuxSystemReport.h"
#include "Platform/linux/time/SystemClock.h"
#include "Platform/linux/updates/LinuxUpdateController.h"
#include "Platform/linux/workspace/DesktopPages.h"
#include "Platform/linux/workspace/LinuxWorkspace.h"

#include <utility>

namespace ferrobank {

namespace {

class LinuxSystem : public System {
public:
    explicit LinuxSystem(Hooks hooks)
        : _hooks(std::move(hooks)), _workspace(messages()), _settingsPages(messages())
    {
        _privilegedLink.setExplain(_hooks.explain);
        LinuxLoginItemRegistry::shared().setLoginItemsPage(_hooks.openLoginItems);
    }

    ~LinuxSystem() override { LinuxLoginItemRegistry::shared().setLoginItemsPage(nullptr); }

    LoginItemRegistry& registry() override { return LinuxLoginItemRegistry::shared(); }

    Workspace& workspace() override { return _workspace; }

    SettingsPages& settingsPages() override { return _settingsPages; }

    PrivilegedLink& privilegedLink() override { return _privilegedLink; }

    Defaults& defaults() override { return _defaults; }

    Volumes& volumes() override { return _volumes; }

    Clock& clock() override { return _clock; }

    SystemReport& report() override { return _report; }

    std::unique_ptr<UpdateController> makeUpdateController(UpdateDelegate& delegate,
                                                           UpdateInterface& interface) override
    {
        return makeLinuxUpdateController(Bundle::main().root(), delegate, interface, _workspace, _hooks.quit);
    }

private:
    [[nodiscard]] DesktopMessages messages() const
    {
        return {.show = _hooks.tell, .activationToken = _hooks.activationToken};
    }

    Hooks _hooks;
    LinuxWorkspace _workspace;
    DesktopPages _settingsPages;
    PolkitLink _privilegedLink;
    SettingsFile _defaults;
    LinuxVolumes _volumes;
    SystemClock _clock;
    LinuxSystemReport _report{Bundle::main().root()};
};

} // namespace

std::unique_ptr<System> System::make(Hooks hooks)
{
    return std::make_unique<LinuxSystem>(std::move(hooks));
}

} // namespace ferrobank
