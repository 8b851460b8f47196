#include "Platform/linux/instance/BusInstance.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <utility>

namespace ferrobank {

namespace {

constexpr auto kInterface = "org.freedesktop.Application";

/// Longer than the first start of a window on a slow machine.
constexpr uint64_t kAnswerTimeoutMicroseconds = 20'000'000;

} // namespace

/// The bus's side of the interface.
struct BusInstanceCalls {
    /// The argument a{sv}: what the starting desktop knows. Anything else in it is skipped.
    static bool readPlatformData(sd_bus_message* call, InstanceRequest& request)
    {
        if (sd_bus_message_enter_container(call, 'a', "{sv}") < 0) {
            return false;
        }
        while (sd_bus_message_enter_container(call, 'e', "sv") > 0) {
            const char* key = nullptr;
            if (sd_bus_message_read(call, "s", &key) < 0) {
                return false;
            }
            const bool token =
                std::strcmp(key, "activation-token") == 0 || std::strcmp(key, "desktop-startup-id") == 0;
            const char* value = nullptr;
            if (token && sd_bus_message_read(call, "v", "s", &value) >= 0) {
                if (request.activationToken.isEmpty() || std::strcmp(key, "activation-token") == 0) {
                    request.activationToken = QString::fromUtf8(value);
                }
            } else if (!token && sd_bus_message_skip(call, "v") < 0) {
                return false;
            }
            if (sd_bus_message_exit_container(call) < 0) {
                return false;
            }
        }
        return sd_bus_message_exit_container(call) >= 0;
    }

    static int carryOut(sd_bus_message* call, void* instance, const InstanceRequest& request,
                        sd_bus_error* error)
    {
        const SingleInstance::Handler& handler = static_cast<BusInstance*>(instance)->_handler;
        if (!handler || !handler(request)) {
            return sd_bus_error_set_const(error, SD_BUS_ERROR_INVALID_ARGS, "There is no such action.");
        }
        return sd_bus_reply_method_return(call, "");
    }

    static int activate(sd_bus_message* call, void* instance, sd_bus_error* error)
    {
        InstanceRequest request;
        if (!readPlatformData(call, request)) {
            return -EINVAL;
        }
        return carryOut(call, instance, request, error);
    }

    static int open(sd_bus_message* call, void* instance, sd_bus_error* error)
    {
        InstanceRequest request;
        if (sd_bus_message_skip(call, "as") < 0 || !readPlatformData(call, request)) {
            return -EINVAL;
        }
        return carryOut(call, instance, request, error);
    }

    static int activateAction(sd_bus_message* call, void* instance, sd_bus_error* error)
    {
        InstanceRequest request;
        const char* action = nullptr;
        if (sd_bus_message_read(call, "s", &action) < 0) {
            return -EINVAL;
        }
        request.action = QString::fromUtf8(action);
        if (sd_bus_message_skip(call, "av") < 0 || !readPlatformData(call, request)) {
            return -EINVAL;
        }
        return carryOut(call, instance, request, error);
    }

    static const sd_bus_vtable table[];
};

const sd_bus_vtable BusInstanceCalls::table[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Activate", "a{sv}", "", activate, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Open", "asa{sv}", "", open, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("ActivateAction", "sava{sv}", "", activateAction, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

BusInstance::BusInstance(SessionBus& bus) : _bus(bus) {}

SingleInstance::Role BusInstance::claim(const InstanceRequest& request)
{
    // The object is there before the name, so that whoever finds the name can call it.
    sd_bus_slot* slot = nullptr;
    sd_bus_add_object_vtable(_bus.get(), &slot, kPath, kInterface, BusInstanceCalls::table, this);
    _object.reset(slot);

    const int result = sd_bus_request_name(_bus.get(), kName, 0);
    if (result == -EEXIST) {
        return forward(request);
    }
    // -EALREADY: the name was taken on this connection before. A bus that refuses names leaves us alone on
    // it.
    return Role::First;
}

void BusInstance::serve(Handler handler)
{
    _handler = std::move(handler);
}

SingleInstance::Role BusInstance::forward(const InstanceRequest& request)
{
    sd_bus_message* raw = nullptr;
    if (sd_bus_message_new_method_call(_bus.get(), &raw, kName, kPath, kInterface,
                                       request.action.isEmpty() ? "Activate" : "ActivateAction") < 0)
    {
        return Role::Unanswered;
    }
    const BusMessage call(raw);
    if (!request.action.isEmpty()) {
        sd_bus_message_append(raw, "sav", request.action.toStdString().c_str(), 0U);
    }
    sd_bus_message_open_container(raw, 'a', "{sv}");
    if (!request.activationToken.isEmpty()) {
        const std::string token = request.activationToken.toStdString();
        sd_bus_message_append(raw, "{sv}", "activation-token", "s", token.c_str());
        sd_bus_message_append(raw, "{sv}", "desktop-startup-id", "s", token.c_str());
    }
    sd_bus_message_close_container(raw);
    return sd_bus_call(_bus.get(), raw, kAnswerTimeoutMicroseconds, nullptr, nullptr) >= 0 ? Role::Forwarded
                                                                                           : Role::Unanswered;
}

} // namespace ferrobank
