#include "Resources/Demonstration Loops/Mastering/SlidingMaximum.hpp"

#include <deque>

namespace demonstration_loops
{

std::vector<double> largestAhead(const std::vector<double> &values, std::size_t ahead)
{
    const std::size_t count = values.size();
    std::vector<double> result(count);
    // Places of values that nothing later exceeds yet.
    std::deque<std::size_t> candidates;
    for (std::size_t i = 0; i < count + ahead; ++i) {
        const double value = values[i % count];
        while (!candidates.empty() && values[candidates.back() % count] <= value)
            candidates.pop_back();
        candidates.push_back(i);
        if (i < ahead)
            continue;
        while (candidates.front() < i - ahead)
            candidates.pop_front();
        result[i - ahead] = values[candidates.front() % count];
    }
    return result;
}

} // namespace demonstration_loops
