#include "Platform/LV2/PollingThread.hpp"

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <utility>

#include <pthread.h>

namespace platform::lv2
{

struct PollingThread::State {
    std::mutex mutex;
    std::condition_variable wake;
    std::condition_variable done;
    bool ending = false;
    std::uint64_t wanted = 0;
    std::uint64_t completed = 0;
    std::chrono::milliseconds interval;
    std::function<void()> work;
};

PollingThread::PollingThread(const std::string &name, std::chrono::milliseconds interval,
                             std::function<void()> work)
    : state_(std::make_shared<State>())
{
    state_->interval = interval;
    state_->work = std::move(work);
    thread_ = std::thread([state = state_, name] {
        pthread_setname_np(pthread_self(), name.c_str());
        loop(state);
    });
}

PollingThread::~PollingThread()
{
    {
        const std::lock_guard lock(state_->mutex);
        state_->ending = true;
    }
    state_->wake.notify_one();
    if (thread_.get_id() == std::this_thread::get_id())
        thread_.detach();
    else
        thread_.join();
}

void PollingThread::runNow()
{
    if (thread_.get_id() == std::this_thread::get_id())
        return;
    std::unique_lock lock(state_->mutex);
    const std::uint64_t mine = ++state_->wanted;
    state_->wake.notify_one();
    state_->done.wait(lock, [&] { return state_->completed >= mine; });
}

void PollingThread::loop(const std::shared_ptr<State> &state)
{
    std::unique_lock lock(state->mutex);
    while (!state->ending) {
        const std::uint64_t answered = state->wanted;
        lock.unlock();
        state->work();
        lock.lock();
        state->completed = answered;
        state->done.notify_all();
        state->wake.wait_for(lock, state->interval,
                             [&] { return state->ending || state->wanted > answered; });
    }
}

} // namespace platform::lv2
