#pragma once

#include "platform/FileLock.h"

#include <filesystem>

namespace ferrobank::drive {

/// Takes a lock that another run of the helper may hold for a while; throws Failure ("helper-busy") after
/// some twenty seconds.
[[nodiscard]] FileLock takePatiently(const std::filesystem::path& path);

} // namespace ferrobank::drive
