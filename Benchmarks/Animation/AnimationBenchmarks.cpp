// One step of the kit beside its peers on the same work, and what stack and sequencer
// add to it. Times are those of whole passes over all objects, which everyone holds in
// the same way: by shared pointers, each in one allocation, in the order of creation.
// Who is compared takes turns within milliseconds: whoever shares the machine's cache
// and memory slows each alike.
#include "Animation/Animator.hpp"
#include "Benchmarks/Animation/PlainCurves.hpp"
#include "Benchmarks/Report/Report.hpp"

#include <benchmark/benchmark.h>

#include <QEasingCurve>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace
{

constexpr std::int64_t frames = 1000;
constexpr float source = 10;
constexpr float destination = 250;

/// The families in the order in which kit and Qt number them, four curves each.
struct Family {
    const char *name;
    std::array<plain::Curve, 4> curves;
};

template <plain::Curve In>
constexpr Family family(const char *name)
{
    return {name, {In, plain::out<In>, plain::inOut<In>, plain::outIn<In>}};
}

constexpr std::array families{
    family<plain::power<2>>("Quad"),  family<plain::power<3>>("Cubic"),
    family<plain::power<4>>("Quart"), family<plain::power<5>>("Quint"),
    family<plain::sine>("Sine"),      family<plain::expo>("Expo"),
    family<plain::circ>("Circ"),      family<plain::elastic>("Elastic"),
    family<plain::back>("Back"),      family<plain::bounce>("Bounce"),
};

/// Animators on the same curve that never end, each with a callback that takes its
/// value to where it is wanted.
class Animators
{
public:
    Animators(std::int64_t count, EnumEasing type) : values_(static_cast<std::size_t>(count))
    {
        for (float &value : values_) {
            all.push_back(Animator::create(source, destination, frames, 0.005F, type));
            all.back()->looped = true;
            all.back()->onAnimation = [&value](Animator &, float now) { value = now; };
        }
    }
    ~Animators() { benchmark::DoNotOptimize(values_.data()); }
    Animators(const Animators &) = delete;
    Animators &operator=(const Animators &) = delete;

    void step() const
    {
        for (const auto &animator : all)
            animator->animate();
    }

    std::vector<std::shared_ptr<Animator>> all;

private:
    std::vector<float> values_;
};

/// Moves a value along a curve that is called by its address, and no more.
struct Run {
    plain::Curve curve;
    float start = source;
    float amount = destination - source;
    float length = frames;
    float step = 0;
    float value = source;

    void animate()
    {
        value = start + amount * curve(step / length);
        if (++step > length)
            step = 0;
    }
};

/// The same in as much memory as an animator takes.
struct LargeRun : Run {
    std::array<std::byte, sizeof(Animator) - sizeof(Run)> rest{};
};
static_assert(sizeof(LargeRun) == sizeof(Animator));

struct QtRun {
    void animate()
    {
        value = start + amount * static_cast<float>(curve.valueForProgress(step / length));
        if (++step > length)
            step = 0;
    }

    QEasingCurve curve;
    float start = source;
    float amount = destination - source;
    double length = frames;
    double step = 0;
    float value = source;
};

/// A peer's objects.
template <typename Record>
class Records
{
public:
    template <typename Curve>
    Records(std::int64_t count, Curve curve)
    {
        for (std::int64_t i = 0; i < count; ++i) {
            all_.push_back(std::make_shared<Record>());
            all_.back()->curve = curve;
        }
    }

    void step() const
    {
        for (const auto &record : all_) {
            record->animate();
            benchmark::DoNotOptimize(record->value);
        }
    }

private:
    std::vector<std::shared_ptr<Record>> all_;
};

/// What the thread has computed so far, in nanoseconds.
double processorTime()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return 1e9 * static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec);
}

/// Nanoseconds a step of one object, from turns that others' turns come between.
class Turns
{
public:
    explicit Turns(std::int64_t objects)
        : passes_(std::max<std::int64_t>(1, leastSteps / objects)),
          steps_(static_cast<double>(passes_ * objects))
    {
    }

    /// One turn. What it needs is in the caches as far as it fits there: nobody begins
    /// with what the one before has left.
    template <typename Objects>
    void take(const Objects &objects)
    {
        objects.step();
        const double start = processorTime();
        for (std::int64_t pass = 0; pass < passes_; ++pass)
            objects.step();
        times_.push_back((processorTime() - start) / steps_);
    }

    double middle() const { return median(times_); }
    double ratioTo(const Turns &peer) const { return median(ratios(times_, peer.times_)); }

private:
    static constexpr std::int64_t leastSteps = 20'000;

    std::int64_t passes_;
    double steps_;
    std::vector<double> times_;
};

/// The kit, function pointers in such records, and Qt.
template <typename Record>
void step(benchmark::State &state, EnumEasing type, plain::Curve curve, QEasingCurve::Type qt)
{
    const std::int64_t count = state.range(0);
    const Animators animators(count, type);
    const Records<Record> records(count, curve);
    const Records<QtRun> runs(count, qt);
    Turns kit(count);
    Turns pointer(count);
    Turns library(count);
    for (auto _ : state) {
        kit.take(animators);
        pointer.take(records);
        library.take(runs);
    }
    state.counters["kit"] = kit.middle();
    state.counters["pointer"] = pointer.middle();
    state.counters["qt"] = library.middle();
    state.counters["kit/pointer"] = kit.ratioTo(pointer);
    state.counters["kit/qt"] = kit.ratioTo(library);
}

void tickStack(benchmark::State &state)
{
    const Animators animators(state.range(0), EASING_easeInOutQuad);
    AnimatorStack stack;
    for (const auto &animator : animators.all)
        stack.add(animator);
    for (auto _ : state)
        stack.animate();
}

/// A tick within which every animator finishes; `entries` of each in the stack.
void finishStack(benchmark::State &state, int entries)
{
    std::vector<std::shared_ptr<Animator>> animators;
    for (std::int64_t i = 0; i < state.range(0) / entries; ++i)
        animators.push_back(std::make_shared<Animator>());
    AnimatorStack stack;
    for (auto _ : state) {
        state.PauseTiming();
        stack.reset();
        for (const auto &animator : animators)
            animator->setup(0, 1, 0);
        for (int entry = 0; entry < entries; ++entry) {
            for (const auto &animator : animators)
                stack.add(animator);
        }
        state.ResumeTiming();
        stack.animate();
    }
}

constexpr std::int64_t timelineLength = 1'000'000;

/// Animators of 100 frames, spread evenly over the timeline, in random order.
std::vector<std::int64_t> placesInRandomOrder(std::int64_t count)
{
    std::mt19937 random(1);
    std::uniform_int_distribution<std::int64_t> anywhere(1, timelineLength);
    std::vector<std::int64_t> places;
    for (std::int64_t i = 0; i < count; ++i)
        places.push_back(anywhere(random));
    return places;
}

/// From an empty timeline to the end of the first tick, which sorts.
void placeOnTimeline(benchmark::State &state)
{
    const auto places = placesInRandomOrder(state.range(0));
    std::vector<std::shared_ptr<Animator>> animators;
    for (std::size_t i = 0; i < places.size(); ++i)
        animators.push_back(Animator::create(source, destination, 100));
    AnimationSequencer sequencer;
    for (auto _ : state) {
        for (std::size_t i = 0; i < places.size(); ++i)
            sequencer.add(animators[i], places[i]);
        sequencer.animate();
        state.PauseTiming();
        sequencer.removeAll();
        state.ResumeTiming();
    }
}

/// A tick that steps ten animators while so many others wait for their start frames.
void tickSequencer(benchmark::State &state)
{
    AnimationSequencer sequencer;
    for (const std::int64_t place : placesInRandomOrder(state.range(0)))
        sequencer.add(Animator::create(source, destination, 100), place);
    for (int i = 0; i < 10; ++i) {
        const auto running = Animator::create(source, destination, 100);
        running->looped = true;
        sequencer.add(running, 0);
    }
    sequencer.animate();
    for (auto _ : state)
        sequencer.animate();
}

void registerSteps(const std::string &name, EnumEasing type, plain::Curve curve,
                   QEasingCurve::Type qt)
{
    constexpr int turns = 15;
    benchmark::RegisterBenchmark(("step/" + name).c_str(), step<Run>, type, curve, qt)
        ->Arg(1)
        ->Arg(1000)
        ->Iterations(turns);
    benchmark::RegisterBenchmark(("step/" + name).c_str(), step<LargeRun>, type, curve, qt)
        ->Arg(100'000)
        ->Iterations(turns);
}

void registerAll()
{
    registerSteps("easeNone", EASING_easeNone, plain::linear, QEasingCurve::Linear);
    const std::array ways{"easeIn", "easeOut", "easeInOut", "easeOutIn"};
    int type = EASING_easeInQuad; // Qt's numbers are the same
    for (const Family &family : families) {
        for (std::size_t way = 0; way < ways.size(); ++way, ++type)
            registerSteps(std::string(ways[way]) + family.name, static_cast<EnumEasing>(type),
                          family.curves[way], static_cast<QEasingCurve::Type>(type));
    }
    const auto sizes = [](benchmark::internal::Benchmark *benchmark) {
        benchmark->Arg(1000)->Arg(10'000)->Arg(100'000);
    };
    benchmark::RegisterBenchmark("stack/tick", tickStack)->Apply(sizes);
    benchmark::RegisterBenchmark("stack/finish", finishStack, 1)->Apply(sizes);
    benchmark::RegisterBenchmark("stack/finish-twice", finishStack, 2)->Apply(sizes);
    benchmark::RegisterBenchmark("sequencer/place", placeOnTimeline)->Apply(sizes);
    benchmark::RegisterBenchmark("sequencer/tick", tickSequencer)->Apply(sizes);
}

} // namespace

int main(int argc, char **argv)
{
    benchmark::AddCustomContext("size of an animator", std::to_string(sizeof(Animator)));
    benchmark::AddCustomContext("Qt", qVersion());
    registerAll();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
