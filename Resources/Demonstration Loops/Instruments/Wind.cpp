#include "Resources/Demonstration Loops/Instruments/Wind.hpp"

#include "Resources/Demonstration Loops/Audio/Filters.hpp"
#include "Resources/Demonstration Loops/Random.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace demonstration_loops
{

namespace
{

/// Sum of `levels[n] * sin((n + 1) * phase)` by the recurrence of Clenshaw: one
/// sine and one cosine for all harmonics.
double harmonicSum(const std::array<double, 12> &levels, double phase)
{
    const double twice = 2.0 * std::cos(phase);
    double b1 = 0.0;
    double b2 = 0.0;
    for (std::size_t n = levels.size(); n-- > 0;) {
        const double b0 = levels[n] + twice * b1 - b2;
        b2 = b1;
        b1 = b0;
    }
    return b1 * std::sin(phase);
}

} // namespace

void Wind::play(const Tone &tone, StereoLoop &loop) const
{
    Random random(tone.seed);
    const double frequency = frequencyOf(tone.pitch);
    Envelope level(character_.level, tone.held);
    StateVariable air;
    air.tune(std::min(2.2 * frequency, 9000.0), 1.2);
    OnePole wander(3.0);

    double phase = random.unit();
    double second = random.unit();
    double vibrato = random.unit();
    const double vibratoStep = random.between(5.0, 5.8) / sampleRate;
    const double beat = std::exp2(character_.beating / 1200.0);
    double total = 0.0;
    for (const double harmonic : character_.harmonics)
        total += harmonic;
    std::array<double, 12> levels{};

    LoopWriter writer(loop, tone.start);
    for (long frame = 0; !level.finished(); ++frame) {
        const double amount = level.next();
        if (frame % 16 == 0) {
            // Softer breath, darker tone: harmonic n follows a power of the level.
            const double push = std::min(1.0, amount) * (0.45 + 0.55 * tone.velocity);
            double weight = 1.0;
            const double ratio = std::pow(std::max(push, 1.0e-4), character_.brightness);
            for (std::size_t n = 0; n < levels.size(); ++n) {
                const bool audible = static_cast<double>(n + 1) * frequency < 18000.0;
                levels[n] = audible ? character_.harmonics[n] * weight : 0.0;
                weight *= ratio;
            }
        }
        const double late =
            std::clamp((static_cast<double>(frame) / sampleRate - 0.2) * 2.0, 0.0, 1.0);
        const double cents =
            late * character_.vibrato * std::sin(2.0 * std::numbers::pi * vibrato) +
            40.0 * wander.low(random.bipolar() * 0.5);
        const double step = frequency * (1.0 + cents * 5.776e-4) / sampleRate;
        double tones = harmonicSum(levels, 2.0 * std::numbers::pi * phase);
        if (character_.beating > 0.0)
            tones = 0.6 * (tones + harmonicSum(levels, 2.0 * std::numbers::pi * second));
        const double breath = character_.breath * air.next(random.bipolar()).band;
        const double sample =
            amount * tone.velocity * (0.9 * tones / std::sqrt(total) + 2.0 * breath) * 0.32;
        writer.add(sample, sample);
        phase += step;
        phase -= std::floor(phase);
        second += step * beat;
        second -= std::floor(second);
        vibrato += vibratoStep;
        vibrato -= std::floor(vibrato);
    }
}

} // namespace demonstration_loops
