#pragma once

#include "Platform/linux/Descriptor.h"

#include <filesystem>

namespace ferrobank {

/// Holds a folder against other processes that take the same lock, and makes it if it is missing. The system
/// frees it with the process, so nothing is ever left behind.
class FolderLock {
public:
    /// Waits some seconds for another holder. Throws RegistryError if the folder cannot be made or the holder
    /// does not finish.
    explicit FolderLock(const std::filesystem::path& folder);

private:
    Descriptor _folder;
};

} // namespace ferrobank
