#pragma once

#include <functional>

/// The main run loop: timers and the main queue are served while it runs. It
/// turns with GTK (whose application runs the same GLib main context) and
/// without (`run`, `runUntil`), so tests and command-line programs can drive it.
class RunLoop
{
public:
    /// The one of the main thread.
    static RunLoop &main();

    /// Serves sources until `stop`. Main thread.
    void run();

    /// Makes `run` return after the current turn. Any thread.
    void stop();

    /// Serves sources until `condition` holds, asking after each turn, or until
    /// `timeout` seconds have passed. Answers whether the condition holds.
    /// Main thread.
    bool runUntil(const std::function<bool()> &condition, double timeout);

    /// The GLib priority of timers and of the main queue from now on. A program
    /// with GTK sets it just below painting, so that busy timers cannot starve
    /// the screen. Main thread, before the first timer.
    void setSourcePriority(int priority);
    /// The GLib priority of timers and of the main queue.
    int sourcePriority() const;

private:
    RunLoop() = default;
};
