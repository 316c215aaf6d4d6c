#pragma once

#include "Platform/Foundation/Realtime.hpp"

#include <cstdint>

#if defined(__SSE__)
#include <xmmintrin.h>
#endif

namespace platform::foundation
{

/// While it lives, this thread's arithmetic takes and makes zeros in place of
/// denormal numbers, which cost a hundred times as much as others.
class DenormalMode
{
public:
#if defined(__SSE__)
    // Flush-to-zero is bit 15 of MXCSR, denormals-are-zero bit 6.
    REALTIME DenormalMode() noexcept : before_(_mm_getcsr())
    {
        _mm_setcsr(before_ | 0x8040U);
    }
    REALTIME ~DenormalMode()
    {
        _mm_setcsr(before_);
    }
#elif defined(__aarch64__)
    // Flush-to-zero is bit 24 of FPCR.
    REALTIME DenormalMode() noexcept
    {
        asm volatile("mrs %0, fpcr" : "=r"(before_));
        asm volatile("msr fpcr, %0" : : "r"(before_ | (1ULL << 24U)));
    }
    REALTIME ~DenormalMode()
    {
        asm volatile("msr fpcr, %0" : : "r"(before_));
    }
#else
    REALTIME DenormalMode() noexcept {}
#endif
    DenormalMode(const DenormalMode &) = delete;
    DenormalMode &operator=(const DenormalMode &) = delete;

private:
#if defined(__SSE__)
    unsigned before_;
#elif defined(__aarch64__)
    std::uint64_t before_;
#endif
};

} // namespace platform::foundation
