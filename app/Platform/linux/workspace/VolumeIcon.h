#pragma once

#include <filesystem>

namespace ferrobank {

/// Gives the folder of a volume its icon, in the ways that the file managers of all systems read: the icon
/// file itself as ".VolumeIcon.icns", its picture as ".VolumeIcon.png", and, where neither exists yet,
/// ".xdg-volume-info" (GNOME's and related file managers) and ".directory" (KDE's) that point to the picture.
///
/// Nothing that is there is replaced, and a folder with a ".VolumeIcon.icns" is left alone. Whether all was
/// written; if not (no icon file, or a volume that is read-only or full), what this call had made is removed
/// again. Blocks as long as the volume does; any thread.
bool giveVolumeIcon(const std::filesystem::path& iconFile, const std::filesystem::path& folder);

} // namespace ferrobank
