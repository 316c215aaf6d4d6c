#include "Effect/View/Gestures.hpp"

#include <algorithm>
#include <cmath>

namespace effect::view
{

Drag::Drag(std::size_t control, double position, double y)
    : control_(control), position_(position), y_(y)
{
}

double Drag::moveTo(double y, bool fine)
{
    const double way = (y_ - y) / travel;
    y_ = y;
    position_ = std::clamp(position_ + (fine ? way / 10 : way), 0.0, 1.0);
    return position_;
}

bool ClickCounter::isSecond(std::size_t control, Point at, std::uint32_t milliseconds)
{
    // The difference of unsigned times is right also when the server's clock wraps.
    const bool second = last_ && last_->control == control &&
                        milliseconds - last_->milliseconds <= longest &&
                        std::hypot(at.x - last_->at.x, at.y - last_->at.y) <= farthest;
    last_ = second ? std::nullopt : std::optional(Press{control, at, milliseconds});
    return second;
}

} // namespace effect::view
