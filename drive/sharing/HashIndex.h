#pragma once

#include "figures/ContentHash.h"
#include "sharing/FileTable.h"
#include "sharing/IndexFile.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace ferrobank::drive {

/// What a pass finds out about one file of the table. `shared`: its blocks are those of the other shared
/// files of the same content, so nothing is left to do while none of them changes.
struct FileFacts {
    ContentHash hash;
    bool hashed = false;
    bool shared = false;
};

/// Hashes of the last pass, found again by identity, size and stamp; 40 bytes a file on disk and in memory.
/// Written in parts, one for each share of the files that a pass takes at a time.
class HashIndex {
public:
    using SizeChoice = std::function<bool(std::uint64_t size)>;

    /// Loads the entries of the wanted sizes. An index that is missing or not this drive's is empty.
    HashIndex(const std::filesystem::path& folder, const std::string& uuid, const SizeChoice& wanted);

    [[nodiscard]] FileFacts factsOf(const FileRecord& file) const;

    /// Appends what is known of the files of a table.
    static void append(IndexWriter& writer, const FileTable& table, const std::vector<FileFacts>& facts);

    /// Appends all loaded entries unseen, for sizes that a pass did not come to.
    void appendAll(IndexWriter& writer) const;

    [[nodiscard]] static std::unique_ptr<IndexWriter> startWriting(const std::filesystem::path& folder,
                                                                   const std::string& uuid);

    [[nodiscard]] std::size_t size() const { return _entries.size(); }

private:
    struct Entry {
        std::uint64_t identity = 0;
        std::uint64_t sizeAndShared = 0;
        std::uint64_t stamp = 0;
        ContentHash hash;
    };

    static_assert(sizeof(Entry) == 40);

    std::vector<Entry> _entries;
};

} // namespace ferrobank::drive
