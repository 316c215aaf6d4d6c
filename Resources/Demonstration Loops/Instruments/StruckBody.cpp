#include "Resources/Demonstration Loops/Instruments/StruckBody.hpp"

#include "Resources/Demonstration Loops/Audio/Envelope.hpp"
#include "Resources/Demonstration Loops/Audio/Filters.hpp"
#include "Resources/Demonstration Loops/Audio/Oscillator.hpp"
#include "Resources/Demonstration Loops/Random.hpp"

#include <algorithm>

namespace demonstration_loops
{

// The ratios of bars, tongues, plates and bells are the textbook ones
// (Fletcher and Rossing, The Physics of Musical Instruments).
StruckBody::Character StruckBody::marimba()
{
    return {{{1.0, 1.0, 1.0}, {3.93, 0.28, 0.3}, {9.24, 0.12, 0.12}}, 1.1, 0.25, 5.0};
}

StruckBody::Character StruckBody::vibraphone()
{
    return {
        {{1.0, 1.0, 1.0}, {4.0, 0.3, 0.5}, {10.1, 0.10, 0.2}, {2.01, 0.05, 0.7}}, 4.5, 0.12, 0.4};
}

StruckBody::Character StruckBody::glockenspiel()
{
    return {{{1.0, 1.0, 1.0}, {2.756, 0.45, 0.6}, {5.404, 0.25, 0.35}, {8.933, 0.12, 0.2}},
            3.0,
            0.3,
            6.0};
}

StruckBody::Character StruckBody::kalimba()
{
    return {
        {{1.0, 1.0, 1.0}, {2.0, 0.08, 0.8}, {5.95, 0.3, 0.12}, {11.2, 0.12, 0.06}}, 1.6, 0.35, 4.0};
}

StruckBody::Character StruckBody::musicBox()
{
    return {
        {{1.0, 1.0, 1.0}, {3.0, 0.12, 0.5}, {6.27, 0.35, 0.3}, {14.0, 0.08, 0.1}}, 2.2, 0.2, 5.0};
}

StruckBody::Character StruckBody::bells()
{
    return {{{0.5, 0.35, 1.6},
             {1.0, 0.6, 1.2},
             {1.19, 0.5, 1.0},
             {1.5, 0.3, 0.8},
             {2.0, 1.0, 0.8},
             {2.52, 0.3, 0.5},
             {2.66, 0.25, 0.5},
             {4.07, 0.25, 0.3},
             {5.33, 0.12, 0.2}},
            6.0,
            0.15,
            9.0};
}

StruckBody::Character StruckBody::steelPan()
{
    return {{{1.0, 1.0, 1.0},
             {2.005, 0.55, 0.8},
             {3.01, 0.25, 0.5},
             {4.03, 0.18, 0.35},
             {6.1, 0.06, 0.2}},
            1.4,
            0.15,
            3.0};
}

StruckBody::Character StruckBody::gamelan()
{
    return {{{1.0, 1.0, 1.0},
             {1.008, 0.8, 1.0},
             {2.71, 0.35, 0.5},
             {4.92, 0.2, 0.25},
             {6.55, 0.12, 0.2}},
            2.8,
            0.25,
            0.8};
}

void StruckBody::play(const Tone &tone, StereoLoop &loop) const
{
    Random random(tone.seed);
    const double frequency = frequencyOf(tone.pitch);
    // Small bars ring shorter.
    const double ring = character_.ring * std::clamp(std::sqrt(261.6 / frequency), 0.35, 1.8);
    std::vector<Partial> partials;
    for (const Mode &mode : character_.modes) {
        if (mode.ratio * frequency > 0.42 * sampleRate)
            continue;
        const double hardness = mode.ratio > 1.1 ? 0.4 + 0.9 * tone.velocity : 1.0;
        partials.emplace_back(mode.level * hardness * random.between(0.92, 1.0),
                              mode.ratio * frequency / sampleRate, fadeFactor(ring * mode.ring),
                              0.0);
    }
    OnePole noise(std::min(12000.0, 1200.0 + 4.0 * frequency));
    Envelope contact({0.0005, 0.02, 0.0, 0.02}, 1.0);

    const long letGo = std::lround(tone.held * sampleRate);
    const double longest = ring * 1.6;
    const long end = std::min(std::lround(longest * sampleRate),
                              letGo + std::lround(character_.release * sampleRate));
    const double side = std::clamp((tone.pitch - 66.0) / 50.0, -0.5, 0.5);
    LoopWriter writer(loop, tone.start);
    for (long frame = 0; frame < end; ++frame) {
        if (frame == letGo)
            for (Partial &partial : partials)
                partial.damp(fadeFactor(character_.release));
        double sum = 0.0;
        for (Partial &partial : partials)
            sum += partial.next();
        sum += character_.mallet * contact.next() * noise.low(random.bipolar());
        const double edge = std::min(1.0, static_cast<double>(end - frame) / 48.0);
        const double sample = 0.4 * tone.velocity * sum * edge;
        writer.add(sample * (1.0 - side), sample * (1.0 + side));
    }
}

} // namespace demonstration_loops
