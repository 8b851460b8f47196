#include "sharing/WindowTable.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <limits>

namespace ferrobank::drive {

namespace {

constexpr std::uint64_t kFactor = 0x9e3779b97f4a7c15U;
constexpr std::size_t kFewestSlots = 1024;
constexpr std::size_t kSlotBytes = 16;

constexpr std::uint64_t power(std::uint64_t base, std::uint64_t exponent)
{
    std::uint64_t result = 1;
    for (std::uint64_t count = 0; count < exponent; ++count) {
        result *= base;
    }
    return result;
}

std::uint64_t mixed(std::uint64_t value)
{
    value ^= value >> 32U;
    value *= 0xd6e8feb86659fd93U;
    value ^= value >> 32U;
    return value == 0 ? 1 : value;
}

/// A table that is more than three quarters full becomes slow.
std::size_t mostWindows(std::size_t slots)
{
    return slots / 4 * 3;
}

} // namespace

void WindowRoller::reset()
{
    _sum = 0;
    _pushed = 0;
    _zeroBlocks = 0;
    _hashes.fill(0);
    _zeros.fill(false);
}

std::uint64_t WindowRoller::push(std::uint64_t blockHash, bool zeros)
{
    const std::size_t slot = _pushed % kBlocksPerWindow;
    _sum = _sum * kFactor + blockHash - _hashes[slot] * power(kFactor, kBlocksPerWindow);
    _zeroBlocks = _zeroBlocks + (zeros ? 1U : 0U) - (_zeros[slot] ? 1U : 0U);
    _hashes[slot] = blockHash;
    _zeros[slot] = zeros;
    ++_pushed;
    if (_pushed < kBlocksPerWindow || _zeroBlocks == kBlocksPerWindow) {
        return 0;
    }
    return mixed(_sum);
}

WindowPlan planWindows(std::uint64_t totalBytes, std::size_t memory)
{
    const std::size_t mostSlots = std::max(std::bit_floor(memory / kSlotBytes), kFewestSlots);
    WindowPlan plan;
    while (totalBytes / plan.step > mostWindows(mostSlots)) {
        plan.step *= 2;
    }
    const std::size_t windows = totalBytes / plan.step;
    plan.slots = std::clamp(std::bit_ceil(windows + windows / 3 + 1), kFewestSlots, mostSlots);
    return plan;
}

WindowTable::WindowTable(const WindowPlan& plan) : _slots(plan.slots)
{
    static_assert(sizeof(Slot) == kSlotBytes);
}

std::size_t WindowTable::slotOf(std::uint64_t key) const
{
    const std::size_t mask = _slots.size() - 1;
    std::size_t slot = key & mask;
    while (_slots[slot].key != 0 && _slots[slot].key != key) {
        slot = (slot + 1) & mask;
    }
    return slot;
}

void WindowTable::insert(std::uint64_t key, const WindowPlace& place)
{
    const std::uint64_t window = place.offset / kWindowBytes;
    if (_size == mostWindows(_slots.size()) || window > std::numeric_limits<std::uint32_t>::max()) {
        return;
    }
    Slot& slot = _slots[slotOf(key)];
    if (slot.key == 0) {
        slot = {key, place.file, static_cast<std::uint32_t>(window)};
        ++_size;
    }
}

std::optional<WindowPlace> WindowTable::find(std::uint64_t key) const
{
    const Slot& slot = _slots[slotOf(key)];
    if (slot.key == 0) {
        return std::nullopt;
    }
    return WindowPlace{slot.file, std::uint64_t{slot.window} * kWindowBytes};
}

} // namespace ferrobank::drive
