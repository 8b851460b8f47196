#include "Platform/linux/login/UserFolders.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

namespace ferrobank {

namespace {

/// Paths that are not absolute are to be ignored.
std::filesystem::path folderFromEnvironment(const char* name)
{
    const char* text = std::getenv(name);
    std::filesystem::path folder = text != nullptr ? text : "";
    return folder.is_absolute() ? folder : std::filesystem::path{};
}

std::filesystem::path homeFolder()
{
    std::filesystem::path home = folderFromEnvironment("HOME");
    if (home.empty()) {
        const passwd* account = getpwuid(geteuid());
        home = account != nullptr ? account->pw_dir : "";
    }
    return home.is_absolute() ? home : std::filesystem::path{};
}

} // namespace

std::optional<UserFolders> UserFolders::ofProcess()
{
    const std::filesystem::path home = homeFolder();
    UserFolders folders{folderFromEnvironment("XDG_CONFIG_HOME"), folderFromEnvironment("XDG_DATA_HOME")};
    if (home.empty() && (folders.config.empty() || folders.data.empty())) {
        return std::nullopt;
    }
    if (folders.config.empty()) {
        folders.config = home / ".config";
    }
    if (folders.data.empty()) {
        folders.data = home / ".local/share";
    }
    return folders;
}

} // namespace ferrobank
