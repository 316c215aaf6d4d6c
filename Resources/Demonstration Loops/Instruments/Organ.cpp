#include "Resources/Demonstration Loops/Instruments/Organ.hpp"

#include "Resources/Demonstration Loops/Audio/Envelope.hpp"
#include "Resources/Demonstration Loops/Audio/Filters.hpp"
#include "Resources/Demonstration Loops/Audio/Oscillator.hpp"
#include "Resources/Demonstration Loops/Random.hpp"

#include <cmath>
#include <numbers>
#include <vector>

namespace demonstration_loops
{

namespace
{

constexpr std::array<double, 9> footages = {0.5, 1.5, 1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 8.0};

/// The wheels end near 6 kHz: higher footages fold back by octaves, as on the instrument.
double foldedStep(double frequency)
{
    while (frequency > 6000.0)
        frequency /= 2.0;
    return frequency / sampleRate;
}

} // namespace

void Organ::play(const Tone &tone, StereoLoop &loop) const
{
    Random random(tone.seed);
    const double fundamental = frequencyOf(tone.pitch);
    std::vector<Partial> wheels;
    for (std::size_t i = 0; i < footages.size(); ++i) {
        if (registration_[i] == 0)
            continue;
        const double amplitude = std::pow(10.0, (registration_[i] - 8) * 3.0 / 20.0);
        // The wheels have been turning since the organ was switched on.
        wheels.emplace_back(amplitude, foldedStep(fundamental * footages[i]), 1.0,
                            random.between(0.0, 2.0 * std::numbers::pi));
    }
    Partial percussion(percussion_, foldedStep(fundamental * harmonic_), fadeFactor(0.45), 0.0);
    Envelope level({0.003, 1.0, 1.0, 0.03}, tone.held);
    Envelope press({0.0005, 0.012, 0.0, 0.01}, tone.held);
    Envelope release({0.0005, 0.008, 0.0, 0.01}, 0.02);
    StateVariable click;
    click.tune(2200.0, 0.8);

    const double accent = 0.8 + 0.2 * tone.velocity;
    const long letGo = std::lround(tone.held * sampleRate);
    LoopWriter writer(loop, tone.start);
    for (long frame = 0; !level.finished(); ++frame) {
        double sum = 0.0;
        for (Partial &wheel : wheels)
            sum += wheel.next();
        const double noise = click.next(random.bipolar()).band;
        const double edge = 0.5 * press.next() + (frame >= letGo ? 0.2 * release.next() : 0.0);
        const double gate = level.next();
        const double sample =
            accent * 0.11 * (gate * (sum + percussion.next()) + 1.4 * edge * noise);
        writer.add(sample, sample);
    }
}

} // namespace demonstration_loops
