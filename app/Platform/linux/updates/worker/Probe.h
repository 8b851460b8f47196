#pragma once

namespace ferrobank::updates {

/// Loads the libraries of the bundle that this worker lies in, with everything they need, and prints
/// "Ferrobank <version>". Returns the exit status: 1 with the loader's words on standard error when one is
/// missing.
int probeOwnBundle();

} // namespace ferrobank::updates
