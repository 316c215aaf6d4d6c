#include "Platform/Interface/Lifecycle.hpp"

#include <utility>

namespace platform::interface
{

Lifecycle::Lifecycle(Steps steps) : steps_(std::move(steps)) {}

void Lifecycle::update(bool focused, bool minimised)
{
    if (minimised) {
        // Focus and size are told in either order.
        leaveActive();
        enterBackground();
        return;
    }
    leaveBackground();
    if (!focused) {
        leaveActive();
    } else if (state_ == UIApplicationState::inactive) {
        state_ = UIApplicationState::active;
        steps_.didBecomeActive();
    }
}

void Lifecycle::leaveActive()
{
    if (state_ != UIApplicationState::active)
        return;
    // The state changes after the announcement of what is about to happen.
    steps_.willResignActive();
    state_ = UIApplicationState::inactive;
}

void Lifecycle::enterBackground()
{
    if (state_ != UIApplicationState::inactive)
        return;
    state_ = UIApplicationState::background;
    steps_.didEnterBackground();
}

void Lifecycle::leaveBackground()
{
    if (state_ != UIApplicationState::background)
        return;
    steps_.willEnterForeground();
    state_ = UIApplicationState::inactive;
}

} // namespace platform::interface
