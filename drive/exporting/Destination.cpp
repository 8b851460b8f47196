#include "exporting/Destination.h"

#include "exporting/Survey.h"
#include "figures/DeviceCounters.h"
#include "figures/DisplayText.h"
#include "platform/Failure.h"
#include "platform/FileDescriptor.h"

#include <fcntl.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <cerrno>
#include <optional>

namespace ferrobank::drive {

namespace fs = std::filesystem;

namespace {

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

ExportStart startIn(const ExportRequest& request, const fs::path& folder, const std::string& shown,
                    const std::string& driveUuid)
{
    const EarlierExport earlier = EarlierExport::lookIn(folder, driveUuid);
    if (earlier.found == EarlierExport::Found::Foreign) {
        throw Failure(shown + " already holds files. Choose an empty folder.", "not-empty");
    }
    if (earlier.found == EarlierExport::Found::Nothing) {
        return ExportStart::Fresh;
    }
    if (const std::optional<std::string> name = earlier.conflictWith(request.drive, folder)) {
        throw Failure("“" + displayName(*name) + "” in " + shown +
                          " is not from the drive. Move it away or choose another folder.",
                      "in-the-way");
    }
    if (const std::optional<std::string> path = earlier.changedSince(folder)) {
        throw Failure("“" + displayName(*path) + "” in " + shown +
                          " was changed after it was copied there. Choose another folder.",
                      "changed-copy");
    }
    return ExportStart::Continue;
}

} // namespace

timespec wallClockNow()
{
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return now;
}

std::string volumeUuid(const fs::path& folder)
{
    const FileDescriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const auto volume = opened ? volumeState(opened.get()) : std::nullopt;
    return volume ? volume->uuid : std::string();
}

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
    const std::string driveUuid = volumeUuid(request.drive);
    if (driveUuid.empty()) {
        throw Failure("The drive at " + displayName(request.drive.string()) + " is not mounted.",
                      "not-mounted");
    }
    if (liesIn(destination, request.drive) || volumeUuid(existing) == driveUuid) {
        throw Failure(shown + " lies on the drive itself. Choose a folder on another disk.", "on-drive");
    }
    if (liesIn(destination, request.store)) {
        throw Failure(shown + " lies in the drive's own store. Choose another folder.", "in-store");
    }
    const ExportStart start = missing ? ExportStart::Fresh : startIn(request, destination, shown, driveUuid);
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
