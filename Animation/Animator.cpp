#include "Animation/Animator.hpp"

#include "Platform/Foundation/CheckedArithmetic.hpp"
#include "Platform/Foundation/FatalError.hpp"
#include "Platform/Foundation/Print.hpp"
#include "Platform/Foundation/Unwrap.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <math.h> // NOLINT(modernize-deprecated-headers): powf and the others, as functions
#include <numbers>
#include <type_traits> // IWYU pragma: keep
#include <typeinfo>
#include <utility>

// This file is compiled without contraction of products and sums and without the
// compiler's own knowledge of the mathematical functions, so that every curve has the
// same bits from every compiler.
static_assert(std::numeric_limits<float>::is_iec559);

namespace
{

constexpr float pi = std::numbers::pi_v<float>;
constexpr auto noAnimators = "WARNUNG: Es sind keine Animator Objekte definiert.";

/// What every out-in curve does: the family's Out to half the distance in the first
/// half of the frames, its In over the other half of the distance in the second.
template <typename Out, typename In>
float outIn(Out out, In in, std::int64_t currentFrame, float sourceValue, float amount,
            std::int64_t numFrames)
{
    const float half = amount / 2;
    const std::int64_t doubled = checkedMultiply<std::int64_t>(currentFrame, 2);
    if (currentFrame < numFrames / 2)
        return out(doubled, sourceValue, half, numFrames);
    return in(checkedSubtract(doubled, numFrames), sourceValue + half, half, numFrames);
}

/// `frames`, which have to fit a 64-bit integer: the Bounce curves pass frames on as
/// integers. Sums and doubles of frames are whole already.
float wholeFrames(float frames)
{
    constexpr float end = 0x1p63F;
    if (!(fabsf(frames) < end))
        static_cast<void>(checkedInteger<std::int64_t>(frames));
    return frames;
}

float outBounce(float t, float d, float b, float c)
{
    const float u = t / d;
    if (u < 0.36363637F)
        return c * (7.5625F * u * u) + b;
    const auto arc = [&](float k, float h) {
        const float r = u - k;
        return c * (7.5625F * r * r + h) + b;
    };
    if (u < 0.72727275F)
        return arc(0.54545456F, 0.75F);
    if (u < 0.90909094F)
        return arc(0.8181818F, 0.9375F);
    return arc(0.95454544F, 0.984375F);
}

/// `d` has to be whole frames.
float inBounce(float t, float d, float b, float c)
{
    return c - outBounce(wholeFrames(d - t), d, 0, c) + b;
}

/// Ends `timer`, if there is one, and clears the property.
void invalidate(std::shared_ptr<NSTimer> &timer)
{
    if (const auto ending = std::exchange(timer, nullptr))
        ending->invalidate();
}

/// Something that keeps `object` while its timer, which may be all that holds it, is
/// ended.
template <typename Kind>
std::shared_ptr<Kind> keptFromTimer(Kind &object, const std::shared_ptr<NSTimer> &timer)
{
    return timer ? object.shared_from_this() : nullptr;
}

} // namespace

std::optional<EnumEasing> easingFromRawValue(std::int64_t rawValue)
{
    if (rawValue < EASING_easeNone || rawValue > EASING_easeLast)
        return std::nullopt;
    return static_cast<EnumEasing>(rawValue);
}

// The curves. t, d, b and c are Penner's letters: time, duration, beginning, change.

float Animator::easeNone(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    const auto t = static_cast<float>(currentFrame);
    const auto d = static_cast<float>(numFrames);
    return (c * t) / d + b;
}

float Animator::easeInQuad(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    const float u = static_cast<float>(currentFrame) / static_cast<float>(numFrames);
    return c * u * u + b;
}

float Animator::easeOutQuad(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    const float u = static_cast<float>(currentFrame) / static_cast<float>(numFrames);
    return b - c * u * (u - 2);
}

float Animator::easeInOutQuad(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    const float s = static_cast<float>(currentFrame) / (static_cast<float>(numFrames) / 2);
    if (1 > s)
        return c / 2 * s * s + b;
    const float r = s - 1;
    return (-c) / 2 * (r * (r - 2) - 1) + b;
}

float Animator::easeOutInQuad(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    return outIn(easeOutQuad, easeInQuad, currentFrame, b, c, numFrames);
}

float Animator::easeInCubic(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    const float u = static_cast<float>(currentFrame) / static_cast<float>(numFrames);
    return c * u * u * u + b;
}

float Animator::easeOutCubic(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    const float u = static_cast<float>(currentFrame) / static_cast<float>(numFrames);
    const float v = u - 1;
    return c * (v * v * v + 1) + b;
}

float Animator::easeInOutCubic(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    const float s = static_cast<float>(currentFrame) / (static_cast<float>(numFrames) / 2);
    if (1 > s)
        return c / 2 * s * s * s + b;
    const float r = s - 2;
    return c / 2 * (r * r * r + 2) + b;
}

float Animator::easeOutInCubic(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    return outIn(easeOutCubic, easeInCubic, currentFrame, b, c, numFrames);
}

float Animator::easeInQuart(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    const float u = static_cast<float>(currentFrame) / static_cast<float>(numFrames);
    return c * u * u * u * u + b;
}

/// Falls from twice the distance: the fourth power is added, on purpose.
float Animator::easeOutQuart(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    const float u = static_cast<float>(currentFrame) / static_cast<float>(numFrames);
    const float v = u - 1;
    return c * (v * v * v * v + 1) + b;
}

/// Jumps to one and a half times the distance half-way, on purpose.
float Animator::easeInOutQuart(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    const float s = static_cast<float>(currentFrame) / (static_cast<float>(numFrames) / 2);
    if (1 > s)
        return c / 2 * s * s * s * s + b;
    const float r = s - 2;
    return c / 2 * (r * r * r * r + 2) + b;
}

float Animator::easeOutInQuart(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    return outIn(easeOutQuart, easeInQuart, currentFrame, b, c, numFrames);
}

float Animator::easeInQuint(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    const float u = static_cast<float>(currentFrame) / static_cast<float>(numFrames);
    return c * u * u * u * u * u + b;
}

float Animator::easeOutQuint(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    const float u = static_cast<float>(currentFrame) / static_cast<float>(numFrames);
    const float v = u - 1;
    return c * (v * v * v * v * v + 1) + b;
}

float Animator::easeInOutQuint(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    const float s = static_cast<float>(currentFrame) / (static_cast<float>(numFrames) / 2);
    if (1 > s)
        return c / 2 * s * s * s * s * s + b;
    const float r = s - 2;
    return c / 2 * (r * r * r * r * r + 2) + b;
}

float Animator::easeOutInQuint(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    return outIn(easeOutQuint, easeInQuint, currentFrame, b, c, numFrames);
}

float Animator::easeInSine(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    const float u = static_cast<float>(currentFrame) / static_cast<float>(numFrames);
    return c - c * cosf(u * pi / 2) + b;
}

float Animator::easeOutSine(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    const float u = static_cast<float>(currentFrame) / static_cast<float>(numFrames);
    return c * sinf(u * pi / 2) + b;
}

float Animator::easeInOutSine(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    const auto t = static_cast<float>(currentFrame);
    const auto d = static_cast<float>(numFrames);
    return b + c / -2 * (cosf(pi * t / d) - 1);
}

float Animator::easeOutInSine(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    return outIn(easeOutSine, easeInSine, currentFrame, b, c, numFrames);
}

float Animator::easeInExpo(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    const auto t = static_cast<float>(currentFrame);
    if (t == 0)
        return b;
    const float u = t / static_cast<float>(numFrames);
    return c * powf(2, 10 * (u - 1)) + b;
}

float Animator::easeOutExpo(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    const auto t = static_cast<float>(currentFrame);
    const auto d = static_cast<float>(numFrames);
    if (t == d)
        return b + c;
    return c * (1 - powf(2, -10 * t / d)) + b;
}

/// The progress is halved, on purpose, so within the run only the first half of the
/// curve is reached, before the last frame snaps to the destination.
float Animator::easeInOutExpo(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    const auto t = static_cast<float>(currentFrame);
    const auto d = static_cast<float>(numFrames);
    if (t == 0)
        return b;
    if (t == d)
        return b + c;
    const float s = (t / d) / 2;
    if (1 > s)
        return c / 2 * powf(2, 10 * (s - 1)) + b;
    return c / 2 * (2 - powf(2, -10 * (s - 1))) + b;
}

float Animator::easeOutInExpo(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    return outIn(easeOutExpo, easeInExpo, currentFrame, b, c, numFrames);
}

float Animator::easeInCirc(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    const float u = static_cast<float>(currentFrame) / static_cast<float>(numFrames);
    return b - c * (sqrtf(1 - u * u) - 1);
}

float Animator::easeOutCirc(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    const float u = static_cast<float>(currentFrame) / static_cast<float>(numFrames);
    const float v = u - 1;
    return c * sqrtf(1 - v * v) + b;
}

float Animator::easeInOutCirc(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    const float s = static_cast<float>(currentFrame) / (static_cast<float>(numFrames) / 2);
    if (1 > s)
        return (-c) / 2 * (sqrtf(1 - s * s) - 1) + b;
    const float r = s - 2;
    return c / 2 * (sqrtf(1 - r * r) + 1) + b;
}

float Animator::easeOutInCirc(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    return outIn(easeOutCirc, easeInCirc, currentFrame, b, c, numFrames);
}

// The formulas of the curves that may be overridden.
namespace
{

float inElastic(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    const auto t = static_cast<float>(currentFrame);
    const auto d = static_cast<float>(numFrames);
    if (t == 0)
        return b;
    const float u = t / d;
    if (u == 1)
        return b + c;
    const float p = d * 0.3F;
    const float v = u - 1;
    return -(c * powf(2, 10 * v) * sinf((v * d - p / 4) * (2 * pi) / p)) + b;
}

float outElastic(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    const auto t = static_cast<float>(currentFrame);
    const auto d = static_cast<float>(numFrames);
    if (t == 0)
        return b;
    const float u = t / d;
    if (u == 1)
        return b + c;
    const float p = d * 0.3F;
    return c * powf(2, -10 * u) * sinf((u * d - p / 4) * (2 * pi) / p) + c + b;
}

float inOutElastic(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    const auto t = static_cast<float>(currentFrame);
    const auto d = static_cast<float>(numFrames);
    if (t == 0)
        return b;
    const float s = t / (d / 2);
    if (s == 2)
        return b + c;
    const float p = d * 0.45000002F; // 0.3 * 1.5 in single precision
    const float v = s - 1;
    const float w = (v * d - p / 4) * 2;
    if (1 > s)
        return -0.5F * (c * powf(2, 10 * v) * sinf(w * pi / p)) + b;
    return c * powf(2, -10 * v) * sinf(w * pi / p) * 0.5F + c + b;
}

float outInElastic(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    return outIn(outElastic, inElastic, currentFrame, b, c, numFrames);
}

float inBack(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    const float u = static_cast<float>(currentFrame) / static_cast<float>(numFrames);
    return c * u * u * (2.70158F * u - 1.70158F) + b;
}

float outBack(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    const float u = static_cast<float>(currentFrame) / static_cast<float>(numFrames);
    const float v = u - 1;
    return c * (v * v * (2.70158F * v + 1.70158F) + 1) + b;
}

float inOutBack(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    // 1.70158 * 1.525 in single precision, and one more.
    constexpr float overshoot = 2.5949094F;
    constexpr float overshootAndOne = 3.5949094F;
    const float s = static_cast<float>(currentFrame) / (static_cast<float>(numFrames) / 2);
    if (1 > s)
        return c / 2 * (s * s * (overshootAndOne * s - overshoot)) + b;
    const float r = s - 2;
    return c / 2 * (r * r * (overshootAndOne * r + overshoot) + 2) + b;
}

float outInBack(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    return outIn(outBack, inBack, currentFrame, b, c, numFrames);
}

} // namespace

float Animator::easeInElastic(std::int64_t currentFrame, float b, float c,
                              std::int64_t numFrames) const
{
    return inElastic(currentFrame, b, c, numFrames);
}

float Animator::easeOutElastic(std::int64_t currentFrame, float b, float c,
                               std::int64_t numFrames) const
{
    return outElastic(currentFrame, b, c, numFrames);
}

float Animator::easeInOutElastic(std::int64_t currentFrame, float b, float c,
                                 std::int64_t numFrames) const
{
    return inOutElastic(currentFrame, b, c, numFrames);
}

float Animator::easeOutInElastic(std::int64_t currentFrame, float b, float c,
                                 std::int64_t numFrames) const
{
    return outIn([this](auto... values) { return easeOutElastic(values...); },
                 [this](auto... values) { return easeInElastic(values...); }, currentFrame, b, c,
                 numFrames);
}

float Animator::easeInBack(std::int64_t currentFrame, float b, float c,
                           std::int64_t numFrames) const
{
    return inBack(currentFrame, b, c, numFrames);
}

float Animator::easeOutBack(std::int64_t currentFrame, float b, float c,
                            std::int64_t numFrames) const
{
    return outBack(currentFrame, b, c, numFrames);
}

float Animator::easeInOutBack(std::int64_t currentFrame, float b, float c,
                              std::int64_t numFrames) const
{
    return inOutBack(currentFrame, b, c, numFrames);
}

float Animator::easeOutInBack(std::int64_t currentFrame, float b, float c,
                              std::int64_t numFrames) const
{
    return outIn([this](auto... values) { return easeOutBack(values...); },
                 [this](auto... values) { return easeInBack(values...); }, currentFrame, b, c,
                 numFrames);
}

float Animator::easeInBounce(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    const auto t = static_cast<float>(currentFrame);
    const auto d = static_cast<float>(numFrames);
    return inBounce(t, wholeFrames(d), b, c);
}

float Animator::easeOutBounce(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    return outBounce(static_cast<float>(currentFrame), static_cast<float>(numFrames), b, c);
}

float Animator::easeInOutBounce(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    const auto t = static_cast<float>(currentFrame);
    const auto d = static_cast<float>(numFrames);
    if (d / 2 > t)
        return inBounce(wholeFrames(t * 2), wholeFrames(d), 0, c) * 0.5F + b;
    return outBounce(wholeFrames(t * 2 - d), wholeFrames(d), 0, c) * 0.5F + c * 0.5F + b;
}

float Animator::easeOutInBounce(std::int64_t currentFrame, float b, float c, std::int64_t numFrames)
{
    return outIn(easeOutBounce, easeInBounce, currentFrame, b, c, numFrames);
}

/// A curve as an action. A member is called through its overridable entry.
template <auto Curve>
void Animator::evaluate(Animator &animator, std::int64_t step)
{
    if constexpr (std::is_member_function_pointer_v<decltype(Curve)>)
        animator._value =
            (animator.*Curve)(step, animator._source, animator._amount, animator._frames);
    else
        animator._value = Curve(step, animator._source, animator._amount, animator._frames);
}

void Animator::missingAction(Animator & /*animator*/, std::int64_t /*step*/)
{
    fatalError("Unexpectedly found nil while implicitly unwrapping an Optional value");
}

Animator::Action Animator::actionFor(EnumEasing type) const
{
    static constexpr std::array actions{
        &evaluate<&Animator::easeNone>,
        &evaluate<&Animator::easeInQuad>,
        &evaluate<&Animator::easeOutQuad>,
        &evaluate<&Animator::easeInOutQuad>,
        &evaluate<&Animator::easeOutInQuad>,
        &evaluate<&Animator::easeInCubic>,
        &evaluate<&Animator::easeOutCubic>,
        &evaluate<&Animator::easeInOutCubic>,
        &evaluate<&Animator::easeOutInCubic>,
        &evaluate<&Animator::easeInQuart>,
        &evaluate<&Animator::easeOutQuart>,
        &evaluate<&Animator::easeInOutQuart>,
        &evaluate<&Animator::easeOutInQuart>,
        &evaluate<&Animator::easeInQuint>,
        &evaluate<&Animator::easeOutQuint>,
        &evaluate<&Animator::easeInOutQuint>,
        &evaluate<&Animator::easeOutInQuint>,
        &evaluate<&Animator::easeInSine>,
        &evaluate<&Animator::easeOutSine>,
        &evaluate<&Animator::easeInOutSine>,
        &evaluate<&Animator::easeOutInSine>,
        &evaluate<&Animator::easeInExpo>,
        &evaluate<&Animator::easeOutExpo>,
        &evaluate<&Animator::easeInOutExpo>,
        &evaluate<&Animator::easeOutInExpo>,
        &evaluate<&Animator::easeInCirc>,
        &evaluate<&Animator::easeOutCirc>,
        &evaluate<&Animator::easeInOutCirc>,
        &evaluate<&Animator::easeOutInCirc>,
        &evaluate<&inElastic>,
        &evaluate<&outElastic>,
        &evaluate<&inOutElastic>,
        &evaluate<&outInElastic>,
        &evaluate<&inBack>,
        &evaluate<&outBack>,
        &evaluate<&inOutBack>,
        &evaluate<&outInBack>,
        &evaluate<&Animator::easeInBounce>,
        &evaluate<&Animator::easeOutBounce>,
        &evaluate<&Animator::easeInOutBounce>,
        &evaluate<&Animator::easeOutInBounce>,
        &evaluate<&Animator::easeNone>,
    };
    static_assert(actions.size() == EASING_easeLast + 1);
    // In the order of the curves, from the first that may be overridden on. Only a
    // class derived from this one can have done so.
    static constexpr std::array overridable{
        &evaluate<&Animator::easeInElastic>,    &evaluate<&Animator::easeOutElastic>,
        &evaluate<&Animator::easeInOutElastic>, &evaluate<&Animator::easeOutInElastic>,
        &evaluate<&Animator::easeInBack>,       &evaluate<&Animator::easeOutBack>,
        &evaluate<&Animator::easeInOutBack>,    &evaluate<&Animator::easeOutInBack>,
    };
    if (!easingFromRawValue(type))
        fatalError("There is no easing curve of that number");
    const auto curve = static_cast<std::size_t>(type);
    const std::size_t fromOverridable = curve - EASING_easeInElastic;
    if (fromOverridable < overridable.size() && typeid(*this) != typeid(Animator))
        return overridable[fromOverridable];
    return actions[curve];
}

std::int64_t Animator::classCount = 0;

Animator::Animator()
{
    classCount = checkedAdd<std::int64_t>(classCount, 1);
    _action = &evaluate<&Animator::easeNone>;
}

Animator::~Animator()
{
    classCount = checkedSubtract<std::int64_t>(classCount, 1);
}

void Animator::setup(float source, float destination, std::int64_t frames, float interval,
                     EnumEasing type)
{
    _source = source;
    _destination = destination;
    _value = _source;
    _amount = _destination - _source;
    _frames = frames;
    _frameCount = _frames;
    _step = 0;
    _interval = interval;
    selectType(type);
    if (_frames < 0)
        _frames = 0;
    if (_amount == 0)
        _frames = 0;
    if (_extras && _extras->placement.entries > 0)
        animation::Timeline::noteFrames(*this);
}

void Animator::reverse()
{
    setup(_destination, _source, _frames, _interval, _type);
}

void Animator::undo()
{
    _frames = 1;
    _step = 0;
    setup(_source, _destination, 1);
    animate();
    animate();
}

void Animator::rewind()
{
    setup(_source, _destination, _frameCount);
}

float Animator::getDestinationValue() const
{
    return _destination;
}

float Animator::getSourceValue() const
{
    return _source;
}

float Animator::getValue() const
{
    return _value;
}

void Animator::animate()
{
    // Steps are never negative, so there are none left when it is idle.
    if (_step < _frames) [[likely]] {
        onAnimation(*this, _value);
        // Whatever the callback did to the run, the step is taken. The action stores
        // the value itself, so that its call is a jump.
        _step = checkedAdd<std::int64_t>(_step, 1);
        _action(*this, _step);
    } else if (_frames >= 0) {
        end();
    }
}

void Animator::end()
{
    _value = _destination;
    if (looped) {
        onLoop(*this);
        reverse();
    } else {
        stop();
        onFinished(*this, _value);
    }
}

bool Animator::isFinished() const
{
    return _frames < 0;
}

void Animator::start()
{
    extras().timer =
        NSTimer::scheduledTimer(static_cast<double>(_interval), true,
                                [self = shared_from_this()](NSTimer &) { self->animate(); });
}

void Animator::stop()
{
    const auto self = _extras ? keptFromTimer(*this, _extras->timer) : nullptr;
    if (self)
        invalidate(_extras->timer);
    reset();
}

void Animator::setType(EnumEasing type)
{
    selectType(type);
}

void Animator::setInterval(float interval)
{
    _interval = interval;
}

Animator::Extras &Animator::extras()
{
    if (!_extras)
        _extras = std::make_unique<Extras>();
    return *_extras;
}

void Animator::selectType(EnumEasing type)
{
    _type = type;
    _action = actionFor(type);
}

void Animator::reset()
{
    _step = 0;
    _frames = -1;
    looped = false;
}

void AnimatorStack::add(std::shared_ptr<Animator> item)
{
    if (item)
        _animators.append(std::move(item));
}

std::int64_t AnimatorStack::getCount() const
{
    return static_cast<std::int64_t>(_animators.count());
}

std::vector<std::shared_ptr<Animator>> AnimatorStack::getItems() const
{
    return _animators.items();
}

void AnimatorStack::start()
{
    _timer = NSTimer::scheduledTimer(static_cast<double>(interval), true,
                                     [self = shared_from_this()](NSTimer &) { self->animate(); });
}

void AnimatorStack::stop()
{
    reset();
}

void AnimatorStack::animate()
{
    bool stepped = false;
    _animators.walk([&](Animator &animator) {
        if (animator.isFinished())
            return;
        onAnimation(*this, animator);
        animator.animate();
        stepped = true;
        if (!animator.isFinished())
            return;
        const auto removed = _animators.removeFirst(animator);
        onRemovedItem(*this, unwrap(removed));
    });
    if (stepped)
        return;
    onFinished(*this);
    stop();
}

void AnimatorStack::reset()
{
    const auto self = keptFromTimer(*this, _timer);
    invalidate(_timer);
    _animators.clear();
}

void AnimatorChain::add(std::shared_ptr<Animator> item)
{
    if (item)
        _animators.push_back(std::move(item));
}

void AnimatorChain::remove(const std::shared_ptr<Animator> &item)
{
    if (!item)
        return;
    const auto position = std::find(_animators.begin(), _animators.end(), item);
    const std::shared_ptr<Animator> found = position == _animators.end() ? nullptr : *position;
    unwrap(found);
    _animators.erase(position);
}

void AnimatorChain::removeAll()
{
    stop();
    _animators = {};
}

std::int64_t AnimatorChain::getCount() const
{
    return static_cast<std::int64_t>(_animators.size());
}

std::int64_t AnimatorChain::getCurrentIndex() const
{
    return _currentIndex;
}

std::shared_ptr<Animator> AnimatorChain::getCurrentItem() const
{
    const auto last = static_cast<std::int64_t>(_animators.size()) - 1;
    if (0 < _currentIndex && _currentIndex < last)
        return _animators[static_cast<std::size_t>(_currentIndex)];
    return nullptr;
}

void AnimatorChain::start()
{
    _timer = NSTimer::scheduledTimer(static_cast<double>(interval), true,
                                     [self = shared_from_this()](NSTimer &) { self->animate(); });
}

void AnimatorChain::stop()
{
    reset();
}

void AnimatorChain::setBackwards(bool direction)
{
    _direction = direction ? -1 : 1;
}

void AnimatorChain::animate()
{
    if (_animators.empty()) {
        print(noAnimators);
        return;
    }
    const auto last = static_cast<std::int64_t>(_animators.size()) - 1;
    if (_currentIndex < 0 || _currentIndex > last)
        _currentIndex = last;
    // Held, since a callback may take it out of the chain.
    const auto current = _animators[static_cast<std::size_t>(_currentIndex)];
    onAnimation(*this, *current);
    if (async) {
        current->start();
        _currentIndex = checkedAdd(_currentIndex, _direction);
    } else {
        current->animate();
        if (current->isFinished())
            _currentIndex = checkedAdd(_currentIndex, _direction);
    }
    const auto count = static_cast<std::int64_t>(_animators.size());
    if ((_direction > 0 && _currentIndex >= count) || (_direction < 0 && _currentIndex <= 0)) {
        onFinished(*this);
        stop();
    }
}

void AnimatorChain::reset()
{
    const auto self = keptFromTimer(*this, _timer);
    invalidate(_timer);
    _currentIndex = 0;
}

void AnimationSequencer::add(const std::shared_ptr<Animator> &item, std::int64_t at)
{
    if (!item) {
        print("FEHLER: Das Animator Objekt ist ungültig.");
        return;
    }
    _animators.place(item, at);
    calculateFrames();
}

void AnimationSequencer::remove(const std::shared_ptr<Animator> &item)
{
    if (item) {
        const bool removed = _animators.remove(*item);
        unwrap(removed ? item : nullptr);
    }
    calculateFrames();
}

void AnimationSequencer::removeAll()
{
    _animators.clear();
    _maxFrames = 0;
}

std::int64_t AnimationSequencer::getCount() const
{
    return static_cast<std::int64_t>(_animators.count());
}

std::int64_t AnimationSequencer::getCurrentCount() const
{
    return static_cast<std::int64_t>(_animatedItems.count());
}

std::int64_t AnimationSequencer::getCurrentFrame() const
{
    return _currentFrame;
}

std::int64_t AnimationSequencer::getCurrentIndex() const
{
    return _currentIndex;
}

void AnimationSequencer::start()
{
    _timer = NSTimer::scheduledTimer(
        static_cast<double>(interval), true, [self = shared_from_this()](NSTimer &) {
            self->_currentFrame = checkedAdd<std::int64_t>(self->_currentFrame, 1);
            self->animate();
        });
}

void AnimationSequencer::stop()
{
    reset();
}

void AnimationSequencer::pause()
{
    _suspended = true;
}

void AnimationSequencer::continue_()
{
    _suspended = false;
}

void AnimationSequencer::rewind()
{
    for (const auto &animator : _animators.items())
        animator->rewind();
}

void AnimationSequencer::seek(std::int64_t to)
{
    _currentFrame = to;
    _currentIndex = 0;
    if (_maxFrames < _currentFrame) {
        stop();
        return;
    }
    for (const auto &animator : _animators.items()) {
        if (animator->_extras->placement.startFrame < _currentFrame) {
            animator->stop();
            _currentIndex = checkedAdd<std::int64_t>(_currentIndex, 1);
        } else {
            animator->rewind();
        }
    }
}

void AnimationSequencer::animate()
{
    if (_suspended)
        return;
    if (_animators.count() == 0) {
        print(noAnimators);
        return;
    }
    findAnimators();
    _animatedItems.walk([this](Animator &item) { stepItem(item); });
    if (_currentFrame < _maxFrames)
        return;
    onFinished(*this);
    stop();
}

void AnimationSequencer::stepItem(Animator &item)
{
    onAnimation(*this, item);
    item.animate();
    if (!item.isFinished())
        return;
    _animated.erase(&item);
    _animatedItems.removeFirst(item);
}

void AnimationSequencer::findAnimators()
{
    const auto count = static_cast<std::int64_t>(_animators.count());
    if (_currentIndex > count)
        fatalError("The search for animators begins beyond the last of them");
    for (std::int64_t i = _currentIndex; i < count; ++i) {
        if (i >= static_cast<std::int64_t>(_animators.count())) {
            print("ERROR: Animationsobjekt is undefiniert!");
            return;
        }
        const auto animator = _animators.at(static_cast<std::size_t>(i));
        if (_currentFrame < animator->_extras->placement.startFrame) {
            if (_animators.isInOrder())
                return; // the others start later still
            continue;
        }
        if (!animator->isFinished()) {
            _currentIndex = i;
            scheduleItem(animator);
        }
    }
}

void AnimationSequencer::scheduleItem(const std::shared_ptr<Animator> &item)
{
    if (_animated.insert(item.get()).second)
        _animatedItems.append(item);
}

void AnimationSequencer::calculateFrames()
{
    _maxFrames = _animators.latestEnd(_maxFrames);
}

void AnimationSequencer::reset()
{
    const auto self = keptFromTimer(*this, _timer);
    invalidate(_timer);
    _currentIndex = 0;
    _currentFrame = 0;
}

void Impulse::setup(std::int64_t frames, float amount, float interval, float intensity)
{
    _frames = frames;
    _step = 0;
    if (_frames < 0)
        _frames = 0;
    _source = amount;
    _amount = amount;
    _intensity = intensity;
    _interval = interval;
}

void Impulse::setMinMax(bool enabled, float min, float max)
{
    _collision = enabled;
    _minVal = min;
    _maxVal = max;
}

void Impulse::start()
{
    _timer = NSTimer::scheduledTimer(static_cast<double>(_interval), true,
                                     [self = shared_from_this()](NSTimer &) { self->animate(); });
}

void Impulse::stop()
{
    const auto self = keptFromTimer(*this, _timer);
    invalidate(_timer);
    reset();
}

void Impulse::animate()
{
    _amount = _amount * _intensity;
    if (_threshold > fabsf(_amount)) {
        _amount = 0;
        onFinished(*this);
        stop();
        return;
    }
    _step = checkedAdd<std::int64_t>(_step, 1);
    _value = _value + _amount;
    if (_collision && (_value <= _minVal || _value >= _maxVal))
        bounce();
    onAnimation(*this);
}

/// Turns the push round and takes the value back to where it stood.
void Impulse::bounce()
{
    _amount = -_amount;
    _value = _value + _amount;
    onCollision(*this);
}

bool Impulse::isFinished() const
{
    return _frames < 0;
}

float Impulse::getSourceValue() const
{
    return _source;
}

void Impulse::reset()
{
    _frames = -1;
    _step = 0;
    _amount = 0;
    _value = 0;
}
