#pragma once

namespace ferrobank::drive {

/// Which of the two wishes the kernel granted; a refusal (old kernels, containers) makes the work no less
/// right.
struct IdlePriority {
    bool processor = false;
    bool disk = false;
};

/// Gives the calling thread, and no other, the processor and the disk only when nobody else wants them. There
/// is no way back: the thread keeps it for its life.
IdlePriority useIdlePriority();

} // namespace ferrobank::drive
