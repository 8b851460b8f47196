#include "figures/ContentHash.h"

#include <unistd.h>
#include <xxhash.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace ferrobank::drive {

namespace {

constexpr std::uint64_t kBlock = 4096;

bool isZero(std::span<const char> bytes)
{
    return bytes.front() == 0 && std::memcmp(bytes.data(), bytes.data() + 1, bytes.size() - 1) == 0;
}

/// Reads until the span is full; answers the bytes read, fewer only at the end of the file, or -1.
ssize_t readAt(int file, std::span<char> bytes, std::uint64_t offset)
{
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        const ssize_t count =
            ::pread(file, bytes.data() + filled, bytes.size() - filled, static_cast<off_t>(offset + filled));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return -1;
        }
        if (count == 0) {
            break;
        }
        filled += static_cast<std::size_t>(count);
    }
    return static_cast<ssize_t>(filled);
}

} // namespace

struct ContentHasher::State {
    std::unique_ptr<XXH3_state_t, decltype(&XXH3_freeState)> xxh{XXH3_createState(), XXH3_freeState};

    void add(const void* bytes, std::size_t size) const { XXH3_128bits_update(xxh.get(), bytes, size); }
};

ContentHasher::ContentHasher() : _state(std::make_unique<State>())
{
    XXH3_128bits_reset(_state->xxh.get());
}

ContentHasher::~ContentHasher() = default;

void ContentHasher::endRun()
{
    if (_runBytes > 0) {
        _state->add(&_runBytes, sizeof _runBytes);
        _runBytes = 0;
    }
}

void ContentHasher::add(std::uint64_t offset, std::span<const char> bytes)
{
    if (offset != _runEnd) {
        endRun();
    }
    // Runs of blocks that are not all zeros go in as start, bytes, length: zeros leave no trace of their own.
    std::size_t position = 0;
    while (position < bytes.size()) {
        std::size_t end = position;
        std::size_t zeros = 0;
        while (end < bytes.size()) {
            const std::size_t length = std::min<std::size_t>(kBlock, bytes.size() - end);
            if (isZero(bytes.subspan(end, length))) {
                zeros = length;
                break;
            }
            end += length;
        }
        if (end > position) {
            if (_runBytes == 0) {
                const std::uint64_t start = offset + position;
                _state->add(&start, sizeof start);
            }
            _state->add(bytes.data() + position, end - position);
            _runBytes += end - position;
        }
        if (zeros > 0) {
            endRun();
        }
        position = end + zeros;
    }
    _runEnd = offset + bytes.size();
}

ContentHash ContentHasher::finish(std::uint64_t size)
{
    endRun();
    _state->add(&size, sizeof size);
    const XXH128_hash_t digest = XXH3_128bits_digest(_state->xxh.get());
    return {digest.low64, digest.high64};
}

std::optional<DataRange> nextData(int file, std::uint64_t from, std::uint64_t size)
{
    if (from >= size) {
        return std::nullopt;
    }
    const off_t start = ::lseek(file, static_cast<off_t>(from), SEEK_DATA);
    if (start < 0) {
        return errno == ENXIO ? std::nullopt : std::optional(DataRange{from, size});
    }
    const off_t end = ::lseek(file, start, SEEK_HOLE);
    const std::uint64_t aligned = std::max(static_cast<std::uint64_t>(start) / kBlock * kBlock, from);
    if (aligned >= size) {
        return std::nullopt;
    }
    if (end < 0) {
        return DataRange{aligned, size};
    }
    return DataRange{aligned,
                     std::min((static_cast<std::uint64_t>(end) + kBlock - 1) / kBlock * kBlock, size)};
}

HashOutcome hashContent(int file, std::uint64_t size, std::span<char> buffer, const PieceReceiver& receive)
{
    ContentHasher hasher;
    for (auto range = nextData(file, 0, size); range; range = nextData(file, range->end, size)) {
        for (std::uint64_t position = range->start; position < range->end;) {
            const auto piece = buffer.first(std::min<std::uint64_t>(buffer.size(), range->end - position));
            const ssize_t count = readAt(file, piece, position);
            if (count < 0) {
                return {std::nullopt, errno};
            }
            if (static_cast<std::size_t>(count) < piece.size()) {
                return {};
            }
            hasher.add(position, piece);
            if (!receive(position, piece)) {
                return {};
            }
            position += piece.size();
        }
    }
    return {hasher.finish(size), 0};
}

} // namespace ferrobank::drive
