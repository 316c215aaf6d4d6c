#pragma once

#include "Effect/InterpolationTable.hpp"
#include "Effect/Tick.hpp"
#include "Platform/Foundation/Realtime.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
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
        const std::size_t reach = longest + tickFrames + InterpolationTable::fineTaps;
        length_ = (reach / tickFrames + 1) * tickFrames;
        samples_.assign(2 * length_, 0);
    }

    REALTIME void reset() { std::fill(samples_.begin(), samples_.end(), 0.0F); }

    /// Everything is written twice, so that every window is in one piece.
    REALTIME void write(const Tick &tick)
    {
        head_ = head_ + tickFrames == length_ ? 0 : head_ + tickFrames;
        std::copy(tick.begin(), tick.end(), samples_.data() + head_);
        std::copy(tick.begin(), tick.end(), samples_.data() + head_ + length_);
    }

    /// Four delays, cut up as the readers want them.
    class Places
    {
    public:
        /// `minimum` samples or more in each lane.
        REALTIME explicit Places(Lanes delays)
        {
            const Lanes position = delays * static_cast<float>(InterpolationTable::phases);
            const WholeLanes steps = wholePart(position);
            store(whole_, steps >> InterpolationTable::phaseBits);
            store(phase_, steps & (InterpolationTable::phases - 1));
            store(rest_, position - toLanes(steps));
        }

    private:
        friend FractionalDelay;

        template <typename Array, typename Vector>
        static void store(Array &array, const Vector &lanes)
        {
            static_assert(sizeof array == sizeof lanes);
            std::memcpy(array.data(), &lanes, sizeof lanes);
        }

        std::array<std::int32_t, 4> whole_;
        std::array<std::int32_t, 4> phase_;
        std::array<float, 4> rest_;
    };

    /// What was written before frame `frame` of the latest tick by the delay in
    /// one of the lanes, over the whole band; the answer is the sum of its lanes.
    REALTIME Lanes readFine(std::size_t frame, const Places &places, std::size_t lane) const
    {
        return table_.readFine(window(frame, places.whole_[lane]), places.phase_[lane],
                               places.rest_[lane]);
    }

    /// The same, losing treble, at half the price.
    REALTIME Lanes readPlain(std::size_t frame, const Places &places, std::size_t lane) const
    {
        return table_.readPlain(window(frame, places.whole_[lane]), places.phase_[lane],
                                places.rest_[lane]);
    }

private:
    REALTIME const float *window(std::size_t frame, std::int32_t whole) const
    {
        constexpr std::size_t before = InterpolationTable::fineTaps / 2;
        return samples_.data() + (length_ - before + head_ + frame) - whole;
    }

    const InterpolationTable &table_;
    std::vector<float> samples_;
    std::size_t length_ = 0;
    /// Where the latest tick begins, in the first copy.
    std::size_t head_ = 0;
};

} // namespace effect
