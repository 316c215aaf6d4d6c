#include "Platform/Foundation/GLibTimerDriver.hpp"

#include "Platform/Foundation/FatalError.hpp"
#include "Platform/Foundation/MainSources.hpp"
#include "Platform/Foundation/MainThread.hpp"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <exception>
#include <map>
#include <string>
#include <system_error>
#include <utility>

#include <glib.h>
#include <sys/timerfd.h>
#include <unistd.h>

namespace platform::foundation
{

namespace
{

constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;

/// The monotonic clock, in nanoseconds.
std::int64_t now()
{
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec * nanosecondsPerSecond + time.tv_nsec;
}

} // namespace

/// The timers in the order in which they are due, and the timerfd set to the first.
class GLibTimerDriver::Timers : public std::enable_shared_from_this<Timers>
{
public:
    Timers() : descriptor_(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK))
    {
        if (descriptor_ < 0)
            fatalError("Could not make a timer: " +
                       std::system_category().default_error_condition(errno).message());
    }
    ~Timers() { close(descriptor_); }
    Timers(const Timers &) = delete;
    Timers &operator=(const Timers &) = delete;

    int descriptor() const { return descriptor_; }

    std::unique_ptr<Schedule> add(std::int64_t interval, std::function<void()> tick);

    /// Sets the timerfd when another timer has become the first.
    void arm();

    /// Calls every timer that is due, once.
    void serve();

private:
    /// When a timer is due; among equals the one that was made first comes first.
    using Due = std::pair<std::int64_t, std::uint64_t>;

    struct Timer {
        std::int64_t interval = 0;
        std::function<void()> tick;
        Due due;
        bool running = false;
    };
    class Claim;

    void advance(std::map<Due, std::shared_ptr<Timer>>::iterator first, std::int64_t time);

    static constexpr std::int64_t disarmed = 0;
    /// After it rang: readable until it is set again, if only to nothing.
    static constexpr std::int64_t rung = -1;

    int descriptor_;
    std::int64_t armedFor_ = disarmed;
    std::uint64_t made_ = 0;
    std::map<Due, std::shared_ptr<Timer>> timers_;
};

/// Takes its timer out of the list when it goes.
class GLibTimerDriver::Timers::Claim final : public TimerDriver::Schedule
{
public:
    Claim(std::shared_ptr<Timers> timers, std::shared_ptr<Timer> timer)
        : timers_(std::move(timers)), timer_(std::move(timer))
    {
    }
    ~Claim() override { timers_->timers_.erase(timer_->due); }
    Claim(const Claim &) = delete;
    Claim &operator=(const Claim &) = delete;

private:
    std::shared_ptr<Timers> timers_;
    std::shared_ptr<Timer> timer_;
};

std::unique_ptr<TimerDriver::Schedule> GLibTimerDriver::Timers::add(std::int64_t interval,
                                                                    std::function<void()> tick)
{
    const auto timer = std::make_shared<Timer>();
    timer->interval = interval;
    timer->tick = std::move(tick);
    timer->due = {now() + interval, made_++};
    timers_.emplace(timer->due, timer);
    return std::make_unique<Claim>(shared_from_this(), timer);
}

void GLibTimerDriver::Timers::arm()
{
    const std::int64_t next = timers_.empty() ? disarmed : timers_.begin()->first.first;
    if (next == armedFor_)
        return;
    itimerspec setting{};
    setting.it_value.tv_sec = next / nanosecondsPerSecond;
    setting.it_value.tv_nsec = next % nanosecondsPerSecond;
    timerfd_settime(descriptor_, TFD_TIMER_ABSTIME, &setting, nullptr);
    armedFor_ = next;
}

void GLibTimerDriver::Timers::serve()
{
    const auto self = shared_from_this(); // a block may end the driver
    armedFor_ = rung;
    const std::int64_t time = now();
    while (!timers_.empty() && timers_.begin()->first.first <= time) {
        const std::shared_ptr<Timer> timer = timers_.begin()->second;
        advance(timers_.begin(), time);
        // Its block runs the loop, and this is that inner run.
        if (timer->running)
            continue;
        timer->running = true;
        timer->tick();
        timer->running = false;
    }
}

/// Moves the first timer to the first point of its grid after `time`.
void GLibTimerDriver::Timers::advance(std::map<Due, std::shared_ptr<Timer>>::iterator first,
                                      std::int64_t time)
{
    auto node = timers_.extract(first);
    Timer &timer = *node.mapped();
    const std::int64_t missed = (time - timer.due.first) / timer.interval;
    timer.due.first += (missed + 1) * timer.interval;
    node.key() = timer.due;
    timers_.insert(std::move(node));
}

/// The GSource, with the list that it serves.
struct GLibTimerDriver::Source {
    GSource base;
    Timers *timers;

    static gboolean prepare(GSource *source, gint *timeout)
    {
        reinterpret_cast<Source *>(source)->timers->arm();
        *timeout = -1;
        return FALSE;
    }

    static gboolean dispatch(GSource *source, GSourceFunc /*callback*/, gpointer /*data*/)
    {
        try {
            reinterpret_cast<Source *>(source)->timers->serve();
        } catch (const std::exception &error) {
            fatalError(std::string("A timer's block threw an exception: ") + error.what());
        } catch (...) {
            fatalError("A timer's block threw an exception");
        }
        return G_SOURCE_CONTINUE;
    }
};

GLibTimerDriver::GLibTimerDriver() : timers_(std::make_shared<Timers>())
{
    static GSourceFuncs functions{&Source::prepare, nullptr, &Source::dispatch,
                                  nullptr,          nullptr, nullptr};
    source_ = g_source_new(&functions, sizeof(Source));
    reinterpret_cast<Source *>(source_)->timers = timers_.get();
    g_source_set_static_name(source_, "timers");
    g_source_set_can_recurse(source_, TRUE);
    g_source_add_unix_fd(source_, timers_->descriptor(), G_IO_IN);
    attachToMainContext(source_);
}

GLibTimerDriver::~GLibTimerDriver()
{
    detachFromMainContext(source_);
    g_source_unref(source_);
}

std::unique_ptr<TimerDriver::Schedule> GLibTimerDriver::schedule(double interval,
                                                                 std::function<void()> tick)
{
    if (!isMainThread())
        fatalError("A timer was scheduled on another thread than the main thread");
    const double nanoseconds = std::round(interval * static_cast<double>(nanosecondsPerSecond));
    return timers_->add(std::max<std::int64_t>(1, static_cast<std::int64_t>(nanoseconds)),
                        std::move(tick));
}

} // namespace platform::foundation

/// Linked into every program that links `glib_timer_driver`, whether or not it names
/// this: its build asks for the symbol.
extern "C" {
extern const bool parvaneTimerDriverIsProvided;
const bool parvaneTimerDriverIsProvided = [] {
    TimerDriver::setDefault([]() -> std::shared_ptr<TimerDriver> {
        return std::make_shared<platform::foundation::GLibTimerDriver>();
    });
    return true;
}();
}
