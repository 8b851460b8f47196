#include "sharing/WholeFilePass.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>
#include <numeric>

namespace ferrobank::drive {

namespace {

/// Larger files never lie among the names.
constexpr std::uint64_t kLargestMaybeInline = 4096;
constexpr std::size_t kReadBytes = std::size_t{1} << 20U;
/// Enough to find the place that most of a large group share.
constexpr std::size_t kMembersAskedForPlace = 64;

/// The first run of neighbours for which `same(first, next)` holds.
template <typename Same>
std::size_t runLength(std::span<std::uint32_t> members, const Same& same)
{
    std::size_t length = 1;
    while (length < members.size() && same(members[0], members[length])) {
        ++length;
    }
    return length;
}

} // namespace

WholeFilePass::WholeFilePass(const ScanContext& context, const FileTable& table,
                             std::vector<FileFacts>& facts, Followers& followers)
    : _context(context), _table(table), _facts(facts), _followers(followers), _buffer(kReadBytes)
{}

StageEnd WholeFilePass::run()
{
    std::vector<std::uint32_t> order(_table.files().size());
    std::iota(order.begin(), order.end(), 0U);
    std::sort(order.begin(), order.end(), [this](std::uint32_t one, std::uint32_t other) {
        const FileRecord& a = record(one);
        const FileRecord& b = record(other);
        return a.size != b.size ? a.size < b.size : a.identity < b.identity;
    });
    for (Members rest(order); !rest.empty();) {
        const std::size_t length = runLength(rest, [this](std::uint32_t one, std::uint32_t other) {
            return record(one).size == record(other).size;
        });
        if (length > 1 && takeSizeGroup(rest.first(length)) == StageEnd::PassOver) {
            return StageEnd::PassOver;
        }
        std::uint64_t bytes = 0;
        for (const std::uint32_t member : rest.first(length)) {
            bytes += record(member).allocated;
        }
        _context.advance(bytes);
        rest = rest.subspan(length);
    }
    return StageEnd::Done;
}

StageEnd WholeFilePass::takeSizeGroup(Members members)
{
    for (const std::uint32_t member : members) {
        if (!_facts[member].hashed && hashMember(member) == StageEnd::PassOver) {
            return StageEnd::PassOver;
        }
    }
    const auto hashedEnd = std::partition(members.begin(), members.end(),
                                          [this](std::uint32_t member) { return _facts[member].hashed; });
    Members rest(members.begin(), hashedEnd);
    std::sort(rest.begin(), rest.end(), [this](std::uint32_t one, std::uint32_t other) {
        const ContentHash& a = _facts[one].hash;
        const ContentHash& b = _facts[other].hash;
        return a != b ? a < b : record(one).identity < record(other).identity;
    });
    while (!rest.empty()) {
        const std::size_t length = runLength(rest, [this](std::uint32_t one, std::uint32_t other) {
            return _facts[one].hash == _facts[other].hash;
        });
        if (takeContentGroup(rest.first(length)) == StageEnd::PassOver) {
            return StageEnd::PassOver;
        }
        rest = rest.subspan(length);
    }
    return StageEnd::Done;
}

StageEnd WholeFilePass::hashMember(std::uint32_t member)
{
    if (!_context.throttle.goOn()) {
        return StageEnd::PassOver;
    }
    const FileRecord& file = record(member);
    const FileDescriptor opened = _table.open(_context.root, file);
    if (!opened) {
        if (errno == EIO) {
            _context.result.addUnreadable(_table.pathOf(file));
        }
        return StageEnd::Done;
    }
    if (file.size <= kLargestMaybeInline && isInline(opened.get())) {
        // A hash that no other file has: it is left alone until it changes.
        _facts[member] = {{file.identity, ~file.identity}, true, true};
        return StageEnd::Done;
    }
    if (_context.settings.onStep) {
        _context.step(ScanStep::Hash, _table.pathOf(file));
    }
    const HashOutcome outcome =
        hashContent(opened.get(), file.size, _buffer,
                    [this](std::uint64_t, std::span<const char>) { return _context.throttle.goOn(); });
    if (_context.throttle.stopped()) {
        return StageEnd::PassOver;
    }
    if (outcome.error != 0) {
        _context.result.addUnreadable(_table.pathOf(file));
    }
    if (outcome.hash && _table.unchanged(opened.get(), file)) {
        _facts[member] = {*outcome.hash, true, false};
        ++_context.result.filesHashed;
    }
    return StageEnd::Done;
}

bool WholeFilePass::needsSharing(Members members) const
{
    return members.size() > 1 && std::any_of(members.begin(), members.end(), [this](std::uint32_t member) {
               return _facts[member].hashed && !_facts[member].shared;
           });
}

StageEnd WholeFilePass::takeContentGroup(Members members)
{
    if (members.size() == 1) {
        // What it shared its blocks with is gone; should an equal file appear, its place has to be looked at.
        _facts[members[0]].shared = false;
        return StageEnd::Done;
    }
    // Each turn but the last removes a source that changed meanwhile or could not be opened.
    while (needsSharing(members)) {
        const std::uint32_t source = bestSource(members);
        const FileDescriptor sourceFile = _table.open(_context.root, record(source));
        if (!sourceFile) {
            _facts[source].hashed = false;
        } else if (shareWithSource(source, sourceFile.get(), members) == StageEnd::PassOver) {
            return StageEnd::PassOver;
        } else if (_table.unchanged(sourceFile.get(), record(source))) {
            break;
        } else {
            _facts[source] = {};
        }
        members = {members.begin(),
                   std::partition(members.begin(), members.end(),
                                  [this](std::uint32_t member) { return _facts[member].hashed; })};
    }
    addFollowers(members);
    return StageEnd::Done;
}

std::uint32_t WholeFilePass::bestSource(Members members) const
{
    for (const std::uint32_t member : members) {
        if (_facts[member].shared) {
            return member;
        }
    }
    std::map<std::uint64_t, unsigned> sharers;
    std::uint32_t best = members[0];
    unsigned most = 0;
    for (const std::uint32_t member : members.first(std::min(members.size(), kMembersAskedForPlace))) {
        const FileDescriptor file = _table.open(_context.root, record(member));
        const std::uint64_t place = file ? devicePlace({file.get(), 0}) : 0;
        if (place != 0 && ++sharers[place] > most) {
            most = sharers[place];
            best = member;
        }
    }
    return best;
}

StageEnd WholeFilePass::shareWithSource(std::uint32_t source, int sourceFile, Members members)
{
    for (const std::uint32_t member : members) {
        if (member == source || _facts[member].shared) {
            continue;
        }
        if (shareMember(source, sourceFile, member) == StageEnd::PassOver) {
            return StageEnd::PassOver;
        }
    }
    return StageEnd::Done;
}

StageEnd WholeFilePass::shareMember(std::uint32_t source, int sourceFile, std::uint32_t member)
{
    if (!_context.throttle.goOn()) {
        return StageEnd::PassOver;
    }
    const FileRecord& file = record(member);
    const FileDescriptor opened = _table.open(_context.root, file);
    if (!opened) {
        _facts[member].hashed = false;
        return StageEnd::Done;
    }
    if (_context.settings.onStep) {
        _context.step(ScanStep::Share, _table.pathOf(file));
    }
    if (sharesAlready({sourceFile, 0}, {opened.get(), 0}, file.size)) {
        _facts[member].shared = true;
        _facts[source].shared = true;
        return StageEnd::Done;
    }
    const ShareOutcome outcome = shareData(sourceFile, opened.get(), file.size);
    _context.result.bytesShared += outcome.shared;
    switch (outcome.end) {
    case ShareOutcome::End::Same:
        _facts[member].shared = true;
        _facts[source].shared = true;
        ++_context.result.filesShared;
        return StageEnd::Done;
    case ShareOutcome::End::Differs:
        // One of the two changed after it was read.
        if (!_table.unchanged(opened.get(), file)) {
            _facts[member] = {};
        }
        return StageEnd::Done;
    case ShareOutcome::End::Refused:
        ++_context.result.filesRefused;
        return StageEnd::Done;
    case ShareOutcome::End::Failed:
        _context.result.error =
            std::string("Repeated data cannot be shared: ") + std::strerror(outcome.error) + ".";
        return StageEnd::PassOver;
    case ShareOutcome::End::Cancelled:
        return StageEnd::PassOver;
    }
    return StageEnd::Done;
}

ShareOutcome WholeFilePass::shareData(int source, int target, std::uint64_t size)
{
    // Only what the source holds: the kernel would compare the zeros of a hole one by one.
    ShareOutcome all;
    for (auto range = nextData(source, 0, size); range; range = nextData(source, range->end, size)) {
        const ShareOutcome part = shareRange({source, range->start}, {target, range->start},
                                             range->end - range->start, _context.throttle);
        all.shared += part.shared;
        if (part.end != ShareOutcome::End::Same) {
            all.end = part.end;
            all.error = part.error;
            return all;
        }
    }
    return all;
}

void WholeFilePass::addFollowers(Members members)
{
    std::uint64_t leader = 0;
    for (const std::uint32_t member : members) {
        if (!_facts[member].shared || record(member).size < _context.settings.blockFile) {
            continue;
        }
        if (leader == 0) {
            leader = record(member).identity;
        } else {
            _followers.emplace(record(member).identity, leader);
        }
    }
}

} // namespace ferrobank::drive
