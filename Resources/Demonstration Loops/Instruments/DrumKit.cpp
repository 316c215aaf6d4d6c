#include "Resources/Demonstration Loops/Instruments/DrumKit.hpp"

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

/// One stroke: where it goes, how hard it is, what its noise is made from.
struct Stroke {
    StereoLoop &loop;
    std::size_t start;
    double velocity;
    Random random;

    /// Writes `seconds` of what `source(frame)` gives, panned by `side` from -1 to 1.
    template <typename Source>
    void write(double seconds, double side, Source source)
    {
        const double left = std::sqrt(0.5 * (1.0 - side)) * velocity;
        const double right = std::sqrt(0.5 * (1.0 + side)) * velocity;
        const long end = std::lround(seconds * sampleRate);
        LoopWriter writer(loop, start);
        for (long frame = 0; frame < end; ++frame) {
            const double edge = std::min(1.0, static_cast<double>(end - frame) / 64.0);
            const double sample = source() * edge;
            writer.add(left * sample, right * sample);
        }
    }
};

struct Skin {
    double pitch; ///< Hz it settles at
    double bend;  ///< octaves it starts above
    double bendTime;
    double ring;
    double click;
};

/// A skin: a sine that falls to its pitch, and the contact of stick or beater.
void playSkin(Stroke &stroke, const Skin &skin, double level, double side)
{
    Oscillator body;
    double amount = 1.0;
    double bend = skin.bend * (0.6 + 0.4 * stroke.velocity);
    const double fade = fadeFactor(skin.ring);
    const double bendFade = fadeFactor(skin.bendTime);
    double contact = skin.click * stroke.velocity;
    const double contactFade = fadeFactor(0.018);
    OnePole dull(3500.0);
    stroke.write(skin.ring * 1.1, side, [&] {
        const double tone = amount * body.sine(skin.pitch * std::exp2(bend) / sampleRate);
        const double noise = contact * dull.low(stroke.random.bipolar());
        amount *= fade;
        bend *= bendFade;
        contact *= contactFade;
        return level * (std::tanh(1.4 * tone) + noise);
    });
}

struct Hiss {
    double cutoff; ///< centre in Hz
    double q;
    double attack;
    double ring;
};

/// Shaped noise: wires, brushes, seeds.
void playHiss(Stroke &stroke, const Hiss &hiss, double level, double side)
{
    StateVariable filter;
    filter.tune(hiss.cutoff, hiss.q);
    Envelope envelope({hiss.attack, hiss.ring, 0.0, hiss.ring}, 10.0);
    stroke.write(hiss.attack + hiss.ring * 1.1, side, [&] {
        const auto out = filter.next(stroke.random.bipolar());
        return level * envelope.next() * (out.band + 0.5 * out.high);
    });
}

struct Metal {
    double pitch;  ///< Hz of the lowest square
    double cutoff; ///< Hz below which nothing passes
    double ring;
    double ping; ///< level of the strike above the wash
};

/// Cymbals: six squares that share no harmonics, and noise, through a high pass.
void playMetal(Stroke &stroke, const Metal &metal, double level, double side)
{
    constexpr std::array<double, 6> ratios = {1.0, 1.342, 1.231, 1.654, 1.952, 2.713};
    std::array<Oscillator, 6> squares;
    for (Oscillator &square : squares)
        square = Oscillator(stroke.random.unit());
    Biquad high(BiquadCoefficients::highPass(metal.cutoff, 0.8));
    double wash = 1.0;
    double ping = metal.ping;
    const double fade = fadeFactor(metal.ring);
    const double pingFade = fadeFactor(std::min(0.12, metal.ring));
    stroke.write(metal.ring * 1.05, side, [&] {
        double sum = 0.0;
        for (std::size_t i = 0; i < squares.size(); ++i)
            sum += squares[i].pulse(metal.pitch * ratios[i] / sampleRate, 0.5);
        const double sample = high.next(0.16 * sum + 0.5 * stroke.random.bipolar());
        const double amount = wash + ping;
        wash *= fade;
        ping *= pingFade;
        return level * amount * sample;
    });
}

/// Hands: three quick bursts and the room's answer.
void playClap(Stroke &stroke, double brightness)
{
    StateVariable filter;
    filter.tune(1300.0 * brightness, 1.4);
    const double fade = fadeFactor(0.03);
    const double tailFade = fadeFactor(0.22);
    double amount = 0.0;
    long frame = 0;
    stroke.write(0.3, 0.05, [&] {
        if (frame == 0 || frame == 480 || frame == 1010)
            amount = 1.0;
        amount *= frame > 1010 ? tailFade : fade;
        ++frame;
        return 1.1 * amount * filter.next(stroke.random.bipolar()).band;
    });
}

/// Wood and bell: a pair of sines that fade together.
void playBlock(Stroke &stroke, double pitch, double ratio, double ring, double level, double side)
{
    Partial first(0.6, pitch / sampleRate, fadeFactor(ring), 0.0);
    Partial second(0.4, pitch * ratio / sampleRate, fadeFactor(ring * 0.7), 0.0);
    stroke.write(ring, side,
                 [&] { return level * std::tanh(1.5 * (first.next() + second.next())); });
}

} // namespace

void DrumKit::play(const Tone &tone, StereoLoop &loop) const
{
    const Character &c = character_;
    Stroke stroke{loop, tone.start, tone.velocity, Random(tone.seed)};
    switch (static_cast<Drum>(std::lround(tone.pitch))) {
    case Drum::kick:
        playSkin(stroke, {c.kickPitch, 1.7, 0.14, c.kickRing, c.kickClick}, 0.9, 0.0);
        break;
    case Drum::snare:
        playSkin(stroke, {c.snarePitch, 0.6, 0.06, 0.2, 0.6}, 0.38, 0.03);
        playHiss(stroke, {3200.0 * c.brightness, 0.6, 0.001, c.snareRing}, 0.42, 0.03);
        break;
    case Drum::rim:
        playBlock(stroke, 480.0, 3.55, 0.06, 0.6, -0.2);
        playHiss(stroke, {4200.0, 1.5, 0.0005, 0.02}, 0.5, -0.2);
        break;
    case Drum::clap:
        playClap(stroke, c.brightness);
        break;
    case Drum::closedHat:
        playMetal(stroke, {540.0, 7200.0 * c.brightness, c.hatRing, 0.3}, 0.33, 0.3);
        break;
    case Drum::openHat:
        playMetal(stroke, {540.0, 6600.0 * c.brightness, 0.65, 0.2}, 0.3, 0.3);
        break;
    case Drum::ride:
        playMetal(stroke, {430.0, 5200.0 * c.brightness, 1.5, 1.2}, 0.14, -0.35);
        playBlock(stroke, 3150.0, 1.47, 0.4, 0.05, -0.35);
        break;
    case Drum::crash:
        playMetal(stroke, {365.0, 3300.0 * c.brightness, 2.4, 0.8}, 0.26, -0.45);
        break;
    case Drum::highTom:
        playSkin(stroke, {178.0, 0.5, 0.12, 0.5, 0.4}, 0.7, -0.4);
        break;
    case Drum::midTom:
        playSkin(stroke, {128.0, 0.5, 0.14, 0.65, 0.4}, 0.75, 0.1);
        break;
    case Drum::lowTom:
        playSkin(stroke, {86.0, 0.5, 0.16, 0.85, 0.4}, 0.85, 0.5);
        break;
    case Drum::shaker:
        playHiss(stroke, {7500.0 * c.brightness, 0.9, 0.022, 0.07}, 0.3, -0.4);
        break;
    case Drum::tambourine:
        playMetal(stroke, {980.0, 8000.0, 0.16, 0.6}, 0.3, 0.45);
        break;
    case Drum::cowbell:
        playBlock(stroke, 562.0, 1.504, 0.32, 0.45, 0.35);
        break;
    case Drum::highConga:
        playSkin(stroke, {345.0, 0.12, 0.05, 0.26, 0.5}, 0.5, 0.3);
        break;
    case Drum::lowConga:
        playSkin(stroke, {215.0, 0.14, 0.06, 0.38, 0.35}, 0.6, 0.42);
        break;
    case Drum::clave:
        playBlock(stroke, 2480.0, 1.01, 0.09, 0.45, -0.3);
        break;
    case Drum::brush:
        playHiss(stroke, {2600.0, 0.5, 0.05, 0.16}, 0.3, 0.1);
        break;
    }
}

} // namespace demonstration_loops
