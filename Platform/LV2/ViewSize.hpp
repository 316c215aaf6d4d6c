#pragma once

#include <cstdint>

namespace platform::lv2
{

/// The size of a view in pixels.
struct ViewSize {
    /// What an X window can have without harm.
    static constexpr std::uint32_t largest = 16384;

    ///@{
    /// In pixels.
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    ///@}
    /// Whether they are equally wide and high.
    bool operator==(const ViewSize &) const = default;
};

} // namespace platform::lv2
