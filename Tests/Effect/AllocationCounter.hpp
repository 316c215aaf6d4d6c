#pragma once

#include <cstddef>

/// Counts the calls of this thread to the C allocator, by standing before it; C++'s
/// operators end there too. Where a sanitizer stands there already, it cannot count.
namespace allocation_counter
{

bool canCount();
void start();
/// Calls since `start`; also stops.
std::size_t stop();

} // namespace allocation_counter
