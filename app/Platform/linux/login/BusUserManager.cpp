#include "Platform/linux/login/BusUserManager.h"

#include "Platform/LoginItemRegistry.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>
#include <thread>
#include <utility>

namespace ferrobank {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto kQueryLimit = std::chrono::microseconds(2s);
constexpr auto kChangeLimit = std::chrono::microseconds(10s);

constexpr auto kStopPollInterval = 20ms;

constexpr std::string_view kNoSuchUnit = "org.freedesktop.systemd1.NoSuchUnit";
constexpr const char* kService = "org.freedesktop.systemd1";
constexpr const char* kObject = "/org/freedesktop/systemd1";
constexpr const char* kManager = "org.freedesktop.systemd1.Manager";

std::uint64_t untilThen(Clock::time_point deadline)
{
    const auto rest = std::chrono::duration_cast<std::chrono::microseconds>(deadline - Clock::now());
    return rest.count() > 0 ? static_cast<std::uint64_t>(rest.count()) : 0;
}

/// The bus of the session; without a word about it in the environment, that of the account's session.
int openUserBus(sd_bus** bus)
{
    const int result = sd_bus_open_user(bus);
    if (result != -ENOMEDIUM) {
        return result;
    }
    const std::string address = "unix:path=/run/user/" + std::to_string(geteuid()) + "/bus";
    sd_bus* fresh = nullptr;
    int error = sd_bus_new(&fresh);
    if (error >= 0) {
        error = sd_bus_set_address(fresh, address.c_str());
    }
    if (error >= 0) {
        error = sd_bus_set_bus_client(fresh, 1);
    }
    if (error >= 0) {
        error = sd_bus_start(fresh);
    }
    if (error < 0) {
        sd_bus_unref(fresh);
        return error;
    }
    *bus = fresh;
    return 0;
}

bool connectionLost(int error)
{
    return error == ENOTCONN || error == ECONNRESET || error == EPIPE || error == ESHUTDOWN;
}

ManagerReach reachAfter(int error, const std::string& errorName)
{
    if (errorName == SD_BUS_ERROR_SERVICE_UNKNOWN || errorName == SD_BUS_ERROR_NAME_HAS_NO_OWNER) {
        return ManagerReach::Absent;
    }
    const bool noAnswer = error == ETIMEDOUT || error == ENOMEM || errorName == SD_BUS_ERROR_NO_REPLY ||
                          errorName == SD_BUS_ERROR_ACCESS_DENIED || connectionLost(error);
    return noAnswer ? ManagerReach::Silent : ManagerReach::Answers;
}

} // namespace

int BusUserManager::connect()
{
    if (_bus && sd_bus_is_open(_bus.get()) > 0) {
        return 0;
    }
    _bus.reset();
    sd_bus* bus = nullptr;
    if (const int result = openUserBus(&bus); result < 0) {
        return -result;
    }
    Bus fresh(bus);
    // The library would wait for a minute and a half for a bus that does not greet.
    const Clock::time_point deadline = Clock::now() + kQueryLimit;
    while (sd_bus_is_ready(bus) == 0) {
        int result = sd_bus_process(bus, nullptr);
        if (result == 0) {
            const std::uint64_t rest = untilThen(deadline);
            result = rest == 0 ? -ETIMEDOUT : sd_bus_wait(bus, rest);
        }
        if (result < 0 && result != -EINTR) {
            return -result;
        }
    }
    if (sd_bus_is_ready(bus) < 0) {
        return ENOTCONN;
    }
    _bus = std::move(fresh);
    return 0;
}

void BusUserManager::requireConnection()
{
    if (const int error = connect(); error != 0) {
        throw RegistryError(std::string("The service manager of your session cannot be reached: ") +
                            std::strerror(error) + ".");
    }
}

BusUserManager::Message BusUserManager::newCall(const char* interface, const char* member)
{
    sd_bus_message* message = nullptr;
    if (sd_bus_message_new_method_call(_bus.get(), &message, kService, kObject, interface, member) < 0) {
        throw std::bad_alloc();
    }
    // Whoever is not there must not be started by the question.
    sd_bus_message_set_auto_start(message, 0);
    return Message(message);
}

BusUserManager::Outcome BusUserManager::call(const Message& message, std::chrono::microseconds limit)
{
    sd_bus_error error{};
    sd_bus_message* reply = nullptr;
    Outcome outcome;
    const int result =
        sd_bus_call(_bus.get(), message.get(), static_cast<std::uint64_t>(limit.count()), &error, &reply);
    outcome.reply.reset(reply);
    if (result < 0) {
        outcome.error = -result;
        outcome.errorName = error.name != nullptr ? error.name : "";
        outcome.errorText = error.message != nullptr ? error.message : std::strerror(-result);
        if (connectionLost(outcome.error)) {
            _bus.reset();
        }
    }
    sd_bus_error_free(&error);
    return outcome;
}

UnitFileState BusUserManager::unitFileState(const std::string& unit)
{
    if (const int error = connect(); error != 0) {
        return {error == ETIMEDOUT ? ManagerReach::Silent : ManagerReach::Absent, {}};
    }
    const Message message = newCall(kManager, "GetUnitFileState");
    sd_bus_message_append(message.get(), "s", unit.c_str());
    Outcome outcome = call(message, kQueryLimit);
    const char* word = nullptr;
    if (outcome.error == 0 && sd_bus_message_read(outcome.reply.get(), "s", &word) >= 0) {
        return {ManagerReach::Answers, word};
    }
    return {reachAfter(outcome.error, outcome.errorName), {}};
}

std::vector<std::filesystem::path> BusUserManager::unitPath()
{
    requireConnection();
    const Message message = newCall("org.freedesktop.DBus.Properties", "Get");
    sd_bus_message_append(message.get(), "ss", kManager, "UnitPath");
    const Outcome outcome = call(message, kQueryLimit);
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
        std::free(texts);
    }
    return folders;
}

void BusUserManager::change(const Message& message, const char* wish)
{
    const Outcome outcome = call(message, kChangeLimit);
    if (outcome.error != 0) {
        throw RegistryError(std::string("The drive's service could not be ") + wish + ": " +
                            outcome.errorText);
    }
}

BusUserManager::Message BusUserManager::unitListCall(const char* member, const std::string& unit)
{
    requireConnection();
    Message message = newCall(kManager, member);
    sd_bus_message_append(message.get(), "as", 1, unit.c_str());
    return message;
}

void BusUserManager::enable(const std::string& unit)
{
    const Message message = unitListCall("EnableUnitFiles", unit);
    const int runtime = 0;
    const int force = 0;
    sd_bus_message_append(message.get(), "bb", runtime, force);
    change(message, "enabled");
}

void BusUserManager::disable(const std::string& unit)
{
    const Message message = unitListCall("DisableUnitFiles", unit);
    const int runtime = 0;
    sd_bus_message_append(message.get(), "b", runtime);
    change(message, "disabled");
}

void BusUserManager::unmask(const std::string& unit)
{
    for (const int runtime : {0, 1}) {
        const Message message = unitListCall("UnmaskUnitFiles", unit);
        sd_bus_message_append(message.get(), "b", runtime);
        change(message, "allowed");
    }
}

void BusUserManager::reload()
{
    requireConnection();
    change(newCall(kManager, "Reload"), "read");
}

void BusUserManager::start(const std::string& unit)
{
    requireConnection();
    const Message message = newCall(kManager, "StartUnit");
    sd_bus_message_append(message.get(), "ss", unit.c_str(), "replace");
    change(message, "started");
}

void BusUserManager::resetFailed(const std::string& unit)
{
    requireConnection();
    const Message message = newCall(kManager, "ResetFailedUnit");
    sd_bus_message_append(message.get(), "s", unit.c_str());
    const Outcome outcome = call(message, kChangeLimit);
    if (outcome.error != 0 && outcome.errorName != kNoSuchUnit) {
        throw RegistryError("The drive's service could not be cleared: " + outcome.errorText);
    }
}

UserManager::Stop BusUserManager::stop(const std::string& unit, std::chrono::milliseconds limit)
{
    requireConnection();
    const Message message = newCall(kManager, "StopUnit");
    sd_bus_message_append(message.get(), "ss", unit.c_str(), "replace");
    const Outcome outcome = call(message, kChangeLimit);
    if (outcome.errorName == kNoSuchUnit) {
        return Stop::Done;
    }
    if (outcome.error != 0) {
        throw RegistryError("The drive's service could not be stopped: " + outcome.errorText);
    }
    const Clock::time_point deadline = Clock::now() + limit;
    while (runs(unit)) {
        if (Clock::now() >= deadline) {
            return Stop::StillStopping;
        }
        std::this_thread::sleep_for(kStopPollInterval);
    }
    return Stop::Done;
}

bool BusUserManager::runs(const std::string& unit)
{
    const Message message = unitListCall("ListUnitsByNames", unit);
    const Outcome outcome = call(message, kQueryLimit);
    const char* activeState = nullptr;
    if (outcome.error != 0 || sd_bus_message_enter_container(outcome.reply.get(), 'a', "(ssssssouso)") < 0 ||
        sd_bus_message_enter_container(outcome.reply.get(), 'r', "ssssssouso") <= 0 ||
        sd_bus_message_skip(outcome.reply.get(), "sss") < 0 ||
        sd_bus_message_read(outcome.reply.get(), "s", &activeState) < 0)
    {
        throw RegistryError("The drive's service could not be asked for: " + outcome.errorText);
    }
    const std::string_view word = activeState;
    return word != "inactive" && word != "failed";
}

} // namespace ferrobank
