#pragma once

namespace ferrobank {

/// Lets all threads share one heap. Nearly everything happens on one thread; a heap for each of the others
/// would hold some MiB for nothing. Call before the first of them is started.
void shareOneHeap();

/// Gives memory that was freed, but is still held for later, back to the system. For moments after much was
/// freed at once; takes about a millisecond.
void returnFreeMemory();

} // namespace ferrobank
