#pragma once

#include "Platform/Foundation/MainThread.hpp" // IWYU pragma: export

#include <functional>
#include <memory>
#include <string>

/// Runs tasks in first-in first-out order on threads of its own.
///
/// The main queue runs on the main run loop. The global queue runs its tasks
/// side by side on a small pool. A queue made with a label is serial and owns
/// one thread, named after the label's last component.
///
/// Every operation may be called on any thread.
class DispatchQueue
{
public:
    /// The queue of the main thread, drained while the run loop runs.
    static DispatchQueue &main();
    /// The pool for work that may take long.
    static DispatchQueue &global();

    /// A serial queue with a thread of its own.
    explicit DispatchQueue(std::string label);
    /// Tasks already submitted still run; the destructor waits for them, unless
    /// it runs on the queue's own thread.
    ~DispatchQueue();
    DispatchQueue(const DispatchQueue &) = delete;
    DispatchQueue &operator=(const DispatchQueue &) = delete;

    /// Submits `task` and returns at once.
    void async(std::function<void()> task);

    /// Runs `task` on the queue and returns when it has run. An exception of the
    /// task is passed on. Called on the queue itself it would never return, so
    /// that is a fatal error; so is any call on the global queue from its pool.
    void sync(const std::function<void()> &task);

    /// What it was named, whole.
    const std::string &label() const;

    class Implementation;

private:
    explicit DispatchQueue(std::shared_ptr<Implementation> implementation);
    std::shared_ptr<Implementation> implementation_;
};

namespace platform::foundation
{

/// Waits until no serial queue has a task waiting or running. Deterministic
/// rendering uses it to let what a rendered block set off settle before the next.
/// Not to be called on a serial queue.
void waitUntilSerialQueuesAreIdle();

} // namespace platform::foundation
