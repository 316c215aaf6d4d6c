#pragma once

#include "Platform/Foundation/DispatchQueue.hpp"
#include "Platform/Foundation/QueueImplementation.hpp"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace platform::foundation
{

/// A queue with one thread of its own, which keeps it alive until it is closed
/// and empty.
class SerialQueue final : public DispatchQueue::Implementation,
                          public std::enable_shared_from_this<SerialQueue>
{
public:
    /// A queue whose thread runs, named after the label's last component.
    static std::shared_ptr<SerialQueue> create(std::string label);

    /// For `create`.
    explicit SerialQueue(std::string label) : DispatchQueue::Implementation(std::move(label)) {}

    /// Puts the task at the end.
    void async(std::function<void()> task) override;
    bool isCurrent() const override;
    /// Waits for the thread's end, unless called on it.
    void close() override;

    /// Whether the calling thread belongs to any serial queue.
    static bool isOnAny();

private:
    void work();
    bool takeBatch();

    std::thread thread_;
    std::mutex mutex_;
    std::condition_variable wakeup_;
    bool closed_ = false;
    std::vector<std::function<void()>> waiting_;
    /// Taken out of `waiting_`; the thread's own.
    std::vector<std::function<void()>> batch_;
};

} // namespace platform::foundation
