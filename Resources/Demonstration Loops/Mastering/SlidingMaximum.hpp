#pragma once

#include <cstddef>
#include <vector>

namespace demonstration_loops
{

/// The largest value among each and the `ahead` after it, fewer than there are; the end
/// goes on at the beginning.
std::vector<double> largestAhead(const std::vector<double> &values, std::size_t ahead);

} // namespace demonstration_loops
