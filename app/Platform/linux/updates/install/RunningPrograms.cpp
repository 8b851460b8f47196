#include "Platform/linux/updates/install/RunningPrograms.h"

#include <string>
#include <system_error>

namespace ferrobank::updates {

namespace fs = std::filesystem;

bool isRunningFrom(const fs::path& folder, pid_t except)
{
    const std::string prefix = folder.string() + "/";
    const std::string left = std::to_string(except);
    std::error_code error;
    for (fs::directory_iterator it("/proc", error), end; !error && it != end; it.increment(error)) {
        // "self" and "thread-self" are this very process once more.
        const std::string name = it->path().filename().string();
        if (name.find_first_not_of("0123456789") != std::string::npos || name == left)
            continue;
        std::error_code unreadable; // not ours, or gone meanwhile
        const fs::path executable = fs::read_symlink(it->path() / "exe", unreadable);
        if (!unreadable && executable.string().starts_with(prefix))
            return true;
    }
    return false;
}

} // namespace ferrobank::updates
