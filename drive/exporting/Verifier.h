#pragma once

#include "exporting/Copier.h"

#include <utility>

namespace ferrobank::drive {

/// Compares a copy with the snapshot it was made of, reading every file of the copy back from its disk:
/// kinds, contents by hash, sizes, permissions, link targets and hard links. What differs or is missing
/// becomes a difference.
class Verifier : public TreeVisitor {
public:
    Verifier(int destination, const CopyRecord& record, Differences& differences, ProgressMeter& progress,
             std::stop_token stop);

    void beginPart(const std::string& place);

    [[nodiscard]] bool enterFolder(const WalkedFolder& folder) override;
    void leaveFolder() override;
    void visit(const WalkedEntry& entry) override;
    void unreadable(const char* name, int error) override;

    /// Entries that were found and compared, whatever the outcome.
    [[nodiscard]] std::uint64_t entries() const { return _entries; }

private:
    struct Level {
        FileDescriptor target;
        std::string path;
    };

    struct CopiedFile {
        std::uint64_t device = 0;
        std::uint64_t inode = 0;
    };

    [[nodiscard]] std::string pathOf(const char* name) const;
    void compareFile(const WalkedEntry& entry, const struct stat& copy, const std::string& path);
    void compareContent(const WalkedEntry& entry, const struct stat& copy, const std::string& path);
    void compareLinkTarget(const WalkedEntry& entry, const std::string& path);
    [[nodiscard]] bool isKnownLink(std::uint64_t identity, const struct stat& copy, const std::string& path);

    int _destination;
    const CopyRecord& _record;
    Differences& _differences;
    ProgressMeter& _progress;
    std::stop_token _stop;
    std::string _place;
    std::vector<Level> _levels;
    std::unordered_map<std::uint64_t, CopiedFile> _linked;
    std::vector<char> _buffer;
    std::uint64_t _entries = 0;
};

} // namespace ferrobank::drive
