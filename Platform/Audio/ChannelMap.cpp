#include "Platform/Audio/ChannelMap.hpp"

#include <algorithm>
#include <array>
#include <cstddef>

namespace platform::audio
{

namespace
{

constexpr float half = 0.70710678F; // of the power

struct StereoShare {
    float left;
    float right;
};

constexpr StereoShare toLeft{1.0F, 0.0F};
constexpr StereoShare toRight{0.0F, 1.0F};
constexpr StereoShare toBoth{half, half};
constexpr StereoShare surroundLeft{half, 0.0F};
constexpr StereoShare surroundRight{0.0F, half};
constexpr StereoShare leftOut{0.0F, 0.0F};

// One row a channel count, in the order in which files carry the channels.
constexpr std::array<std::array<StereoShare, 8>, 6> layouts{{
    {toLeft, toRight, toBoth},
    {toLeft, toRight, surroundLeft, surroundRight},
    {toLeft, toRight, toBoth, surroundLeft, surroundRight},
    {toLeft, toRight, toBoth, leftOut, surroundLeft, surroundRight},
    {toLeft, toRight, toBoth, leftOut, toBoth, surroundLeft, surroundRight},
    {toLeft, toRight, toBoth, leftOut, surroundLeft, surroundRight, surroundLeft, surroundRight},
}};

bool hasStereoLayout(std::uint32_t channels)
{
    return channels >= 3 && channels < 3 + layouts.size();
}

} // namespace

ChannelMap::ChannelMap(std::uint32_t sources, std::uint32_t destinations)
    : sources_(sources), destinations_(destinations), identity_(sources == destinations),
      gains_(static_cast<std::size_t>(sources) * destinations, 0.0F)
{
    if (!identity_ && destinations <= 2) {
        mixDown();
        return;
    }
    for (std::uint32_t channel = 0; channel < std::min(sources, destinations); ++channel)
        set(channel, channel, 1.0F);
    if (!identity_ && sources == 1)
        set(1, 0, 1.0F);
}

void ChannelMap::mixDown()
{
    for (std::uint32_t source = 0; source < sources_; ++source) {
        StereoShare share = source == 0 ? toLeft : source == 1 ? toRight : leftOut;
        if (sources_ == 1)
            share = {1.0F, 1.0F};
        else if (hasStereoLayout(sources_))
            share = layouts[sources_ - 3][source];
        if (destinations_ == 1) {
            set(0, source, 0.5F * (share.left + share.right));
        } else if (destinations_ == 2) {
            set(0, source, share.left);
            set(1, source, share.right);
        }
    }
}

void ChannelMap::set(std::uint32_t destination, std::uint32_t source, float gain)
{
    gains_[static_cast<std::size_t>(destination) * sources_ + source] = gain;
}

float ChannelMap::gain(std::uint32_t destination, std::uint32_t source) const
{
    return gains_[static_cast<std::size_t>(destination) * sources_ + source];
}

void ChannelMap::apply(const float *const *source, float *const *destination,
                       std::uint32_t frames) const noexcept
{
    const float *gains = gains_.data();
    for (std::uint32_t to = 0; to < destinations_; ++to, gains += sources_) {
        float *const out = destination[to];
        std::fill_n(out, frames, 0.0F);
        for (std::uint32_t from = 0; from < sources_; ++from) {
            const float gain = gains[from];
            if (gain == 0.0F)
                continue;
            const float *const in = source[from];
            for (std::uint32_t frame = 0; frame < frames; ++frame)
                out[frame] += gain * in[frame];
        }
    }
}

} // namespace platform::audio
