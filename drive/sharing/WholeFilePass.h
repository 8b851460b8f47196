#pragma once

#include "sharing/FileTable.h"
#include "sharing/HashIndex.h"
#include "sharing/ScanContext.h"
#include "sharing/SharedRange.h"

#include <cstdint>
#include <span>
#include <unordered_map>
#include <vector>

namespace ferrobank::drive {

/// Large files whose blocks are another file's: the identity of each, and that of the other file.
using Followers = std::unordered_map<std::uint64_t, std::uint64_t>;

/// Finds files of equal content in a table and lets them share their blocks: equal size, then equal hash,
/// then the kernel's own comparison. Sizes that occur once are not read at all.
class WholeFilePass {
public:
    /// `facts` belongs to `table`, one for one; it comes with what the index knew and is brought up to date.
    /// The identities of large files whose blocks are another file's are added to `followers`.
    WholeFilePass(const ScanContext& context, const FileTable& table, std::vector<FileFacts>& facts,
                  Followers& followers);

    StageEnd run();

private:
    using Members = std::span<std::uint32_t>;

    StageEnd takeSizeGroup(Members members);
    StageEnd takeContentGroup(Members members);
    StageEnd hashMember(std::uint32_t member);
    StageEnd shareWithSource(std::uint32_t source, int sourceFile, Members members);
    StageEnd shareMember(std::uint32_t source, int sourceFile, std::uint32_t member);
    ShareOutcome shareData(int source, int target, std::uint64_t size);
    void addFollowers(Members members);
    [[nodiscard]] std::uint32_t bestSource(Members members) const;
    [[nodiscard]] bool needsSharing(Members members) const;

    [[nodiscard]] const FileRecord& record(std::uint32_t member) const { return _table.files()[member]; }

    const ScanContext& _context;
    const FileTable& _table;
    std::vector<FileFacts>& _facts;
    Followers& _followers;
    std::vector<char> _buffer;
};

} // namespace ferrobank::drive
