#pragma once

#include "Resources/Demonstration Loops/Audio/StereoLoop.hpp"

#include <cmath>
#include <cstddef>
#include <cstdint>

namespace demonstration_loops
{

/// One note as an instrument sees it.
struct Tone {
    std::size_t start;  ///< frame in the loop
    double held;        ///< seconds until it is let go
    double pitch;       ///< MIDI key number, fractions allowed; drums: a `Drum`
    double velocity;    ///< 0 to 1
    std::uint64_t seed; ///< for what differs from stroke to stroke
};

/// Hz of a MIDI key number in equal temperament, a' = 440.
inline double frequencyOf(double pitch)
{
    return 440.0 * std::exp2((pitch - 69.0) / 12.0);
}

/// Turns notes into sound. Stateless: what a tone sounds like depends on the tone alone.
class Instrument
{
public:
    Instrument() = default;
    Instrument(const Instrument &) = delete;
    Instrument &operator=(const Instrument &) = delete;
    virtual ~Instrument() = default;

    /// Mixes the whole tone with its tail into the loop, wrapping at its end.
    virtual void play(const Tone &tone, StereoLoop &loop) const = 0;
};

} // namespace demonstration_loops
