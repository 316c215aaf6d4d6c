#include "Effect/View/Layout.hpp"

#include <algorithm>

namespace effect::view::layout
{

std::optional<std::size_t> controlAt(Point at)
{
    const auto *found = std::find_if(controls.begin(), controls.end(),
                                     [at](const Box &box) { return box.holds(at); });
    if (found == controls.end()) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(found - controls.begin());
}

std::optional<SpeedMark> speedMarkAt(Point at)
{
    const auto *found = std::find_if(speedMarks.begin(), speedMarks.end(),
                                     [at](const SpeedMark &mark) { return mark.box.holds(at); });
    if (found == speedMarks.end()) {
        return std::nullopt;
    }
    return *found;
}

} // namespace effect::view::layout
