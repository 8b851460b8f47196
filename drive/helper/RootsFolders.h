#pragma once

#include "platform/FileDescriptor.h"

#include <sys/stat.h>

#include <filesystem>

namespace ferrobank::drive {

/// Nobody but root can change what this is, and it is no link.
[[nodiscard]] bool isOnlyRootsToWrite(const struct stat& facts);

/// The same for a file or folder and every folder above it, up to `top`, which is not looked at itself unless
/// it is the root folder.
[[nodiscard]] bool isOnlyRootsToWrite(const std::filesystem::path& path,
                                      const std::filesystem::path& top = "/");

/// Opens a folder below `top`, making what is missing of the way there (0755), without following links.
/// Throws Failure when a folder on the way can be changed by anybody but root.
[[nodiscard]] FileDescriptor openRootsFolder(const std::filesystem::path& folder,
                                             const std::filesystem::path& top = "/");

} // namespace ferrobank::drive
