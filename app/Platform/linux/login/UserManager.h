#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace ferrobank {

/// Whether the session has a service manager that can be asked.
enum class ManagerReach {
    Answers,
    Absent, ///< no bus, or nobody with that name on it: a unit would never be started
    Silent, ///< it is there, but did not answer in time or not sensibly
};

struct UnitFileState {
    ManagerReach reach = ManagerReach::Absent;
    std::string word; ///< "enabled", "disabled", "masked", …; empty if there is no such unit file
};

/// What the agent needs of the user's service manager. Main thread, synchronous with time limits; every call
/// asks anew. Unit names are those of unit files. All but unitFileState() throw RegistryError.
class UserManager {
public:
    virtual ~UserManager() = default;

    [[nodiscard]] virtual UnitFileState unitFileState(const std::string& unit) = 0;

    /// The folders in which the manager looks for units, the most important first.
    [[nodiscard]] virtual std::vector<std::filesystem::path> unitPath() = 0;

    /// Without force: what the user has masked stays so, and the call fails.
    virtual void enable(const std::string& unit) = 0;
    virtual void disable(const std::string& unit) = 0;
    /// Undoes the user's mask, the lasting one and the one until the next start of the computer.
    virtual void unmask(const std::string& unit) = 0;
    /// Reads all unit files again.
    virtual void reload() = 0;
    /// Returns once the start is under way.
    virtual void start(const std::string& unit) = 0;

    enum class Stop { Done, StillStopping };
    /// Stops the unit and waits for its end up to `limit`; what takes longer goes on without us. A unit that
    /// does not run counts as stopped.
    virtual Stop stop(const std::string& unit, std::chrono::milliseconds limit) = 0;
    /// Forgets that the unit failed.
    virtual void resetFailed(const std::string& unit) = 0;
};

} // namespace ferrobank
