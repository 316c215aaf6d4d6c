// How late timers of 5 ms and 9 ms tick, in the kit, in Qt, in GLib and in a bare loop
// over what the kernel has, while the machine is idle and while every core is busy:
// timer_lateness [SECONDS [ROUNDS [idle|busy]]]
// A round runs each of them for so long, in slices of a second that take turns in random
// order: what else the machine does for a moment must not fall on one of them alone.
#include "Animation/Animator.hpp"
#include "Benchmarks/Report/Report.hpp"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <QCoreApplication>
#include <QTimer>
#include <glib.h>
#include <poll.h>
#include <sys/timerfd.h>
#include <unistd.h>

namespace
{

using Clock = std::chrono::steady_clock;

constexpr std::array intervals{0.005F, 0.009F};

/// The lateness, in seconds, that a share of the ticks does not exceed.
double percentile(std::vector<double> late, double share)
{
    std::sort(late.begin(), late.end());
    return late[static_cast<std::size_t>(share * static_cast<double>(late.size() - 1))];
}

/// Ticks against the grid that begins when the timer starts. A tick that is later
/// than a whole interval is held against the grid point that it follows.
class Grid
{
public:
    explicit Grid(float interval) : interval_(static_cast<double>(interval)) {}

    void start() { start_ = Clock::now(); }

    void tick()
    {
        const double elapsed = std::chrono::duration<double>(Clock::now() - start_).count();
        point_ = std::max(point_ + 1, std::floor(elapsed / interval_));
        late_.push_back(elapsed - point_ * interval_);
    }

    /// By how much the early ones among the ticks come later in the last quarter than
    /// in the first, in seconds: how far the timer's own grid has moved.
    double drift() const
    {
        const auto quarter = static_cast<std::ptrdiff_t>(late_.size() / 4);
        return percentile({late_.end() - quarter, late_.end()}, 0.1) -
               percentile({late_.begin(), late_.begin() + quarter}, 0.1);
    }

    /// How late each tick was, in seconds.
    const std::vector<double> &late() const { return late_; }
    /// Grid points without a tick.
    double missed() const { return point_ - static_cast<double>(late_.size()); }
    float interval() const { return static_cast<float>(interval_); }

private:
    double interval_;
    Clock::time_point start_;
    double point_ = 0;
    std::vector<double> late_;
};

using Grids = std::array<Grid, intervals.size()>;

void runMainLoopFor(double seconds)
{
    GMainLoop *const loop = g_main_loop_new(nullptr, FALSE);
    const auto quit = [](gpointer running) -> gboolean {
        g_main_loop_quit(static_cast<GMainLoop *>(running));
        return G_SOURCE_REMOVE;
    };
    g_timeout_add(static_cast<guint>(seconds * 1000), quit, loop);
    g_main_loop_run(loop);
    g_main_loop_unref(loop);
}

void runKit(Grids &grids, double seconds)
{
    // The program's first timer makes what all of them run on.
    NSTimer::scheduledTimer(1, true, [](NSTimer &) {})->invalidate();
    std::vector<std::shared_ptr<Animator>> animators;
    for (Grid &grid : grids) {
        animators.push_back(Animator::create(0, 1, INT32_MAX, grid.interval()));
        animators.back()->onAnimation = [&grid](Animator &, float) { grid.tick(); };
        grid.start();
        animators.back()->start();
    }
    runMainLoopFor(seconds);
    for (const auto &animator : animators)
        animator->stop();
}

guint milliseconds(const Grid &grid)
{
    return static_cast<guint>(std::lround(grid.interval() * 1000));
}

void runGLib(Grids &grids, double seconds)
{
    std::vector<guint> sources;
    for (Grid &grid : grids) {
        grid.start();
        sources.push_back(g_timeout_add(
            milliseconds(grid),
            [](gpointer data) -> gboolean {
                static_cast<Grid *>(data)->tick();
                return G_SOURCE_CONTINUE;
            },
            &grid));
    }
    runMainLoopFor(seconds);
    for (const guint source : sources)
        g_source_remove(source);
}

void runQt(Grids &grids, double seconds)
{
    // Gone afterwards: it adds sources of its own to GLib's main loop.
    int argc = 0;
    const QCoreApplication application(argc, nullptr);
    std::array<QTimer, intervals.size()> timers;
    for (std::size_t i = 0; i < grids.size(); ++i) {
        timers[i].setTimerType(Qt::PreciseTimer);
        QObject::connect(&timers[i], &QTimer::timeout, [&grid = grids[i]] { grid.tick(); });
        grids[i].start();
        timers[i].start(static_cast<int>(milliseconds(grids[i])));
    }
    QTimer::singleShot(static_cast<int>(seconds * 1000), [] { QCoreApplication::quit(); });
    QCoreApplication::exec();
}

/// Nothing but the kernel's timers and a loop: nobody who waits as others do is served
/// sooner.
void runTimerfd(Grids &grids, double seconds)
{
    std::array<pollfd, intervals.size()> timers{};
    for (std::size_t i = 0; i < grids.size(); ++i) {
        timers[i] = {timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC), POLLIN, 0};
        const timespec period{0, milliseconds(grids[i]) * 1'000'000L};
        const itimerspec setting{period, period};
        grids[i].start();
        timerfd_settime(timers[i].fd, 0, &setting, nullptr);
    }
    const auto end = Clock::now() + std::chrono::duration<double>(seconds);
    while (Clock::now() < end) {
        poll(timers.data(), timers.size(), -1);
        for (std::size_t i = 0; i < grids.size(); ++i) {
            std::uint64_t expirations = 0;
            if ((timers[i].revents & POLLIN) != 0 &&
                read(timers[i].fd, &expirations, sizeof(expirations)) > 0)
                grids[i].tick();
        }
    }
    for (const pollfd &timer : timers)
        close(timer.fd);
}

/// Keeps every core busy while it lives.
class Load
{
public:
    Load()
    {
        for (unsigned core = 0; core < std::thread::hardware_concurrency(); ++core)
            threads_.emplace_back([this] {
                while (!ended_)
                    std::atomic_signal_fence(std::memory_order_seq_cst);
            });
    }
    ~Load()
    {
        ended_ = true;
        for (std::thread &thread : threads_)
            thread.join();
    }
    Load(const Load &) = delete;
    Load &operator=(const Load &) = delete;

private:
    std::atomic<bool> ended_ = false;
    std::vector<std::thread> threads_;
};

struct Driver {
    const char *name;
    void (*run)(Grids &, double seconds);
};
constexpr std::array drivers{Driver{"kit", runKit}, Driver{"Qt precise", runQt},
                             Driver{"g_timeout_add", runGLib}, Driver{"bare timerfd", runTimerfd}};

constexpr int kit = 0;

/// The ticks of one driver's timers in all slices of a round.
struct Pool {
    std::array<std::vector<double>, intervals.size()> late; // in seconds
    std::array<double, intervals.size()> missed{};
};
using Pools = std::array<Pool, drivers.size()>;

void runSlice(std::size_t driver, double seconds, Pool &pool)
{
    Grids grids{Grid(intervals[0]), Grid(intervals[1])};
    drivers[driver].run(grids, seconds);
    for (std::size_t i = 0; i < grids.size(); ++i) {
        pool.late[i].insert(pool.late[i].end(), grids[i].late().begin(), grids[i].late().end());
        pool.missed[i] += grids[i].missed();
    }
}

Pools runRound(double seconds, std::mt19937 &random)
{
    const int slices = std::max(1, static_cast<int>(std::lround(seconds)));
    std::array<std::size_t, drivers.size()> order{};
    std::iota(order.begin(), order.end(), std::size_t(0));
    Pools pools;
    for (int slice = 0; slice < slices; ++slice) {
        std::shuffle(order.begin(), order.end(), random);
        for (const std::size_t driver : order)
            runSlice(driver, seconds / slices, pools[driver]);
    }
    return pools;
}

/// How far the kit's timers move in so many seconds without a break, in ms.
std::array<double, intervals.size()> driftOfKit(double seconds)
{
    Grids grids{Grid(intervals[0]), Grid(intervals[1])};
    drivers[kit].run(grids, seconds);
    return {1e3 * grids[0].drift(), 1e3 * grids[1].drift()};
}

void measure(const char *load, double seconds, int rounds)
{
    std::mt19937 random(1);
    // Round by round, for each interval.
    std::array<std::array<std::vector<double>, drivers.size()>, intervals.size()> late;
    std::array<std::vector<double>, intervals.size()> drift;
    for (int round = 0; round < rounds; ++round) {
        const Pools pools = runRound(seconds, random);
        const auto drifted = driftOfKit(seconds);
        for (std::size_t i = 0; i < intervals.size(); ++i) {
            for (std::size_t driver = 0; driver < drivers.size(); ++driver) {
                const std::vector<double> &ticks = pools[driver].late[i];
                late[i][driver].push_back(percentile(ticks, 0.99));
                std::printf("%-13s %-4s %ld ms: %5zu ticks, %4.0f missed, late p50 %8.1f us, "
                            "p99 %8.1f us\n",
                            drivers[driver].name, load, std::lround(1000 * intervals[i]),
                            ticks.size(), pools[driver].missed[i], 1e6 * percentile(ticks, 0.5),
                            1e6 * late[i][driver].back());
            }
            std::fflush(stdout);
            drift[i].push_back(drifted[i]);
        }
    }
    for (std::size_t i = 0; i < intervals.size(); ++i) {
        const std::string which =
            std::to_string(std::lround(intervals[i] * 1000)) + " ms timer, " + load;
        const std::vector<double> &ours = late[i][kit];
        printRow(
            {"Lateness (p99) of a " + which, "Qt's precise timer", 0.2, ratios(ours, late[i][1])});
        printRow({"Lateness (p99) of a " + which, "g_timeout_add", {}, ratios(ours, late[i][2])});
        printRow({"Lateness (p99) of a " + which, "a bare timerfd", {}, ratios(ours, late[i][3])});
        printRow({"Drift of a " + which, "", 0.1, drift[i], "ms"});
    }
}

} // namespace

int main(int argc, char **argv)
{
    const double seconds = argc > 1 ? std::atof(argv[1]) : 5;
    const int rounds = argc > 2 ? std::atoi(argv[2]) : 5;
    const std::string only = argc > 3 ? argv[3] : "";
    if (only != "busy")
        measure("idle", seconds, rounds);
    if (only == "idle")
        return 0;
    const Load load;
    measure("busy", seconds, rounds);
}
