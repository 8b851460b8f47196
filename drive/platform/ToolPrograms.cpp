#include "platform/ToolPrograms.h"

#include <unistd.h>

#include <climits>
#include <cstdlib>

namespace ferrobank::drive {

std::filesystem::path driveProgramOf(const std::filesystem::path& front)
{
    char real[PATH_MAX];
    if (::realpath(front.c_str(), real) == nullptr) {
        return {};
    }
    return std::filesystem::path(real).replace_filename(kDriveProgram);
}

std::filesystem::path ownProgram()
{
    char path[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path);
    return length > 0 ? std::filesystem::path(path, path + length) : std::filesystem::path();
}

} // namespace ferrobank::drive
