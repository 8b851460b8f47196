#include "Platform/Bundle.h"
#include "Platform/DesktopSession.h"
#include "Platform/linux/bus/SessionBus.h"
#include "Platform/linux/desktop/LinuxSystemChanges.h"
#include "Platform/linux/instance/BusInstance.h"
#include "Platform/linux/instance/SocketInstance.h"
#include "Platform/linux/tray/ClassicTrayItem.h"
#include "Platform/linux/tray/LinuxStatusItem.h"
#include "Platform/linux/tray/TrayIcon.h"

namespace ferrobank {

namespace {

class LinuxDesktopSession : public DesktopSession {
public:
    LinuxDesktopSession() : _bus(SessionBus::open())
    {
        if (_bus) {
            _instance = std::make_unique<BusInstance>(*_bus);
        } else {
            _instance = std::make_unique<SocketInstance>(SocketInstance::runtimeFolder());
        }
    }

    SingleInstance& instance() override { return *_instance; }

    void attach() override
    {
        if (_bus) {
            _bus->attach();
        }
    }

    std::unique_ptr<StatusItem> makeStatusItem() override
    {
        const TrayIcon icon(Bundle::main().resource(""),
                            TrayIcon::lookFor(qEnvironmentVariable("XDG_CURRENT_DESKTOP")));
        if (!_bus) {
            return std::make_unique<ClassicTrayItem>(icon);
        }
        return std::make_unique<LinuxStatusItem>(*_bus, icon);
    }

    std::unique_ptr<SystemChanges> watchSystem() override
    {
        return std::make_unique<LinuxSystemChanges>(LinuxSystemChanges::filesOfUser());
    }

private:
    std::unique_ptr<SessionBus> _bus;
    std::unique_ptr<SingleInstance> _instance;
};

} // namespace

std::unique_ptr<DesktopSession> DesktopSession::open()
{
    return std::make_unique<LinuxDesktopSession>();
}

} // namespace ferrobank
