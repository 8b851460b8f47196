#include "Platform/linux/login/BusUserManager.h"

#include "Platform/LoginItemRegistry.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <thread>

namespace ferrobank {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Outcome = ManagerConnection::Outcome;

constexpr auto kQueryLimit = std::chrono::microseconds(2s);
constexpr auto kChangeLimit = std::chrono::microseconds(10s);
constexpr auto kStopPollInterval = 20ms;

constexpr const char* kManager = "org.freedesktop.systemd1.Manager";
constexpr std::string_view kNoSuchUnit = "org.freedesktop.systemd1.NoSuchUnit";

constexpr int kLasting = 0;
constexpr int kUntilTheNextStart = 1;
constexpr int kWithoutForce = 0;

ManagerReach reachAfter(const Outcome& outcome)
{
    const std::string& name = outcome.errorName;
    if (name == SD_BUS_ERROR_SERVICE_UNKNOWN || name == SD_BUS_ERROR_NAME_HAS_NO_OWNER) {
        return ManagerReach::Absent;
    }
    switch (outcome.error) {
    case ETIMEDOUT:
    case ENOTCONN:
    case ECONNRESET:
    case EPIPE:
    case ESHUTDOWN:
        return ManagerReach::Silent;
    default:
        return name == SD_BUS_ERROR_NO_REPLY || name == SD_BUS_ERROR_ACCESS_DENIED ? ManagerReach::Silent
                                                                                   : ManagerReach::Answers;
    }
}

BusMessage unitListCall(ManagerConnection& manager, const char* member, const std::string& unit)
{
    BusMessage message = manager.newCall(kManager, member);
    sd_bus_message_append(message.get(), "as", 1, unit.c_str());
    return message;
}

void change(ManagerConnection& manager, const BusMessage& message, const char* wish)
{
    const Outcome outcome = manager.call(message, kChangeLimit);
    if (outcome.error != 0) {
        throw RegistryError(std::string("The drive's service could not be ") + wish + ": " +
                            outcome.errorText);
    }
}

bool runs(ManagerConnection& manager, const std::string& unit)
{
    const Outcome outcome = manager.call(unitListCall(manager, "ListUnitsByNames", unit), kQueryLimit);
    sd_bus_message* reply = outcome.reply.get();
    const char* activeState = nullptr;
    if (outcome.error != 0 || sd_bus_message_enter_container(reply, 'a', "(ssssssouso)") < 0 ||
        sd_bus_message_enter_container(reply, 'r', "ssssssouso") <= 0 ||
        sd_bus_message_skip(reply, "sss") < 0 || sd_bus_message_read(reply, "s", &activeState) < 0)
    {
        throw RegistryError("The drive's service could not be asked for: " + outcome.errorText);
    }
    const std::string_view word = activeState;
    return word != "inactive" && word != "failed";
}

} // namespace

ManagerConnection BusUserManager::requireConnection()
{
    ManagerConnection manager(kQueryLimit);
    if (manager.error() != 0) {
        throw RegistryError(std::string("The service manager of your session cannot be reached: ") +
                            std::strerror(manager.error()) + ".");
    }
    return manager;
}

UnitFileState BusUserManager::unitFileState(const std::string& unit)
{
    ManagerConnection manager(kQueryLimit);
    if (manager.error() != 0) {
        return {manager.error() == ETIMEDOUT ? ManagerReach::Silent : ManagerReach::Absent, {}};
    }
    const BusMessage message = manager.newCall(kManager, "GetUnitFileState");
    sd_bus_message_append(message.get(), "s", unit.c_str());
    const Outcome outcome = manager.call(message, kQueryLimit);
    const char* word = nullptr;
    if (outcome.error == 0 && sd_bus_message_read(outcome.reply.get(), "s", &word) >= 0) {
        return {ManagerReach::Answers, word};
    }
    return {reachAfter(outcome), {}};
}

std::vector<std::filesystem::path> BusUserManager::unitPath()
{
    ManagerConnection manager = requireConnection();
    const BusMessage message = manager.newCall("org.freedesktop.DBus.Properties", "Get");
    sd_bus_message_append(message.get(), "ss", kManager, "UnitPath");
    const Outcome outcome = manager.call(message, kQueryLimit);
    if (outcome.error != 0) {
        throw RegistryError("The service manager of your session does not answer: " + outcome.errorText);
    }
    std::vector<std::filesystem::path> folders;
    char** texts = nullptr;
    if (sd_bus_message_enter_container(outcome.reply.get(), 'v', "as") > 0 &&
        sd_bus_message_read_strv(outcome.reply.get(), &texts) >= 0)
    {
        for (char** text = texts; text != nullptr && *text != nullptr; ++text) {
            folders.emplace_back(*text);
            std::free(*text);
        }
        std::free(static_cast<void*>(texts));
    }
    return folders;
}

void BusUserManager::enable(const std::string& unit)
{
    ManagerConnection manager = requireConnection();
    const BusMessage message = unitListCall(manager, "EnableUnitFiles", unit);
    sd_bus_message_append(message.get(), "bb", kLasting, kWithoutForce);
    change(manager, message, "enabled");
}

void BusUserManager::disable(const std::string& unit)
{
    ManagerConnection manager = requireConnection();
    const BusMessage message = unitListCall(manager, "DisableUnitFiles", unit);
    sd_bus_message_append(message.get(), "b", kLasting);
    change(manager, message, "disabled");
}

void BusUserManager::unmask(const std::string& unit)
{
    ManagerConnection manager = requireConnection();
    for (const int runtime : {kLasting, kUntilTheNextStart}) {
        const BusMessage message = unitListCall(manager, "UnmaskUnitFiles", unit);
        sd_bus_message_append(message.get(), "b", runtime);
        change(manager, message, "allowed");
    }
}

void BusUserManager::reload()
{
    ManagerConnection manager = requireConnection();
    change(manager, manager.newCall(kManager, "Reload"), "read");
}

void BusUserManager::start(const std::string& unit)
{
    ManagerConnection manager = requireConnection();
    const BusMessage message = manager.newCall(kManager, "StartUnit");
    sd_bus_message_append(message.get(), "ss", unit.c_str(), "replace");
    change(manager, message, "started");
}

void BusUserManager::resetFailed(const std::string& unit)
{
    ManagerConnection manager = requireConnection();
    const BusMessage message = manager.newCall(kManager, "ResetFailedUnit");
    sd_bus_message_append(message.get(), "s", unit.c_str());
    const Outcome outcome = manager.call(message, kChangeLimit);
    if (outcome.error != 0 && outcome.errorName != kNoSuchUnit) {
        throw RegistryError("The drive's service could not be cleared: " + outcome.errorText);
    }
}

UserManager::Stop BusUserManager::stop(const std::string& unit, std::chrono::milliseconds limit)
{
    ManagerConnection manager = requireConnection();
    const BusMessage message = manager.newCall(kManager, "StopUnit");
    sd_bus_message_append(message.get(), "ss", unit.c_str(), "replace");
    const Outcome outcome = manager.call(message, kChangeLimit);
    if (outcome.errorName == kNoSuchUnit) {
        return Stop::Done;
    }
    if (outcome.error != 0) {
        throw RegistryError("The drive's service could not be stopped: " + outcome.errorText);
    }
    const Clock::time_point deadline = Clock::now() + limit;
    while (runs(manager, unit)) {
        if (Clock::now() >= deadline) {
            return Stop::StillStopping;
        }
        std::this_thread::sleep_for(kStopPollInterval);
    }
    return Stop::Done;
}

} // namespace ferrobank
