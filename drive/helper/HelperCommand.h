#pragma once

namespace ferrobank::drive {

/// The mount helper's command line; the process's exit status (`HelperExit`). Words go to standard error.
///
/// | called as                       | by                     | does |
/// |---------------------------------|------------------------|---------------------------------------------------------|
/// | `allow`                         | pkexec, after a prompt | writes down that the calling user may mount
/// the drive   | | `allow NAME`                    | root                   | the same for that user | |
/// `drive mount\|prepare\|unmount` | pkexec, no prompt      | what it says, of the calling user's own drive |
/// | `drive forget`                  | pkexec, no prompt      | takes the calling user's approval back | |
/// `retire-lines`                  | root (package scripts) | turns lines of former versions in fstab into
/// approvals  | | `remove-all`                    | root (package scripts) | removes all approvals and all
/// lines                     |
///
/// It believes nothing but the user number that pkexec vouches for.
[[nodiscard]] int runMountHelper(int argumentCount, const char* const* arguments);

} // namespace ferrobank::drive
