#include "Resources/Demonstration Loops/Mastering/Mixdown.hpp"

#include "Resources/Demonstration Loops/Effects/Reverb.hpp"
#include "Resources/Demonstration Loops/Mastering/Loudness.hpp"
#include "Resources/Demonstration Loops/Random.hpp"

#include <algorithm>
#include <cmath>

namespace demonstration_loops
{

namespace
{

StereoLoop playPart(const Part &part, std::size_t frames, double framesPerBeat, Random &seeds)
{
    StereoLoop loop(frames);
    const double length = static_cast<double>(frames);
    for (const Note &note : part.notes) {
        // A note ahead of the first beat belongs at the loop's end.
        const double wrapped = std::fmod(note.beat * framesPerBeat + length, length);
        const double held = note.length * framesPerBeat / sampleRate;
        part.instrument->play(
            {static_cast<std::size_t>(wrapped), held, note.pitch, note.velocity, seeds.bits()},
            loop);
    }
    for (const Effect &effect : part.effects)
        effect(loop);
    return loop;
}

/// Balances left against right; what is already stereo keeps its width.
void pan(StereoLoop &loop, double place)
{
    const double left = std::min(1.0, 1.0 - place);
    const double right = std::min(1.0, 1.0 + place);
    for (std::size_t i = 0; i < loop.frames(); ++i) {
        loop.left[i] *= left;
        loop.right[i] *= right;
    }
}

} // namespace

StereoLoop mixdown(const Score &score, std::uint64_t seed)
{
    const std::size_t frames = score.frames();
    const double framesPerBeat = static_cast<double>(frames) / score.beats;
    Random seeds(seed);
    StereoLoop mix(frames);
    StereoLoop toRoom(frames);
    StereoLoop toEcho(frames);
    for (const Part &part : score.parts) {
        StereoLoop loop = playPart(part, frames, framesPerBeat, seeds);
        // Instruments differ in level by nature; the arrangement says how loud each is.
        const double loudness = integratedLoudness(loop);
        if (!std::isfinite(loudness))
            continue;
        loop.scale(std::pow(10.0, (-20.0 + part.level - loudness) / 20.0));
        pan(loop, part.pan);
        mix.add(loop, 1.0);
        toRoom.add(loop, part.room);
        toEcho.add(loop, part.echo);
    }
    if (toEcho.peak() > 0.0) {
        const auto delay = static_cast<std::size_t>(score.echoBeats * framesPerBeat);
        const StereoLoop echoes = echo(toEcho, delay, score.echoFeedback);
        mix.add(echoes, 1.0);
        toRoom.add(echoes, 0.2);
    }
    mix.add(reverberate(toRoom, score.room), 0.5);
    return mix;
}

} // namespace demonstration_loops
