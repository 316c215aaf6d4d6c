#pragma once

#include "Resources/Demonstration Loops/Instruments/Instrument.hpp"

namespace demonstration_loops
{

/// Singers on vowels: several detuned voices a note, each a bright source
/// through the vowel's formants, moving from one vowel to another as they sing.
class Choir : public Instrument
{
public:
    enum class Vowel { a, e, i, o, u };

    /// The vowel at a note's beginning and the one it moves to.
    Choir(Vowel from, Vowel to) : from_(from), to_(to) {}

    void play(const Tone &tone, StereoLoop &loop) const override;

private:
    Vowel from_;
    Vowel to_;
};

} // namespace demonstration_loops
