#include "sharing/BlockPass.h"

#include "figures/ContentHash.h"
#include "sharing/SharedRange.h"

#include <fcntl.h>
#include <unistd.h>
#include <xxhash.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <numeric>
#include <span>
#include <utility>

namespace ferrobank::drive {

namespace {

constexpr std::size_t kReadBytes = std::size_t{1} << 20U;
constexpr std::size_t kComparedBytes = std::size_t{128} << 10U;
/// Extents that are not compressed have up to half a megabyte; of more, moving it would save little.
constexpr std::uint64_t kLargestRemainder = std::uint64_t{256} << 10U;

bool readExactly(int file, char* bytes, std::size_t size, std::uint64_t offset)
{
    return ::pread(file, bytes, size, static_cast<off_t>(offset)) == static_cast<ssize_t>(size);
}

} // namespace

BlockPass::BlockPass(const ScanContext& context, const FileTable& table, const Followers& followers)
    : _context(context),
      _table(table),
      _followers(followers),
      _windows(WindowPlan{_plan.step, 1024}),
      _buffer(kReadBytes),
      _sourcePiece(kComparedBytes),
      _targetPiece(kComparedBytes)
{}

void BlockPass::findCandidates()
{
    std::uint64_t bytes = 0;
    std::unordered_map<std::uint64_t, std::vector<std::uint32_t>> following;
    for (std::uint32_t file = 0; file < _table.files().size(); ++file) {
        if (record(file).size < _context.settings.blockFile) {
            continue;
        }
        if (const auto leader = _followers.find(record(file).identity); leader != _followers.end()) {
            following[leader->second].push_back(file);
            continue;
        }
        _candidates.push_back(file);
        bytes += std::min(record(file).allocated, record(file).size);
    }
    for (const std::uint32_t file : _candidates) {
        if (const auto found = following.find(record(file).identity); found != following.end()) {
            _followersOf.emplace(file, std::move(found->second));
        }
    }
    std::sort(_candidates.begin(), _candidates.end(), [this](std::uint32_t one, std::uint32_t other) {
        return record(one).identity < record(other).identity;
    });
    _known.assign(_candidates.size(), Known::No);
    _plan = planWindows(bytes, _context.settings.windowMemory);
}

StageEnd BlockPass::run()
{
    findCandidates();
    auto index = WindowIndexReader::open(_context.settings.indexFolder, _context.uuid);
    if (index) {
        findKnown(*index);
    }
    if (std::find(_known.begin(), _known.end(), Known::No) == _known.end()) {
        return StageEnd::Done;
    }
    _windows = WindowTable(_plan);
    WindowIndexWriter writer(_context.settings.indexFolder, _context.uuid);
    if (index) {
        index->rewind();
        takeOver(*index, writer);
    }
    for (std::size_t place = 0; place < _candidates.size(); ++place) {
        _context.total += _known[place] == Known::No ? record(_candidates[place]).allocated : 0;
    }
    std::vector<std::size_t> order(_candidates.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    // Those that others follow come first: what comes later shares their blocks, and the followers need not
    // be touched.
    const auto isFollowed = [this](std::size_t place) { return _followersOf.contains(_candidates[place]); };
    std::sort(order.begin(), order.end(), [&](std::size_t one, std::size_t other) {
        return isFollowed(one) != isFollowed(other) ? isFollowed(one) : one < other;
    });
    StageEnd end = StageEnd::Done;
    for (auto place = order.begin(); place != order.end() && end == StageEnd::Done; ++place) {
        if (_known[*place] == Known::No) {
            end = takeFile(_candidates[*place], writer);
            _context.advance(record(_candidates[*place]).allocated);
        }
    }
    writer.commit();
    return end;
}

std::optional<std::size_t> BlockPass::candidateOf(const WindowSegment& segment) const
{
    const auto found = std::lower_bound(
        _candidates.begin(), _candidates.end(), segment.identity,
        [this](std::uint32_t file, std::uint64_t identity) { return record(file).identity < identity; });
    if (found == _candidates.end() || !segment.describes(record(*found))) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(found - _candidates.begin());
}

void BlockPass::findKnown(WindowIndexReader& index)
{
    WindowSegment segment;
    while (index.next(segment, WindowIndexReader::Windows::Skip)) {
        const auto candidate = candidateOf(segment);
        if (candidate && segment.last) {
            _known[*candidate] = Known::Yes;
        }
    }
}

void BlockPass::takeOver(WindowIndexReader& index, WindowIndexWriter& writer)
{
    WindowSegment segment;
    while (index.next(segment, WindowIndexReader::Windows::Read)) {
        const auto candidate = candidateOf(segment);
        if (!candidate || _known[*candidate] == Known::No) {
            continue;
        }
        for (const KeptWindow& window : segment.windows) {
            if (window.offset % _plan.step == 0) {
                _windows.insert(window.key, {_candidates[*candidate], window.offset});
            }
        }
        writer.append(segment);
    }
}

StageEnd BlockPass::takeFile(std::uint32_t file, WindowIndexWriter& writer)
{
    if (!_context.throttle.goOn()) {
        return StageEnd::PassOver;
    }
    const FileRecord& target = record(file);
    const FileDescriptor opened = _table.open(_context.root, target);
    if (!opened) {
        if (errno == EIO) {
            _context.result.addUnreadable(_table.pathOf(target));
        }
        return StageEnd::Done;
    }
    if (_context.settings.onStep) {
        _context.step(ScanStep::ReadBlocks, _table.pathOf(target));
    }
    _target = file;
    _targetFile = opened.get();
    _sharedUpTo = 0;
    _remainders.clear();
    _hasShared = false;
    _writer = &writer;
    _segment = {target.identity, target.size, target.stamp, false, {}};
    _roller.reset();
    std::uint64_t expected = 0;
    StageEnd end = StageEnd::Done;
    const HashOutcome outcome = hashContent(
        opened.get(), target.size, _buffer, [&](std::uint64_t offset, std::span<const char> piece) {
            if (offset != expected) {
                _roller.reset();
            }
            expected = offset + piece.size();
            for (std::size_t at = 0; at + kBlockBytes <= piece.size() && end == StageEnd::Done;
                 at += kBlockBytes) {
                const char* block = piece.data() + at;
                const bool zeros = block[0] == 0 && std::memcmp(block, block + 1, kBlockBytes - 1) == 0;
                end = takeBlock(offset + at, XXH3_64bits(block, kBlockBytes), zeros);
            }
            if (end == StageEnd::Done && !_context.throttle.goOn()) {
                end = StageEnd::PassOver;
            }
            return end == StageEnd::Done;
        });
    if (outcome.error != 0) {
        _context.result.addUnreadable(_table.pathOf(target));
    }
    if (outcome.hash && _table.unchanged(opened.get(), target)) {
        _segment.last = true;
        writer.append(_segment);
        return moveRemainders();
    }
    return end;
}

void BlockPass::noteShared(const Match& match, Shared shared)
{
    const std::uint64_t gap = match.target - _sharedUpTo;
    // Before a stretch that was shared earlier there is nothing that this pass has cut off.
    const bool isCutOff = _hasShared || shared == Shared::Now;
    if (_sharedUpTo > 0 && isCutOff && gap > 0 && gap <= kLargestRemainder) {
        _remainders.push_back({_sharedUpTo, gap, 0});
    }
    _hasShared = shared == Shared::Now;
}

/// One that changed or cannot be opened keeps the blocks that it has; the next pass looks at it anew.
void BlockPass::shareWithFollowers(const FileRange& source, std::uint64_t target, std::uint64_t length)
{
    const auto followers = _followersOf.find(_target);
    if (followers == _followersOf.end()) {
        return;
    }
    for (const std::uint32_t follower : followers->second) {
        if (const FileDescriptor opened = _table.open(_context.root, record(follower))) {
            static_cast<void>(shareRange(source, {opened.get(), target}, length, _context.throttle));
        }
    }
}

StageEnd BlockPass::moveRemainders()
{
    if (_remainders.empty()) {
        return StageEnd::Done;
    }
    const FileDescriptor copies(::openat(_context.root, ".", O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
    std::uint64_t place = 0;
    std::size_t copied = 0;
    for (Remainder& remainder : _remainders) {
        const auto size = static_cast<std::size_t>(remainder.length);
        // A drive that is full or a file that was cut meanwhile keeps its remainders where they are.
        if (!copies || !readExactly(_targetFile, _buffer.data(), size, remainder.start) ||
            ::pwrite(copies.get(), _buffer.data(), size, static_cast<off_t>(place)) !=
                static_cast<ssize_t>(size))
        {
            break;
        }
        remainder.place = place;
        place += remainder.length;
        ++copied;
    }
    for (const Remainder& remainder : std::span(_remainders).first(copied)) {
        const ShareOutcome outcome =
            shareRange({copies.get(), remainder.place}, {_targetFile, remainder.start}, remainder.length,
                       _context.throttle);
        if (outcome.end == ShareOutcome::End::Cancelled) {
            return StageEnd::PassOver;
        }
        if (outcome.end == ShareOutcome::End::Failed || outcome.end == ShareOutcome::End::Refused) {
            break;
        }
        shareWithFollowers({copies.get(), remainder.place}, remainder.start, remainder.length);
    }
    return StageEnd::Done;
}

StageEnd BlockPass::takeBlock(std::uint64_t start, std::uint64_t blockHash, bool zeros)
{
    const std::uint64_t key = _roller.push(blockHash, zeros);
    return key == 0 ? StageEnd::Done : takeWindow(start + kBlockBytes - kWindowBytes, key);
}

StageEnd BlockPass::takeWindow(std::uint64_t start, std::uint64_t key)
{
    if (start >= _sharedUpTo) {
        const auto place = _windows.find(key);
        if (place && tryPlace(*place, start) == StageEnd::PassOver) {
            return StageEnd::PassOver;
        }
    }
    if (start % _plan.step == 0) {
        _windows.insert(key, {_target, start});
        _segment.windows.push_back({key, start});
        if (_segment.windows.size() == kWindowsPerSegment) {
            _writer->append(_segment);
            _segment.windows.clear();
        }
    }
    return StageEnd::Done;
}

bool BlockPass::openSource(std::uint32_t file)
{
    if (file == _source && _sourceFile) {
        return true;
    }
    if (_goneSources.contains(record(file).identity)) {
        return false;
    }
    _sourceFile = _table.open(_context.root, record(file));
    _source = file;
    if (!_sourceFile) {
        _goneSources.add(record(file).identity);
        return false;
    }
    return true;
}

StageEnd BlockPass::tryPlace(const WindowPlace& place, std::uint64_t target)
{
    if (!openSource(place.file)) {
        return StageEnd::Done;
    }
    if (place.file == _target && place.offset + kWindowBytes > target) {
        return StageEnd::Done;
    }
    const Match match = widened(place, target);
    if (match.length < kWindowBytes) {
        return StageEnd::Done;
    }
    return share(match);
}

BlockPass::Match BlockPass::widened(const WindowPlace& place, std::uint64_t target)
{
    const FileRecord& sourceRecord = record(place.file);
    const bool sameFile = place.file == _target;
    std::uint64_t limit = std::min(sourceRecord.size - place.offset, record(_target).size - target);
    if (sameFile) {
        limit = std::min(limit, target - place.offset);
    }
    Match match{place.offset, target, equalAfter(place.offset, target, limit / kBlockBytes * kBlockBytes)};
    if (match.length < kWindowBytes) {
        return match;
    }
    std::uint64_t before = std::min(place.offset, target - _sharedUpTo);
    if (sameFile) {
        before = std::min(before, target - place.offset - match.length);
    }
    const std::uint64_t back = equalBefore(place.offset, target, before);
    return {match.source - back, match.target - back, match.length + back};
}

std::uint64_t BlockPass::equalAfter(std::uint64_t source, std::uint64_t target, std::uint64_t limit)
{
    std::uint64_t equal = 0;
    while (equal < limit && _context.throttle.goOn()) {
        const std::size_t size = std::min<std::uint64_t>(kComparedBytes, limit - equal);
        if (!readExactly(_sourceFile.get(), _sourcePiece.data(), size, source + equal) ||
            !readExactly(_targetFile, _targetPiece.data(), size, target + equal))
        {
            return equal;
        }
        const auto [first, second] =
            std::mismatch(_sourcePiece.begin(), _sourcePiece.begin() + static_cast<std::ptrdiff_t>(size),
                          _targetPiece.begin());
        const auto same = static_cast<std::uint64_t>(first - _sourcePiece.begin());
        equal += same / kBlockBytes * kBlockBytes;
        if (same < size) {
            return equal;
        }
    }
    return equal;
}

std::uint64_t BlockPass::equalBefore(std::uint64_t source, std::uint64_t target, std::uint64_t limit)
{
    std::uint64_t equal = 0;
    while (equal + kBlockBytes <= limit && _context.throttle.goOn()) {
        const std::uint64_t next = equal + kBlockBytes;
        if (!readExactly(_sourceFile.get(), _sourcePiece.data(), kBlockBytes, source - next) ||
            !readExactly(_targetFile, _targetPiece.data(), kBlockBytes, target - next) ||
            std::memcmp(_sourcePiece.data(), _targetPiece.data(), kBlockBytes) != 0)
        {
            return equal;
        }
        equal = next;
    }
    return equal;
}

StageEnd BlockPass::share(const Match& match)
{
    const FileRange source{_sourceFile.get(), match.source};
    const FileRange target{_targetFile, match.target};
    const std::uint64_t end = match.target + match.length;
    if (sharesAlready(source, target, match.length)) {
        noteShared(match, Shared::Before);
        _sharedUpTo = end;
        return StageEnd::Done;
    }
    const ShareOutcome outcome = shareRange(source, target, match.length, _context.throttle);
    _context.result.bytesShared += outcome.shared;
    switch (outcome.end) {
    case ShareOutcome::End::Same:
        noteShared(match, Shared::Now);
        shareWithFollowers(source, match.target, match.length);
        _sharedUpTo = end;
        return StageEnd::Done;
    case ShareOutcome::End::Differs:
        _sharedUpTo = match.target + outcome.shared;
        return StageEnd::Done;
    case ShareOutcome::End::Refused:
        ++_context.result.filesRefused;
        _sharedUpTo = record(_target).size;
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

} // namespace ferrobank::drive
