#pragma once

namespace ferrobank::updates {

/// Moves this process into a scope of its own under the user's service manager, so that it survives the end
/// of the service or scope that the application was started in. Without a user manager it stays where it is.
void moveToOwnScope();

} // namespace ferrobank::updates
