#pragma once

#include "Animation/Timeline.hpp"
#include "Animation/WalkedList.hpp"
#include "Platform/Foundation/Callback.hpp"
#include "Platform/Foundation/NSTimer.hpp"
#include "Platform/Foundation/SlimCallback.hpp"

#include <concepts> // IWYU pragma: keep
#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_set>
#include <vector>

// The whole kit runs on the main thread. Its objects are held by shared pointers
// (`std::make_shared` or `create`), and a running timer keeps its object alive until
// it is stopped. Callbacks are called from within `animate()`, whose caller holds the
// object, and may call back into the kit. Operations call each other through their
// overridable entries.

namespace animation
{
struct Inspection;
} // namespace animation

/// How a value travels from its source to its destination. The end marker is a
/// curve like the others: it moves as `EASING_easeNone` does.
enum EnumEasing : std::int64_t {
    EASING_easeNone = 0,
    EASING_easeInQuad = 1,
    EASING_easeOutQuad = 2,
    EASING_easeInOutQuad = 3,
    EASING_easeOutInQuad = 4,
    EASING_easeInCubic = 5,
    EASING_easeOutCubic = 6,
    EASING_easeInOutCubic = 7,
    EASING_easeOutInCubic = 8,
    EASING_easeInQuart = 9,
    EASING_easeOutQuart = 10,
    EASING_easeInOutQuart = 11,
    EASING_easeOutInQuart = 12,
    EASING_easeInQuint = 13,
    EASING_easeOutQuint = 14,
    EASING_easeInOutQuint = 15,
    EASING_easeOutInQuint = 16,
    EASING_easeInSine = 17,
    EASING_easeOutSine = 18,
    EASING_easeInOutSine = 19,
    EASING_easeOutInSine = 20,
    EASING_easeInExpo = 21,
    EASING_easeOutExpo = 22,
    EASING_easeInOutExpo = 23,
    EASING_easeOutInExpo = 24,
    EASING_easeInCirc = 25,
    EASING_easeOutCirc = 26,
    EASING_easeInOutCirc = 27,
    EASING_easeOutInCirc = 28,
    EASING_easeInElastic = 29,
    EASING_easeOutElastic = 30,
    EASING_easeInOutElastic = 31,
    EASING_easeOutInElastic = 32,
    EASING_easeInBack = 33,
    EASING_easeOutBack = 34,
    EASING_easeInOutBack = 35,
    EASING_easeOutInBack = 36,
    EASING_easeInBounce = 37,
    EASING_easeOutBounce = 38,
    EASING_easeInOutBounce = 39,
    EASING_easeOutInBounce = 40,
    EASING_easeLast = 41,
};

/// The curve with that raw value, or none outside 0 to 41.
std::optional<EnumEasing> easingFromRawValue(std::int64_t rawValue);

/// Moves one value from a source to a destination in a number of steps (frames), one
/// step a tick, along a curve. A run of N frames takes N + 1 ticks: `onAnimation`
/// hears the value before each step, the source first, and `onFinished` the
/// destination.
class Animator : public std::enable_shared_from_this<Animator>
{
public:
    /// The number of animators alive.
    static std::int64_t classCount;

    /// An idle animator.
    Animator();
    virtual ~Animator();
    Animator(const Animator &) = delete;
    Animator &operator=(const Animator &) = delete;

    /// An animator, or one of a class derived from it, that is set up.
    template <typename Kind = Animator>
    requires std::derived_from<Kind, Animator>
    static std::shared_ptr<Kind> create(float sourceValue, float destinationValue,
                                        std::int64_t frames, float interval = 0.009F,
                                        EnumEasing type = EASING_easeNone)
    {
        auto animator = std::make_shared<Kind>();
        animator->setup(sourceValue, destinationValue, frames, interval, type);
        return animator;
    }

    /// Prepares a run of `frames` steps (negative ones, and any way of no length,
    /// become 0), `interval` seconds apart when it runs on a timer of its own. It
    /// starts nothing and leaves timer, `looped` and callbacks as they are.
    virtual void setup(float source, float destination, std::int64_t frames,
                       float interval = 0.009F, EnumEasing type = EASING_easeNone);
    /// Prepares the same run backwards.
    virtual void reverse();
    /// Goes to the destination at once, in a run of one linear step: the source is
    /// reported, then the end.
    virtual void undo();
    /// Prepares the run anew, with the frames last given to `setup` but with the
    /// default interval and curve.
    virtual void rewind();

    /// Where the run ends.
    virtual float getDestinationValue() const;
    /// Where the run began.
    virtual float getSourceValue() const;
    /// The current value: after `animate`, the one that the next step reports.
    virtual float getValue() const;

    /// One step, or what comes after the last: the turn-back of a looped run, else
    /// the end. Does nothing when idle.
    virtual void animate();
    /// Whether it is idle: never set up, stopped or at its end.
    virtual bool isFinished() const;

    /// Steps itself on a timer from now on. A timer started before is not ended: both
    /// step it.
    virtual void start();
    /// Ends the timer and the run, and clears `looped`.
    virtual void stop();
    /// Changes the curve, from the next step on.
    virtual void setType(EnumEasing type);
    /// Changes the interval, in seconds, from the next `start` on.
    virtual void setInterval(float interval);

    ///@{
    /// The curves take the frame, the source, the distance and the number of frames,
    /// and answer the value. Single-precision arithmetic in the order of the formulas
    /// (Penner's, with departures that are meant to be). Nothing is clamped; 0 frames
    /// give infinities and not-a-number. An override changes every curve that is
    /// built on it.
    virtual float easeInElastic(std::int64_t currentFrame, float sourceValue, float amount,
                                std::int64_t numFrames) const;
    virtual float easeOutElastic(std::int64_t currentFrame, float sourceValue, float amount,
                                 std::int64_t numFrames) const;
    virtual float easeInOutElastic(std::int64_t currentFrame, float sourceValue, float amount,
                                   std::int64_t numFrames) const;
    virtual float easeOutInElastic(std::int64_t currentFrame, float sourceValue, float amount,
                                   std::int64_t numFrames) const;
    virtual float easeInBack(std::int64_t currentFrame, float sourceValue, float amount,
                             std::int64_t numFrames) const;
    virtual float easeOutBack(std::int64_t currentFrame, float sourceValue, float amount,
                              std::int64_t numFrames) const;
    virtual float easeInOutBack(std::int64_t currentFrame, float sourceValue, float amount,
                                std::int64_t numFrames) const;
    virtual float easeOutInBack(std::int64_t currentFrame, float sourceValue, float amount,
                                std::int64_t numFrames) const;
    ///@}

private:
    friend class AnimationSequencer;
    friend class animation::Timeline;
    template <typename Element>
    friend class animation::WalkedList;
    friend struct animation::Inspection;

    /// Gives an animator the value that its curve has at `step`.
    using Action = void (*)(Animator &animator, std::int64_t step);

    static float easeNone(std::int64_t, float, float, std::int64_t);
    static float easeInQuad(std::int64_t, float, float, std::int64_t);
    static float easeOutQuad(std::int64_t, float, float, std::int64_t);
    static float easeInOutQuad(std::int64_t, float, float, std::int64_t);
    static float easeOutInQuad(std::int64_t, float, float, std::int64_t);
    static float easeInCubic(std::int64_t, float, float, std::int64_t);
    static float easeOutCubic(std::int64_t, float, float, std::int64_t);
    static float easeInOutCubic(std::int64_t, float, float, std::int64_t);
    static float easeOutInCubic(std::int64_t, float, float, std::int64_t);
    static float easeInQuart(std::int64_t, float, float, std::int64_t);
    static float easeOutQuart(std::int64_t, float, float, std::int64_t);
    static float easeInOutQuart(std::int64_t, float, float, std::int64_t);
    static float easeOutInQuart(std::int64_t, float, float, std::int64_t);
    static float easeInQuint(std::int64_t, float, float, std::int64_t);
    static float easeOutQuint(std::int64_t, float, float, std::int64_t);
    static float easeInOutQuint(std::int64_t, float, float, std::int64_t);
    static float easeOutInQuint(std::int64_t, float, float, std::int64_t);
    static float easeInSine(std::int64_t, float, float, std::int64_t);
    static float easeOutSine(std::int64_t, float, float, std::int64_t);
    static float easeInOutSine(std::int64_t, float, float, std::int64_t);
    static float easeOutInSine(std::int64_t, float, float, std::int64_t);
    static float easeInExpo(std::int64_t, float, float, std::int64_t);
    static float easeOutExpo(std::int64_t, float, float, std::int64_t);
    static float easeInOutExpo(std::int64_t, float, float, std::int64_t);
    static float easeOutInExpo(std::int64_t, float, float, std::int64_t);
    static float easeInCirc(std::int64_t, float, float, std::int64_t);
    static float easeOutCirc(std::int64_t, float, float, std::int64_t);
    static float easeInOutCirc(std::int64_t, float, float, std::int64_t);
    static float easeOutInCirc(std::int64_t, float, float, std::int64_t);
    static float easeInBounce(std::int64_t, float, float, std::int64_t);
    static float easeOutBounce(std::int64_t, float, float, std::int64_t);
    static float easeInOutBounce(std::int64_t, float, float, std::int64_t);
    static float easeOutInBounce(std::int64_t, float, float, std::int64_t);

    template <auto Curve>
    static void evaluate(Animator &animator, std::int64_t step);
    /// Stands for no action: one that needs no test before each step.
    static void missingAction(Animator &animator, std::int64_t step);
    Action actionFor(EnumEasing type) const;

    void selectType(EnumEasing type);
    void end();
    virtual void reset();

    // What a step touches stands together in front, and what only some animators need
    // stands elsewhere: with many of them, a step waits for memory.

public:
    /// Called once a step, with the value before it.
    Callback<Animator &, float> onAnimation;

private:
    Action _action = &missingAction;
    /// Steps taken.
    std::int64_t _step = 0;
    /// Steps of this run; -1 when idle.
    std::int64_t _frames = -1;
    float _source = 0;
    float _value = 0;
    float _destination = 0;
    float _amount = 0;

    /// As given to `setup`.
    std::int64_t _frameCount = 0;
    float _interval = 0.005F;
    animation::EntryCount _entries;
    EnumEasing _type : 8 = EASING_easeNone;

public:
    /// When true, a run turns back at its end instead of finishing.
    bool looped = false;
    /// Called at the end of a run that is not looped, with the destination.
    SlimCallback<Animator &, float> onFinished;
    /// Called at each turn-back.
    SlimCallback<Animator &> onLoop;

private:
    /// What an animator has that runs by itself or stands on a timeline.
    struct Extras {
        std::shared_ptr<NSTimer> timer;
        animation::Placement placement;
    };
    /// Made when they are first needed.
    Extras &extras();

    std::unique_ptr<Extras> _extras;
};

/// Steps animators side by side, once each a tick, on a timer of its own. It drops
/// each when it finishes, and stops on the first tick that finds nothing to step.
class AnimatorStack : public std::enable_shared_from_this<AnimatorStack>
{
public:
    AnimatorStack() = default;
    virtual ~AnimatorStack() = default;
    AnimatorStack(const AnimatorStack &) = delete;
    AnimatorStack &operator=(const AnimatorStack &) = delete;

    /// Adds an entry, first stepped on the next tick; none is ignored. The same
    /// animator may be added several times. Its own timer is left alone.
    virtual void add(std::shared_ptr<Animator> item);
    /// The number of entries.
    virtual std::int64_t getCount() const;
    /// The entries in the order in which they were added.
    virtual std::vector<std::shared_ptr<Animator>> getItems() const;

    /// A timer started before is not ended: both drive the stack.
    virtual void start();
    /// Ends the timer and empties the stack; as `reset`.
    virtual void stop();
    /// One tick. It is a fatal error when an animator finishes that a callback has
    /// taken out of the stack, by stopping it, within the tick.
    virtual void animate();
    /// Ends the timer and empties the stack.
    virtual void reset();

private:
    std::shared_ptr<NSTimer> _timer;
    animation::WalkedList<Animator> _animators;

public:
    /// The timer's period in seconds, read by `start`.
    float interval = 0.005F;
    /// Called for each animator before it is stepped.
    Callback<AnimatorStack &, Animator &> onAnimation;
    /// Called on the tick that finds nothing to step. Here the stack may be stopped.
    Callback<AnimatorStack &> onFinished;
    /// Called when a finished animator has been dropped, after its own `onFinished`.
    Callback<AnimatorStack &, Animator &> onRemovedItem;
};

/// Runs animators one after another on a timer of its own, then stops. Backwards it
/// ends as soon as it has come down to the first animator, without running it.
class AnimatorChain : public std::enable_shared_from_this<AnimatorChain>
{
public:
    AnimatorChain() = default;
    virtual ~AnimatorChain() = default;
    AnimatorChain(const AnimatorChain &) = delete;
    AnimatorChain &operator=(const AnimatorChain &) = delete;

    /// Appends an entry; none is ignored. The same animator may be added several
    /// times.
    virtual void add(std::shared_ptr<Animator> item);
    /// Removes the first entry that is `item`; none is ignored. It is a fatal error
    /// when there is no such entry.
    virtual void remove(const std::shared_ptr<Animator> &item);
    /// Stops, then removes all.
    virtual void removeAll();

    /// The number of entries.
    virtual std::int64_t getCount() const;
    /// The entry that the next tick steps, counted from 0.
    virtual std::int64_t getCurrentIndex() const;
    /// The current animator, but none while it is the first or the last.
    virtual std::shared_ptr<Animator> getCurrentItem() const;

    /// A timer started before is not ended: both drive the chain.
    virtual void start();
    /// Ends the timer and goes back to the first animator; as `reset`. Animators are
    /// neither stopped nor set back.
    virtual void stop();
    /// The direction from now on; the position stays.
    virtual void setBackwards(bool direction);
    /// One tick: steps the current animator and goes to the next when it has
    /// finished; with `async`, starts the current one and goes to the next.
    virtual void animate();
    /// Ends the timer and goes back to the first entry; the animators stay as they are.
    virtual void reset();

private:
    std::shared_ptr<NSTimer> _timer;
    std::vector<std::shared_ptr<Animator>> _animators;
    std::int64_t _currentIndex = 0;
    std::int64_t _direction = 1;

public:
    /// The timer's period in seconds, read by `start`.
    float interval = 0.005F;
    /// When true, each animator is only started, one a tick, on its own timer.
    bool async = false;
    /// Called on every tick, with the current animator, before it is advanced.
    Callback<AnimatorChain &, Animator &> onAnimation;
    /// Called when the last animator has been passed.
    Callback<AnimatorChain &> onFinished;
};

/// Runs animators from their places on a timeline: a frame counter goes up by one a
/// tick, every animator whose start frame has been reached is stepped once a tick
/// until it finishes, and the timeline ends at the end of the latest.
class AnimationSequencer : public std::enable_shared_from_this<AnimationSequencer>
{
public:
    AnimationSequencer() = default;
    virtual ~AnimationSequencer() = default;
    AnimationSequencer(const AnimationSequencer &) = delete;
    AnimationSequencer &operator=(const AnimationSequencer &) = delete;

    /// Places an animator; none is reported on standard output. Its length counts as
    /// it is now, so it is to be set up before. The start frame belongs to the
    /// animator: placed again, all its entries move.
    virtual void add(const std::shared_ptr<Animator> &item, std::int64_t at);
    /// Removes the first entry that is `item`. A running animator goes on running,
    /// and the timeline does not become shorter. It is a fatal error when there is
    /// no such entry.
    virtual void remove(const std::shared_ptr<Animator> &item);
    /// Empties the timeline, which then has no length. What runs goes on running.
    virtual void removeAll();

    /// The number of entries on the timeline.
    virtual std::int64_t getCount() const;
    /// The number of running animators.
    virtual std::int64_t getCurrentCount() const;
    /// The tick that comes next, from 0 at the timeline's beginning.
    virtual std::int64_t getCurrentFrame() const;
    /// The entry from which the search for animators to start begins.
    virtual std::int64_t getCurrentIndex() const;

    /// A timer started before is not ended: both advance the timeline.
    virtual void start();
    /// Ends the timer and goes back to frame 0. What runs stays so.
    virtual void stop();
    /// Steps nothing from now on; the frame counter goes on.
    virtual void pause();
    /// Ends the pause. What was to start within it starts with the next tick.
    virtual void continue_();
    /// Rewinds every animator; the frame counter stays.
    virtual void rewind();
    /// Goes to a frame: stops the animators that start before it and rewinds the
    /// others. Past the end, stops the sequencer.
    virtual void seek(std::int64_t to);
    /// One tick, after the timer has advanced the frame counter.
    virtual void animate();

private:
    friend struct animation::Inspection;

    virtual void findAnimators();
    virtual void scheduleItem(const std::shared_ptr<Animator> &item);
    virtual void calculateFrames();
    /// Ends the timer and goes back to frame 0; what runs stays so.
    virtual void reset();

    void stepItem(Animator &item);

    std::shared_ptr<NSTimer> _timer;
    std::int64_t _currentFrame = 0;
    /// The end of the timeline; it falls only when all animators are removed.
    std::int64_t _maxFrames = 0;
    animation::Timeline _animators;
    animation::WalkedList<Animator> _animatedItems;
    /// The same animators, to be looked up.
    std::unordered_set<const Animator *> _animated;
    std::int64_t _currentIndex = 0;
    bool _suspended = false;

public:
    /// The timer's period in seconds, read by `start`.
    float interval = 0.005F;
    /// Called for each running animator before it is stepped.
    Callback<AnimationSequencer &, Animator &> onAnimation;
    /// Called when the frame counter has reached the end of the timeline.
    Callback<AnimationSequencer &> onFinished;
};

/// A push on a value that decays: with each step the amount is multiplied by the
/// intensity and added to the value, until it is below 0.001. Within bounds, if they
/// are set, it bounces.
class Impulse : public std::enable_shared_from_this<Impulse>
{
public:
    Impulse() = default;
    virtual ~Impulse() = default;
    Impulse(const Impulse &) = delete;
    Impulse &operator=(const Impulse &) = delete;

    /// An impulse, or one of a class derived from it.
    template <typename Kind = Impulse>
    requires std::derived_from<Kind, Impulse>
    static std::shared_ptr<Kind> create()
    {
        auto impulse = std::make_shared<Kind>();
        static_cast<Impulse &>(*impulse).reset();
        return impulse;
    }

    /// The same, set up.
    template <typename Kind = Impulse>
    requires std::derived_from<Kind, Impulse>
    static std::shared_ptr<Kind> create(std::int64_t frames, float amount, float interval = 0.009F,
                                        float intensity = 0.75F)
    {
        auto impulse = create<Kind>();
        impulse->setup(frames, amount, interval, intensity);
        return impulse;
    }

    /// Gives a push of `amount`, on top of the value as it stands. `frames` has no
    /// effect on its length. `interval` is the timer's period in seconds, from the
    /// next `start` on.
    virtual void setup(std::int64_t frames, float amount, float interval = 0.009F,
                       float intensity = 0.75F);
    /// Bounds at which the push turns round, in force when `enabled`.
    virtual void setMinMax(bool enabled, float min, float max);

    /// A timer started before is not ended: both step the impulse.
    virtual void start();
    /// Ends the timer and sets the value back to 0.
    virtual void stop();
    /// One step, or the end when the push has decayed.
    virtual void animate();
    /// Whether it has not been set up since it was made or stopped.
    virtual bool isFinished() const;
    /// The amount given to the last `setup`.
    virtual float getSourceValue() const;
    /// Sets the push and the value to 0; a timer goes on.
    virtual void reset();

private:
    friend struct animation::Inspection;

    void bounce();

    std::shared_ptr<NSTimer> _timer;
    /// Negative when not set up.
    std::int64_t _frames = -1;
    std::int64_t _step = 0;
    float _amount = 0;
    float _value = 0;
    float _source = 0;
    float _intensity = 0.75F;
    float _threshold = 0.001F;
    float _interval = 0.009F;
    float _minVal = -1024;
    float _maxVal = 1024;
    bool _collision = false;

public:
    /// Called after every step.
    Callback<Impulse &> onAnimation;
    /// Called when the push has decayed, before the value is set back.
    Callback<Impulse &> onFinished;
    /// Called on every bounce.
    Callback<Impulse &> onCollision;
};
