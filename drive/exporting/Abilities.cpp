#include "exporting/Abilities.h"

#include "exporting/Staging.h"
#include "figures/DisplayText.h"
#include "platform/Failure.h"
#include "platform/FileDescriptor.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

namespace ferrobank::drive {

namespace {

/// A line break, characters that FAT and NTFS reserve, and a byte that is no UTF-8.
constexpr const char* kHardName = "a\n:?*\xff";
constexpr std::uint64_t kLargestOnFat = 0xFFFFFFFFU;
constexpr off_t kHole = off_t{1} << 20U;

/// A folder for trials, removed with all it holds.
class Trial {
public:
    Trial(const std::filesystem::path& folder, const std::filesystem::path& shown)
    {
        std::string name = (folder / (std::string(kTrialStem) + "XXXXXX")).string();
        if (::mkdtemp(name.data()) == nullptr) {
            throw systemFailure(displayName(shown.string()) + " cannot be written", errno);
        }
        _path = name;
        _folder = FileDescriptor(::open(name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    }

    Trial(const Trial&) = delete;
    Trial& operator=(const Trial&) = delete;

    ~Trial()
    {
        std::error_code ignored;
        std::filesystem::remove_all(_path, ignored);
    }

    [[nodiscard]] int folder() const { return _folder.get(); }

private:
    std::filesystem::path _path;
    FileDescriptor _folder;
};

mode_t modeOf(int file)
{
    struct stat status{};
    ::fstat(file, &status);
    return status.st_mode & 07777U;
}

bool keepsModes(int file)
{
    for (const mode_t mode : std::array<mode_t, 3>{0600, 0755, 0444}) {
        if (::fchmod(file, mode) != 0 || modeOf(file) != mode) {
            return false;
        }
    }
    return true;
}

bool keepsHoles(int file)
{
    struct stat status{};
    return ::ftruncate(file, kHole) == 0 && ::fstat(file, &status) == 0 && status.st_blocks * 512 < kHole;
}

} // namespace

Abilities tryAbilities(const std::filesystem::path& folder, const std::filesystem::path& shown)
{
    const Trial trial(folder, shown);
    const FileDescriptor file(::openat(trial.folder(), "file", O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0644));
    if (!file) {
        throw systemFailure(displayName(shown.string()) + " cannot be written", errno);
    }
    Abilities abilities;
    abilities.symbolicLinks = ::symlinkat("file", trial.folder(), "symbolic") == 0;
    abilities.hardLinks = ::linkat(trial.folder(), "file", trial.folder(), "hard", 0) == 0;
    abilities.fileMode = modeOf(file.get());
    abilities.folderMode = modeOf(trial.folder());
    // Before the file gets permissions that forbid it.
    abilities.attributes = ::fsetxattr(file.get(), "user.ferrobank", "1", 1, 0) == 0;
    abilities.modes = keepsModes(file.get());
    abilities.anyName = bool(
        FileDescriptor(::openat(trial.folder(), kHardName, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600)));
    abilities.holes = keepsHoles(file.get());
    struct statfs system{};
    if (::fstatfs(trial.folder(), &system) == 0 && system.f_type == MSDOS_SUPER_MAGIC) {
        abilities.largestFile = kLargestOnFat;
    }
    return abilities;
}

} // namespace ferrobank::drive
