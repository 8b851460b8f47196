#include "Platform/linux/updates/install/SideBySide.h"

#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/install/Files.h"
#include "Platform/linux/updates/install/Staging.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <optional>
#include <tuple>

namespace ferrobank::updates {
namespace {

namespace fs = std::filesystem;

/// What is started from outside: by login entries, units, desktop entries and the command link.
constexpr std::array<const char*, 2> kPrograms{"Contents/Helpers/ferrobank", "Contents/Linux/Ferrobank"};

[[noreturn]] void throwNotMoved(int error)
{
    throw systemFailure(Problem::Install, "The installed version could not be moved beside the new one",
                        error);
}

void makeFolder(const fs::path& folder)
{
    if (::mkdir(folder.c_str(), 0755) != 0 && errno != EEXIST)
        throwNotMoved(errno);
}

/// In one step, whatever file or link is there.
void placeLink(const fs::path& link, const fs::path& target)
{
    const fs::path fresh = link.parent_path() / ("." + link.filename().string() + ".new");
    ::unlink(fresh.c_str());
    if (::symlink(target.c_str(), fresh.c_str()) != 0)
        throwNotMoved(errno);
    if (::rename(fresh.c_str(), link.c_str()) != 0) {
        const int error = errno;
        ::unlink(fresh.c_str());
        throwNotMoved(error);
    }
    if (const int error = syncFolder(link.parent_path()); error != 0)
        throwNotMoved(error);
}

/// The same files by other names; only folders and links are made anew.
void linkTree(const fs::path& from, const fs::path& to)
{
    makeFolder(to);
    for (const fs::directory_entry& entry : fs::directory_iterator(from)) {
        const fs::path name = to / entry.path().filename();
        if (entry.is_directory() && !entry.is_symlink())
            linkTree(entry.path(), name);
        else if (entry.is_symlink())
            fs::copy_symlink(entry.path(), name);
        else if (::link(entry.path().c_str(), name.c_str()) != 0)
            throwNotMoved(errno);
    }
    if (const int error = syncFolder(to); error != 0)
        throwNotMoved(error);
}

fs::path versionsHome(const InstallPlace& place)
{
    return place.home / ("." + place.root.filename().string() + "-versions");
}

/// The way from a program in the former folder to the same one below `current`.
fs::path targetOf(const InstallPlace& place, const char* program)
{
    const fs::path way = fs::path("../../..") / versionsHome(place).filename() / "current";
    return way / place.root.filename() / program;
}

bool hasBegun(const InstallPlace& place)
{
    std::error_code ignored;
    return fs::is_symlink(place.root / kPrograms[0], ignored);
}

void copyBeside(const InstallPlace& place, const fs::path& target)
{
    if (hasBegun(place) || isRunningFrom(target))
        throw UpdateFailure(Problem::Place,
                            "This copy cannot replace itself: its programs were changed by hand.");
    const fs::path fresh = target.parent_path() / ".new";
    fs::remove_all(fresh);
    makeFolder(fresh);
    linkTree(place.root, fresh / place.root.filename());
    fs::remove_all(target);
    if (::rename(fresh.c_str(), target.c_str()) != 0)
        throwNotMoved(errno);
    if (const int error = syncFolder(target.parent_path()); error != 0)
        throwNotMoved(error);
}

} // namespace

InstallPlace moveSideBySide(const InstallPlace& place, const std::string& version)
try {
    const fs::path home = versionsHome(place);
    const fs::path name = place.root.filename();
    const fs::path target = home / "versions" / version;
    makeFolder(home);
    makeFolder(home / "versions");
    std::error_code ignored;
    // A link in the bundle leads to this copy already: then it is whole, and must not be taken away.
    if (!hasBegun(place) || !fs::exists(target / name, ignored))
        copyBeside(place, target);
    placeLink(home / "current", fs::path("versions") / version);
    for (const char* program : kPrograms)
        placeLink(place.root / program, targetOf(place, program));
    return InstallPlace::of(target / name);
} catch (const fs::filesystem_error& error) {
    throwNotMoved(error.code().value());
}

void tidyFormerFolder(const InstallPlace& place)
{
    const std::optional<fs::path> former = place.formerRoot();
    if (!former || isRunningFrom(*former))
        return;
    std::error_code error;
    const fs::path contents = *former / "Contents";
    const fs::path current =
        fs::path("../..") / place.home.filename() / "current" / former->filename() / "Contents";
    for (const fs::directory_entry& entry : fs::directory_iterator(contents, error)) {
        const fs::path name = entry.path().filename();
        std::error_code ignored;
        if (entry.is_symlink(ignored))
            continue;
        if (name != "Linux" && name != "Helpers") {
            fs::remove_all(entry.path(), ignored);
            fs::create_symlink(current / name, entry.path(), ignored);
            continue;
        }
        for (const fs::directory_entry& file : fs::directory_iterator(entry.path(), error)) {
            if (!file.is_symlink(ignored))
                fs::remove_all(file.path(), ignored);
        }
    }
}

} // namespace ferrobank::updates
