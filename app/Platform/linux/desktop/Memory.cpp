#include "Platform/Memory.h"

#include <link.h>
#include <malloc.h>
#include <sys/auxv.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

namespace ferrobank {

namespace {

/// Whether all pages of the object that may not be written are pages of its file: not if loading changes
/// them, and not those of the kernel's own, which has no file.
bool isAsInItsFile(const dl_phdr_info& object)
{
    const ElfW(Addr) kernels = ::getauxval(AT_SYSINFO_EHDR);
    if (object.dlpi_addr == kernels) {
        return false;
    }
    for (int index = 0; index < object.dlpi_phnum; ++index) {
        const ElfW(Phdr)& segment = object.dlpi_phdr[index];
        if (segment.p_type != PT_DYNAMIC) {
            continue;
        }
        const auto* entry = reinterpret_cast<const ElfW(Dyn)*>(object.dlpi_addr + segment.p_vaddr);
        for (; entry->d_tag != DT_NULL; ++entry) {
            const bool hasFlag = entry->d_tag == DT_FLAGS && (entry->d_un.d_val & DF_TEXTREL) != 0;
            if (entry->d_tag == DT_TEXTREL || hasFlag) {
                return false;
            }
        }
    }
    return true;
}

int letGoOfReadOnlyPages(dl_phdr_info* object, std::size_t, void* page)
{
    if (!isAsInItsFile(*object)) {
        return 0;
    }
    const std::uintptr_t pageSize = *static_cast<const std::uintptr_t*>(page);
    for (int index = 0; index < object->dlpi_phnum; ++index) {
        const ElfW(Phdr)& segment = object->dlpi_phdr[index];
        if (segment.p_type != PT_LOAD || (segment.p_flags & PF_W) != 0) {
            continue;
        }
        const std::uintptr_t begin = object->dlpi_addr + segment.p_vaddr;
        const std::uintptr_t end = begin + segment.p_filesz;
        const std::uintptr_t first = begin / pageSize * pageSize;
        // Pages that cannot be let go of stay: nothing is lost but room.
        ::madvise(reinterpret_cast<void*>(first), end - first, MADV_DONTNEED);
    }
    return 0;
}

} // namespace

void shareOneHeap()
{
    mallopt(M_ARENA_MAX, 1);
}

void returnIdleMemory()
{
    malloc_trim(0);
    auto pageSize = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    dl_iterate_phdr(letGoOfReadOnlyPages, &pageSize);
}

} // namespace ferrobank
