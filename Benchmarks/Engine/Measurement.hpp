#pragma once

#include <ctime>

/// Seconds that something took: of the wall clock, and of processor time in all
/// threads of the process.
struct Cost {
    double wall = 0;
    double processor = 0;

    friend Cost operator+(const Cost &left, const Cost &right)
    {
        return {left.wall + right.wall, left.processor + right.processor};
    }
};

/// Runs from its construction.
class StopWatch
{
public:
    StopWatch() : start_(now()) {}
    Cost elapsed() const
    {
        const Cost end = now();
        return {end.wall - start_.wall, end.processor - start_.processor};
    }

private:
    static Cost now();

    Cost start_;
};

template <typename Operation>
Cost costOf(const Operation &operation)
{
    const StopWatch watch;
    operation();
    return watch.elapsed();
}
