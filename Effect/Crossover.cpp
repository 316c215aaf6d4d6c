#include "Effect/Crossover.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace effect
{

namespace
{
/// Twice the damping of a Butterworth filter of second order.
constexpr float damping = std::numbers::sqrt2_v<float>;
} // namespace

Crossover::Crossover(double frequency, double sampleRate)
{
    const double g = std::tan(std::numbers::pi * std::min(frequency / sampleRate, 0.45));
    const double a1 = 1.0 / (1.0 + g * (g + std::numbers::sqrt2));
    a1_ = static_cast<float>(a1);
    a2_ = static_cast<float>(g * a1);
    a3_ = static_cast<float>(g * g * a1);
}

void Crossover::reset()
{
    split_ = {};
    smooth_ = {};
}

void Crossover::process(const Tick &input, Tick &low, Tick &high)
{
    Filter split = split_;
    Filter smooth = smooth_;
    const auto step = [this](Filter &filter, float in, float &band) {
        const float v3 = in - filter.second;
        band = a1_ * filter.first + a2_ * v3;
        const float v2 = filter.second + (a2_ * filter.first + a3_ * v3);
        filter.first = 2.0F * band - filter.first;
        filter.second = 2.0F * v2 - filter.second;
        return v2;
    };
    for (std::size_t n = 0; n < tickFrames; ++n) {
        const float in = input[n];
        float band = 0;
        float unused = 0;
        const float once = step(split, in, band);
        const float twice = step(smooth, once, unused);
        const float allPass = in - 2.0F * damping * band;
        low[n] = twice;
        high[n] = allPass - twice;
    }
    split_ = split;
    smooth_ = smooth;
}

} // namespace effect
