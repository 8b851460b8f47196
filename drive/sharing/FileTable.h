#pragma once

#include "figures/TreeWalk.h"
#include "figures/Usage.h"
#include "platform/FileDescriptor.h"
#include "sharing/SharedRange.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace ferrobank::drive {

/// What the scanner knows about one file; `size` and `stamp` together tell whether it changed since.
struct FileRecord {
    std::uint64_t identity = 0;
    std::uint64_t size = 0;
    /// Modification and change time in one number.
    std::uint64_t stamp = 0;
    std::uint64_t allocated = 0;
    std::uint32_t folder = 0;
    std::uint32_t name = 0;
};

[[nodiscard]] std::uint64_t stampOf(const struct statx& status);

/// The files a scan looks at, about 60 bytes each, collected in one walk that sums up the figures as well.
/// Folders are kept only where one of the files lies. Belongs to one thread.
class FileTable : public TreeVisitor {
public:
    struct Limits {
        std::uint64_t smallestFile = kLargestInline + 1;
        /// Files changed less than this long ago are left alone: somebody is at work on them.
        std::int64_t quietSeconds = 30;
        /// Seconds since 1970, taken once for the whole walk.
        std::int64_t now = 0;
        std::size_t mostFiles = 300'000;
    };

    /// `wanted` chooses by size; it may be empty for "all".
    FileTable(Limits limits, std::function<bool(std::uint64_t size)> wanted);

    [[nodiscard]] bool enterFolder(const WalkedFolder& folder) override;
    void leaveFolder() override;
    void visit(const WalkedEntry& entry) override;
    void unreadable(const char* name, int error) override;

    [[nodiscard]] const std::vector<FileRecord>& files() const { return _files; }

    [[nodiscard]] const Usage& usage() const { return _usage.usage(); }

    /// How many files were wanted, also those beyond the limit, which are not in `files()`.
    [[nodiscard]] std::uint64_t wantedFiles() const { return _wantedFiles; }

    /// What those take on the device.
    [[nodiscard]] std::uint64_t wantedBytes() const { return _wantedBytes; }

    /// How many files were left alone because they had been changed a moment ago.
    [[nodiscard]] std::uint64_t filesAtWork() const { return _filesAtWork; }

    [[nodiscard]] bool overflowed() const { return _wantedFiles > _files.size(); }

    /// The path below the root of the walk, as the bytes the file system has.
    [[nodiscard]] std::string pathOf(const FileRecord& file) const;

    /// Opens the file for reading below `root` without following links; empty when it is gone, unreadable or
    /// not the one of the record any more (errno tells: ESTALE for the last).
    [[nodiscard]] FileDescriptor open(int root, const FileRecord& file) const;

    /// Whether the open file is still as the record says.
    [[nodiscard]] bool unchanged(int descriptor, const FileRecord& file) const;

private:
    static constexpr std::uint32_t kNotKept = ~std::uint32_t{0};

    struct Folder {
        std::uint32_t parent = kNotKept;
        std::uint32_t name = 0;
        std::uint64_t volume = 0;
    };

    struct OpenFolder {
        std::string name;
        std::uint64_t volume = 0;
        bool readOnly = false;
        std::uint32_t kept = kNotKept;
    };

    std::uint32_t keepName(const char* name);
    std::uint32_t keepFolder(std::size_t depth);

    Limits _limits;
    std::function<bool(std::uint64_t)> _wanted;
    UsageSum _usage;
    std::vector<FileRecord> _files;
    std::vector<Folder> _folders;
    std::string _names;
    std::vector<OpenFolder> _path;
    std::uint64_t _wantedFiles = 0;
    std::uint64_t _wantedBytes = 0;
    std::uint64_t _filesAtWork = 0;
};

} // namespace ferrobank::drive
