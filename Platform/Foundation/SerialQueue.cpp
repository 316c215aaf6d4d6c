#include "Platform/Foundation/SerialQueue.hpp"

#include "Platform/Foundation/FatalError.hpp"
#include "Platform/Foundation/Immortal.hpp"

#include <atomic>
#include <cstdint>

namespace platform::foundation
{

namespace
{

thread_local const SerialQueue *currentQueue = nullptr;

/// Counts the tasks of all serial queues that wait or run.
class PendingTasks
{
public:
    void add() { count_.fetch_add(1); }

    void remove()
    {
        if (count_.fetch_sub(1) != 1)
            return;
        // Between its look at the count and its sleep, the waiter holds the mutex.
        const std::lock_guard lock(mutex_);
        none_.notify_all();
    }

    void waitForNone()
    {
        std::unique_lock lock(mutex_);
        none_.wait(lock, [this] { return count_ == 0; });
    }

private:
    std::atomic<std::int64_t> count_ = 0;
    std::mutex mutex_;
    std::condition_variable none_;
};

PendingTasks &pendingTasks()
{
    static Immortal<PendingTasks> tasks([] { return PendingTasks(); });
    return tasks.value;
}

} // namespace

std::shared_ptr<SerialQueue> SerialQueue::create(std::string label)
{
    auto queue = std::make_shared<SerialQueue>(std::move(label));
    queue->thread_ = std::thread([queue] { queue->work(); });
    return queue;
}

void SerialQueue::async(std::function<void()> task)
{
    pendingTasks().add();
    bool wasEmpty = false;
    {
        const std::lock_guard lock(mutex_);
        wasEmpty = waiting_.empty();
        waiting_.push_back(std::move(task));
    }
    if (wasEmpty)
        wakeup_.notify_one();
}

bool SerialQueue::isCurrent() const
{
    return currentQueue == this;
}

bool SerialQueue::isOnAny()
{
    return currentQueue != nullptr;
}

void SerialQueue::close()
{
    {
        const std::lock_guard lock(mutex_);
        closed_ = true;
    }
    wakeup_.notify_one();
    if (isCurrent())
        thread_.detach();
    else
        thread_.join();
}

void SerialQueue::work()
{
    currentQueue = this;
    nameThreadAfter(label());
    while (takeBatch()) {
        for (auto &task : batch_) {
            perform(task);
            pendingTasks().remove();
        }
        batch_.clear();
    }
}

/// Waits for tasks; false when there are none and will be none.
bool SerialQueue::takeBatch()
{
    std::unique_lock lock(mutex_);
    wakeup_.wait(lock, [this] { return closed_ || !waiting_.empty(); });
    batch_.swap(waiting_);
    return !batch_.empty();
}

void waitUntilSerialQueuesAreIdle()
{
    if (SerialQueue::isOnAny())
        fatalError("Waiting for the serial queues on one of them would never end");
    pendingTasks().waitForNone();
}

} // namespace platform::foundation
