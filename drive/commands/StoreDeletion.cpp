#include "commands/StoreDeletion.h"

#include "mounting/LoopDevices.h"
#include "platform/Failure.h"
#include "platform/Files.h"

#include <filesystem>
#include <string>
#include <system_error>

namespace ferrobank::drive {

namespace {

/// Our files, and what a kill left of their making: the same names with something after them.
bool isOurs(const std::string& name, const Paths& paths)
{
    for (const std::filesystem::path& file :
         {paths.image, paths.unprepared, paths.openMarker, paths.figures, paths.reserve, paths.storeLock,
          paths.readingDue, paths.unreadable})
    {
        const std::string own = file.filename().string();
        if (name == own || name.starts_with(own + ".")) {
            return true;
        }
    }
    return name == "skeleton.new";
}

void requireUntouched(const Paths& paths, const std::optional<Superblock>& compared)
{
    if (!loopsOf(paths.image, Recognise::ByFile).empty()) {
        throw Failure("Another program has opened the drive's store; nothing was deleted.", "attached");
    }
    if (!compared) {
        return;
    }
    const std::optional<Superblock> now = readSuperblock(paths.image);
    if (!now || now->uuid != compared->uuid || now->generation != compared->generation) {
        throw Failure(
            "Another program has written to the drive after its copy was compared; nothing was deleted.",
            "changed");
    }
}

} // namespace

void deleteStore(const Paths& paths, const Log& log, const std::optional<Superblock>& compared)
{
    // The figures first: with them and without its image a drive counts as lost, not as deleted.
    requireUntouched(paths, compared);
    removeIfPresent(paths.figures);
    removeIfPresent(paths.image);
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(paths.store, error)) {
        if (isOurs(entry.path().filename().string(), paths)) {
            std::filesystem::remove_all(entry.path(), error);
        }
    }
    std::filesystem::remove_all(paths.index, error);
    // A folder with files that are not ours stays, with them.
    std::filesystem::remove(paths.store, error);
    log.write("The drive's store was deleted.");
}

} // namespace ferrobank::drive
