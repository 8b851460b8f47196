#pragma once

namespace ferrobank {

/// Gives memory that was freed, but is still held for later, back to the system. For moments after much was
/// freed at once; takes about a millisecond.
void returnFreeMemory();

} // namespace ferrobank
