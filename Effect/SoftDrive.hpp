#pragma once

#include "Effect/Tick.hpp"
#include "Platform/Foundation/Realtime.hpp"

#include <array>

namespace effect
{

/// An amplifier that bends instead of breaking: f(x) = x / √(1 + x²). Two things
/// keep its harmonics from folding down. It works at twice the rate, between two
/// half-band filters (symmetric, Kaiser's window). And it takes the mean of f from
/// one sample to the next, (F(a) − F(b)) / (a − b) with F(x) = √(1 + x²): J. Parker,
/// V. Zavalishin, E. Le Bivic, "Reducing the Aliasing of Nonlinear Waveshaping
/// Using Continuous-Time Convolution", DAFx-16. For this f the quotient is
/// (a + b) / (F(a) + F(b)), which no pair of samples makes 0 / 0. The output is some
/// sixteen frames late.
class SoftDrive
{
public:
    SoftDrive();

    REALTIME void reset();

    /// Amplifies by `gain`, bends, and scales by `makeUp`; in place.
    REALTIME void process(Tick &samples, Ramp gain, Ramp makeUp);

private:
    /// Pairs of weights that a half-band filter has beside its centre.
    static constexpr std::size_t pairs = 8;
    using Weights = std::array<float, pairs>;
    /// A tick's worth of the past, then the tick.
    using Stretch = std::array<float, 2 * tickFrames>;

    REALTIME void oversample();
    REALTIME void bend();

    Weights weights_{};
    Stretch input_{};
    /// Samples of the doubled rate, on and between the frames, and bent.
    Stretch on_{};
    Stretch between_{};
    Stretch bentOn_{};
    Stretch bentBetween_{};
    Stretch output_{};
};

} // namespace effect
