#pragma once

namespace ferrobank {

/// Lets all threads share one heap. Nearly everything happens on one thread; a heap for each of the others
/// would hold some MiB for nothing. Call before the first of them is started.
void shareOneHeap();

/// Gives back what is only held for later: memory that was freed, and the pages of programs and libraries
/// that were read for something that is over. Those return from the system's cache one by one as they are
/// needed again. For moments when something large has come to its end; takes about a millisecond.
void returnIdleMemory();

} // namespace ferrobank
