#include "Animation/Gallery/Recording.hpp"

#include "Animation/Animator.hpp"
#include "Animation/Inspection.hpp"
#include "Platform/Foundation/Callback.hpp"
#include "Platform/Foundation/TimerDriver.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace animation::gallery
{

namespace
{

/// Timers that tick when they are told to, all of them at once.
class TickDriver final : public TimerDriver
{
public:
    std::unique_ptr<Schedule> schedule(double /*interval*/, std::function<void()> tick) override
    {
        auto claim = std::make_unique<Claim>(*this, std::move(tick));
        claims_.push_back(claim.get());
        return claim;
    }

    /// One tick; false when there is no timer any more.
    bool tick()
    {
        for (Claim *const claim : std::vector(claims_)) {
            const std::function<void()> tick = claim->tick;
            tick();
        }
        return !claims_.empty();
    }

private:
    struct Claim final : Schedule {
        Claim(TickDriver &of, std::function<void()> given) : driver(of), tick(std::move(given)) {}
        ~Claim() override { std::erase(driver.claims_, this); }
        Claim(const Claim &) = delete;
        Claim &operator=(const Claim &) = delete;

        TickDriver &driver;
        std::function<void()> tick;
    };

    std::vector<Claim *> claims_;
};

/// Lets one container run to its end, and writes down what becomes of its animators.
class Recorder
{
public:
    Recorder() { TimerDriver::install(driver_); }
    ~Recorder() { TimerDriver::install(nullptr); }
    Recorder(const Recorder &) = delete;
    Recorder &operator=(const Recorder &) = delete;

    std::shared_ptr<Animator> animator(const std::string &name, EnumEasing type,
                                       std::int64_t frames)
    {
        auto animator = Animator::create(0, 1, frames, 0.01F, type);
        const std::size_t lane = lanes_.size();
        lanes_.push_back({name, std::to_string(frames) + " frames", 0, {}, {}});
        animator->onAnimation = [this, lane](Animator &, float value) { note(lane, value); };
        animator->onFinished = [this, lane](Animator &, float value) {
            note(lane, value);
            mark(lane);
        };
        return animator;
    }

    void impulse(Impulse &impulse, const std::string &name, const std::string &what)
    {
        const std::size_t lane = lanes_.size();
        lanes_.push_back({name, what, 0, {0}, {}});
        impulse.onAnimation = [this, lane](Impulse &self) { note(lane, Inspection::value(self)); };
        impulse.onCollision = [this, lane](Impulse &) { mark(lane); };
    }

    /// Ticks until every timer has ended.
    TimelineRecording run(std::string title, std::string caption)
    {
        bool goesOn = true;
        for (; goesOn; goesOn = driver_->tick())
            ++now_;
        return {std::move(title), std::move(caption), std::move(lanes_), now_};
    }

private:
    void note(std::size_t lane, float value)
    {
        if (lanes_[lane].values.empty())
            lanes_[lane].firstTick = now_;
        lanes_[lane].values.push_back(value);
    }
    void mark(std::size_t lane) { lanes_[lane].marks.push_back(now_); }

    std::shared_ptr<TickDriver> driver_ = std::make_shared<TickDriver>();
    std::vector<Lane> lanes_;
    std::int64_t now_ = 0;
};

TimelineRecording recordStack()
{
    Recorder recorder;
    const auto stack = std::make_shared<AnimatorStack>();
    stack->add(recorder.animator("easeOutCubic", EASING_easeOutCubic, 40));
    stack->add(recorder.animator("easeInOutSine", EASING_easeInOutSine, 70));
    stack->add(recorder.animator("easeOutElastic", EASING_easeOutElastic, 110));
    stack->start();
    return recorder.run("AnimatorStack", "Side by side. Each animator is dropped when it has "
                                         "finished; a tick without work ends the stack.");
}

TimelineRecording recordChain()
{
    Recorder recorder;
    const auto chain = std::make_shared<AnimatorChain>();
    chain->add(recorder.animator("easeInQuad", EASING_easeInQuad, 30));
    chain->add(recorder.animator("easeOutBounce", EASING_easeOutBounce, 50));
    chain->add(recorder.animator("easeInOutBack", EASING_easeInOutBack, 30));
    chain->start();
    return recorder.run("AnimatorChain",
                        "One after another. The next animator is first stepped on the tick after "
                        "the end of the one before.");
}

TimelineRecording recordSequencer()
{
    Recorder recorder;
    const auto sequencer = std::make_shared<AnimationSequencer>();
    const auto place = [&](const std::string &name, EnumEasing type, std::int64_t frames,
                           std::int64_t at) {
        const auto animator =
            recorder.animator(name + " at frame " + std::to_string(at), type, frames);
        sequencer->add(animator, at);
    };
    place("easeOutExpo", EASING_easeOutExpo, 50, 0);
    place("easeInOutCubic", EASING_easeInOutCubic, 40, 20);
    place("easeOutBack", EASING_easeOutBack, 30, 35);
    place("easeInCirc", EASING_easeInCirc, 45, 65);
    sequencer->start();
    return recorder.run("AnimationSequencer", "From their places on a timeline of frames, which "
                                              "ends with the latest of them.");
}

TimelineRecording recordImpulse()
{
    Recorder recorder;
    const auto free = Impulse::create(0, 0.35F, 0.01F, 0.9F);
    const auto bounded = Impulse::create(0, 0.6F, 0.01F, 0.94F);
    bounded->setMinMax(true, -0.5F, 3);
    recorder.impulse(*free, "amount 0.35, intensity 0.9", "no bounds");
    recorder.impulse(*bounded, "amount 0.6, intensity 0.94", "bounds -0.5 and 3");
    free->start();
    bounded->start();
    return recorder.run("Impulse", "A push that decays with every tick. At a bound it turns "
                                   "round.");
}

std::string nameOf(std::int64_t rawValue)
{
    constexpr std::array families{"Quad", "Cubic", "Quart",   "Quint", "Sine",
                                  "Expo", "Circ",  "Elastic", "Back",  "Bounce"};
    constexpr std::array ways{"easeIn", "easeOut", "easeInOut", "easeOutIn"};
    if (rawValue == EASING_easeNone)
        return "easeNone";
    if (rawValue == EASING_easeLast)
        return "easeLast";
    const auto index = static_cast<std::size_t>(rawValue - 1);
    return std::string(ways[index % ways.size()]) + families[index / ways.size()];
}

} // namespace

std::vector<CurveRecording> recordCurves(std::int64_t frames)
{
    std::vector<CurveRecording> curves;
    for (std::int64_t raw = EASING_easeNone; raw <= EASING_easeLast; ++raw) {
        CurveRecording curve{nameOf(raw), {}};
        Animator animator;
        animator.setType(*easingFromRawValue(raw));
        for (std::int64_t frame = 0; frame <= frames; ++frame)
            curve.values.push_back(Inspection::curve(animator, frame, 0, 1, frames));
        curves.push_back(std::move(curve));
    }
    return curves;
}

std::vector<TimelineRecording> recordTimelines()
{
    return {recordStack(), recordChain(), recordSequencer(), recordImpulse()};
}

} // namespace animation::gallery
