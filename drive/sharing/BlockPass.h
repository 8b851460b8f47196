#pragma once

#include "figures/IdentitySet.h"
#include "sharing/FileTable.h"
#include "sharing/ScanContext.h"
#include "sharing/SharedRange.h"
#include "sharing/WholeFilePass.h"
#include "sharing/WindowIndex.h"
#include "sharing/WindowTable.h"

#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

namespace ferrobank::drive {

/// Finds equal stretches of at least 64 KiB in large files and lets them share their blocks, also when they
/// lie at other offsets, as long as these differ by whole blocks of 4 KiB. Windows of 64 KiB are remembered
/// at every 64 KiB of each file; a rolling window looks them up at every 4 KiB of the files that are new or
/// changed.
///
/// What is left between two such stretches would keep the whole of its extent on the device, 128 KiB for one
/// changed block. Small remainders are therefore copied into a file without a name, next to each other, and
/// the file made to share those copies: nothing of the old extent stays in use then.
class BlockPass {
public:
    /// `followers` are not searched themselves; what the file that they follow comes to share, they share
    /// too.
    BlockPass(const ScanContext& context, const FileTable& table, const Followers& followers);

    StageEnd run();

private:
    struct Match {
        std::uint64_t source = 0;
        std::uint64_t target = 0;
        std::uint64_t length = 0;
    };

    struct Remainder {
        std::uint64_t start = 0;
        std::uint64_t length = 0;
        /// Where its copy is.
        std::uint64_t place = 0;
    };

    enum class Shared { Before, Now };

    void noteShared(const Match& match, Shared shared);
    void findCandidates();
    [[nodiscard]] std::optional<std::size_t> candidateOf(const WindowSegment& segment) const;
    void findKnown(WindowIndexReader& index);
    void takeOver(WindowIndexReader& index, WindowIndexWriter& writer);
    StageEnd takeFile(std::uint32_t file, WindowIndexWriter& writer);
    StageEnd takeBlock(std::uint64_t start, std::uint64_t blockHash, bool zeros);
    StageEnd takeWindow(std::uint64_t start, std::uint64_t key);
    StageEnd tryPlace(const WindowPlace& place, std::uint64_t target);
    StageEnd moveRemainders();
    void shareWithFollowers(const FileRange& source, std::uint64_t target, std::uint64_t length);
    [[nodiscard]] Match widened(const WindowPlace& place, std::uint64_t target);
    [[nodiscard]] std::uint64_t equalAfter(std::uint64_t source, std::uint64_t target, std::uint64_t limit);
    [[nodiscard]] std::uint64_t equalBefore(std::uint64_t source, std::uint64_t target, std::uint64_t limit);
    StageEnd share(const Match& match);
    [[nodiscard]] bool openSource(std::uint32_t file);

    [[nodiscard]] const FileRecord& record(std::uint32_t file) const { return _table.files()[file]; }

    enum class Known : std::uint8_t { No, Yes };

    const ScanContext& _context;
    const FileTable& _table;
    const Followers& _followers;
    /// Large files, sorted by identity.
    std::vector<std::uint32_t> _candidates;
    /// The files that follow a candidate.
    std::unordered_map<std::uint32_t, std::vector<std::uint32_t>> _followersOf;
    /// Whether the index has a candidate's windows; one for each, in the same order.
    std::vector<Known> _known;
    WindowPlan _plan;
    WindowTable _windows;
    WindowRoller _roller;
    std::vector<char> _buffer;
    std::vector<char> _sourcePiece;
    std::vector<char> _targetPiece;

    // The file at work and the one it was last compared with.
    std::uint32_t _target = 0;
    int _targetFile = -1;
    std::uint64_t _sharedUpTo = 0;
    /// What lies between two stretches that were shared, small enough to be moved.
    std::vector<Remainder> _remainders;
    bool _hasShared = false;
    WindowSegment _segment;
    WindowIndexWriter* _writer = nullptr;
    std::uint32_t _source = 0;
    FileDescriptor _sourceFile;
    IdentitySet _goneSources;
};

} // namespace ferrobank::drive
