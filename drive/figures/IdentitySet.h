#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ferrobank::drive {

/// A set of file identities at about 12 bytes each, for "was this inode met already". Not thread-safe. 0 is
/// no identity and must not be added.
class IdentitySet {
public:
    /// Answers whether it was not there before.
    bool add(std::uint64_t identity);

    [[nodiscard]] bool contains(std::uint64_t identity) const;

    [[nodiscard]] std::size_t size() const { return _size; }

private:
    [[nodiscard]] std::size_t place(std::uint64_t identity) const;
    void grow();

    std::vector<std::uint64_t> _slots;
    std::size_t _size = 0;
};

} // namespace ferrobank::drive
