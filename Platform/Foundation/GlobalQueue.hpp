#pragma once

#include "Platform/Foundation/DispatchQueue.hpp"
#include "Platform/Foundation/QueueImplementation.hpp"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>

namespace platform::foundation
{

/// A pool whose threads are made when a task finds none idle, up to a small
/// number, and stay. Never destroyed.
class GlobalQueue final : public DispatchQueue::Implementation
{
public:
    GlobalQueue();

    /// Gives the task to an idle thread, to a new one, or to the first that is free.
    void async(std::function<void()> task) override;
    bool isCurrent() const override;

private:
    void work();
    std::function<void()> take();

    const std::size_t mostThreads_;
    std::mutex mutex_;
    std::condition_variable wakeup_;
    std::size_t threads_ = 0;
    std::size_t idle_ = 0;
    std::deque<std::function<void()>> waiting_;
};

} // namespace platform::foundation
