#pragma once

#include "Platform/Foundation/DispatchQueue.hpp"

#include <functional>
#include <string>
#include <utility>

/// What a queue does; one subclass for each kind.
class DispatchQueue::Implementation
{
public:
    /// A queue of that name, without threads so far.
    explicit Implementation(std::string label) : label_(std::move(label)) {}
    virtual ~Implementation() = default;
    Implementation(const Implementation &) = delete;
    Implementation &operator=(const Implementation &) = delete;

    /// Submits `task` and returns at once.
    virtual void async(std::function<void()> task) = 0;

    /// Whether the calling thread is one that runs this queue's tasks.
    virtual bool isCurrent() const = 0;

    /// Ends the queue's threads when its tasks have run.
    virtual void close() {}

    /// What it was named, whole.
    const std::string &label() const { return label_; }

protected:
    /// Runs `task` and destroys it. An exception is a fatal error: nobody is
    /// there to catch it.
    void perform(std::function<void()> &task) const;

private:
    std::string label_;
};

namespace platform::foundation
{

/// Names the calling thread after the last component of `label`.
void nameThreadAfter(const std::string &label);

} // namespace platform::foundation
