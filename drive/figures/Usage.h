#pragma once

#include "figures/IdentitySet.h"
#include "figures/TreeWalk.h"

namespace ferrobank::drive {

/// What the files of the drive would take on a plain disk.
struct Usage {
    /// Allocated bytes of regular files, each inode once. Not the apparent size: one sparse file of 8 TB
    /// would show as 8 TB saved.
    std::uint64_t bytes = 0;
    std::uint64_t files = 0;
    std::uint64_t folders = 0;
};

/// Sums up Usage during a walk. Other visitors that need the same walk own one and pass everything on to it.
class UsageSum : public TreeVisitor {
public:
    [[nodiscard]] bool enterFolder(const WalkedFolder& folder) override;
    void visit(const WalkedEntry& entry) override;

    /// Counts the entry; answers whether it is a regular file that was not met before under another name.
    bool count(const WalkedEntry& entry);

    [[nodiscard]] const Usage& usage() const { return _usage; }

private:
    Usage _usage;
    IdentitySet _linked;
};

} // namespace ferrobank::drive
