#pragma once

#include <cmath>
#include <complex>
#include <numbers>

namespace demonstration_loops
{

/// One period of a wave, band-limited by polynomial steps (PolyBLEP, Välimäki
/// and Huovilainen 2007): the jumps of saw and pulse are rounded over two
/// samples, which keeps aliases well under the music.
class Oscillator
{
public:
    /// `phase` in periods, [0, 1).
    explicit Oscillator(double phase = 0.0) : phase_(phase) {}

    /// Falls from 1 to -1 over a period. `step` is frequency over sample rate.
    double saw(double step)
    {
        const double value = 1.0 - 2.0 * phase_ + rounding(phase_, step);
        advance(step);
        return value;
    }

    /// 1 for the fraction `width` of a period, then -1; without its constant part.
    double pulse(double step, double width)
    {
        double other = phase_ + 1.0 - width;
        other -= std::floor(other);
        const double value = phase_ < width ? 1.0 : -1.0;
        const double result = value + rounding(phase_, step) - rounding(other, step);
        advance(step);
        return result - (2.0 * width - 1.0);
    }

    /// A sine, with its phase pushed by `modulation` radians.
    double sine(double step, double modulation = 0.0)
    {
        const double value = std::sin(2.0 * std::numbers::pi * phase_ + modulation);
        advance(step);
        return value;
    }

private:
    static double rounding(double phase, double step)
    {
        if (phase < step) {
            const double t = phase / step;
            return t + t - t * t - 1.0;
        }
        if (phase > 1.0 - step) {
            const double t = (phase - 1.0) / step;
            return t * t + t + t + 1.0;
        }
        return 0.0;
    }

    void advance(double step)
    {
        phase_ += step;
        if (phase_ >= 1.0)
            phase_ -= 1.0;
    }

    double phase_;
};

/// A sine of fixed frequency that fades by a fixed factor a frame: one complex
/// multiplication instead of a call of the sine.
class Partial
{
public:
    /// `step` is frequency over sample rate, `fade` the factor a frame, `phase` in radians.
    Partial(double amplitude, double step, double fade, double phase)
        : value_(std::polar(amplitude, phase)),
          turn_(std::polar(fade, 2.0 * std::numbers::pi * step))
    {
    }

    double next()
    {
        const double result = value_.imag();
        value_ = {value_.real() * turn_.real() - value_.imag() * turn_.imag(),
                  value_.real() * turn_.imag() + value_.imag() * turn_.real()};
        return result;
    }

    /// Makes the partial fade faster from now on, by this factor a frame.
    void damp(double fade) { turn_ *= fade; }

private:
    std::complex<double> value_;
    std::complex<double> turn_;
};

} // namespace demonstration_loops
