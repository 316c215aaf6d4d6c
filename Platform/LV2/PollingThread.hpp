#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>

namespace platform::lv2
{

/// A thread that does a piece of work again and again. It looks after what the
/// audio callback leaves behind: the callback wakes nobody, so somebody has to
/// look.
class PollingThread
{
public:
    /// `name` has at most 15 characters. `work` must not throw.
    PollingThread(const std::string &name, std::chrono::milliseconds interval,
                  std::function<void()> work);
    /// Waits for the end of a running piece of work, unless called from within
    /// it. It is not begun again.
    ~PollingThread();
    PollingThread(const PollingThread &) = delete;
    PollingThread &operator=(const PollingThread &) = delete;

    /// Returns when the work has been done once from its beginning. Called from
    /// within it, returns at once.
    void runNow();

private:
    struct State;
    static void loop(const std::shared_ptr<State> &state);

    std::shared_ptr<State> state_;
    std::thread thread_;
};

} // namespace platform::lv2
