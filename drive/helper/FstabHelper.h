#pragma once

#include "platform/Paths.h"

#include <sys/types.h>

#include <filesystem>
#include <string>

namespace ferrobank::drive {

/// The part that an administrator allows: runs as root through pkexec and writes or removes the calling
/// user's one line in fstab. It trusts nothing of the caller but the user number that polkit vouches for:
/// home comes from the password data base, every folder down to the image is opened without following links
/// and must belong to that user. Throws Failure; fstab is then unchanged.
class FstabHelper {
public:
    /// `fstab` is another file in tests.
    FstabHelper(uid_t user, std::filesystem::path fstab);

    /// Prepares the image (the `files` subvolume) if that is still to be done, and writes the line.
    void add() const;
    void remove() const;

    /// The user who called pkexec, from PKEXEC_UID. Throws Failure when it is missing or root.
    [[nodiscard]] static uid_t callingUser();

private:
    void write(const std::string& text) const;
    [[nodiscard]] std::string read() const;

    uid_t _user;
    std::filesystem::path _fstab;
};

} // namespace ferrobank::drive
