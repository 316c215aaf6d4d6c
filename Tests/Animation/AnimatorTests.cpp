#include "Animation/Inspection.hpp"
#include "Tests/Animation/KitTest.hpp"

#include <gmock/gmock.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

namespace
{

using animation::Inspection;
using test::Notes;
using ::testing::ElementsAre;

class AnimatorTest : public test::KitTest
{
protected:
    std::shared_ptr<Animator> animator = makeListening();

    std::shared_ptr<Animator> makeListening()
    {
        auto made = std::make_shared<Animator>();
        listenTo(*made, "A");
        return made;
    }
};

using AnimatorDeathTest = AnimatorTest;

TEST_F(AnimatorTest, IsIdleUntilItIsSetUp)
{
    EXPECT_TRUE(animator->isFinished());
    EXPECT_EQ(animator->getValue(), 0);
    EXPECT_EQ(animator->getSourceValue(), 0);
    EXPECT_EQ(animator->getDestinationValue(), 0);
    EXPECT_FALSE(animator->looped);
    animator->animate();
    EXPECT_EQ(heard(), Notes());
    animator->setup(1, 2, 3);
    EXPECT_FALSE(animator->isFinished());
    EXPECT_EQ(heard(), Notes());
}

TEST_F(AnimatorTest, RunsItsFramesAndEndsOnTheTickAfter)
{
    animator->setup(0, 10, 4, 0.005F);
    animator->start();
    for (const char *const value : {"A 0.0", "A 2.5", "A 5.0", "A 7.5", "A end 10.0"}) {
        EXPECT_FALSE(animator->isFinished());
        tick();
        EXPECT_EQ(heard(), Notes{value});
    }
    EXPECT_TRUE(animator->isFinished());
    EXPECT_EQ(animator->getValue(), 10);
    EXPECT_EQ(clock->running(), 0U);
    tick(5);
    EXPECT_EQ(heard(), Notes());
}

TEST_F(AnimatorTest, ReportsTheValueOfTheStepBefore)
{
    animator->setup(0, 10, 4);
    animator->animate();
    EXPECT_EQ(heard(), Notes{"A 0.0"});
    EXPECT_EQ(animator->getValue(), 2.5F);
    for (int step = 0; step < 3; ++step)
        animator->animate();
    EXPECT_EQ(animator->getValue(), 10);
    EXPECT_FALSE(animator->isFinished());
}

TEST_F(AnimatorTest, MovesAlongEachCurve)
{
    for (std::int64_t raw = 0; raw <= 41; ++raw) {
        const EnumEasing type = easingFromRawValue(raw).value();
        std::vector<float> values;
        animator->onAnimation = [&](Animator &self, float value) {
            EXPECT_EQ(&self, animator.get());
            EXPECT_EQ(value, self.getValue());
            values.push_back(value);
        };
        animator->setup(2, -3, 9, 0.005F, type);
        for (int step = 0; step < 9; ++step)
            animator->animate();
        ASSERT_EQ(values.size(), 9U);
        EXPECT_EQ(values[0], 2);
        Animator curve;
        curve.setType(type);
        for (std::int64_t frame = 1; frame < 9; ++frame)
            EXPECT_EQ(values[static_cast<std::size_t>(frame)],
                      Inspection::curve(curve, frame, 2, -5, 9))
                << raw;
        EXPECT_EQ(animator->getValue(), Inspection::curve(curve, 9, 2, -5, 9));
    }
}

TEST_F(AnimatorTest, AWayOfNoLengthEndsOnTheFirstTick)
{
    animator->setup(3, 3, 50);
    EXPECT_FALSE(animator->isFinished());
    animator->animate();
    EXPECT_EQ(heard(), Notes{"A end 3.0"});
}

TEST_F(AnimatorTest, NegativeFramesAreNone)
{
    animator->setup(1, 2, -7);
    EXPECT_FALSE(animator->isFinished());
    animator->animate();
    EXPECT_EQ(heard(), Notes{"A end 2.0"});
    animator->rewind(); // goes back to the -7, which are none again
    EXPECT_FALSE(animator->isFinished());
    animator->animate();
    EXPECT_EQ(heard(), Notes{"A end 2.0"});
}

TEST_F(AnimatorTest, ALoopedRunTurnsBackAtEachEnd)
{
    animator->setup(0, 1, 2, 0.005F);
    animator->looped = true;
    animator->start();
    tick(8);
    EXPECT_EQ(heard(),
              (Notes{"A 0.0", "A 0.5", "A loop", "A 1.0", "A 0.5", "A loop", "A 0.0", "A 0.5"}));
    EXPECT_FALSE(animator->isFinished());
    animator->stop();
    EXPECT_FALSE(animator->looped);
    EXPECT_EQ(clock->running(), 0U);
}

TEST_F(AnimatorTest, ALoopedRunKeepsItsCurveAndInterval)
{
    animator->setup(0, 8, 2, 0.02F, EASING_easeInCubic);
    animator->looped = true;
    for (int step = 0; step < 6; ++step)
        animator->animate();
    EXPECT_EQ(heard(), (Notes{"A 0.0", "A 1.0", "A loop", "A 8.0", "A 7.0", "A loop"}));
    animator->start();
    EXPECT_EQ(clock->intervals.back(), static_cast<double>(0.02F));
    animator->stop();
}

TEST_F(AnimatorTest, ReverseRunsTheSameWayBack)
{
    animator->setup(0, 8, 2, 0.02F, EASING_easeInCubic);
    animator->animate();
    animator->reverse();
    EXPECT_EQ(animator->getSourceValue(), 8);
    EXPECT_EQ(animator->getDestinationValue(), 0);
    EXPECT_EQ(animator->getValue(), 8);
    heard();
    for (int step = 0; step < 3; ++step)
        animator->animate();
    EXPECT_EQ(heard(), (Notes{"A 8.0", "A 7.0", "A end 0.0"}));
}

TEST_F(AnimatorTest, ReverseAfterTheEndIsARunWithoutFrames)
{
    animator->setup(0, 8, 1);
    animator->animate();
    animator->animate();
    heard();
    animator->reverse();
    EXPECT_FALSE(animator->isFinished());
    animator->animate();
    EXPECT_EQ(heard(), Notes{"A end 0.0"});
}

TEST_F(AnimatorTest, RewindKeepsTheFramesButNotIntervalAndCurve)
{
    animator->setup(0, 4, 4, 0.02F, EASING_easeOutBounce);
    animator->animate();
    animator->animate();
    animator->rewind();
    EXPECT_EQ(animator->getValue(), 0);
    heard();
    for (int step = 0; step < 5; ++step)
        animator->animate();
    EXPECT_EQ(heard(), (Notes{"A 0.0", "A 1.0", "A 2.0", "A 3.0", "A end 4.0"}));
    animator->rewind();
    EXPECT_EQ(clock->running(), 0U);
    animator->start();
    EXPECT_EQ(clock->intervals.back(), static_cast<double>(0.009F));
    animator->stop();
}

TEST_F(AnimatorTest, RewindOfARunningAnimatorLeavesTheTimer)
{
    animator->setup(0, 2, 2, 0.005F);
    animator->start();
    tick();
    animator->rewind();
    tick(3);
    EXPECT_EQ(heard(), (Notes{"A 0.0", "A 0.0", "A 1.0", "A end 2.0"}));
}

TEST_F(AnimatorTest, UndoGoesToTheDestinationAtOnce)
{
    animator->setup(2, 6, 100, 0.02F, EASING_easeInOutSine);
    animator->animate();
    heard();
    animator->undo();
    EXPECT_EQ(heard(), (Notes{"A 2.0", "A end 6.0"}));
    EXPECT_TRUE(animator->isFinished());
}

TEST_F(AnimatorTest, UndoEndsTheTimer)
{
    animator->setup(2, 6, 100, 0.005F);
    animator->start();
    animator->undo();
    EXPECT_EQ(clock->running(), 0U);
}

TEST_F(AnimatorTest, UndoOfALoopedRunTurnsBack)
{
    animator->setup(2, 6, 100);
    animator->looped = true;
    animator->undo();
    EXPECT_EQ(heard(), (Notes{"A 2.0", "A loop"}));
    EXPECT_FALSE(animator->isFinished());
    EXPECT_EQ(animator->getSourceValue(), 6);
    animator->animate();
    animator->animate();
    EXPECT_EQ(heard(), (Notes{"A 6.0", "A loop"})) << "one frame is left";
}

TEST_F(AnimatorTest, UndoOfAWayOfNoLengthEndsOnce)
{
    animator->setup(2, 2, 100);
    animator->undo();
    EXPECT_EQ(heard(), Notes{"A end 2.0"});
}

TEST_F(AnimatorTest, StopEndsTheRunWithoutAWord)
{
    animator->setup(0, 10, 4, 0.005F);
    animator->looped = true;
    animator->start();
    tick(2);
    heard();
    animator->stop();
    EXPECT_TRUE(animator->isFinished());
    EXPECT_FALSE(animator->looped);
    EXPECT_EQ(clock->running(), 0U);
    tick(5);
    EXPECT_EQ(heard(), Notes());
}

TEST_F(AnimatorTest, StartDoesNotAskForARun)
{
    animator->start();
    EXPECT_EQ(clock->intervals.back(), static_cast<double>(0.005F));
    tick(3);
    EXPECT_EQ(heard(), Notes());
    EXPECT_EQ(clock->running(), 1U);
    animator->setup(0, 1, 1);
    tick(2);
    EXPECT_EQ(heard(), (Notes{"A 0.0", "A end 1.0"}));
    EXPECT_EQ(clock->running(), 0U);
}

TEST_F(AnimatorTest, StartedTwiceIsSteppedByBothTimers)
{
    animator->setup(0, 4, 4, 0.005F);
    animator->start();
    animator->start();
    tick();
    EXPECT_EQ(heard(), (Notes{"A 0.0", "A 1.0"}));
    animator->stop();
    EXPECT_EQ(clock->running(), 1U) << "the first timer cannot be reached any more";
    animator->setup(0, 4, 4, 0.005F);
    tick();
    EXPECT_EQ(heard(), Notes{"A 0.0"});
}

TEST_F(AnimatorTest, SetupLeavesTimerLoopAndCallbacksAlone)
{
    animator->looped = true;
    animator->start();
    animator->setup(0, 1, 1, 0.02F);
    EXPECT_EQ(clock->running(), 1U);
    EXPECT_TRUE(animator->looped);
    tick(); // still at the old interval
    EXPECT_EQ(heard(), Notes{"A 0.0"});
    animator->stop();
}

TEST_F(AnimatorTest, SetTypeChangesTheNextStep)
{
    animator->setup(0, 16, 4);
    animator->animate();
    animator->animate();
    animator->setType(EASING_easeInQuad);
    EXPECT_EQ(animator->getValue(), 8);
    animator->animate();
    EXPECT_EQ(animator->getValue(), 9);
    animator->setType(EASING_easeLast);
    animator->animate();
    EXPECT_EQ(animator->getValue(), 16);
}

TEST_F(AnimatorTest, SetIntervalCountsFromTheNextStart)
{
    animator->setup(0, 100, 100, 0.005F);
    animator->start();
    animator->setInterval(0.02F);
    tick(2);
    EXPECT_EQ(heard().size(), 2U);
    animator->stop();
    animator->start();
    EXPECT_EQ(clock->intervals.back(), static_cast<double>(0.02F));
    animator->stop();
}

TEST_F(AnimatorTest, IntervalsAreWidenedAsTheyAre)
{
    const auto created = Animator::create(0, 1, 10);
    created->start();
    EXPECT_EQ(clock->intervals.back(), static_cast<double>(0.009F));
    EXPECT_NE(clock->intervals.back(), 0.009);
    created->stop();
}

TEST_F(AnimatorTest, CreateSetsUp)
{
    const auto created = Animator::create(1, 5, 2, 0.01F, EASING_easeInQuad);
    EXPECT_FALSE(created->isFinished());
    created->animate();
    EXPECT_EQ(created->getValue(), 2);
    EXPECT_EQ(created->getSourceValue(), 1);
    EXPECT_EQ(created->getDestinationValue(), 5);
}

TEST_F(AnimatorTest, CountsThoseAlive)
{
    const std::int64_t before = Animator::classCount;
    {
        const Animator one;
        const auto two = Animator::create(0, 1, 1);
        EXPECT_EQ(Animator::classCount, before + 2);
    }
    EXPECT_EQ(Animator::classCount, before);
}

TEST_F(AnimatorTest, ARunningAnimatorLivesUntilItIsStopped)
{
    const std::int64_t before = Animator::classCount;
    auto running = Animator::create(0, 1, 2, 0.005F);
    running->start();
    const std::weak_ptr<Animator> watched = running;
    running = nullptr;
    tick(2);
    EXPECT_FALSE(watched.expired());
    EXPECT_EQ(Animator::classCount, before + 1);
    tick();
    EXPECT_TRUE(watched.expired()) << "its run has ended";
    EXPECT_EQ(Animator::classCount, before);

    running = Animator::create(0, 1, 2, 0.005F);
    running->start();
    Animator &held = *std::exchange(running, nullptr);
    held.stop(); // the timer was its last hold
    EXPECT_EQ(Animator::classCount, before);
    EXPECT_EQ(clock->running(), 0U);
}

TEST_F(AnimatorTest, CallbacksAreReadAfreshBeforeEachCall)
{
    animator->setup(0, 2, 2);
    animator->onAnimation = [&](Animator &self, float) {
        note("first");
        self.onAnimation = nullptr;
        self.onFinished = [&](Animator &, float) { note("other end"); };
    };
    for (int step = 0; step < 3; ++step)
        animator->animate();
    EXPECT_EQ(heard(), (Notes{"first", "other end"}));
}

TEST_F(AnimatorTest, WithoutCallbacksRunsSilently)
{
    const auto silent = Animator::create(0, 1, 1);
    silent->looped = true;
    for (int step = 0; step < 4; ++step)
        silent->animate();
    EXPECT_EQ(silent->getSourceValue(), 0);
    silent->looped = false;
    silent->animate();
    silent->animate();
    EXPECT_TRUE(silent->isFinished());
}

TEST_F(AnimatorTest, StopWithinOnFinishedIsHarmless)
{
    animator->onFinished = [&](Animator &self, float) {
        note(self.isFinished() ? "idle" : "busy");
        self.stop();
    };
    animator->setup(0, 1, 1, 0.005F);
    animator->start();
    tick(5);
    EXPECT_EQ(heard(), (Notes{"A 0.0", "idle"}));
}

TEST_F(AnimatorTest, AFreshRunMayStartWithinOnFinished)
{
    animator->onFinished = [&](Animator &self, float) {
        self.setup(5, 6, 1, 0.005F);
        self.start();
        listenTo(self, "A");
    };
    animator->setup(0, 1, 1, 0.005F);
    animator->start();
    tick(2);
    EXPECT_EQ(clock->running(), 1U);
    EXPECT_EQ(heard(), Notes{"A 0.0"});
    tick(2);
    EXPECT_EQ(heard(), (Notes{"A 5.0", "A end 6.0"}));
    EXPECT_EQ(clock->running(), 0U);
}

TEST_F(AnimatorTest, StopWithinOnAnimationStillTakesTheStep)
{
    for (std::int64_t raw = 0; raw <= 41; ++raw) {
        animator->setup(0, 1, 10, 0.005F, easingFromRawValue(raw).value());
        animator->onAnimation = [](Animator &self, float) { self.stop(); };
        animator->start();
        tick();
        EXPECT_TRUE(animator->isFinished());
        EXPECT_EQ(clock->running(), 0U);
        animator->animate();
        EXPECT_EQ(heard(), Notes());
    }
    animator->setup(0, 1, 10);
    animator->animate();
    EXPECT_EQ(animator->getValue(), -1) << "the curve at step 1 of -1";
}

TEST_F(AnimatorTest, StopWithinOnLoopLeavesARunWithoutFrames)
{
    animator->setup(0, 1, 1, 0.005F);
    animator->looped = true;
    animator->onLoop = [](Animator &self) { self.stop(); };
    animator->start();
    tick(2);
    EXPECT_EQ(heard(), Notes{"A 0.0"});
    EXPECT_EQ(clock->running(), 0U);
    EXPECT_FALSE(animator->isFinished());
    animator->animate();
    EXPECT_EQ(heard(), Notes{"A end 0.0"});
}

TEST_F(AnimatorTest, TheLastHoldMayBeGivenUpWithinACallback)
{
    const std::int64_t before = Animator::classCount;
    auto running = makeAnimator("B", 1);
    running->onFinished = [&, kept = std::make_shared<int>(7)](Animator &, float) {
        running = nullptr;
        note("still " + std::to_string(*kept));
    };
    running->start();
    tick(2);
    EXPECT_EQ(heard(), (Notes{"B 0.0", "still 7"}));
    EXPECT_EQ(Animator::classCount, before);
}

/// Notes which of its operations are called.
class OwnAnimator : public Animator
{
public:
    void setup(float source, float destination, std::int64_t frames, float interval,
               EnumEasing type) override
    {
        calls.emplace_back("setup");
        Animator::setup(source, destination, frames, interval, type);
    }
    void reverse() override
    {
        calls.emplace_back("reverse");
        Animator::reverse();
    }
    void animate() override
    {
        calls.emplace_back("animate");
        Animator::animate();
    }
    void stop() override
    {
        calls.emplace_back("stop");
        Animator::stop();
    }

    std::vector<std::string> calls;
};

TEST_F(AnimatorTest, GoesThroughItsOverridableOperations)
{
    const auto own = Animator::create<OwnAnimator>(0, 1, 1, 0.005F);
    EXPECT_THAT(own->calls, ElementsAre("setup"));
    own->looped = true;
    own->calls.clear();
    own->start();
    tick(2);
    EXPECT_THAT(own->calls, ElementsAre("animate", "animate", "reverse", "setup"));
    own->calls.clear();
    own->looped = false;
    own->undo();
    EXPECT_THAT(own->calls, ElementsAre("setup", "animate", "animate", "stop"));
    own->calls.clear();
    own->rewind();
    EXPECT_THAT(own->calls, ElementsAre("setup"));
}

TEST_F(AnimatorDeathTest, OverflowIsFatal)
{
    animator->setup(0, 1, INT64_MAX);
    Inspection::setSteps(*animator, INT64_MAX - 1);
    animator->animate();
    animator->setup(0, 1, INT64_MAX);
    EXPECT_DEATH(
        {
            animator->onAnimation = [](Animator &self, float) {
                Inspection::setSteps(self, INT64_MAX);
            };
            animator->animate();
        },
        "Fatal error: Arithmetic overflow");
    EXPECT_DEATH(
        {
            Animator::classCount = INT64_MAX;
            std::make_shared<Animator>();
        },
        "Fatal error: Arithmetic overflow");
    EXPECT_DEATH(
        {
            Animator::classCount = INT64_MIN;
            animator = nullptr;
        },
        "Fatal error: Arithmetic overflow");
}

TEST_F(AnimatorDeathTest, AMissingCurveIsFatal)
{
    animator->setup(0, 1, 1);
    Inspection::clearAction(*animator);
    EXPECT_DEATH(
        animator->animate(),
        "Fatal error: Unexpectedly found nil while implicitly unwrapping an Optional value\n");
}

} // namespace
