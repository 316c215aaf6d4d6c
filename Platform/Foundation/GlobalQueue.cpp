#include "Platform/Foundation/GlobalQueue.hpp"

#include <algorithm>
#include <string>
#include <thread>
#include <utility>

namespace platform::foundation
{

namespace
{

thread_local bool isPoolThread = false;

// Tasks may block, as instantiation does, so a small machine gets more threads
// than it has cores.
constexpr std::size_t fewestThreads = 4;

} // namespace

GlobalQueue::GlobalQueue()
    : DispatchQueue::Implementation("global"),
      mostThreads_(std::max<std::size_t>(fewestThreads, std::thread::hardware_concurrency()))
{
}

void GlobalQueue::async(std::function<void()> task)
{
    bool needsThread = false;
    {
        const std::lock_guard lock(mutex_);
        waiting_.push_back(std::move(task));
        needsThread = waiting_.size() > idle_ && threads_ < mostThreads_;
        if (needsThread)
            ++threads_;
    }
    if (needsThread)
        std::thread([this] { work(); }).detach();
    else
        wakeup_.notify_one();
}

bool GlobalQueue::isCurrent() const
{
    return isPoolThread;
}

void GlobalQueue::work()
{
    isPoolThread = true;
    nameThreadAfter(label());
    while (true) {
        auto task = take();
        perform(task);
    }
}

std::function<void()> GlobalQueue::take()
{
    std::unique_lock lock(mutex_);
    ++idle_;
    wakeup_.wait(lock, [this] { return !waiting_.empty(); });
    --idle_;
    auto task = std::move(waiting_.front());
    waiting_.pop_front();
    return task;
}

} // namespace platform::foundation
