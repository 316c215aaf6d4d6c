#pragma once

#include "Platform/Foundation/Callback.hpp"
#include "Platform/Foundation/TimerDriver.hpp"

#include <functional>
#include <memory>

/// Calls a block at equal intervals, or once. A valid timer keeps itself and its
/// block alive. Main thread.
class NSTimer : public std::enable_shared_from_this<NSTimer>
{
    struct Private {
    };

public:
    /// Starts a timer whose first call comes `interval` seconds from now. An
    /// interval that is zero, negative or not a number means 0.1 ms.
    static std::shared_ptr<NSTimer> scheduledTimer(double interval, bool repeats,
                                                   std::function<void(NSTimer &)> block);

    /// For `scheduledTimer`.
    NSTimer(Private key, bool repeats, std::function<void(NSTimer &)> block);
    NSTimer(const NSTimer &) = delete;
    NSTimer &operator=(const NSTimer &) = delete;

    /// Ends the calls and gives up the block, at once or, from within the block,
    /// when it returns. Without effect on an invalid timer.
    void invalidate();

    /// Whether calls are still to come. A timer that does not repeat is invalid
    /// from the beginning of its call on.
    bool isValid() const { return schedule_ != nullptr; }

private:
    void fire();

    bool repeats_;
    Callback<NSTimer &> block_;
    std::unique_ptr<TimerDriver::Schedule> schedule_;
};
