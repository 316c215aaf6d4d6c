#pragma once

#include "Platform/Foundation/TimerDriver.hpp"

#include <functional>
#include <memory>

struct _GSource; // NOLINT(bugprone-reserved-identifier): GLib's own name

namespace platform::foundation
{

/// Timers on the GLib main loop. All of them share one timerfd, which is set to
/// whichever is due next and is a source of the default main context: GLib's own
/// timeouts count whole milliseconds and drift. It can run nested, so a block
/// that runs the loop holds up only its own timer. Main thread.
class GLibTimerDriver final : public TimerDriver
{
public:
    GLibTimerDriver();
    ~GLibTimerDriver() override;
    GLibTimerDriver(const GLibTimerDriver &) = delete;
    GLibTimerDriver &operator=(const GLibTimerDriver &) = delete;

    std::unique_ptr<Schedule> schedule(double interval, std::function<void()> tick) override;

private:
    class Timers;
    struct Source;

    std::shared_ptr<Timers> timers_;
    _GSource *source_;
};

} // namespace platform::foundation
