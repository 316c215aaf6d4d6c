#pragma once

#include "Effect/Tick.hpp"
#include "Platform/Foundation/Realtime.hpp"

namespace effect
{

/// An amplifier that bends instead of breaking: f(x) = x / √(1 + x²), taken as the
/// mean of f between two samples, (F(a) − F(b)) / (a − b) with F(x) = √(1 + x²),
/// so that harmonics above half the sample rate are weakened before they fold
/// down. J. Parker, V. Zavalishin, E. Le Bivic, "Reducing the Aliasing of
/// Nonlinear Waveshaping Using Continuous-Time Convolution", DAFx-16. For this f
/// the quotient is (a + b) / (F(a) + F(b)), which no pair of samples makes 0 / 0.
/// The mean of two samples dulls the top; a one-pole filter brightens it again.
class SoftDrive
{
public:
    REALTIME void reset();

    /// Amplifies by `gain`, bends, and scales by `makeUp`; in place.
    REALTIME void process(Tick &samples, Ramp gain, Ramp makeUp);

private:
    float previous_ = 0;
    float previousRoot_ = 1;
    float bright_ = 0;
};

} // namespace effect
