#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace ferrobank::updates {

/// Receives what an archive holds, in its order. Paths are below the one top folder, safe and without it.
/// Each function may throw, which ends the walk.
class ArchiveVisitor {
public:
    virtual ~ArchiveVisitor() = default;

    virtual void folder(const std::string& path) = 0;
    virtual void link(const std::string& path, const std::string& target) = 0;

    virtual void beginFile(const std::string& path) = 0;
    virtual void data(std::span<const std::byte> bytes) = 0; ///< in order, without holes
    virtual void endFile() = 0;
};

/// Bounds of a walk.
struct ArchiveLimits {
    std::string topFolder;         ///< the only allowed first name of every path
    std::uint64_t archiveSize = 0; ///< bytes of the compressed file
    std::size_t mostEntries = 60'000;
    std::uint64_t mostBytes = 2ULL * 1024 * 1024 * 1024 + 8ULL * 1024 * 1024;
    std::uint64_t mostExpansion = 100; ///< bytes out for each byte of the file, once over 1 MiB
};

/// Reads a tar archive, zstd-compressed or plain, from the start of an open file. Throws UpdateFailure
/// (Archive) on anything that is not an ordinary folder, file or link with a safe path below the top folder:
/// hard links, devices, pipes, sockets, set-user-id bits, absolute or climbing paths and targets, more than
/// the limits, and on a damaged or cut archive.
void walkArchive(int descriptor, const ArchiveLimits& limits, ArchiveVisitor& visitor);

} // namespace ferrobank::updates
