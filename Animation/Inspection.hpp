#pragma once

#include "Animation/Animator.hpp"

namespace animation
{

/// Reads, and for tests of faults writes, what the kit's classes keep to themselves.
/// For the kit's own gallery and tests; it is not installed.
struct Inspection {
    static float value(const Impulse &impulse) { return impulse._value; }
    static std::int64_t steps(const Impulse &impulse) { return impulse._step; }
    static void setSteps(Impulse &impulse, std::int64_t steps) { impulse._step = steps; }
    static std::int64_t latestEnd(const AnimationSequencer &sequencer)
    {
        return sequencer._maxFrames;
    }
    static void clearAction(Animator &animator) { animator._action = &Animator::missingAction; }
    static void setSteps(Animator &animator, std::int64_t steps) { animator._step = steps; }
    static void setFrame(AnimationSequencer &sequencer, std::int64_t frame)
    {
        sequencer._currentFrame = frame;
    }
    /// The selected curve; the animator is used up by it.
    static float curve(Animator &animator, std::int64_t currentFrame, float sourceValue,
                       float amount, std::int64_t numFrames)
    {
        animator._source = sourceValue;
        animator._amount = amount;
        animator._frames = numFrames;
        animator._action(animator, currentFrame);
        return animator._value;
    }
};

} // namespace animation
