#pragma once

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string_view>
#include <vector>

#include <unistd.h>

/// The ways in which a plug-in of ours takes its process down or leaves it useless.
namespace sabotage
{

inline void useNoMemory()
{
    // Volatile, or the compiler would see what comes of it.
    volatile std::uintptr_t nowhere = 64;
    *reinterpret_cast<volatile int *>(nowhere) = 1;
}

inline void loopForEver()
{
    volatile bool forEver = true;
    while (forEver) {
    }
}

inline void smashHeap()
{
    // What lies before a block is the allocator's; it looks there when the block is
    // freed. Volatile, or the compiler would drop what is freed at once.
    void *volatile block = std::malloc(64);
    auto *bytes = static_cast<volatile unsigned char *>(block) - 16;
    for (int i = 0; i < 16; ++i)
        bytes[i] = 0xFF;
    std::free(block);
#if defined(PARVANE_SANITIZED_THREADS)
    // Its allocator keeps its own elsewhere, and notices nothing.
    std::abort();
#endif
}

inline void allocateTooMuch()
{
    const std::vector<char> huge(PTRDIFF_MAX / 2);
    std::exit(huge[0]);
}

inline void closeEverything()
{
    ::close_range(0, UINT_MAX, 0);
}

/// By the fault's name, which is the last part of the plug-in's URI.
inline void provoke(std::string_view fault)
{
    if (fault == "segv")
        useNoMemory();
    else if (fault == "abort")
        std::abort();
    else if (fault == "exit")
        std::exit(3);
    else if (fault == "loop")
        loopForEver();
    else if (fault == "exception")
        throw std::runtime_error("sabotage");
    else if (fault == "heap")
        smashHeap();
    else if (fault == "allocation")
        allocateTooMuch();
    else if (fault == "descriptors")
        closeEverything();
}

} // namespace sabotage
