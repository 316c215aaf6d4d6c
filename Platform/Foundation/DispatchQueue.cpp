#include "Platform/Foundation/DispatchQueue.hpp"

#include "Platform/Foundation/FatalError.hpp"
#include "Platform/Foundation/GlobalQueue.hpp"
#include "Platform/Foundation/Immortal.hpp"
#include "Platform/Foundation/MainQueue.hpp"
#include "Platform/Foundation/QueueImplementation.hpp"
#include "Platform/Foundation/SerialQueue.hpp"

#include <condition_variable>
#include <exception>
#include <mutex>
#include <utility>

namespace
{

using platform::foundation::GlobalQueue;
using platform::foundation::Immortal;
using platform::foundation::MainQueue;
using platform::foundation::SerialQueue;

/// One task that a thread waits for.
class AwaitedTask
{
public:
    explicit AwaitedTask(const std::function<void()> &task) : task_(task) {}

    void run()
    {
        std::exception_ptr error;
        try {
            task_();
        } catch (...) {
            error = std::current_exception();
        }
        const std::lock_guard lock(mutex_);
        error_ = std::move(error);
        hasRun_ = true;
        // Under the lock: the waiter destroys this object once it is given back.
        finished_.notify_one();
    }

    void wait()
    {
        std::unique_lock lock(mutex_);
        finished_.wait(lock, [this] { return hasRun_; });
        if (error_)
            std::rethrow_exception(std::move(error_));
    }

private:
    const std::function<void()> &task_;
    std::mutex mutex_;
    std::condition_variable finished_;
    bool hasRun_ = false;
    std::exception_ptr error_;
};

} // namespace

DispatchQueue &DispatchQueue::main()
{
    static Immortal<DispatchQueue> queue(
        [] { return DispatchQueue(std::make_shared<MainQueue>()); });
    return queue.value;
}

DispatchQueue &DispatchQueue::global()
{
    static Immortal<DispatchQueue> queue(
        [] { return DispatchQueue(std::make_shared<GlobalQueue>()); });
    return queue.value;
}

DispatchQueue::DispatchQueue(std::string label)
    : implementation_(SerialQueue::create(std::move(label)))
{
}

DispatchQueue::DispatchQueue(std::shared_ptr<Implementation> implementation)
    : implementation_(std::move(implementation))
{
}

DispatchQueue::~DispatchQueue()
{
    implementation_->close();
}

void DispatchQueue::async(std::function<void()> task)
{
    implementation_->async(std::move(task));
}

void DispatchQueue::sync(const std::function<void()> &task)
{
    if (implementation_->isCurrent())
        fatalError("sync on the queue '" + label() + "' was called on the queue itself");
    AwaitedTask awaited(task);
    implementation_->async([&awaited] { awaited.run(); });
    awaited.wait();
}

const std::string &DispatchQueue::label() const
{
    return implementation_->label();
}
