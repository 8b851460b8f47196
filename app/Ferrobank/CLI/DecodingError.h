#pragma once

#include <stdexcept>

namespace ferrobank {

/// What the drive tool printed is not the record that was expected. what() names the first key that is wrong,
/// for a developer; nothing of it is shown to the user.
class DecodingError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace ferrobank
