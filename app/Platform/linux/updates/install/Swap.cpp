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

/// Whether the application's folder is there with its executable. What else belongs in it was checked when it
/// was staged.
bool isThere(const fs::path& bundle)
{
    return ::access((bundle / "Contents/Linux/Ferrobank").c_str(), X_OK) == 0;
}

void swapFolders(const InstallPlace& place)
{
    const fs::path other = place.staging() / "next" / place.root.filename();
    if (!isThere(other))
        throw notReplaced(ENOENT);
    if (const int error = exchange(place.root, other); error != 0)
        throw notReplaced(error);
    // The step is done; what remains is that it survives a power failure, and no error undoes it.
    std::ignore = syncFolder(place.home);
    std::ignore = syncFolder(other.parent_path());
}

fs::path wayBack(const InstallPlace& place)
{
    return place.home / ".current.back";
}

/// Moves what was unpacked to its place among the versions, unless it is there already.
void takeAmongVersions(const InstallPlace& place, const std::string& version)
{
    const fs::path name = place.root.filename();
    const fs::path versions = place.home / "versions";
    const fs::path target = versions / version;
    if (isThere(target / name))
        return;
    const fs::path next = place.staging() / "next";
    if (!isThere(next / name))
        throw notReplaced(ENOENT);
    // A folder of that name without the application in it: somebody has removed a version half.
    std::error_code error;
    fs::remove_all(target, error);
    if (::rename(next.c_str(), target.c_str()) != 0)
        throw notReplaced(errno);
    // Only the unpacked folder itself was private.
    ::chmod(target.c_str(), 0755);
    std::ignore = syncFolder(versions);
}

void swapLinks(const InstallPlace& place, const std::string& to)
{
    takeAmongVersions(place, to);
    const fs::path way = fs::path("versions") / to;
    const fs::path link = place.home / "current";
    const fs::path prepared = wayBack(place);
    std::error_code error;
    if (fs::read_symlink(prepared, error) == way && ::rename(prepared.c_str(), link.c_str()) == 0) {
        std::ignore = syncFolder(place.home);
        return;
    }
    const fs::path fresh = place.home / ".current.new";
    ::unlink(fresh.c_str());
    if (::symlink(way.c_str(), fresh.c_str()) != 0 || ::rename(fresh.c_str(), link.c_str()) != 0) {
        const int number = errno;
        ::unlink(fresh.c_str());
        throw notReplaced(number);
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

void prepareWayBack(const InstallPlace& place, const std::string& to)
{
    if (place.layout != InstallPlace::Layout::Versioned)
        return;
    dropWayBack(place);
    if (::symlink((fs::path("versions") / to).c_str(), wayBack(place).c_str()) != 0)
        throw notReplaced(errno);
}

void dropWayBack(const InstallPlace& place)
{
    if (place.layout == InstallPlace::Layout::Versioned)
        ::unlink(wayBack(place).c_str());
}

fs::path keptVersion(const InstallPlace& place, const std::string& version)
{
    return place.layout == InstallPlace::Layout::Versioned ? place.home / "versions" / version
                                                           : place.staging() / "next";
}

} // namespace ferrobank::updates
