#include "figures/IdentitySet.h"

#include <cassert>

namespace ferrobank::drive {

std::size_t IdentitySet::place(std::uint64_t identity) const
{
    const std::size_t mask = _slots.size() - 1;
    std::size_t slot = (identity * 0x9e3779b97f4a7c15U >> 20U) & mask;
    while (_slots[slot] != 0 && _slots[slot] != identity) {
        slot = (slot + 1) & mask;
    }
    return slot;
}

bool IdentitySet::contains(std::uint64_t identity) const
{
    return !_slots.empty() && _slots[place(identity)] == identity;
}

bool IdentitySet::add(std::uint64_t identity)
{
    assert(identity != 0 && "0 marks a free slot");
    if (_size * 4 >= _slots.size() * 3) {
        grow();
    }
    const std::size_t slot = place(identity);
    if (_slots[slot] == identity) {
        return false;
    }
    _slots[slot] = identity;
    ++_size;
    return true;
}

void IdentitySet::grow()
{
    std::vector<std::uint64_t> old(_slots.empty() ? 64 : _slots.size() * 2);
    old.swap(_slots);
    for (const std::uint64_t identity : old) {
        if (identity != 0) {
            _slots[place(identity)] = identity;
        }
    }
}

} // namespace ferrobank::drive
