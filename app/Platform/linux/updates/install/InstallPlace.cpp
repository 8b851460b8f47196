#include "Platform/linux/updates/install/InstallPlace.h"

#include "Platform/Bundle.h"

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <fstream>

namespace ferrobank::updates {
namespace {

namespace fs = std::filesystem;

/// File systems of another machine or of a medium without owners (statfs magic numbers, see statfs(2)): NFS,
/// SMB, CIFS, SMB2, FUSE, 9P, AFS, Ceph, FAT, exFAT, ISO 9660, UDF, squashfs.
constexpr std::array<unsigned long, 13> kUnsuitable{
    0x6969,     0x517b, 0xff534d42, 0xfe534d42, 0x65735546, 0x01021997, 0x5346414f,
    0x00c36400, 0x4d44, 0x2011bab0, 0x9660,     0x15013346, 0x73717368,
};

bool isOnRemovableMedium(dev_t device)
{
    const std::string number = std::to_string(major(device)) + ":" + std::to_string(minor(device));
    // A partition has no such file; its disk, one level up, has.
    for (const char* file : {"/removable", "/../removable"}) {
        std::ifstream stream("/sys/dev/block/" + number + file);
        char flag = '0';
        if (stream >> flag)
            return flag == '1';
    }
    return false;
}

/// Whether a group has nobody but us in it, as many systems give every user one.
bool isOurOwnGroup(gid_t number)
{
    const passwd* const user = ::getpwuid(::geteuid());
    if (!user || user->pw_gid != number)
        return false;
    const std::string name = user->pw_name;
    const group* const facts = ::getgrgid(number);
    if (!facts || facts->gr_name != name)
        return false;
    for (char** member = facts->gr_mem; *member; ++member) {
        if (*member != name)
            return false;
    }
    return true;
}

/// The reason why a folder cannot be worked in, or nothing.
std::string folderProblem(const fs::path& folder)
{
    struct stat facts{};
    struct statfs fileSystem{};
    struct statvfs mount{};
    if (::stat(folder.c_str(), &facts) != 0 || ::statfs(folder.c_str(), &fileSystem) != 0 ||
        ::statvfs(folder.c_str(), &mount) != 0)
        return "its folder cannot be looked at";
    if ((mount.f_flag & ST_RDONLY) != 0)
        return "it lies on a volume that can only be read";
    if (std::ranges::find(kUnsuitable, static_cast<unsigned long>(fileSystem.f_type)) != kUnsuitable.end())
        return "it lies on a network, removable or virtual volume";
    if (isOnRemovableMedium(facts.st_dev))
        return "it lies on a removable medium";
    if (facts.st_uid != ::geteuid())
        return "it belongs to another user";
    if ((facts.st_mode & S_IWOTH) != 0)
        return "every user may write into its folder";
    if ((facts.st_mode & S_IWGRP) != 0 && !isOurOwnGroup(facts.st_gid))
        return "other users of its group may write into its folder";
    if (::faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) != 0)
        return "its folder cannot be written to";
    return {};
}

bool isBelow(const fs::path& path, const fs::path& folder)
{
    const auto [mismatch, rest] = std::ranges::mismatch(folder, path);
    return mismatch == folder.end();
}

bool isOwnedByRoot(const fs::path& folder)
{
    struct stat facts{};
    return ::stat(folder.c_str(), &facts) == 0 && facts.st_uid == 0;
}

} // namespace

InstallPlace InstallPlace::of(const fs::path& realRoot)
{
    std::error_code error;
    const fs::path program = realRoot / "Contents/Linux/Ferrobank";
    // A bundle that was moved among versions has left links to its programs.
    const bool wasMoved = fs::is_symlink(program, error) && !error;
    const fs::path real = wasMoved ? fs::canonical(program, error) : fs::path();
    const fs::path root = wasMoved && !error ? real.parent_path().parent_path().parent_path() : realRoot;

    const Bundle stable = Bundle(root).atStablePath();
    if (stable.root() == root)
        return {root, root.parent_path(), Layout::Exchange};
    return {root, root.parent_path().parent_path().parent_path(), Layout::Versioned};
}

fs::path InstallPlace::staging() const
{
    return home / ("." + root.filename().string() + "-update");
}

fs::path InstallPlace::stableRoot() const
{
    return layout == Layout::Versioned ? home / "current" / root.filename() : root;
}

std::optional<fs::path> InstallPlace::formerRoot() const
{
    const fs::path stable = Bundle(root).atStablePath().root();
    return stable == stableRoot() ? std::nullopt : std::optional(stable);
}

PlaceVerdict judgePlace(const InstallPlace& place, const fs::path& userHome)
{
    PlaceVerdict verdict;
    verdict.kind = installKindOf(place.root);
    using Word = InstallKind::Word;
    if (verdict.kind.word == Word::Unknown && isOwnedByRoot(place.root))
        verdict.kind.word = Word::Package;

    switch (verdict.kind.word) {
    case Word::Package:
        verdict.sentence = "This copy belongs to the system's package manager, which updates it.";
        return verdict;
    case Word::Store:
        verdict.sentence = "This copy is updated by the store it came from.";
        return verdict;
    case Word::Development:
        verdict.sentence = "This copy was built on this machine and does not replace itself.";
        return verdict;
    case Word::Unknown:
        verdict.sentence = "This copy does not say how it was installed, so it does not replace itself.";
        return verdict;
    case Word::Folder:
        break;
    }

    std::string problem;
    if (!userHome.empty() && isBelow(place.root, userHome / "Ferrobank"))
        problem = "it lies on the drive that it serves";
    for (const fs::path& folder : {place.home, place.root}) {
        if (problem.empty())
            problem = folderProblem(folder);
    }
    if (problem.empty() && place.layout == InstallPlace::Layout::Versioned)
        problem = folderProblem(place.home / "versions");
    verdict.mayReplace = problem.empty();
    if (!problem.empty())
        verdict.sentence = "This copy cannot replace itself: " + problem + ".";
    return verdict;
}

} // namespace ferrobank::updates
