#include "exporting/Destination.h"

#include "exporting/IncompleteMark.h"
#include "exporting/Survey.h"
#include "figures/DeviceCounters.h"
#include "figures/DisplayText.h"
#include "platform/Failure.h"
#include "platform/FileDescriptor.h"

#include <fcntl.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <cerrno>

namespace ferrobank::drive {

namespace fs = std::filesystem;

namespace {

std::string uuidAt(const fs::path& folder)
{
    const FileDescriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const auto volume = opened ? volumeState(opened.get()) : std::nullopt;
    return volume ? volume->uuid : std::string();
}

bool liesIn(const fs::path& path, const fs::path& folder)
{
    std::error_code error;
    const fs::path inner = fs::weakly_canonical(path, error);
    const fs::path outer = fs::weakly_canonical(folder, error);
    const auto [first, second] = std::mismatch(outer.begin(), outer.end(), inner.begin(), inner.end());
    return first == outer.end();
}

std::uint64_t freeBytes(const fs::path& folder)
{
    struct statvfs space{};
    if (::statvfs(folder.c_str(), &space) != 0) {
        throw systemFailure("Cannot read the free space of " + displayName(folder.string()), errno);
    }
    return std::uint64_t{space.f_bavail} * space.f_frsize;
}

ExportStart startIn(const fs::path& folder, const std::string& shown, const std::string& driveUuid)
{
    std::error_code error;
    const fs::directory_iterator entries(folder, error);
    if (error) {
        throw systemFailure(shown + " cannot be read", error.value());
    }
    if (entries == fs::directory_iterator()) {
        return ExportStart::Fresh;
    }
    if (hasIncompleteMark(folder, driveUuid)) {
        return ExportStart::Continue;
    }
    throw Failure(shown + " already holds files. Choose an empty folder.", "not-empty");
}

} // namespace

ExportStart checkDestination(const ExportRequest& request, const std::stop_token& stop)
{
    const std::string shown = displayName(request.destination.string());
    // Not tidied up: what `..` means depends on where a link before it leads.
    const fs::path destination = fs::absolute(request.destination);
    const bool missing = !fs::exists(destination) && !fs::is_symlink(destination);
    const fs::path parent =
        (destination.has_filename() ? destination : destination.parent_path()).parent_path();
    const fs::path existing = missing ? parent : destination;
    if (missing && !fs::is_directory(parent)) {
        throw Failure("The folder " + displayName(parent.string()) + " does not exist.", "no-parent");
    }
    if (!fs::is_directory(existing)) {
        throw Failure(shown + " is not a folder. Choose an empty folder.", "no-folder");
    }
    const std::string driveUuid = uuidAt(request.drive);
    if (driveUuid.empty()) {
        throw Failure("The drive at " + displayName(request.drive.string()) + " is not mounted.",
                      "not-mounted");
    }
    if (liesIn(destination, request.drive) || uuidAt(existing) == driveUuid) {
        throw Failure(shown + " lies on the drive itself. Choose a folder on another disk.", "on-drive");
    }
    if (liesIn(destination, request.store)) {
        throw Failure(shown + " lies in the drive's own store. Choose another folder.", "in-store");
    }
    const ExportStart start = missing ? ExportStart::Fresh : startIn(destination, shown, driveUuid);
    const Abilities abilities = tryAbilities(existing, request.destination);
    const ExportSize size = surveyDrive(request.drive, abilities, request.destination, stop);
    if (size.unfit) {
        throw Failure(*size.unfit, "unfit");
    }
    std::uint64_t present = 0;
    if (start == ExportStart::Continue) {
        UsageSum copied;
        walkTree(destination, copied, stop, ToolFolder::Visit);
        present = copied.usage().bytes;
    }
    const std::uint64_t needed = roomNeeded(size.bytes - std::min(size.bytes, present), size.entries);
    const std::uint64_t free = freeBytes(existing);
    if (needed > free) {
        throw Failure("The files need " + displayBytes(needed, Rounding::Up) + ", but " + shown +
                          " has only " + displayBytes(free, Rounding::Down) + " free.",
                      "no-room");
    }
    return start;
}

} // namespace ferrobank::drive
