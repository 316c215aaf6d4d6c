#include "Resources/Demonstration Loops/Mastering/Master.hpp"

#include "Resources/Demonstration Loops/Audio/Filters.hpp"
#include "Resources/Demonstration Loops/Mastering/Cabinet.hpp"
#include "Resources/Demonstration Loops/Mastering/Dynamics.hpp"
#include "Resources/Demonstration Loops/Mastering/Loudness.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

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

/// By what factor each frame is above the ceiling that it is nearer to.
std::vector<double> excessOf(const StereoLoop &mix)
{
    const double ceiling = linear(ceilingDb);
    const double cabinetCeiling = linear(cabinetCeilingDb);
    std::vector<double> excess = levelThroughCabinet(mix);
    for (std::size_t i = 0; i < mix.frames(); ++i) {
        const double sample = std::max(std::abs(mix.left[i]), std::abs(mix.right[i]));
        excess[i] = std::max(excess[i] / cabinetCeiling, sample / ceiling);
    }
    return excess;
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
        const std::vector<double> excess = excessOf(mix);
        if (*std::max_element(excess.begin(), excess.end()) <= 1.0)
            return;
        limit(mix, excess);
    }
}

} // namespace demonstration_loops
