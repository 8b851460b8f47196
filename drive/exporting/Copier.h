#pragma once

#include "exporting/Attributes.h"
#include "exporting/Destination.h"
#include "exporting/Differences.h"
#include "exporting/KnownTree.h"
#include "exporting/LeftOut.h"
#include "exporting/Progress.h"
#include "figures/ContentHash.h"
#include "figures/TreeWalk.h"

#include <cstdint>
#include <stop_token>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace ferrobank::drive {

/// What a copy was made of, for the verification: the content of every file by identity, and how many entries
/// there are.
struct CopyRecord {
    std::unordered_map<std::uint64_t, ContentHash> contents;
    std::uint64_t entries = 0;
    std::uint64_t files = 0;
    std::uint64_t bytes = 0;
    /// Files that were written; the others were there already.
    std::uint64_t copied = 0;
    /// Paths of what is on the drive and not in the copy, because no copy of it can be made.
    std::unordered_set<std::string> skipped;
};

/// Copies what a walk over a frozen drive meets into a folder that belongs to this export alone: folders,
/// files with their holes, hard links, symbolic links, pipes, attributes and times. The source is only read.
/// Sockets and what only root could make are left out and named, the drive's own icon is left out.
///
/// A file that cannot be read becomes a difference, and the copy goes on with the others. A destination that
/// takes no more is thrown as Failure. When an export is continued, files that are there with equal size,
/// time and content stay; others are made anew, and what the drive no longer has goes. With `known`, what is
/// unchanged since is passed over.
class Copier : public TreeVisitor {
public:
    struct Target {
        /// Root of the destination; must outlive the copier.
        int folder = -1;
        std::string shown;
        ExportStart start = ExportStart::Fresh;
    };

    /// What the copy is made into and what it tells of itself. All must outlive the copier.
    struct Notes {
        CopyRecord& record;
        Differences& differences;
        LeftOut& leftOut;
        ProgressMeter& progress;
    };

    Copier(Target target, Notes notes, std::stop_token stop);

    /// Everything that is copied is noted there from now on.
    void noteIn(KnownTree& known) { _noted = &known; }

    /// What has not changed since it was noted there is in the copy already.
    void passOver(const KnownTree& known) { _known = &known; }

    /// Says where the next walk belongs: "" for the root, or the path of a folder that was copied before.
    void beginPart(const std::string& place);

    [[nodiscard]] bool enterFolder(const WalkedFolder& folder) override;
    void leaveFolder() override;
    void visit(const WalkedEntry& entry) override;
    void unreadable(const char* name, int error) override;

private:
    struct Level {
        FileDescriptor source;
        FileDescriptor target;
        struct statx status{};
        std::string path;
    };

    [[nodiscard]] std::string pathOf(const char* name) const;
    [[nodiscard]] FileDescriptor makeFolder(const char* name, const std::string& path);
    void copyFile(const WalkedEntry& entry, const std::string& path);
    void copyContent(int source, const WalkedEntry& entry, const std::string& path);
    void copySymbolicLink(const WalkedEntry& entry, const std::string& path);
    void copySpecial(const WalkedEntry& entry, const std::string& path);
    [[nodiscard]] std::string firstName(const WalkedEntry& entry, const std::string& path) const;
    void skip(const WalkedEntry& entry, const std::string& path, const char* why);
    void noteFlags(int source, const std::string& path);
    void dropOthers(const Level& level);
    [[nodiscard]] bool linkToCopy(const WalkedEntry& entry, const std::string& path);
    [[nodiscard]] bool keepsEarlierCopy(int source, const WalkedEntry& entry);
    void clearPlace(const char* name);
    void write(int file, std::uint64_t offset, std::span<const char> bytes) const;
    [[noreturn]] void failWriting(int error) const;

    Target _target;
    CopyRecord& _record;
    Differences& _differences;
    LeftOut& _leftOut;
    ProgressMeter& _progress;
    KnownTree* _noted = nullptr;
    const KnownTree* _known = nullptr;
    std::stop_token _stop;
    std::string _place;
    std::vector<Level> _levels;
    /// First copied name of each file that has several, below the destination's root.
    std::unordered_map<std::uint64_t, std::string> _linked;
    std::vector<char> _buffer;
};

} // namespace ferrobank::drive
