#pragma once

#include "Platform/Foundation/Realtime.hpp"
#include "Platform/LV2/MessageRing.hpp"
#include "Platform/LV2/PollingThread.hpp"

#include <lv2/worker/worker.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>
#include <mutex>
#include <span>

namespace platform::lv2
{

/// Does a plug-in's work that takes too long for the audio callback (LV2 worker):
/// on a thread of its own, or in place while rendering offline, so that the same
/// input gives the same output. Work is never done twice at a time.
class Worker
{
public:
    /// A worker that does its work in place while `offline`, and starts a thread
    /// otherwise.
    explicit Worker(bool offline);
    /// Ends the thread.
    ~Worker();
    Worker(const Worker &) = delete;
    Worker &operator=(const Worker &) = delete;

    /// Whose work it is. Before any run, and before `start`.
    void attach(LV2_Handle instance, const LV2_Worker_Interface *interface);
    /// Begins the thread, if there is somebody to work for.
    void start();
    /// Ends the thread; what is still to do is left undone.
    void stop();

    /// Whether work is done in place. What waits is done first. Not during a run.
    void setOffline(bool offline);

    /// For the instance: to be called during a run.
    LV2_Worker_Schedule *scheduleFromRun() { return &fromRun_; }
    /// For `restore`: does the work at once, on the calling thread.
    LV2_Worker_Schedule *scheduleFromRestore() { return &fromRestore_; }

    /// Hands over the answers and ends the run. After each run, on its thread.
    REALTIME void finishRun() noexcept;

    /// For how long its thread has been at one piece of work; 0 while it does nothing.
    /// Any thread.
    std::chrono::nanoseconds workingFor() const;

    /// Holds off work for the lock's lifetime, but for the calling thread's own.
    std::unique_lock<std::recursive_mutex> pause() { return std::unique_lock(working_); }

private:
    using Clock = std::chrono::steady_clock;

    LV2_Worker_Status request(std::span<const std::byte> message);
    LV2_Worker_Status doNow(std::span<const std::byte> message);
    bool doNext();
    static LV2_Worker_Status respond(LV2_Worker_Respond_Handle handle, uint32_t size,
                                     const void *data);

    LV2_Handle instance_ = nullptr;
    const LV2_Worker_Interface *interface_ = nullptr;
    std::atomic<bool> offline_;

    // Requests: from the callback. Responses: from whoever holds `working_`.
    MessageRing requests_;
    MessageRing responses_;
    std::recursive_mutex working_;
    // When the thread began what it does; 0 while it does nothing.
    std::atomic<Clock::rep> begun_{0};

    LV2_Worker_Schedule fromRun_;
    LV2_Worker_Schedule fromRestore_;
    std::unique_ptr<PollingThread> thread_;
};

} // namespace platform::lv2
