#pragma once

#include <cstdint>
#include <cstring>

namespace effect
{

/// Four floats that the compiler keeps in one vector register. An operation on
/// lanes is the operation on each of them, with the same bits on every machine.
using Lanes = float __attribute__((vector_size(16)));
/// Four whole numbers likewise.
using WholeLanes = std::int32_t __attribute__((vector_size(16)));

inline Lanes allLanes(float value)
{
    return Lanes{value, value, value, value};
}

inline Lanes loadLanes(const float *source)
{
    Lanes lanes;
    std::memcpy(&lanes, source, sizeof lanes);
    return lanes;
}

/// Each lane is the sum over one of the arguments, in the order of a tree.
inline Lanes sumsOf(Lanes a, Lanes b, Lanes c, Lanes d)
{
    const Lanes ab =
        __builtin_shufflevector(a, b, 0, 4, 1, 5) + __builtin_shufflevector(a, b, 2, 6, 3, 7);
    const Lanes cd =
        __builtin_shufflevector(c, d, 0, 4, 1, 5) + __builtin_shufflevector(c, d, 2, 6, 3, 7);
    return __builtin_shufflevector(ab, cd, 0, 1, 4, 5) +
           __builtin_shufflevector(ab, cd, 2, 3, 6, 7);
}

/// Rounds towards zero.
inline WholeLanes wholePart(Lanes lanes)
{
    return __builtin_convertvector(lanes, WholeLanes);
}

inline Lanes toLanes(WholeLanes whole)
{
    return __builtin_convertvector(whole, Lanes);
}

} // namespace effect
