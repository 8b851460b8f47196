#pragma once

#include "exporting/Copier.h"

#include <deque>
#include <utility>

namespace ferrobank::drive {

/// Compares a copy with the snapshot it was made of, reading every file of the copy back from its disk:
/// kinds, contents by hash, sizes, permissions, link targets and hard links. What differs or is missing
/// becomes a difference. Some files ahead are on their way from the disk while one is compared, so that many
/// small ones do not each wait for it; `finish()` compares the last of them and belongs after the last walk.
class Verifier : public TreeVisitor {
public:
    Verifier(int destination, const CopyRecord& record, Differences& differences, ProgressMeter& progress,
             std::stop_token stop);

    void beginPart(const std::string& place);

    /// Contents that are unchanged since they were noted there were compared before and are not read again.
    void passOver(const KnownTree& known) { _known = &known; }

    [[nodiscard]] bool enterFolder(const WalkedFolder& folder) override;
    void leaveFolder() override;
    void visit(const WalkedEntry& entry) override;
    void unreadable(const char* name, int error) override;

    void finish();

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

    /// A file whose content is asked for and not yet compared.
    struct AwaitedFile {
        FileDescriptor file;
        std::uint64_t size = 0;
        ContentHash original;
        std::string path;
    };

    [[nodiscard]] std::string pathOf(const char* name) const;
    void compareFile(const WalkedEntry& entry, const struct stat& copy, const std::string& path);
    void askForContent(const WalkedEntry& entry, const struct stat& copy, const std::string& path);
    void compareContent(const AwaitedFile& awaited);
    void compareLinkTarget(const WalkedEntry& entry, const std::string& path);
    [[nodiscard]] bool isKnownLink(std::uint64_t identity, const struct stat& copy, const std::string& path);

    int _destination;
    const CopyRecord& _record;
    Differences& _differences;
    ProgressMeter& _progress;
    const KnownTree* _known = nullptr;
    std::stop_token _stop;
    std::string _place;
    std::vector<Level> _levels;
    std::unordered_map<std::uint64_t, CopiedFile> _linked;
    std::deque<AwaitedFile> _awaited;
    std::vector<char> _buffer;
    std::uint64_t _entries = 0;
};

} // namespace ferrobank::drive
