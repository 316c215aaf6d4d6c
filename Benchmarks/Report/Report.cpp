#include "Benchmarks/Report/Report.hpp"

#include <fmt/core.h>
#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <limits>

double median(std::vector<double> values)
{
    if (values.empty())
        return std::numeric_limits<double>::quiet_NaN();
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

std::vector<double> ratios(const std::vector<double> &ours, const std::vector<double> &theirs)
{
    std::vector<double> quotients(std::min(ours.size(), theirs.size()));
    std::transform(ours.begin(), ours.begin() + static_cast<std::ptrdiff_t>(quotients.size()),
                   theirs.begin(), quotients.begin(), std::divides());
    return quotients;
}

void printRow(const Row &row)
{
    fmt::print(R"({{"what": "{}", "peer": "{}", "goal": {}, "figures": [{}], "unit": "{}"}})"
               "\n",
               row.what, row.peer, row.goal ? fmt::format("{}", *row.goal) : "null",
               fmt::join(row.figures, ", "), row.unit);
    std::fflush(stdout);
}
