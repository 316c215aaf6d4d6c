#include "Tests/Effect/AllocationCounter.hpp"

#include <cstdlib>

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) ||                         \
    __has_feature(memory_sanitizer)
#define UNDER_SANITIZER
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define UNDER_SANITIZER
#endif

namespace
{
thread_local bool counting = false;
thread_local std::size_t calls = 0;

[[maybe_unused]] void note()
{
    if (counting) {
        ++calls;
    }
}
} // namespace

#ifndef UNDER_SANITIZER
// NOLINTBEGIN: these are the C library's own names for its allocator and for what stands before it.
extern "C" {
void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size);
void *__libc_realloc(void *block, std::size_t size);
void *__libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void *block);

void *malloc(std::size_t size)
{
    note();
    return __libc_malloc(size);
}

void *calloc(std::size_t count, std::size_t size)
{
    note();
    return __libc_calloc(count, size);
}

void *realloc(void *block, std::size_t size)
{
    note();
    return __libc_realloc(block, size);
}

void *aligned_alloc(std::size_t alignment, std::size_t size)
{
    note();
    return __libc_memalign(alignment, size);
}

void free(void *block)
{
    note();
    __libc_free(block);
}
}
// NOLINTEND
#endif

namespace allocation_counter
{

bool canCount()
{
#ifdef UNDER_SANITIZER
    return false;
#else
    return true;
#endif
}

void start()
{
    calls = 0;
    counting = true;
}

std::size_t stop()
{
    counting = false;
    return calls;
}

} // namespace allocation_counter
