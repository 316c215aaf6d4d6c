#pragma once

#include <cstring>

namespace effect
{

/// Four floats that the compiler keeps in one vector register. An operation on
/// lanes is the operation on each of them, with the same bits on every machine.
using Lanes = float __attribute__((vector_size(16)));

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

} // namespace effect
