#pragma once

#include <sys/types.h>

#include <filesystem>

namespace ferrobank::drive {

/// Makes the subvolume `u/files` below a mounted top level unless it is there, with mode 0700 and owned by
/// `owner`. Needs no privilege when the caller is the owner. Follows no links: the image's content is not to
/// be trusted when root calls. Throws Failure.
void ensureFilesSubvolume(int topLevel, uid_t owner, gid_t group);
void ensureFilesSubvolume(const std::filesystem::path& topLevel, uid_t owner, gid_t group);

} // namespace ferrobank::drive
