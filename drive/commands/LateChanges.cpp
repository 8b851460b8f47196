#include "commands/LateChanges.h"

#include "figures/DisplayText.h"
#include "figures/TreeWalk.h"
#include "platform/Failure.h"

#include <sys/stat.h>

#include <vector>

namespace ferrobank::drive {

namespace {

constexpr long long kRoundingSeconds = 2;

class Comparison : public TreeVisitor {
public:
    explicit Comparison(std::filesystem::path copy) : _path{std::move(copy)} {}

    bool enterFolder(const WalkedFolder& folder) override
    {
        const std::filesystem::path place =
            folder.name[0] == '\0' ? _path.back() : _path.back() / folder.name;
        struct stat there{};
        if (_late || ::lstat(place.c_str(), &there) != 0 || !S_ISDIR(there.st_mode)) {
            note(folder.name);
            return false;
        }
        _path.push_back(place);
        return true;
    }

    void leaveFolder() override { _path.pop_back(); }

    void visit(const WalkedEntry& entry) override
    {
        struct stat there{};
        const std::filesystem::path place = _path.back() / entry.name;
        const struct statx& here = *entry.status;
        if (::lstat(place.c_str(), &there) != 0 || (there.st_mode & S_IFMT) != (here.stx_mode & S_IFMT)) {
            note(entry.name);
            return;
        }
        const long long apart = here.stx_mtime.tv_sec - there.st_mtim.tv_sec;
        const bool isFile = S_ISREG(here.stx_mode);
        if (isFile &&
            (static_cast<std::uint64_t>(there.st_size) != here.stx_size || apart > kRoundingSeconds))
        {
            note(entry.name);
        }
    }

    [[nodiscard]] const std::optional<std::string>& late() const { return _late; }

private:
    void note(const char* name)
    {
        if (!_late) {
            _late = displayName(name);
        }
    }

    std::vector<std::filesystem::path> _path;
    std::optional<std::string> _late;
};

} // namespace

std::optional<std::string> findLateChange(const std::filesystem::path& drive,
                                          const std::filesystem::path& copy, const std::stop_token& stop)
{
    Comparison comparison(copy);
    if (walkTree(drive, comparison, stop) != WalkEnd::Complete) {
        throw Failure("The drive could not be read to its end after the copy; it stays.", "unreadable");
    }
    return comparison.late();
}

} // namespace ferrobank::drive
