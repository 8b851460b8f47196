#pragma once

#include <optional>

namespace ferrobank {

/// Whether anything, a dangling link included, is at the path, as far as the kernel can tell from what it
/// holds in memory: no file system is asked, so that this never blocks, not even on a mount whose server has
/// died. Any thread.
///
/// No value where the kernel does not know, and on kernels before 5.12, which cannot be asked this way.
[[nodiscard]] std::optional<bool> existsInCache(const char* path);

} // namespace ferrobank
