#include "Benchmarks/Engine/Measurement.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <limits>

namespace
{

double seconds(clockid_t clock)
{
    std::timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

} // namespace

Cost StopWatch::now()
{
    return {seconds(CLOCK_MONOTONIC), seconds(CLOCK_PROCESS_CPUTIME_ID)};
}

double median(std::vector<double> values)
{
    if (values.empty())
        return std::numeric_limits<double>::quiet_NaN();
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

void reportGoal(const std::string &what, double limit, double figure, const std::string &unit)
{
    fmt::print("| {} | {:.4g}{} | {:.4g}{} | {} |\n", what, limit, unit, figure, unit,
               figure <= limit ? "met" : "missed");
}
