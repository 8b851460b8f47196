#pragma once

#include "Platform/linux/login/UserManager.h"

#include <systemd/sd-bus.h>

#include <memory>
#include <string>
#include <vector>

namespace ferrobank {

/// The systemd user manager, asked over the session bus with libsystemd. Connects at the first call, keeps
/// the connection, and connects anew when it was lost.
///
/// Source of the calls: org.freedesktop.systemd1(5).
class BusUserManager final : public UserManager {
public:
    [[nodiscard]] UnitFileState unitFileState(const std::string& unit) override;
    [[nodiscard]] std::vector<std::filesystem::path> unitPath() override;
    void enable(const std::string& unit) override;
    void disable(const std::string& unit) override;
    void unmask(const std::string& unit) override;
    void reload() override;
    void start(const std::string& unit) override;
    Stop stop(const std::string& unit, std::chrono::milliseconds limit) override;
    void resetFailed(const std::string& unit) override;

private:
    struct CloseBus {
        void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
    };

    struct ReleaseMessage {
        void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
    };

    using Bus = std::unique_ptr<sd_bus, CloseBus>;
    using Message = std::unique_ptr<sd_bus_message, ReleaseMessage>;

    /// What a call came back with: a reply, or why there is none.
    struct Outcome {
        Message reply;
        int error = 0; ///< errno value, 0 with a reply
        std::string errorName;
        std::string errorText;
    };

    /// The connection, ready to carry calls, or the errno value that prevented it.
    int connect();
    [[nodiscard]] Message newCall(const char* interface, const char* member);
    [[nodiscard]] Outcome call(const Message& message, std::chrono::microseconds limit);
    void change(const Message& message, const char* wish);
    [[nodiscard]] Message unitListCall(const char* member, const std::string& unit);
    [[nodiscard]] bool runs(const std::string& unit);
    void requireConnection();

    Bus _bus;
};

} // namespace ferrobank
