#pragma once

#include <malloc.h>

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
#define FERROBANK_TEST_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define FERROBANK_TEST_SANITIZED 1
#endif
#endif

#ifdef FERROBANK_TEST_SANITIZED
#include <sanitizer/allocator_interface.h>
#endif

namespace ferrobank {

/// What the program has allocated and not given back, for tests that nothing grows.
[[nodiscard]] inline std::size_t allocatedBytes()
{
#ifdef FERROBANK_TEST_SANITIZED
    return __sanitizer_get_current_allocated_bytes();
#else
    const struct mallinfo2 info = ::mallinfo2();
    return info.uordblks + info.hblkhd;
#endif
}

} // namespace ferrobank
