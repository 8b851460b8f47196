#include "Platform/linux/report/LinuxSystemReport.h"

#include "Platform/linux/bus/BusReference.h"
#include "Platform/linux/report/MountTable.h"
#include "Platform/linux/updates/install/InstallKind.h"

#include <QtCore/QFile>
#include <QtCore/QSysInfo>

#include <pwd.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <utility>
#include <vector>

namespace ferrobank {

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::seconds kLimit(3);
constexpr std::uint64_t kCallLimit = 1'000'000;

constexpr const char* kDaemon = "org.freedesktop.DBus";
constexpr const char* kDaemonPath = "/org/freedesktop/DBus";
constexpr const char* kWatcher = "org.kde.StatusNotifierWatcher";
constexpr const char* kManager = "org.freedesktop.systemd1";

using Bus = std::shared_ptr<sd_bus>;

Bus openBus()
{
    sd_bus* bus = nullptr;
    if (sd_bus_open_user(&bus) < 0) {
        return nullptr;
    }
    sd_bus_set_method_call_timeout(bus, kCallLimit);
    return {bus, sd_bus_close_unref};
}

/// The reply, or nothing. Nobody is started by the call.
template <typename... Arguments>
BusMessage call(sd_bus* bus, const char* service, const char* path, const char* interface, const char* member,
                const char* types, Arguments... arguments)
{
    sd_bus_message* raw = nullptr;
    if (sd_bus_message_new_method_call(bus, &raw, service, path, interface, member) < 0) {
        return nullptr;
    }
    const BusMessage message(raw);
    sd_bus_message_set_auto_start(raw, 0);
    if (sd_bus_message_append(raw, types, arguments...) < 0) {
        return nullptr;
    }
    sd_bus_message* reply = nullptr;
    return sd_bus_call(bus, raw, 0, nullptr, &reply) < 0 ? nullptr : BusMessage(reply);
}

BusMessage property(sd_bus* bus, const char* service, const char* path, const char* interface,
                    const char* name)
{
    return call(bus, service, path, "org.freedesktop.DBus.Properties", "Get", "ss", interface, name);
}

/// The name of the program that has a name on the bus.
QString programOf(sd_bus* bus, const char* service)
{
    std::uint32_t process = 0;
    const BusMessage reply =
        call(bus, kDaemon, kDaemonPath, kDaemon, "GetConnectionUnixProcessID", "s", service);
    if (!reply || sd_bus_message_read(reply.get(), "u", &process) < 0) {
        return u"a program that cannot be named"_s;
    }
    QFile name(u"/proc/%1/comm"_s.arg(process));
    return name.open(QIODevice::ReadOnly) ? QString::fromUtf8(name.readAll()).trimmed()
                                          : u"a program that cannot be named"_s;
}

QString trayHost(sd_bus* bus)
{
    int hasHost = 0;
    const BusMessage reply =
        property(bus, kWatcher, "/StatusNotifierWatcher", kWatcher, "IsStatusNotifierHostRegistered");
    if (!reply || sd_bus_message_read(reply.get(), "v", "b", &hasHost) < 0) {
        return u"none"_s;
    }
    const QString program = programOf(bus, kWatcher);
    return hasHost != 0 ? program : program + u", without a host"_s;
}

QString serviceManager(sd_bus* bus)
{
    const char* version = nullptr;
    const BusMessage reply =
        property(bus, kManager, "/org/freedesktop/systemd1", "org.freedesktop.systemd1.Manager", "Version");
    if (!reply || sd_bus_message_read(reply.get(), "v", "s", &version) < 0) {
        return u"none"_s;
    }
    return u"systemd "_s + QString::fromUtf8(version);
}

QStringList portals(sd_bus* bus)
{
    QStringList found;
    const BusMessage reply = call(bus, kDaemon, kDaemonPath, kDaemon, "ListNames", "");
    const char* name = nullptr;
    if (!reply || sd_bus_message_enter_container(reply.get(), 'a', "s") < 0) {
        return found;
    }
    while (sd_bus_message_read(reply.get(), "s", &name) > 0) {
        const QString text = QString::fromUtf8(name);
        if (text.startsWith(u"org.freedesktop.portal."_s) ||
            text.startsWith(u"org.freedesktop.impl.portal."_s))
        {
            found << text;
        }
    }
    found.sort();
    return found;
}

QString accountName()
{
    std::vector<char> room(4096);
    passwd entry{};
    passwd* found = nullptr;
    const bool isKnown =
        ::getpwuid_r(::getuid(), &entry, room.data(), room.size(), &found) == 0 && found != nullptr;
    return isKnown ? QString::fromLocal8Bit(entry.pw_name) : qEnvironmentVariable("USER");
}

QString installKind(const std::filesystem::path& bundle)
{
    using Word = updates::InstallKind::Word;
    switch (updates::installKindOf(bundle).word) {
    case Word::Folder:
        return u"folder"_s;
    case Word::Package:
        return u"package"_s;
    case Word::Store:
        return u"store"_s;
    case Word::Development:
        return u"development"_s;
    case Word::Unknown:
        return u"unknown kind of install"_s;
    }
    return {};
}

QString session()
{
    QStringList words{qEnvironmentVariable("XDG_SESSION_TYPE", u"kind not told"_s)};
    if (qEnvironmentVariableIsSet("WAYLAND_DISPLAY")) {
        words << u"Wayland display"_s;
    }
    if (qEnvironmentVariableIsSet("DISPLAY")) {
        words << u"X display"_s;
    }
    return words.join(u", "_s);
}

void addWhatMayBlock(SystemFacts& facts, const Bus& bus, const QString& mountpoint)
{
    facts.user = accountName();
    if (bus) {
        facts.serviceManager = serviceManager(bus.get());
        facts.trayHost = trayHost(bus.get());
        facts.portals = portals(bus.get());
    } else {
        facts.serviceManager = u"no session bus"_s;
        facts.trayHost = u"no session bus"_s;
    }
    QFile mounts(u"/proc/self/mountinfo"_s);
    if (mounts.open(QIODevice::ReadOnly)) {
        const QString line = mountLineOf(mounts.readAll(), mountpoint);
        facts.mountLine = line.isEmpty() ? u"nothing is mounted there"_s : line;
    }
}

} // namespace

LinuxSystemReport::LinuxSystemReport(std::filesystem::path bundle) : _bundle(std::move(bundle)) {}

QCoro::Task<SystemFacts> LinuxSystemReport::read(QString mountpoint)
{
    // The environment belongs to the main thread, and so does what is looked up in it.
    SystemFacts facts;
    facts.desktop = qEnvironmentVariable("XDG_CURRENT_DESKTOP");
    facts.session = session();
    facts.installKind = installKind(_bundle);
    facts.host = QSysInfo::machineHostName();
    const Bus bus = openBus();
    const std::function<SystemFacts()> question = [facts, bus, mountpoint] {
        SystemFacts more = facts;
        addWhatMayBlock(more, bus, mountpoint);
        return more;
    };
    const auto answer = co_await _elsewhere.ask(u"system report"_s, question, kLimit);
    co_return answer.value_or(facts);
}

} // namespace ferrobank
