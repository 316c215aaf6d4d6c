#include "Resources/Demonstration Loops/Instruments/PluckedString.hpp"

#include "Resources/Demonstration Loops/Audio/Envelope.hpp"
#include "Resources/Demonstration Loops/Audio/Filters.hpp"
#include "Resources/Demonstration Loops/Random.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace demonstration_loops
{

namespace
{

/// What the finger or pick does to the string: a burst of one period, as bright
/// as it is hard, with the notches of the place where the string is plucked.
std::vector<double> excitation(std::size_t length, double hardness, double pickPosition,
                               std::uint64_t seed)
{
    Random random(seed);
    OnePole first(hardness);
    OnePole second(hardness);
    std::vector<double> burst(length);
    for (double &sample : burst)
        sample = random.bipolar();
    // Circular, so that the period has no jump where it meets itself.
    for (int round = 0; round < 2; ++round)
        for (double &sample : burst)
            sample = second.low(first.low(sample));
    const auto offset = static_cast<std::size_t>(pickPosition * static_cast<double>(length));
    std::vector<double> picked(length);
    double mean = 0.0;
    for (std::size_t i = 0; i < length; ++i) {
        picked[i] = burst[i] - burst[(i + length - std::min(offset, length - 1)) % length];
        mean += picked[i] / static_cast<double>(length);
    }
    double energy = 1.0e-12;
    for (double &sample : picked) {
        sample -= mean;
        energy += sample * sample / static_cast<double>(length);
    }
    const double gain = 0.25 / std::sqrt(energy);
    for (double &sample : picked)
        sample *= gain;
    return picked;
}

/// Phase delay in frames at angular frequency `w` of (1 - s) + s/z.
double lossDelay(double s, double w)
{
    return std::atan2(s * std::sin(w), 1.0 - s + s * std::cos(w)) / w;
}

/// Coefficient of the all-pass whose phase delay at `w` is `delay` frames.
double allPassCoefficient(double delay, double w)
{
    return std::sin((1.0 - delay) * w / 2.0) / std::sin((1.0 + delay) * w / 2.0);
}

} // namespace

void PluckedString::play(const Tone &tone, StereoLoop &loop) const
{
    const double frequency = frequencyOf(tone.pitch);
    const double w = 2.0 * std::numbers::pi * frequency / sampleRate;
    // High strings lose less a round, or they would be dull and short.
    const double damping = character_.damping * std::clamp(330.0 / frequency, 0.25, 1.0);
    const double total = sampleRate / frequency - lossDelay(damping, w);
    const auto length = static_cast<std::size_t>(total - 0.3);
    const double allPass = allPassCoefficient(total - static_cast<double>(length), w);

    const double ring = character_.ring * std::clamp(std::sqrt(220.0 / frequency), 0.35, 1.6);
    const double keep = std::pow(10.0, -3.0 / (ring * frequency));
    const double dampedKeep =
        std::min(keep, std::pow(10.0, -3.0 / (character_.release * frequency)));
    const double hardness = character_.hardness * (0.35 + 0.65 * tone.velocity);
    std::vector<double> string = excitation(length, hardness, character_.pickPosition, tone.seed);

    const long letGo = std::lround(tone.held * sampleRate);
    const long end = std::min(std::lround(ring * sampleRate),
                              letGo + std::lround(std::min(ring, character_.release) * sampleRate));
    double lossState = string.back();
    double allPassInput = 0.0;
    double allPassOutput = 0.0;
    std::size_t position = 0;
    LoopWriter writer(loop, tone.start);
    for (long frame = 0; frame < end; ++frame) {
        const double out = string[position];
        const double lost = (1.0 - damping) * out + damping * lossState;
        lossState = out;
        const double fractional = allPass * (lost - allPassOutput) + allPassInput;
        allPassInput = lost;
        allPassOutput = fractional;
        string[position] = fractional * (frame < letGo ? keep : dampedKeep);
        if (++position == length)
            position = 0;
        // A few frames of rise take the edge off the noise, and the last ones fade.
        const double edge = std::min(1.0, static_cast<double>(std::min(frame, end - frame)) / 48.0);
        const double sample = out * edge * tone.velocity;
        writer.add(sample, sample);
    }
}

} // namespace demonstration_loops
