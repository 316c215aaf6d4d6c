#pragma once

#include "Resources/Demonstration Loops/Audio/StereoLoop.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace demonstration_loops
{

/// A one-pole low pass.
class OnePole
{
public:
    explicit OnePole(double cutoff)
        : share_(1.0 - std::exp(-2.0 * std::numbers::pi * cutoff / sampleRate))
    {
    }

    double low(double input) { return state_ += share_ * (input - state_); }
    double high(double input) { return input - low(input); }

private:
    double share_;
    double state_ = 0.0;
};

/// A two-pole filter that stays stable while its cutoff moves
/// (trapezoidal state variable filter, Zavalishin 2012).
class StateVariable
{
public:
    struct Outputs {
        double low;
        double band; ///< 0 dB at the centre
        double high;
    };

    /// `cutoff` in Hz, `q` from 0.5 (flat) upwards.
    void tune(double cutoff, double q)
    {
        g_ = std::tan(std::numbers::pi * std::clamp(cutoff, 10.0, 0.45 * sampleRate) / sampleRate);
        k_ = 1.0 / q;
        a_ = 1.0 / (1.0 + g_ * (g_ + k_));
    }

    Outputs next(double input)
    {
        const double v3 = input - second_;
        const double v1 = a_ * first_ + a_ * g_ * v3;
        const double v2 = second_ + g_ * v1;
        first_ = 2.0 * v1 - first_;
        second_ = 2.0 * v2 - second_;
        return {v2, k_ * v1, input - k_ * v1 - v2};
    }

private:
    double g_ = 0.0;
    double k_ = 1.0;
    double a_ = 1.0;
    double first_ = 0.0;
    double second_ = 0.0;
};

/// A second-order section; `a0` is 1.
struct BiquadCoefficients {
    double b0, b1, b2, a1, a2;

    // After the Audio EQ Cookbook of R. Bristow-Johnson. Frequencies are in Hz.
    static BiquadCoefficients lowPass(double frequency, double q);
    static BiquadCoefficients highPass(double frequency, double q);
    static BiquadCoefficients peak(double frequency, double q, double gainDb);
    static BiquadCoefficients lowShelf(double frequency, double gainDb);
    static BiquadCoefficients highShelf(double frequency, double gainDb);
};

/// Runs one channel through a second-order section.
class Biquad
{
public:
    explicit Biquad(const BiquadCoefficients &c) : c_(c) {}

    double next(double input)
    {
        const double output = c_.b0 * input + first_;
        first_ = c_.b1 * input - c_.a1 * output + second_;
        second_ = c_.b2 * input - c_.a2 * output;
        return output;
    }

private:
    BiquadCoefficients c_;
    double first_ = 0.0;
    double second_ = 0.0;
};

/// Runs both channels of a loop through a section, settled as in an endless loop.
void filterLoop(StereoLoop &loop, const BiquadCoefficients &coefficients);

} // namespace demonstration_loops
