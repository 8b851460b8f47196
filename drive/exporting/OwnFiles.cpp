#include "exporting/OwnFiles.h"

#include <fcntl.h>
#include <unistd.h>

#include <string>
#include <string_view>

namespace ferrobank::drive {

namespace {

constexpr std::string_view kVolumeInfo = "[Volume Info]\nName=Ferrobank\nIconFile=.VolumeIcon.png\n";
constexpr std::string_view kFolderEntry = "[Desktop Entry]\nIcon=";
constexpr std::string_view kPicture = "/.VolumeIcon.png\n";
/// Longer than any path to the drive's root.
constexpr std::size_t kLongest = 8192;

std::string smallText(int folder, const char* name)
{
    const FileDescriptor file(::openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    std::string text(kLongest, '\0');
    const ssize_t length = file ? ::read(file.get(), text.data(), text.size()) : 0;
    text.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    return text;
}

/// As the application writes it. Somebody's own settings for the folder have more lines.
bool isOwnFolderEntry(std::string_view text)
{
    return text.starts_with(kFolderEntry) && text.ends_with(kPicture) &&
           text.find('\n', kFolderEntry.size()) == text.size() - 1;
}

} // namespace

bool isOwnIcon(const WalkedEntry& entry)
{
    if (!S_ISREG(entry.status->stx_mode) || entry.name[0] != '.') {
        return false;
    }
    const std::string_view name = entry.name;
    if (name == ".VolumeIcon.icns" || name == ".VolumeIcon.png") {
        return true;
    }
    if (name == ".xdg-volume-info") {
        return smallText(entry.folder->descriptor, entry.name) == kVolumeInfo;
    }
    return name == ".directory" && isOwnFolderEntry(smallText(entry.folder->descriptor, entry.name));
}

} // namespace ferrobank::drive
