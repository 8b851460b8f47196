#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

struct sd_bus;

namespace ferrobank::drive {

/// A connection to the systemd manager of this user, over its own socket (which needs no session bus) or else
/// the session bus. Used on one thread; each call gives up after five seconds.
class UserManager {
public:
    /// Nothing where no manager runs for this user.
    [[nodiscard]] static std::optional<UserManager> connect();

    /// "enabled", "disabled", "masked" and so on; empty when there is no such unit.
    [[nodiscard]] std::string unitFileState(const std::string& unit);
    /// "active", "inactive", "failed" and so on; empty when the manager does not know it.
    [[nodiscard]] std::string activeState(const std::string& unit);
    /// The following return whether the manager accepted.
    bool start(const std::string& unit);
    bool stop(const std::string& unit);
    bool disable(const std::string& unit);
    bool reload();

private:
    struct Closer {
        void operator()(sd_bus* bus) const;
    };

    explicit UserManager(sd_bus* bus) : _bus(bus) {}

    [[nodiscard]] std::string unitPath(const std::string& unit);

    std::unique_ptr<sd_bus, Closer> _bus;
};

} // namespace ferrobank::drive
