#pragma once

#include "helper/User.h"
#include "platform/FileDescriptor.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ferrobank::drive {

/// A user's image as root may touch it: each folder from the home on was opened with the user's own rights
/// and without following a link, and belongs to the user, and so does the image, a plain file. From then on
/// the descriptor is the image, whatever the path leads to later.
class StoreOfUser {
public:
    /// Throws Failure with what is wrong.
    [[nodiscard]] static StoreOfUser open(const User& user);

    /// The same file opened for reading and writing, if the user may do that. Throws Failure.
    [[nodiscard]] FileDescriptor openImage() const;

    /// A loop device that works on the image.
    struct Loop {
        std::string device;
        bool readOnly = false;
    };

    /// All of them, found by device and inode of the image, in no order. Needs root.
    [[nodiscard]] std::vector<Loop> loops() const;

private:
    StoreOfUser(User user, FileDescriptor image);

    User _user;
    FileDescriptor _image;
    std::uint64_t _device = 0;
    std::uint64_t _inode = 0;
};

} // namespace ferrobank::drive
