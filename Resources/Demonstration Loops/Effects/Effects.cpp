#include "Resources/Demonstration Loops/Effects/Effects.hpp"

#include "Resources/Demonstration Loops/Audio/Filters.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace demonstration_loops
{

namespace
{

constexpr double turn = 2.0 * std::numbers::pi;

void saturate(std::vector<double> &channel, double amount, double cutoff)
{
    // A slight bias gives even harmonics; the high pass takes its constant away.
    const double bias = 0.15;
    const double rest = std::tanh(bias);
    const double gain = 1.0 / std::tanh(std::min(amount, 3.0));
    Biquad blocking(BiquadCoefficients::highPass(30.0, 0.7));
    StateVariable speaker;
    speaker.tune(cutoff, 0.7);
    for (int pass = 0; pass < 2; ++pass) {
        for (double &sample : channel) {
            const double hot = gain * (std::tanh(amount * sample + bias) - rest);
            const double out = speaker.next(blocking.next(hot)).low;
            if (pass == 1)
                sample = out;
        }
    }
}

/// The value between frames, `delay` frames before `position`, round the loop.
double delayed(const std::vector<double> &channel, std::size_t position, double delay)
{
    const std::size_t frames = channel.size();
    const auto whole = static_cast<std::size_t>(delay);
    const double part = delay - static_cast<double>(whole);
    const std::size_t later = (position + frames - whole % frames) % frames;
    const std::size_t earlier = later == 0 ? frames - 1 : later - 1;
    return channel[later] + part * (channel[earlier] - channel[later]);
}

void wah(std::vector<double> &channel, double low, double high)
{
    StateVariable filter;
    double follower = 0.0;
    const double rise = 1.0 - std::exp(-1.0 / (0.004 * sampleRate));
    const double fall = 1.0 - std::exp(-1.0 / (0.12 * sampleRate));
    for (int pass = 0; pass < 2; ++pass) {
        for (std::size_t i = 0; i < channel.size(); ++i) {
            const double level = std::abs(channel[i]);
            follower += (level > follower ? rise : fall) * (level - follower);
            if (i % 16 == 0)
                filter.tune(low * std::pow(high / low, std::min(1.0, 4.0 * follower)), 3.0);
            const auto out = filter.next(channel[i]);
            if (pass == 1)
                channel[i] = 0.9 * out.band + 0.5 * out.low;
        }
    }
}

void sweep(std::vector<double> &channel, double low, double high, int cycles)
{
    StateVariable filter;
    const double step = turn * cycles / static_cast<double>(channel.size());
    for (int pass = 0; pass < 2; ++pass) {
        for (std::size_t i = 0; i < channel.size(); ++i) {
            if (i % 16 == 0) {
                const double place = 0.5 - 0.5 * std::cos(step * static_cast<double>(i));
                filter.tune(low * std::pow(high / low, place), 1.6);
            }
            const double out = filter.next(channel[i]).low;
            if (pass == 1)
                channel[i] = out;
        }
    }
}

} // namespace

Effect drive(double amount, double tone)
{
    return [=](StereoLoop &loop) {
        saturate(loop.left, amount, tone);
        saturate(loop.right, amount, tone);
    };
}

Effect chorus(double depth, double mix)
{
    return [=](StereoLoop &loop) {
        const StereoLoop dry = loop;
        const double frames = static_cast<double>(loop.frames());
        const double swing = depth * 0.001 * sampleRate;
        const double base = 0.008 * sampleRate + swing;
        const double step = turn * std::max(1.0, std::round(0.6 * frames / sampleRate)) / frames;
        for (std::size_t i = 0; i < loop.frames(); ++i) {
            const double angle = step * static_cast<double>(i);
            const double left = delayed(dry.left, i, base + swing * std::sin(angle));
            const double right =
                delayed(dry.right, i, base + swing * std::sin(angle + 0.25 * turn));
            loop.left[i] = (1.0 - 0.4 * mix) * dry.left[i] + 0.7 * mix * left;
            loop.right[i] = (1.0 - 0.4 * mix) * dry.right[i] + 0.7 * mix * right;
        }
    };
}

Effect autoWah(double low, double high)
{
    return [=](StereoLoop &loop) {
        wah(loop.left, low, high);
        wah(loop.right, low, high);
    };
}

Effect filterSweep(double low, double high, int cycles)
{
    return [=](StereoLoop &loop) {
        sweep(loop.left, low, high, cycles);
        sweep(loop.right, low, high, cycles);
    };
}

Effect tone(double frequency, double q, double gainDb)
{
    return
        [=](StereoLoop &loop) { filterLoop(loop, BiquadCoefficients::peak(frequency, q, gainDb)); };
}

Effect lowCut(double frequency)
{
    return
        [=](StereoLoop &loop) { filterLoop(loop, BiquadCoefficients::highPass(frequency, 0.7)); };
}

} // namespace demonstration_loops
