#include "mounting/VolumeUsers.h"

#include "platform/Files.h"

#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <memory>
#include <string_view>

namespace ferrobank::drive {

namespace {

using Folder = std::unique_ptr<DIR, int (*)(DIR*)>;

constexpr std::size_t kNamedAtMost = 5;
constexpr std::size_t kMapsLimit = 64 * 1024 * 1024;

bool isInside(std::string_view path, std::string_view folder)
{
    return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

bool linkLeadsInside(const std::string& link, std::string_view folder)
{
    std::array<char, PATH_MAX> target{};
    const ssize_t length = ::readlink(link.c_str(), target.data(), target.size());
    return length > 0 && isInside({target.data(), static_cast<std::size_t>(length)}, folder);
}

bool hasOpenFileInside(const std::string& process, std::string_view folder)
{
    const Folder descriptors(::opendir((process + "/fd").c_str()), &::closedir);
    while (const dirent* entry = descriptors ? ::readdir(descriptors.get()) : nullptr) {
        if (linkLeadsInside(process + "/fd/" + entry->d_name, folder)) {
            return true;
        }
    }
    return false;
}

bool hasMappingInside(const std::string& process, const std::string& folder)
{
    const std::string maps = readSmallFile(process + "/maps", kMapsLimit).value_or(std::string());
    for (std::size_t at = maps.find(' ' + folder); at != std::string::npos;
         at = maps.find(' ' + folder, at + 1))
    {
        const std::string_view rest = std::string_view(maps).substr(at + 1);
        if (isInside(rest.substr(0, rest.find('\n')), folder)) {
            return true;
        }
    }
    return false;
}

bool uses(const std::string& process, const std::string& folder)
{
    return linkLeadsInside(process + "/cwd", folder) || linkLeadsInside(process + "/root", folder) ||
           linkLeadsInside(process + "/exe", folder) || hasOpenFileInside(process, folder) ||
           hasMappingInside(process, folder);
}

} // namespace

std::vector<VolumeUser> usersOf(const std::filesystem::path& mountPoint)
{
    std::vector<VolumeUser> users;
    const Folder processes(::opendir("/proc"), &::closedir);
    while (const dirent* entry = processes ? ::readdir(processes.get()) : nullptr) {
        const std::string_view name = entry->d_name;
        int identifier = 0;
        const auto parsed = std::from_chars(name.data(), name.data() + name.size(), identifier);
        if (parsed.ec != std::errc() || parsed.ptr != name.data() + name.size() || identifier == ::getpid()) {
            continue;
        }
        const std::string process = "/proc/" + std::string(name);
        if (uses(process, mountPoint.string())) {
            std::string command = readSmallFile(process + "/comm").value_or("a program");
            command.erase(std::remove(command.begin(), command.end(), '\n'), command.end());
            users.push_back({.process = identifier, .name = std::move(command)});
        }
    }
    return users;
}

std::string busySentence(const std::vector<VolumeUser>& users)
{
    if (users.empty()) {
        return "The drive is in use by another program. Close it and try again.";
    }
    std::string text = "The drive is in use by ";
    for (std::size_t index = 0; index < users.size() && index < kNamedAtMost; ++index) {
        text +=
            (index == 0 ? "" : ", ") + users[index].name + " (" + std::to_string(users[index].process) + ")";
    }
    if (users.size() > kNamedAtMost) {
        text += " and " + std::to_string(users.size() - kNamedAtMost) + " more";
    }
    return text + (users.size() == 1 ? ". Close it and try again." : ". Close them and try again.");
}

} // namespace ferrobank::drive
