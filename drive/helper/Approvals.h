#pragma once

#include "helper/Places.h"
#include "helper/User.h"

namespace ferrobank::drive {

/// Whom an administrator has allowed to mount: one file a user, named by number, that holds the login name,
/// so that an approval does not pass to whoever gets the number next. In a folder that only root may change.
/// All throw Failure.
class Approvals {
public:
    explicit Approvals(const Places& places) : _places(places) {}

    [[nodiscard]] bool has(const User& user) const;
    void add(const User& user) const;
    void remove(uid_t user) const;
    /// All of them, and the folder.
    void removeAll() const;

private:
    const Places& _places;
};

} // namespace ferrobank::drive
