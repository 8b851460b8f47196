#pragma once

#include "exporting/Differences.h"

#include <sys/stat.h>

#include <string>

namespace ferrobank::drive {

/// Whether the copy was there before and may have attributes of its own.
enum class Existing { None, Replace };

/// Gives an open copy what belongs to a file or folder besides its content: owner (as root only; another user
/// owns what he copies), extended attributes and access lists, permissions, times. What does not succeed
/// becomes a difference of `path`. Contents must be written before, because that would change the times
/// again.
void copyAttributes(int source, const struct statx& status, int target, const std::string& path,
                    Differences& differences, Existing existing);

/// The inode flags of an open file or folder that no copy gets, as the letters of chattr(1): "iC"; mostly
/// empty.
[[nodiscard]] std::string droppedFlags(int source);

/// Owner and times of an entry that cannot be opened: a symbolic link, a pipe.
void copyEntryAttributes(const struct statx& status, int folder, const char* name, const std::string& path,
                         Differences& differences);

} // namespace ferrobank::drive
