#include "platform/FileDescriptor.h"

#include <unistd.h>

namespace ferrobank::drive {

void FileDescriptor::reset(int descriptor) noexcept
{
    const int previous = std::exchange(_descriptor, descriptor);
    if (previous >= 0 && previous != descriptor) {
        ::close(previous);
    }
}

} // namespace ferrobank::drive
