#include "Resources/Demonstration Loops/Instruments/ElectricPiano.hpp"

#include "Resources/Demonstration Loops/Audio/Envelope.hpp"
#include "Resources/Demonstration Loops/Audio/Oscillator.hpp"

#include <algorithm>

namespace demonstration_loops
{

void ElectricPiano::play(const Tone &tone, StereoLoop &loop) const
{
    const double step = frequencyOf(tone.pitch) / sampleRate;
    const double ring = std::clamp(7.0 - (tone.pitch - 36.0) * 0.08, 1.5, 7.0);
    Envelope level({0.001, ring, 0.0, 0.22}, tone.held);
    Oscillator body;
    Oscillator bodyModulator;
    Oscillator tine;
    Oscillator tineModulator;

    double bodyIndex = bark_ * (0.35 + 1.5 * tone.velocity * tone.velocity);
    const double bodyFade = fadeFactor(ring * 0.5);
    // The tine's partial stays below half the sample rate for the highest keys.
    const double ratio = std::min(14.0, 0.3 / step);
    double tineIndex = bark_ * (0.15 + 0.9 * tone.velocity);
    const double tineFade = fadeFactor(0.45);
    const double side = std::clamp((tone.pitch - 60.0) / 60.0, -0.4, 0.4);

    LoopWriter writer(loop, tone.start);
    while (!level.finished()) {
        const double pair = body.sine(step, bodyIndex * bodyModulator.sine(step));
        const double bright = tine.sine(step, tineIndex * tineModulator.sine(ratio * step));
        bodyIndex *= bodyFade;
        tineIndex *= tineFade;
        const double sample = (0.62 * pair + 0.38 * bright) * level.next() * tone.velocity * 0.5;
        writer.add(sample * (1.0 - side), sample * (1.0 + side));
    }
}

} // namespace demonstration_loops
