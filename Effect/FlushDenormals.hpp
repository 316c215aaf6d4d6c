#pragma once

#include "Platform/Foundation/Realtime.hpp"

#if defined(__SSE2__)
#include <immintrin.h>
#endif

#include <cstdint>

namespace effect
{

/// Makes the processor take the smallest numbers for zero while it lives, and puts
/// back what the host had. A tail that fades through them would cost many times
/// its price otherwise.
class FlushDenormals
{
public:
    REALTIME FlushDenormals() : before_(read()) { write(before_ | flush); }
    REALTIME ~FlushDenormals() { write(before_); }
    FlushDenormals(const FlushDenormals &) = delete;
    FlushDenormals &operator=(const FlushDenormals &) = delete;

private:
#if defined(__SSE2__)
    using Word = std::uint32_t;
    /// Flush to zero and denormals are zero.
    static constexpr Word flush = 0x8040;
    static Word read()
    {
        return _mm_getcsr();
    }
    static void write(Word word)
    {
        _mm_setcsr(word);
    }
#elif defined(__aarch64__)
    using Word = std::uint64_t;
    /// Flush to zero.
    static constexpr Word flush = 1U << 24;
    static Word read()
    {
        Word word = 0;
        asm volatile("mrs %0, fpcr" : "=r"(word));
        return word;
    }
    static void write(Word word)
    {
        asm volatile("msr fpcr, %0" : : "r"(word));
    }
#else
    using Word = std::uint32_t;
    static constexpr Word flush = 0;
    static Word read()
    {
        return 0;
    }
    static void write(Word) {}
#endif

    Word before_;
};

} // namespace effect
