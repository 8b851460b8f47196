#include "Platform/Memory.h"

#include <malloc.h>

namespace ferrobank {

void shareOneHeap()
{
    mallopt(M_ARENA_MAX, 1);
}

void returnFreeMemory()
{
    malloc_trim(0);
}

} // namespace ferrobank
