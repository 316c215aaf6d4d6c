#include "Effect/SoftDrive.hpp"

#include <array>
#include <cmath>

namespace effect
{

namespace
{
/// The filter (1 + p) / (1 + p z⁻¹) undoes (1 + z⁻¹) / 2 where it matters: within
/// 0.1 dB to 0.2 of the rate, without the pole of a full inverse at its half.
constexpr float pole = 0.75F;
} // namespace

void SoftDrive::reset()
{
    *this = SoftDrive{};
}

void SoftDrive::process(Tick &samples, Ramp gain, Ramp makeUp)
{
    // One entry of the tick before stands in front.
    std::array<float, tickFrames + 1> driven;
    std::array<float, tickFrames + 1> root;
    driven[0] = previous_;
    root[0] = previousRoot_;
    for (std::size_t n = 0; n < tickFrames; ++n) {
        driven[n + 1] = samples[n] * gain.at(n);
        root[n + 1] = std::sqrt(1.0F + driven[n + 1] * driven[n + 1]);
    }
    previous_ = driven[tickFrames];
    previousRoot_ = root[tickFrames];
    for (std::size_t n = 0; n < tickFrames; ++n) {
        samples[n] =
            (driven[n] + driven[n + 1]) / (root[n] + root[n + 1]) * ((1.0F + pole) * makeUp.at(n));
    }
    float bright = bright_;
    for (float &sample : samples) {
        bright = sample - pole * bright;
        sample = bright;
    }
    bright_ = bright;
}

} // namespace effect
