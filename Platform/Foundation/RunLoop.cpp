#include "Platform/Foundation/RunLoop.hpp"

#include "Platform/Foundation/DispatchQueue.hpp"
#include "Platform/Foundation/FatalError.hpp"
#include "Platform/Foundation/MainSources.hpp"

#include <glib.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>

namespace
{

using platform::foundation::SourcePointer;

GMainLoop *mainLoop()
{
    static GMainLoop *const loop = g_main_loop_new(nullptr, FALSE);
    return loop;
}

/// What has to be there before the loop turns.
void prepareToTurn()
{
    if (!platform::foundation::isMainThread())
        fatalError("The main run loop was run on another thread");
    // The main queue is served by the loop from its first turn on, whoever uses
    // the queue first.
    DispatchQueue::main();
}

/// Ends a turn of the main context every `seconds`, for as long as it lives.
class Alarm
{
public:
    explicit Alarm(double seconds)
    {
        // Rounded up, so that the time has passed when it rings.
        const double milliseconds = std::clamp(std::ceil(seconds * 1000.0), 0.0, longest);
        source_.reset(g_timeout_source_new(static_cast<guint>(milliseconds)));
        g_source_set_callback(
            source_.get(), [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr,
            nullptr);
        g_source_attach(source_.get(), nullptr);
    }
    ~Alarm() { g_source_destroy(source_.get()); }
    Alarm(const Alarm &) = delete;
    Alarm &operator=(const Alarm &) = delete;

private:
    static constexpr double longest = 1e9;
    SourcePointer source_;
};

} // namespace

RunLoop &RunLoop::main()
{
    static RunLoop loop;
    return loop;
}

void RunLoop::run()
{
    prepareToTurn();
    g_main_loop_run(mainLoop());
}

void RunLoop::stop()
{
    g_main_loop_quit(mainLoop());
}

bool RunLoop::runUntil(const std::function<bool()> &condition, double timeout)
{
    prepareToTurn();
    using Seconds = std::chrono::duration<double>;
    const auto start = std::chrono::steady_clock::now();
    const Alarm alarm(timeout);
    while (!condition()) {
        if (Seconds(std::chrono::steady_clock::now() - start).count() >= timeout)
            return false;
        g_main_context_iteration(nullptr, TRUE);
    }
    return true;
}

void RunLoop::setSourcePriority(int priority)
{
    platform::foundation::setMainSourcePriority(priority);
}

int RunLoop::sourcePriority() const
{
    return platform::foundation::mainSourcePriority();
}
