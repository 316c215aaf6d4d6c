#pragma once

#include "Effect/Lanes.hpp"
#include "Platform/Foundation/Realtime.hpp"

#include <array>
#include <cstddef>
#include <cstdint>

namespace effect
{

/// Weights that read a sampled signal between its samples, tabulated at `phases`
/// fractions of a sample with straight lines between. Immutable once made.
///
/// `fine` is a sinc over eight samples under a Kaiser window, flat over the whole
/// band (J. O. Smith, "Digital Audio Resampling", and J. F. Kaiser's window).
/// `plain` is Lagrange's polynomial through four samples: flattest at low
/// frequencies, dull at high ones, at half the price.
class InterpolationTable
{
public:
    static constexpr std::int32_t phaseBits = 7;
    static constexpr std::int32_t phases = 1 << phaseBits;
    static constexpr std::size_t fineTaps = 8;
    static constexpr std::size_t plainTaps = 4;

    /// The first call builds it, and so is not for the audio thread.
    static const InterpolationTable &shared();

    /// The signal `phase + rest` steps of 1 / `phases` of a sample before
    /// `window[4]`, of which eight samples in order of time are read. The answer is
    /// the sum over the lanes: `sumsOf` takes several at once.
    REALTIME Lanes readFine(const float *window, std::int32_t phase, float rest) const
    {
        const Lanes *row = fine_.data() + static_cast<std::ptrdiff_t>(phase) * 4;
        const Lanes early = row[0] + row[2] * rest;
        const Lanes late = row[1] + row[3] * rest;
        return loadLanes(window) * early + loadLanes(window + 4) * late;
    }

    /// The same from the four samples around, `window[2]` to `window[5]`.
    REALTIME Lanes readPlain(const float *window, std::int32_t phase, float rest) const
    {
        const Lanes *row = plain_.data() + static_cast<std::ptrdiff_t>(phase) * 2;
        return loadLanes(window + 2) * (row[0] + row[1] * rest);
    }

private:
    InterpolationTable();

    /// For each phase all weights, then how much each grows to the next phase.
    std::array<Lanes, std::size_t{4} * phases> fine_;
    std::array<Lanes, std::size_t{2} * phases> plain_;
};

} // namespace effect
