#pragma once

#include "Effect/Lanes.hpp"
#include "Platform/Foundation/Realtime.hpp"

#include <cstddef>
#include <vector>

namespace effect
{

/// Weights that read a sampled signal between its samples: a sinc over eight of
/// them under a Kaiser window (J. O. Smith, "Digital Audio Resampling", and
/// J. F. Kaiser's window), tabulated at `phases` fractions of a sample with a
/// straight line between. Immutable once made, and made once for all.
class InterpolationTable
{
public:
    static constexpr std::size_t taps = 8;
    static constexpr std::size_t phases = 128;

    /// The first call builds it, and so is not for the audio thread.
    static const InterpolationTable &shared();

    /// The signal `fraction` (in [0, 1)) of a sample before `window[4]`, of which
    /// eight samples in order of time are read.
    REALTIME float read(const float *window, float fraction) const
    {
        const float position = fraction * static_cast<float>(phases);
        const auto phase = static_cast<std::size_t>(static_cast<int>(position));
        const Lanes rest = allLanes(position - static_cast<float>(static_cast<int>(phase)));
        const float *row = rows_.data() + phase * rowLength;
        const Lanes early = loadLanes(row) + rest * loadLanes(row + 8);
        const Lanes late = loadLanes(row + 4) + rest * loadLanes(row + 12);
        const Lanes sum = loadLanes(window) * early + loadLanes(window + 4) * late;
        return (sum[0] + sum[2]) + (sum[1] + sum[3]);
    }

private:
    InterpolationTable();

    /// Eight weights, then how much each grows to the next phase.
    static constexpr std::size_t rowLength = 2 * taps;
    std::vector<float> rows_;
};

} // namespace effect
