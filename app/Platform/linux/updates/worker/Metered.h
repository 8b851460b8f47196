#pragma once

namespace ferrobank::updates {

/// Whether the network manager says that the connection of the moment is paid by volume, or guesses so. False
/// where nobody can be asked.
[[nodiscard]] bool isConnectionMetered();

} // namespace ferrobank::updates
