#include "Resources/Demonstration Loops/Instruments/Synthesizer.hpp"

#include "Resources/Demonstration Loops/Audio/Filters.hpp"
#include "Resources/Demonstration Loops/Audio/Oscillator.hpp"
#include "Resources/Demonstration Loops/Random.hpp"

#include <algorithm>
#include <cmath>
#include <vector>

namespace demonstration_loops
{

namespace
{

/// Frames between updates of filter and vibrato: 0.33 ms is finer than any ear.
constexpr long controlPeriod = 16;

struct Voice {
    Oscillator oscillator;
    double detune;
    double left;
    double right;
    Oscillator vibrato;
    double vibratoStep;
    double step = 0.0;
};

std::vector<Voice> makeVoices(const Synthesizer::Character &character, Random &random)
{
    std::vector<Voice> voices;
    for (int i = 0; i < character.voices; ++i) {
        const double place = character.voices > 1 ? 2.0 * i / (character.voices - 1) - 1.0 : 0.0;
        // Neighbours in pitch stand on opposite sides.
        const double side = character.width * place * (i % 2 == 0 ? 1.0 : -1.0);
        voices.push_back(
            {Oscillator(random.unit()), std::exp2(0.5 * character.detune * place / 1200.0),
             std::sqrt(0.5 * (1.0 - side)), std::sqrt(0.5 * (1.0 + side)),
             Oscillator(random.unit()), random.between(4.8, 6.0) * controlPeriod / sampleRate});
    }
    return voices;
}

} // namespace

void Synthesizer::play(const Tone &tone, StereoLoop &loop) const
{
    Random random(tone.seed);
    const double frequency = frequencyOf(tone.pitch);
    std::vector<Voice> voices = makeVoices(character_, random);
    Oscillator sub;
    Envelope level(character_.level, tone.held);
    Envelope sweep(character_.filter, tone.held);
    StateVariable leftFilter;
    StateVariable rightFilter;
    const double gain = 0.42 * tone.velocity / std::sqrt(character_.voices);

    LoopWriter writer(loop, tone.start);
    for (long frame = 0; !level.finished(); ++frame) {
        const double opening = sweep.next();
        if (frame % controlPeriod == 0) {
            const double cutoff =
                frequency * character_.cutoff *
                std::exp2(character_.sweep * opening * (0.3 + 0.7 * tone.velocity));
            leftFilter.tune(std::min(cutoff, 16000.0), character_.resonance);
            rightFilter.tune(std::min(cutoff, 16000.0), character_.resonance);
            const double depth =
                character_.vibrato *
                std::clamp((static_cast<double>(frame) / sampleRate - 0.15) * 2.5, 0.0, 1.0);
            for (Voice &voice : voices) {
                const double cents = depth * voice.vibrato.sine(voice.vibratoStep);
                voice.step = frequency * voice.detune * std::exp2(cents / 1200.0) / sampleRate;
            }
        }
        double left = 0.0;
        double right = 0.0;
        for (Voice &voice : voices) {
            const double wave = character_.pulse > 0.0
                                    ? voice.oscillator.pulse(voice.step, character_.pulse)
                                    : voice.oscillator.saw(voice.step);
            left += voice.left * wave;
            right += voice.right * wave;
        }
        const double low = character_.sub * sub.sine(0.5 * frequency / sampleRate);
        const double amount = gain * level.next();
        writer.add(amount * (leftFilter.next(left).low + low),
                   amount * (rightFilter.next(right).low + low));
    }
}

} // namespace demonstration_loops
