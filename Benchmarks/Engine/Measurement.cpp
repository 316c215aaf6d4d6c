#include "Benchmarks/Engine/Measurement.hpp"

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
