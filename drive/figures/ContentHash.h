#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>

namespace ferrobank::drive {

/// XXH3-128 of what a file holds. A hole counts as the zeros it reads as, so that a file and its copy on
/// another file system have the same hash however their blocks are laid out.
struct ContentHash {
    std::uint64_t low = 0;
    std::uint64_t high = 0;

    auto operator<=>(const ContentHash&) const = default;
};

/// Builds a ContentHash from pieces in ascending order. What is not added counts as zeros.
class ContentHasher {
public:
    ContentHasher();
    ~ContentHasher();
    ContentHasher(const ContentHasher&) = delete;
    ContentHasher& operator=(const ContentHasher&) = delete;

    /// `offset` is a multiple of 4096, and so is the size of all pieces but the last of the file.
    void add(std::uint64_t offset, std::span<const char> bytes);

    [[nodiscard]] ContentHash finish(std::uint64_t size);

private:
    void endRun();

    struct State;

    std::unique_ptr<State> _state;
    std::uint64_t _runBytes = 0;
    std::uint64_t _runEnd = 0;
};

/// A stretch of a file that may hold something else than zeros.
struct DataRange {
    std::uint64_t start = 0;
    std::uint64_t end = 0;
};

/// The next such stretch below `size` at or after `from`, empty when only holes follow. On file systems
/// without holes it is everything. Edges are multiples of 4096 or `size`.
[[nodiscard]] std::optional<DataRange> nextData(int file, std::uint64_t from, std::uint64_t size);

/// How reading a file ended.
///
/// | hash    | error | means                                                                  |
/// |---------|-------|------------------------------------------------------------------------|
/// | set     | 0     | all `size` bytes were read                                             |
/// | not set | 0     | the receiver of the pieces ended it, or the file is shorter than `size` |
/// | not set | errno | reading failed                                                         |
struct HashOutcome {
    std::optional<ContentHash> hash;
    int error = 0;
};

/// Receives each piece that is read; answers whether to go on.
using PieceReceiver = std::function<bool(std::uint64_t offset, std::span<const char> bytes)>;

/// Reads the first `size` bytes of the open file without its holes, at most `buffer` at a time. The buffer's
/// size is a multiple of 4096.
HashOutcome hashContent(int file, std::uint64_t size, std::span<char> buffer, const PieceReceiver& receive);

} // namespace ferrobank::drive
