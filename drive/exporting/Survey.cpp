#include "exporting/Survey.h"

#include "exporting/Staging.h"
#include "figures/DisplayText.h"

#include <sys/xattr.h>

#include <array>
#include <vector>

namespace ferrobank::drive {

namespace {

constexpr std::uint64_t kBytesPerEntry = 4096;
constexpr mode_t kModeBits = 07777;

class Surveyor : public TreeVisitor {
public:
    explicit Surveyor(const Abilities& abilities) : _abilities(abilities) {}

    bool enterFolder(const WalkedFolder& folder) override
    {
        const bool root = _path.empty();
        _path.push_back(root ? std::string() : _path.back() + folder.name + "/");
        ++size.entries;
        if (!root) {
            if (_path.size() == 2) {
                refuseOwnName(folder.name);
            }
            checkName(folder.name, _path.back());
            checkMode(*folder.status, _abilities.folderMode, _path.back());
        }
        return true;
    }

    void leaveFolder() override { _path.pop_back(); }

    void visit(const WalkedEntry& entry) override
    {
        const struct statx& status = *entry.status;
        const std::string path = _path.back() + entry.name;
        ++size.entries;
        if (_path.size() == 1) {
            refuseOwnName(path);
        }
        checkName(entry.name, path);
        if (S_ISLNK(status.stx_mode)) {
            refuseIf(!_abilities.symbolicLinks, path, "is a symbolic link");
            return;
        }
        if (!S_ISREG(status.stx_mode)) {
            // Pipes and the like need what symbolic links need: a file system made for them.
            refuseIf(!_abilities.symbolicLinks && !S_ISSOCK(status.stx_mode), path, "is no ordinary file");
            return;
        }
        refuseIf(!_abilities.hardLinks && status.stx_nlink > 1, path, "is a hard link");
        refuseIf(status.stx_size > _abilities.largestFile, path, "is larger than 4 GB");
        checkMode(status, _abilities.fileMode, path);
        if (!_abilities.attributes) {
            checkAttributes(entry, path);
        }
        if (_usage.count(entry)) {
            size.bytes += _abilities.holes ? status.stx_blocks * 512 : status.stx_size;
        }
    }

    ExportSize size;
    /// Ends in ", which PATH cannot hold.".
    std::string consequence;

private:
    void refuse(const std::string& sentence)
    {
        if (!size.unfit) {
            size.unfit = sentence;
        }
    }

    void refuseIf(bool unfit, const std::string& path, const char* what)
    {
        if (unfit) {
            refuse("“" + displayName(path) + "” " + what + consequence);
        }
    }

    void refuseOwnName(std::string_view name)
    {
        if (name == kIncompleteMark || name.starts_with(kTrialStem)) {
            refuse("The drive holds a file named “" + displayName(name) +
                   "”, which an export needs for itself. Rename it and try again.");
        }
    }

    void checkName(const char* name, const std::string& path)
    {
        refuseIf(!_abilities.anyName && !isPlainName(name), path, "has a name");
    }

    void checkMode(const struct statx& status, mode_t given, const std::string& path)
    {
        refuseIf(!_abilities.modes && (status.stx_mode & kModeBits) != given, path, "has permissions");
    }

    void checkAttributes(const WalkedEntry& entry, const std::string& path)
    {
        const std::string file =
            "/proc/self/fd/" + std::to_string(entry.folder->descriptor) + "/" + entry.name;
        std::array<char, 65536> names{};
        const ssize_t length = ::llistxattr(file.c_str(), names.data(), names.size());
        const std::string_view list(names.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
        const bool own =
            list.starts_with("user.") || list.find(std::string_view("\0user.", 6)) != std::string_view::npos;
        refuseIf(own, path, "has attributes");
    }

    const Abilities& _abilities;
    std::vector<std::string> _path;
    UsageSum _usage;
};

} // namespace

ExportSize surveyDrive(const std::filesystem::path& drive, const Abilities& abilities,
                       const std::filesystem::path& shownDestination, const std::stop_token& stop)
{
    Surveyor surveyor(abilities);
    surveyor.consequence = ", which " + displayName(shownDestination.string()) +
                           " cannot hold. Choose a folder on another disk.";
    walkTree(drive, surveyor, stop);
    return surveyor.size;
}

std::uint64_t roomNeeded(std::uint64_t bytes, std::uint64_t entries)
{
    const std::uint64_t files = bytes + entries * kBytesPerEntry;
    return files + files / 50;
}

bool isPlainName(const std::string& name)
{
    constexpr std::string_view kReserved = "\"*:<>?|\\";
    return displayName(name) == name && name.find_first_of(kReserved) == std::string::npos &&
           !name.ends_with('.') && !name.ends_with(' ');
}

} // namespace ferrobank::drive
