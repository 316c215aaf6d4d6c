#include "Resources/Demonstration Loops/Audio/Filters.hpp"

#include <vector>

namespace demonstration_loops
{

namespace
{

struct Prototype {
    double cosine;
    double alpha;
};

Prototype prototype(double frequency, double q)
{
    const double w = 2.0 * std::numbers::pi * frequency / sampleRate;
    return {std::cos(w), std::sin(w) / (2.0 * q)};
}

BiquadCoefficients normalised(double b0, double b1, double b2, double a0, double a1, double a2)
{
    return {b0 / a0, b1 / a0, b2 / a0, a1 / a0, a2 / a0};
}

void filterChannel(std::vector<double> &channel, const BiquadCoefficients &coefficients)
{
    Biquad filter(coefficients);
    for (const double sample : channel)
        filter.next(sample);
    for (double &sample : channel)
        sample = filter.next(sample);
}

} // namespace

BiquadCoefficients BiquadCoefficients::lowPass(double frequency, double q)
{
    const auto [c, alpha] = prototype(frequency, q);
    return normalised((1 - c) / 2, 1 - c, (1 - c) / 2, 1 + alpha, -2 * c, 1 - alpha);
}

BiquadCoefficients BiquadCoefficients::highPass(double frequency, double q)
{
    const auto [c, alpha] = prototype(frequency, q);
    return normalised((1 + c) / 2, -(1 + c), (1 + c) / 2, 1 + alpha, -2 * c, 1 - alpha);
}

BiquadCoefficients BiquadCoefficients::peak(double frequency, double q, double gainDb)
{
    const auto [c, alpha] = prototype(frequency, q);
    const double a = std::pow(10.0, gainDb / 40.0);
    return normalised(1 + alpha * a, -2 * c, 1 - alpha * a, 1 + alpha / a, -2 * c, 1 - alpha / a);
}

BiquadCoefficients BiquadCoefficients::lowShelf(double frequency, double gainDb)
{
    const auto [c, alpha] = prototype(frequency, std::numbers::sqrt2 / 2);
    const double a = std::pow(10.0, gainDb / 40.0);
    const double r = 2 * std::sqrt(a) * alpha;
    return normalised(a * ((a + 1) - (a - 1) * c + r), 2 * a * ((a - 1) - (a + 1) * c),
                      a * ((a + 1) - (a - 1) * c - r), (a + 1) + (a - 1) * c + r,
                      -2 * ((a - 1) + (a + 1) * c), (a + 1) + (a - 1) * c - r);
}

BiquadCoefficients BiquadCoefficients::highShelf(double frequency, double gainDb)
{
    const auto [c, alpha] = prototype(frequency, std::numbers::sqrt2 / 2);
    const double a = std::pow(10.0, gainDb / 40.0);
    const double r = 2 * std::sqrt(a) * alpha;
    return normalised(a * ((a + 1) + (a - 1) * c + r), -2 * a * ((a - 1) + (a + 1) * c),
                      a * ((a + 1) + (a - 1) * c - r), (a + 1) - (a - 1) * c + r,
                      2 * ((a - 1) - (a + 1) * c), (a + 1) - (a - 1) * c - r);
}

void filterLoop(StereoLoop &loop, const BiquadCoefficients &coefficients)
{
    filterChannel(loop.left, coefficients);
    filterChannel(loop.right, coefficients);
}

} // namespace demonstration_loops
