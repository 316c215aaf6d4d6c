#pragma once

#include "Resources/Demonstration Loops/Audio/StereoLoop.hpp"

#include <functional>

namespace demonstration_loops
{

/// Changes a loop in place. Each effect here is run once over the loop to settle
/// and once more to be heard, and its slow oscillators turn a whole number of
/// times a loop: the result is what an endless loop sounds like.
using Effect = std::function<void(StereoLoop &)>;

/// Valve-like saturation: `amount` from 0.5 (warm) to 20 (distorted), followed
/// by a low pass at `tone` Hz, as a loudspeaker is one.
Effect drive(double amount, double tone);

/// Ensemble: copies on slowly moving delays; `depth` in ms, `mix` 0 to 1.
Effect chorus(double depth, double mix);

/// A resonant band pass that follows the playing, `low` to `high` Hz.
Effect autoWah(double low, double high);

/// A low pass whose cutoff swings between `low` and `high` Hz, `cycles` times a loop.
Effect filterSweep(double low, double high, int cycles);

/// A bell of `gainDb` at `frequency` Hz: body and presence.
Effect tone(double frequency, double q, double gainDb);

/// Removes what is below `frequency` Hz.
Effect lowCut(double frequency);

} // namespace demonstration_loops
