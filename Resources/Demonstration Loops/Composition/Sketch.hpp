#pragma once

#include "Resources/Demonstration Loops/Composition/Harmony.hpp"
#include "Resources/Demonstration Loops/Composition/Score.hpp"
#include "Resources/Demonstration Loops/Random.hpp"

#include <initializer_list>
#include <string_view>

namespace demonstration_loops
{

/// How the players place their notes.
struct Feel {
    double swing = 0.0;     ///< 0 straight to 0.33 triplets
    double swungBeat = 0.5; ///< the length in beats whose every second one comes late
    double looseness = 4.0; ///< ms
};

/// A piece in the making: its harmony, scale and random choices, and the score
/// that the styles fill part by part.
class Sketch
{
public:
    Sketch(std::string_view title, double tempo, int beatsPerBar, std::string_view chords,
           std::string_view scaleName, int variant, std::uint64_t seed);

    const int beatsPerBar;
    const Progression harmony;
    const Scale scale;
    Random random;
    Feel feel;
    Score score;

    /// The variant's choice among several.
    template <typename T>
    T pick(std::initializer_list<T> choices) const
    {
        return *(choices.begin() + variant_ % static_cast<int>(choices.size()));
    }

    /// Which of the style's variants this piece is.
    [[nodiscard]] int variant() const { return variant_; }

    /// Adds a part, its notes placed with the piece's feel.
    Part &add(std::unique_ptr<Instrument> instrument, std::vector<Note> notes, double level,
              double pan = 0.0);

private:
    void place(std::vector<Note> &notes);

    int variant_;
};

} // namespace demonstration_loops
