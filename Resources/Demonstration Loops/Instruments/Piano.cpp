#include "Resources/Demonstration Loops/Instruments/Piano.hpp"

#include "Resources/Demonstration Loops/Audio/Envelope.hpp"
#include "Resources/Demonstration Loops/Audio/Filters.hpp"
#include "Resources/Demonstration Loops/Audio/Oscillator.hpp"
#include "Resources/Demonstration Loops/Random.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace demonstration_loops
{

void Piano::play(const Tone &tone, StereoLoop &loop) const
{
    Random random(tone.seed);
    const double frequency = frequencyOf(tone.pitch);
    const double stiffness = 2.0e-4 * std::exp2((tone.pitch - 60.0) / 10.0);
    const double ring = std::clamp(11.0 * std::exp2(-(tone.pitch - 40.0) / 24.0), 0.8, 12.0);
    const double softness = 1.0 / (brightness_ * (3.0 + 11.0 * tone.velocity));
    std::vector<Partial> partials;
    for (int n = 1; n <= 22; ++n) {
        const double stretched = n * frequency * std::sqrt(1.0 + stiffness * n * n);
        if (stretched > 14000.0)
            break;
        const double strike = std::abs(std::sin(std::numbers::pi * n / 7.6)) + 0.05;
        const double level = strike * std::exp(-softness * (n - 1) * 2.2) / std::sqrt(n);
        const double fade = fadeFactor(ring / (1.0 + 0.22 * (n - 1)));
        const double detune = std::exp2(0.7 / 1200.0);
        partials.emplace_back(0.6 * level, stretched * detune / sampleRate, fade, 0.0);
        partials.emplace_back(0.4 * level, stretched / detune / sampleRate, fade, 0.0);
    }
    OnePole thump(900.0);
    Envelope knock({0.001, 0.05, 0.0, 0.02}, 1.0);

    const double release = tone.pitch > 90.0 ? ring : 0.25;
    const long letGo = std::lround(tone.held * sampleRate);
    const long end =
        std::min(std::lround(ring * sampleRate), letGo + std::lround(release * sampleRate));
    const double side = std::clamp((tone.pitch - 62.0) / 70.0, -0.45, 0.45);
    LoopWriter writer(loop, tone.start);
    for (long frame = 0; frame < end; ++frame) {
        if (frame == letGo)
            for (Partial &partial : partials)
                partial.damp(fadeFactor(release));
        double sum = 0.0;
        for (Partial &partial : partials)
            sum += partial.next();
        sum += 0.3 * knock.next() * thump.low(random.bipolar());
        const double edge = std::min(1.0, static_cast<double>(std::min(frame, end - frame)) / 40.0);
        const double sample = 0.3 * tone.velocity * sum * edge;
        writer.add(sample * (1.0 - side), sample * (1.0 + side));
    }
}

} // namespace demonstration_loops
