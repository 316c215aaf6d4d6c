#pragma once

#include "Effect/InterpolationTable.hpp"
#include "Platform/Foundation/Realtime.hpp"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace effect
{

/// A delay line that is read at any point between its samples, also at one that
/// moves: a moving read is the Doppler effect. J. Smith, S. Serafin, J. Abel,
/// D. Berners, "Doppler Simulation and the Leslie", DAFx-02.
class FractionalDelay
{
public:
    /// The shortest delay in samples that the interpolation has neighbours for.
    static constexpr float minimum = 3;

    /// Serves delays from `minimum` to `longest` samples.
    explicit FractionalDelay(std::size_t longest) : table_(InterpolationTable::shared())
    {
        std::size_t length = 16;
        while (length < longest + InterpolationTable::taps) {
            length *= 2;
        }
        mask_ = length - 1;
        samples_.assign(length + InterpolationTable::taps, 0);
    }

    REALTIME void reset() { std::fill(samples_.begin(), samples_.end(), 0.0F); }

    REALTIME void write(float sample)
    {
        head_ = (head_ + 1) & mask_;
        samples_[head_] = sample;
        // The beginning is repeated behind the end, so that every window is in one piece.
        if (head_ < InterpolationTable::taps) {
            samples_[head_ + mask_ + 1] = sample;
        }
    }

    /// What was written `delay` samples before the latest.
    REALTIME float read(float delay) const
    {
        const int whole = static_cast<int>(delay);
        const std::size_t start =
            (head_ - static_cast<std::size_t>(whole) - InterpolationTable::taps / 2) & mask_;
        return table_.read(samples_.data() + start, delay - static_cast<float>(whole));
    }

private:
    const InterpolationTable &table_;
    std::vector<float> samples_;
    std::size_t mask_ = 0;
    std::size_t head_ = 0;
};

} // namespace effect
