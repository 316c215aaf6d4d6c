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
    keep1_ = static_cast<float>(2 * a1 - 1);
    keep2_ = static_cast<float>(1 - 2 * g * g * a1);
}

void Crossover::reset()
{
    split_ = {};
    smooth_ = {};
}

void Crossover::process(const Tick &input, Tick &low, Tick &high)
{
    // The next state is worked out from the last one directly, beside the outputs
    // and not through them: what bounds the speed is the way from state to state.
    Filter split = split_;
    Filter smooth = smooth_;
    for (std::size_t n = 0; n < tickFrames; ++n) {
        const float in = input[n];
        const float band = a1_ * split.first + a2_ * (in - split.second);
        const float once = split.second + (a2_ * split.first + a3_ * (in - split.second));
        split = next(split, in);
        const float twice = smooth.second + (a2_ * smooth.first + a3_ * (once - smooth.second));
        smooth = next(smooth, once);
        low[n] = twice;
        high[n] = (in - 2.0F * damping * band) - twice;
    }
    split_ = split;
    smooth_ = smooth;
}

Crossover::Filter Crossover::next(const Filter &filter, float in) const
{
    return {keep1_ * filter.first + (2.0F * a2_ * in - 2.0F * a2_ * filter.second),
            keep2_ * filter.second + (2.0F * a3_ * in + 2.0F * a2_ * filter.first)};
}

} // namespace effect
