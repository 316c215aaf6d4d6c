#pragma once

#include <functional>
#include <memory>

/// What timers run on. A program that links `glib_timer_driver` gets the one of the
/// GLib main loop; others, and tests, install their own. Main thread.
class TimerDriver
{
public:
    /// One timer's claim to be called. Destroying it ends the calls; this may
    /// happen within one, whose closure has to outlive it.
    class Schedule
    {
    public:
        virtual ~Schedule() = default;
    };

    virtual ~TimerDriver() = default;

    /// Calls `tick` on the main thread every `interval` seconds (finite and above
    /// 0), counted from now on a grid that does not drift. Ticks that could not
    /// be served in time are skipped, never made up for.
    virtual std::unique_ptr<Schedule> schedule(double interval, std::function<void()> tick) = 0;

    /// Serves the timers made from now on. Null brings back the program's own.
    static void install(std::shared_ptr<TimerDriver> driver);

    /// The driver that serves new timers. Without any it is a fatal error.
    static TimerDriver &installed();

    /// Makes the driver to which `install(nullptr)` goes back; called once, when
    /// it is first needed. For the library that provides it.
    static void setDefault(std::shared_ptr<TimerDriver> (*make)());
};
