#pragma once

#include "Platform/Foundation/DispatchQueue.hpp"
#include "Platform/Foundation/QueueImplementation.hpp"

#include <functional>
#include <mutex>
#include <vector>

namespace platform::foundation
{

/// The queue of the main run loop: one source of the default main context, woken
/// through an eventfd. One dispatch runs what was waiting when it began, so that
/// tasks that submit tasks leave room for the loop's other sources. Never
/// destroyed.
class MainQueue final : public DispatchQueue::Implementation
{
public:
    MainQueue();

    /// Puts the task at the end, and wakes the main context when there was none.
    void async(std::function<void()> task) override;
    bool isCurrent() const override { return isMainThread(); }

private:
    void drain();

    int wakeup_;
    std::mutex mutex_;
    std::vector<std::function<void()>> waiting_;
    /// Taken out of `waiting_`; the main thread's own.
    std::vector<std::function<void()>> batch_;
};

} // namespace platform::foundation
