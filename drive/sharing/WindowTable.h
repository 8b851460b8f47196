#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace ferrobank::drive {

inline constexpr std::uint64_t kBlockBytes = 4096;
inline constexpr std::uint64_t kBlocksPerWindow = 16;
inline constexpr std::uint64_t kWindowBytes = kBlockBytes * kBlocksPerWindow;

/// Turns the hashes of successive blocks into one key for each run of 16 of them, whatever comes before.
class WindowRoller {
public:
    void reset();

    /// Takes the next block; answers the key of the window that ends with it. 0 while there are fewer than 16
    /// blocks and for a window of zeros, which is not worth sharing.
    std::uint64_t push(std::uint64_t blockHash, bool zeros);

private:
    std::array<std::uint64_t, kBlocksPerWindow> _hashes{};
    std::array<bool, kBlocksPerWindow> _zeros{};
    std::uint64_t _sum = 0;
    std::uint64_t _pushed = 0;
    std::uint64_t _zeroBlocks = 0;
};

/// How densely windows are kept so that they fit the memory: at every `step` bytes of a file.
struct WindowPlan {
    std::uint64_t step = kWindowBytes;
    std::size_t slots = 0;
};

/// Every window fits up to a certain sum of file sizes, above it every second one is kept, then every fourth
/// and so on; `memory` is never exceeded.
[[nodiscard]] WindowPlan planWindows(std::uint64_t totalBytes, std::size_t memory);

/// Where a window with a certain key was met first: the number of the file and the offset in it.
struct WindowPlace {
    std::uint32_t file = 0;
    std::uint64_t offset = 0;
};

/// Window keys to places at 16 bytes each, in memory that is fixed at the start. What no longer fits is left
/// out.
class WindowTable {
public:
    explicit WindowTable(const WindowPlan& plan);

    /// Keeps the first place of a key. `offset` is a multiple of the window size.
    void insert(std::uint64_t key, const WindowPlace& place);

    [[nodiscard]] std::optional<WindowPlace> find(std::uint64_t key) const;

    [[nodiscard]] std::size_t size() const { return _size; }

private:
    struct Slot {
        std::uint64_t key = 0;
        std::uint32_t file = 0;
        std::uint32_t window = 0;
    };

    [[nodiscard]] std::size_t slotOf(std::uint64_t key) const;

    std::vector<Slot> _slots;
    std::size_t _size = 0;
};

} // namespace ferrobank::drive
