#pragma once

#include <cstdlib>

namespace fuzzing
{

/// Ends the process, as a finding, unless the condition holds.
inline void require(bool condition)
{
    if (!condition)
        std::abort();
}

} // namespace fuzzing
