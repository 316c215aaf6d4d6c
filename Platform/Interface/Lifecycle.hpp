#pragma once

#include <functional>

/// Where a program stands between the person's other programs.
enum class UIApplicationState { active, inactive, background };

namespace platform::interface
{

/// Turns what a desktop tells of the program's windows into the four steps of a
/// program's life, in their order: between being in use and in the background it
/// is always, if briefly, inactive.
class Lifecycle
{
public:
    /// What to call at each step.
    struct Steps {
        std::function<void()> didBecomeActive;
        std::function<void()> willResignActive;
        std::function<void()> didEnterBackground;
        std::function<void()> willEnterForeground;
    };

    /// Begins inactive, as a program that has just been started.
    explicit Lifecycle(Steps steps);

    /// Whether one of the windows has the keyboard, and whether all of them are
    /// minimised. Told again with the same values, nothing happens.
    void update(bool focused, bool minimised);

    UIApplicationState state() const { return state_; }

private:
    void leaveActive();
    void enterBackground();
    void leaveBackground();

    Steps steps_;
    UIApplicationState state_ = UIApplicationState::inactive;
};

} // namespace platform::interface
