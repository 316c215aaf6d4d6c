#include "Resources/Demonstration Loops/Mastering/Master.hpp"

#include "Resources/Demonstration Loops/Audio/Filters.hpp"
#include "Resources/Demonstration Loops/Mastering/Dynamics.hpp"
#include "Resources/Demonstration Loops/Mastering/Loudness.hpp"

#include <cmath>

namespace demonstration_loops
{

namespace
{

double linear(double decibels)
{
    return std::pow(10.0, decibels / 20.0);
}

void bringTo(StereoLoop &mix, double loudness)
{
    mix.scale(linear(loudness - integratedLoudness(mix)));
}

} // namespace

void master(StereoLoop &mix)
{
    filterLoop(mix, BiquadCoefficients::highPass(28.0, 0.7));
    // K weighting hardly hears the bass, so mixes made by it come out heavy.
    filterLoop(mix, BiquadCoefficients::lowShelf(110.0, -2.5));
    filterLoop(mix, BiquadCoefficients::highShelf(5000.0, 1.5));
    bringTo(mix, targetLoudness);
    compress(mix, -20.0, 1.8);
    // Limiting costs loudness, so level and limit approach each other.
    for (int round = 0; round < 6; ++round) {
        bringTo(mix, targetLoudness);
        if (mix.peak() <= linear(ceilingDb))
            return;
        limit(mix, linear(ceilingDb));
    }
}

} // namespace demonstration_loops
