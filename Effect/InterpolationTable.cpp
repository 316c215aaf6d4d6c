#include "Effect/InterpolationTable.hpp"

#include <array>
#include <cmath>
#include <numbers>

namespace effect
{

namespace
{

/// The modified Bessel function of the first kind and order zero, by its series.
double besselI0(double x)
{
    double term = 1;
    double sum = 1;
    for (int k = 1; term > sum * 1e-16; ++k) {
        term *= (x / 2.0 / k) * (x / 2.0 / k);
        sum += term;
    }
    return sum;
}

double sinc(double x)
{
    return x == 0 ? 1 : std::sin(std::numbers::pi * x) / (std::numbers::pi * x);
}

/// Weighs between a flat top of the band and images well down.
constexpr double kaiserBeta = 6.0;

using Weights = std::array<double, InterpolationTable::taps>;

/// Scaled to a sum of one, so that the level never moves with the fraction.
Weights weightsAt(double fraction)
{
    constexpr double half = InterpolationTable::taps / 2.0;
    Weights weights{};
    double sum = 0;
    for (std::size_t tap = 0; tap < weights.size(); ++tap) {
        const double distance = static_cast<double>(tap) - (half - fraction);
        const double inside = 1.0 - (distance / half) * (distance / half);
        weights[tap] = inside < 0 ? 0
                                  : sinc(distance) * besselI0(kaiserBeta * std::sqrt(inside)) /
                                        besselI0(kaiserBeta);
        sum += weights[tap];
    }
    for (double &weight : weights) {
        weight /= sum;
    }
    return weights;
}

} // namespace

const InterpolationTable &InterpolationTable::shared()
{
    static const InterpolationTable table;
    return table;
}

InterpolationTable::InterpolationTable() : rows_(phases * rowLength)
{
    Weights here = weightsAt(0);
    for (std::size_t phase = 0; phase < phases; ++phase) {
        const Weights next = weightsAt(static_cast<double>(phase + 1) / phases);
        for (std::size_t tap = 0; tap < taps; ++tap) {
            rows_[phase * rowLength + tap] = static_cast<float>(here[tap]);
            rows_[phase * rowLength + taps + tap] = static_cast<float>(next[tap] - here[tap]);
        }
        here = next;
    }
}

} // namespace effect
