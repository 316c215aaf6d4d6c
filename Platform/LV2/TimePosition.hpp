#pragma once

#include "Platform/Foundation/Realtime.hpp"
#include "Platform/LV2/TimeQuantity.hpp"

#include <lv2/urid/urid.h>

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace platform::lv2
{

/// The quantity of this URI of LV2's time extension.
std::optional<TimeQuantity> timeQuantityOf(std::string_view uri);

/// Where rendering stands, in the words of LV2's time extension. It goes on at speed
/// 1 as long as blocks are rendered. The host knows no music: the beat is the usual
/// one of hosts without a tempo of their own, 120 to the minute and four to the bar,
/// since a plug-in that is bound to a tempo would stand still without.
class TimePosition
{
public:
    static constexpr double beatsPerMinute = 120.0; ///< the tempo
    static constexpr double beatsPerBar = 4.0;      ///< beats in a bar

    /// At the beginning, with `sampleRate` frames a second.
    explicit TimePosition(double sampleRate);

    /// Goes to a time that counts frames since rendering began.
    REALTIME void moveTo(std::int64_t sampleTime) noexcept;

    /// One quantity of where it stands.
    REALTIME double value(TimeQuantity quantity) const noexcept
    {
        return values_[static_cast<std::size_t>(quantity)];
    }

    /// Room for what `write` writes.
    using Body = std::array<std::uint8_t, 320>;
    /// Writes the body of a `time:Position` object.
    REALTIME std::span<const std::uint8_t> write(Body &body) const noexcept;

private:
    double &at(TimeQuantity quantity) { return values_[static_cast<std::size_t>(quantity)]; }

    std::array<double, timeQuantityCount> values_{};
    std::array<LV2_URID, timeQuantityCount> keys_{};
};

} // namespace platform::lv2
