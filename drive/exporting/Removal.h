#pragma once

#include "platform/FileDescriptor.h"

#include <stop_token>
#include <string>

namespace ferrobank::drive {

/// Removes a file, or a folder of the caller's with all it holds, also where its permissions forbid that and
/// where its paths are longer than the system takes. Answers whether nothing is left; `stop` ends it early.
bool removeEntry(int parent, const char* name, const std::stop_token& stop = {});

/// Opens the folder that holds the last part of `path`, going down from `root` part by part, so that a path
/// may be of any length; `name` gets that last part. Follows no links. Empty with errno set on failure.
[[nodiscard]] FileDescriptor openParent(int root, const std::string& path, std::string& name);

} // namespace ferrobank::drive
