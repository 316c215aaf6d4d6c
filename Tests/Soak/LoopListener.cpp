#include "Tests/Soak/LoopListener.hpp"

#include <cmath>

namespace soak
{

void LoopListener::take(const float *left, const float *right, std::uint32_t frames,
                        std::uint32_t stride) noexcept
{
    bool isSilent = false;
    for (std::uint32_t i = 0; i < frames; ++i) {
        const float place = left[i * stride] * 32768.0F;
        const float number = right[i * stride] * 128.0F;
        if (place == 0.0F && number == 0.0F) {
            isSilent = true;
            continue;
        }
        const auto frame = static_cast<std::int64_t>(place) - 1;
        const int file = static_cast<int>(number);
        if (std::floor(place) != place || std::floor(number) != number || file < 1 ||
            file > PlaceTelling::files || frame < 0 || frame >= PlaceTelling::length(file))
            ++counts_.foreign;
        else
            follow(file, frame);
    }
    if (isSilent && soundIsExpected_)
        ++counts_.silentBlocks;
    if (!isSilent)
        ++counts_.sounding;
}

void LoopListener::follow(int file, std::int64_t frame) noexcept
{
    const bool isNext = file == file_ && frame == frame_ + 1;
    const bool wasAtEnd = file_ != 0 && frame_ == PlaceTelling::length(file_) - 1;
    if (!isNext) {
        if (frame != 0)
            ++counts_.misplaced;
        else if (wasAtEnd)
            ++counts_.rounds;
        else
            begin();
    }
    file_ = file;
    frame_ = frame;
}

void LoopListener::begin() noexcept
{
    ++counts_.beginnings;
    noteBreak();
}

void LoopListener::breakOff() noexcept
{
    noteBreak();
    file_ = 0;
}

void LoopListener::noteBreak() noexcept
{
    if (file_ != 0 && frame_ + mostAhead >= PlaceTelling::length(file_))
        ++counts_.brokenOffAtTheEnd;
}

} // namespace soak
