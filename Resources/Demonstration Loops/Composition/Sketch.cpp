#include "Resources/Demonstration Loops/Composition/Sketch.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace demonstration_loops
{

Sketch::Sketch(std::string_view title, double tempo, int beatsPerBarGiven, std::string_view chords,
               std::string_view scaleName, int variant, std::uint64_t seed)
    : beatsPerBar(beatsPerBarGiven), harmony(chords, beatsPerBarGiven), scale(scaleName),
      random(seed), score{std::string(title), tempo, harmony.beats()}, variant_(variant)
{
}

Part &Sketch::add(std::unique_ptr<Instrument> instrument, std::vector<Note> notes, double level,
                  double pan)
{
    place(notes);
    score.parts.push_back({std::move(instrument), std::move(notes), level, pan});
    return score.parts.back();
}

void Sketch::place(std::vector<Note> &notes)
{
    const double beatsPerMillisecond = score.tempo / 60000.0;
    for (Note &note : notes) {
        const double pair = 2.0 * feel.swungBeat;
        const double within = std::fmod(note.beat + 1.0e-9, pair);
        // Off-beats land late, what is between moves with them.
        const double late =
            within < feel.swungBeat ? within / feel.swungBeat : (pair - within) / feel.swungBeat;
        note.beat += feel.swing * feel.swungBeat * late;
        note.beat += feel.looseness * beatsPerMillisecond * random.bipolar();
        note.velocity = std::clamp(note.velocity * random.between(0.9, 1.08), 0.05, 1.0);
    }
}

} // namespace demonstration_loops
