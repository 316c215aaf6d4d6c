#pragma once

#include "Effect/Tick.hpp"
#include "Platform/Foundation/Realtime.hpp"

namespace effect
{

/// Splits a signal in two whose sum has its spectrum unchanged: a Linkwitz-Riley
/// crossover of fourth order. S. H. Linkwitz, "Active Crossover Networks for
/// Noncoincident Drivers", J. AES 24 (1976). Low is two Butterworth low-passes in
/// a row; low + high is the all-pass of the first, and so high is what the all-pass
/// leaves over low, which saves the high-pass filters. The filters are
/// trapezoidal state-variable ones: V. Zavalishin, "The Art of VA Filter Design".
class Crossover
{
public:
    /// Both in hertz; the frequency is kept below 0.45 of the rate.
    Crossover(double frequency, double sampleRate);

    REALTIME void reset();

    REALTIME void process(const Tick &input, Tick &low, Tick &high);

private:
    struct Filter {
        float first = 0;
        float second = 0;
    };

    REALTIME Filter next(const Filter &filter, float in) const;

    float a1_;
    float a2_;
    float a3_;
    /// What each state keeps of itself in a frame.
    float keep1_;
    float keep2_;
    Filter split_;
    Filter smooth_;
};

} // namespace effect
