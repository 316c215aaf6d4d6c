#include "Resources/Demonstration Loops/Instruments/Choir.hpp"

#include "Resources/Demonstration Loops/Audio/Envelope.hpp"
#include "Resources/Demonstration Loops/Audio/Filters.hpp"
#include "Resources/Demonstration Loops/Audio/Oscillator.hpp"
#include "Resources/Demonstration Loops/Random.hpp"

#include <algorithm>
#include <array>
#include <cmath>

namespace demonstration_loops
{

namespace
{

constexpr std::size_t formantCount = 4;

struct Formant {
    double frequency;
    double level;
};

using Formants = std::array<Formant, formantCount>;

/// Rounded mean formants of sung vowels, in the order of `Choir::Vowel`.
constexpr std::array<Formants, 5> vowels = {{
    {{{750, 1.0}, {1180, 0.6}, {2700, 0.22}, {3500, 0.12}}},
    {{{480, 1.0}, {1800, 0.35}, {2600, 0.25}, {3500, 0.12}}},
    {{{310, 1.0}, {2150, 0.25}, {2900, 0.22}, {3600, 0.12}}},
    {{{460, 1.0}, {850, 0.55}, {2650, 0.12}, {3400, 0.08}}},
    {{{350, 1.0}, {680, 0.30}, {2500, 0.06}, {3300, 0.04}}},
}};

constexpr std::size_t singers = 5;

struct Singer {
    Oscillator voice;
    Oscillator vibrato;
    double vibratoStep;
    double tuning;
    double left;
    double right;
    double step = 0.0;
};

} // namespace

void Choir::play(const Tone &tone, StereoLoop &loop) const
{
    Random random(tone.seed);
    const double frequency = frequencyOf(tone.pitch);
    std::array<Singer, singers> group;
    for (std::size_t i = 0; i < singers; ++i) {
        const double side = 0.8 * (0.5 * static_cast<double>(i) - 1.0);
        group[i] = {Oscillator(random.unit()),
                    Oscillator(random.unit()),
                    random.between(4.6, 5.9) * 16.0 / sampleRate,
                    std::exp2(random.between(-9.0, 9.0) / 1200.0),
                    std::sqrt(0.5 * (1.0 - side)),
                    std::sqrt(0.5 * (1.0 + side))};
    }
    std::array<StateVariable, formantCount> leftThroat;
    std::array<StateVariable, formantCount> rightThroat;
    const Formants &start = vowels[static_cast<std::size_t>(from_)];
    const Formants &goal = vowels[static_cast<std::size_t>(to_)];
    std::array<double, formantCount> levels{};
    Envelope level({0.16, 1.5, 0.9, 0.55}, tone.held);
    OnePole leftSlope(1100.0);
    OnePole rightSlope(1100.0);

    LoopWriter writer(loop, tone.start);
    for (long frame = 0; !level.finished(); ++frame) {
        if (frame % 16 == 0) {
            const double seconds = static_cast<double>(frame) / sampleRate;
            const double way = std::clamp(seconds / std::max(tone.held, 0.3), 0.0, 1.0);
            for (std::size_t k = 0; k < formantCount; ++k) {
                const double centre =
                    std::max(start[k].frequency + way * (goal[k].frequency - start[k].frequency),
                             k == 0 ? frequency : 0.0);
                levels[k] = start[k].level + way * (goal[k].level - start[k].level);
                leftThroat[k].tune(centre, 5.0 + 2.0 * static_cast<double>(k));
                rightThroat[k].tune(centre * 1.02, 5.0 + 2.0 * static_cast<double>(k));
            }
            const double depth = 18.0 * std::clamp((seconds - 0.2) * 2.0, 0.0, 1.0);
            for (Singer &singer : group) {
                const double cents = depth * singer.vibrato.sine(singer.vibratoStep);
                singer.step = frequency * singer.tuning * std::exp2(cents / 1200.0) / sampleRate;
            }
        }
        double left = 0.0;
        double right = 0.0;
        for (Singer &singer : group) {
            const double wave = singer.voice.saw(singer.step);
            left += singer.left * wave;
            right += singer.right * wave;
        }
        const double air = 0.05 * random.bipolar();
        left = 0.35 * left + leftSlope.low(left) + air;
        right = 0.35 * right + rightSlope.low(right) - air;
        double leftSum = 0.12 * left;
        double rightSum = 0.12 * right;
        for (std::size_t k = 0; k < formantCount; ++k) {
            leftSum += levels[k] * leftThroat[k].next(left).band;
            rightSum += levels[k] * rightThroat[k].next(right).band;
        }
        const double amount = 0.2 * tone.velocity * level.next();
        writer.add(amount * leftSum, amount * rightSum);
    }
}

} // namespace demonstration_loops
