#include "Platform/Memory.h"

#include <malloc.h>

namespace ferrobank {

void returnFreeMemory()
{
    malloc_trim(0);
}

} // namespace ferrobank
