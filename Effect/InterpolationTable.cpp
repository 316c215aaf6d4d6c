#include "Effect/InterpolationTable.hpp"

#include "Effect/KaiserWindow.hpp"

#include <array>

namespace effect
{

namespace
{

/// Weighs between a flat top of the band and images well down.
constexpr double kaiserBeta = 6.0;

/// Scaled to a sum of one, so that the level never moves with the fraction.
std::array<double, InterpolationTable::fineTaps> fineWeights(double fraction)
{
    constexpr double half = InterpolationTable::fineTaps / 2.0;
    std::array<double, InterpolationTable::fineTaps> weights{};
    double sum = 0;
    for (std::size_t tap = 0; tap < weights.size(); ++tap) {
        const double distance = static_cast<double>(tap) - (half - fraction);
        weights[tap] = windowedSinc(distance, half, kaiserBeta);
        sum += weights[tap];
    }
    for (double &weight : weights) {
        weight /= sum;
    }
    return weights;
}

/// Of samples at 0, 1, 2 and 3, read at 2 - fraction.
std::array<double, InterpolationTable::plainTaps> plainWeights(double fraction)
{
    const double at = 2 - fraction;
    return {-(at - 1) * (at - 2) * (at - 3) / 6, at * (at - 2) * (at - 3) / 2,
            -at * (at - 1) * (at - 3) / 2, at * (at - 1) * (at - 2) / 6};
}

template <std::size_t size, typename WeightsAt>
void tabulate(std::array<Lanes, size> &rows, WeightsAt weightsAt)
{
    constexpr std::size_t rowLength = size / InterpolationTable::phases;
    auto here = weightsAt(0.0);
    for (std::size_t phase = 0; phase < InterpolationTable::phases; ++phase) {
        const auto next = weightsAt(static_cast<double>(phase + 1) / InterpolationTable::phases);
        for (std::size_t tap = 0; tap < here.size(); ++tap) {
            const std::size_t row = phase * rowLength + tap / 4;
            rows[row][tap % 4] = static_cast<float>(here[tap]);
            rows[row + rowLength / 2][tap % 4] = static_cast<float>(next[tap] - here[tap]);
        }
        here = next;
    }
}

} // namespace

const InterpolationTable &InterpolationTable::shared()
{
    static const InterpolationTable table;
    return table;
}

InterpolationTable::InterpolationTable()
{
    tabulate(fine_, fineWeights);
    tabulate(plain_, plainWeights);
}

} // namespace effect
