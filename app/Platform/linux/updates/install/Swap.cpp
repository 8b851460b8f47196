#include "Platform/linux/updates/install/Swap.h"

#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/install/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <tuple>

namespace ferrobank::updates {
namespace {

namespace fs = std::filesystem;

UpdateFailure notReplaced(int error)
{
    return systemFailure(Problem::Install, "The installed version could not be replaced", error);
}

int exchange(const fs::path& one, const fs::path& other)
{
    const int status = ::renameat2(AT_FDCWD, one.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE);
    return status == 0 ? 0 : errno;
}

void swapFolders(const InstallPlace& place)
{
    const fs::path other = place.staging() / "next" / place.root.filename();
    if (const int error = exchange(place.root, other); error != 0)
        throw notReplaced(error);
    // The step is done; what remains is that it survives a power failure, and no error undoes it.
    std::ignore = syncFolder(place.home);
    std::ignore = syncFolder(other.parent_path());
}

void swapLinks(const InstallPlace& place, const std::string& to)
{
    const fs::path versions = place.home / "versions";
    const fs::path target = versions / to;
    struct stat facts{};
    if (::lstat(target.c_str(), &facts) != 0) {
        if (::rename((place.staging() / "next").c_str(), target.c_str()) != 0)
            throw notReplaced(errno);
        // Only the unpacked folder itself was private.
        ::chmod(target.c_str(), 0755);
        std::ignore = syncFolder(versions);
    }
    const fs::path link = place.home / "current";
    const fs::path fresh = place.home / ".current.new";
    ::unlink(fresh.c_str());
    if (::symlink((fs::path("versions") / to).c_str(), fresh.c_str()) != 0 ||
        ::rename(fresh.c_str(), link.c_str()) != 0)
    {
        const int error = errno;
        ::unlink(fresh.c_str());
        throw notReplaced(error);
    }
    std::ignore = syncFolder(place.home);
}

} // namespace

bool canExchange(const fs::path& folder)
{
    // New folders can be exchanged there, but not those of a lower layer.
    constexpr unsigned long kOverlay = 0x794c7630;
    struct statfs facts{};
    if (::statfs(folder.c_str(), &facts) != 0 || static_cast<unsigned long>(facts.f_type) == kOverlay)
        return false;
    const fs::path one = folder / "probe-one";
    const fs::path other = folder / "probe-other";
    ::mkdir(one.c_str(), 0700);
    ::mkdir(other.c_str(), 0700);
    const bool worked = exchange(one, other) == 0;
    ::rmdir(one.c_str());
    ::rmdir(other.c_str());
    return worked;
}

void swapVersions(const InstallPlace& place, const std::string& to)
{
    if (place.layout == InstallPlace::Layout::Versioned)
        swapLinks(place, to);
    else
        swapFolders(place);
}

fs::path keptVersion(const InstallPlace& place, const std::string& version)
{
    return place.layout == InstallPlace::Layout::Versioned ? place.home / "versions" / version
                                                           : place.staging() / "next";
}

} // namespace ferrobank::updates
