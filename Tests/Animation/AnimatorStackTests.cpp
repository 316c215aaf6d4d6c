#include "Tests/Animation/KitTest.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace
{

using test::Notes;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class AnimatorStackTest : public test::KitTest
{
protected:
    AnimatorStackTest() { listenTo(*stack); }

    void listenTo(AnimatorStack &of)
    {
        of.onFinished = [this](AnimatorStack &self) {
            EXPECT_EQ(&self, stack.get());
            note("finished");
        };
        of.onRemovedItem = [this](AnimatorStack &self, Animator &) {
            note("removed, left " + std::to_string(self.getCount()));
        };
    }

    std::shared_ptr<AnimatorStack> stack = std::make_shared<AnimatorStack>();
};

using AnimatorStackDeathTest = AnimatorStackTest;

TEST_F(AnimatorStackTest, RunsAnimatorsSideBySideUntilNoneIsLeft)
{
    stack->add(makeAnimator("A", 2));
    stack->add(makeAnimator("B", 4));
    stack->start();
    EXPECT_EQ(clock->running(), 1U) << "the stack's timer alone";
    tick();
    EXPECT_EQ(heard(), (Notes{"A 0.0", "B 0.0"}));
    tick();
    EXPECT_EQ(heard(), (Notes{"A 1.0", "B 1.0"}));
    tick();
    EXPECT_EQ(heard(), (Notes{"A end 2.0", "removed, left 1", "B 2.0"}));
    tick();
    EXPECT_EQ(heard(), Notes{"B 3.0"});
    tick();
    EXPECT_EQ(heard(), (Notes{"B end 4.0", "removed, left 0"}));
    EXPECT_EQ(clock->running(), 1U);
    tick();
    EXPECT_EQ(heard(), Notes{"finished"});
    EXPECT_EQ(clock->running(), 0U);
    EXPECT_EQ(stack->getCount(), 0);
    tick(3);
    EXPECT_EQ(heard(), Notes());
}

TEST_F(AnimatorStackTest, IgnoresAMissingItem)
{
    stack->add(nullptr);
    EXPECT_EQ(stack->getCount(), 0);
    EXPECT_THAT(stack->getItems(), IsEmpty());
}

TEST_F(AnimatorStackTest, GivesItsItemsInTheOrderOfAddition)
{
    const auto a = makeAnimator("A", 1);
    const auto b = makeAnimator("B", 1);
    for (const auto &animator : {b, a, b})
        stack->add(animator);
    EXPECT_EQ(stack->getCount(), 3);
    auto items = stack->getItems();
    EXPECT_THAT(items, ElementsAre(b, a, b));
    items.clear();
    EXPECT_EQ(stack->getCount(), 3);
}

TEST_F(AnimatorStackTest, EmptyFinishesOnItsFirstTick)
{
    stack->start();
    tick();
    EXPECT_EQ(heard(), Notes{"finished"});
    EXPECT_EQ(clock->running(), 0U);
}

TEST_F(AnimatorStackTest, IdleAnimatorsAreNeitherSteppedNorRemovedNorWaitedFor)
{
    const auto idle = std::make_shared<Animator>();
    listenTo(*stack);
    stack->onAnimation = [&](AnimatorStack &, Animator &item) {
        EXPECT_NE(&item, idle.get());
        note("step");
    };
    stack->add(idle);
    stack->add(makeAnimator("A", 1));
    stack->start();
    tick(2);
    EXPECT_EQ(heard(), (Notes{"step", "A 0.0", "step", "A end 1.0", "removed, left 1"}));
    EXPECT_THAT(stack->getItems(), ElementsAre(idle));
    tick();
    EXPECT_EQ(heard(), Notes{"finished"});
    EXPECT_EQ(stack->getCount(), 0);
}

TEST_F(AnimatorStackTest, LeavesTheAnimatorsTimersAlone)
{
    const auto animator = makeAnimator("A", 4);
    animator->start();
    stack->add(animator);
    stack->start();
    tick();
    EXPECT_EQ(heard(), (Notes{"A 0.0", "A 1.0"})) << "stepped by both";
    stack->stop();
    EXPECT_EQ(clock->running(), 1U);
    animator->stop();
}

TEST_F(AnimatorStackTest, StopEmptiesTheStackAndEndsItsTimer)
{
    const auto animator = makeAnimator("A", 4);
    stack->add(animator);
    stack->start();
    tick();
    stack->stop();
    EXPECT_EQ(stack->getCount(), 0);
    EXPECT_EQ(clock->running(), 0U);
    EXPECT_FALSE(animator->isFinished());
    EXPECT_EQ(animator.use_count(), 1);
    EXPECT_EQ(heard(), Notes{"A 0.0"});
}

TEST_F(AnimatorStackTest, AnAnimatorAddedWithinATickIsSteppedOnTheNext)
{
    const auto late = makeAnimator("B", 5);
    stack->onAnimation = [&](AnimatorStack &self, Animator &) {
        self.add(late);
        self.onAnimation = nullptr;
        EXPECT_EQ(self.getCount(), 2);
    };
    stack->add(makeAnimator("A", 5));
    stack->start();
    tick();
    EXPECT_EQ(heard(), Notes{"A 0.0"});
    tick();
    EXPECT_EQ(heard(), (Notes{"A 1.0", "B 0.0"}));
    stack->stop();
}

TEST_F(AnimatorStackTest, ManyAddedWithinATickDoNotDisturbIt)
{
    stack->onAnimation = [&](AnimatorStack &self, Animator &) {
        for (int i = 0; i < 100; ++i)
            self.add(std::make_shared<Animator>());
    };
    for (int i = 0; i < 10; ++i)
        stack->add(makeAnimator("A", 3));
    stack->animate();
    EXPECT_EQ(heard().size(), 10U);
    EXPECT_EQ(stack->getCount(), 1010);
}

TEST_F(AnimatorStackTest, ALoopedAnimatorKeepsItRunning)
{
    const auto looped = makeAnimator("A", 1);
    looped->looped = true;
    stack->add(looped);
    stack->start();
    tick(50);
    EXPECT_EQ(stack->getCount(), 1);
    EXPECT_EQ(clock->running(), 1U);
    stack->stop();
}

TEST_F(AnimatorStackTest, AnAnimatorAddedTwiceIsSteppedTwiceAndLeavesOneEntry)
{
    const auto twice = makeAnimator("A", 3);
    const auto other = makeAnimator("B", 9);
    for (const auto &animator : {twice, other, twice})
        stack->add(animator);
    stack->animate();
    EXPECT_EQ(heard(), (Notes{"A 0.0", "B 0.0", "A 1.0"}));
    stack->animate(); // ends on the second visit; the first entry goes
    EXPECT_EQ(heard(), (Notes{"A 2.0", "B 1.0", "A end 3.0", "removed, left 2"}));
    EXPECT_THAT(stack->getItems(), ElementsAre(other, twice));
    stack->animate();
    EXPECT_EQ(heard(), Notes{"B 2.0"});
    EXPECT_THAT(stack->getItems(), ElementsAre(other, twice));
}

TEST_F(AnimatorStackTest, ATwiceAddedAnimatorThatEndsOnItsFirstVisitIsThenSkipped)
{
    const auto twice = makeAnimator("A", 2);
    const auto other = makeAnimator("B", 9);
    for (const auto &animator : {twice, other, twice})
        stack->add(animator);
    stack->animate();
    heard();
    stack->animate();
    EXPECT_EQ(heard(), (Notes{"A end 2.0", "removed, left 2", "B 1.0"}));
    EXPECT_THAT(stack->getItems(), ElementsAre(other, twice));
}

TEST_F(AnimatorStackTest, WhatIsRemovedIsGoneWhenItIsReported)
{
    const auto a = makeAnimator("A", 0);
    const auto b = makeAnimator("B", 0);
    std::vector<std::vector<std::shared_ptr<Animator>>> items;
    stack->onRemovedItem = [&](AnimatorStack &self, Animator &) {
        items.push_back(self.getItems());
    };
    stack->add(a);
    stack->add(b);
    stack->animate();
    EXPECT_THAT(items, ElementsAre(ElementsAre(b), IsEmpty()));
}

TEST_F(AnimatorStackTest, AnAnimatorHeldByTheStackAloneLivesThroughItsReport)
{
    const std::int64_t before = Animator::classCount;
    stack->onRemovedItem = [&](AnimatorStack &, Animator &item) {
        note("removed", item.getDestinationValue());
    };
    stack->add(makeAnimator("A", 0));
    stack->add(makeAnimator("B", 1));
    stack->animate();
    EXPECT_EQ(heard(), (Notes{"A end 0.0", "removed 0.0", "B 0.0"}));
    EXPECT_EQ(Animator::classCount, before + 1);
}

TEST_F(AnimatorStackTest, MayBeStoppedAndFilledAgainWithinOnFinished)
{
    const auto again = makeAnimator("B", 1);
    stack->onFinished = [&](AnimatorStack &self) {
        note("finished");
        self.stop();
        self.add(again); // is dropped by the stop that follows
    };
    stack->start();
    tick();
    EXPECT_EQ(heard(), Notes{"finished"});
    EXPECT_EQ(stack->getCount(), 0);
}

TEST_F(AnimatorStackTest, ATickGoesOnOverItsSnapshotWhenACallbackStopsIt)
{
    // Only an animator that finishes in such a tick is fatal.
    const auto first = makeAnimator("A", 5);
    stack->onAnimation = [&](AnimatorStack &self, Animator &item) {
        if (&item == first.get())
            self.stop();
    };
    stack->add(first);
    stack->add(makeAnimator("B", 5));
    stack->add(makeAnimator("C", 5));
    stack->start();
    tick();
    EXPECT_EQ(heard(), (Notes{"A 0.0", "B 0.0", "C 0.0"}));
    EXPECT_EQ(stack->getCount(), 0);
    EXPECT_EQ(clock->running(), 0U);
}

TEST_F(AnimatorStackTest, StoppedAndFilledAnewWithinATickRemovesFromTheNewList)
{
    const auto a = makeAnimator("A", 5);
    const auto b = makeAnimator("B", 0);
    const auto c = makeAnimator("C", 5);
    stack->onAnimation = [&](AnimatorStack &self, Animator &item) {
        if (&item != a.get())
            return;
        self.stop();
        for (const auto &animator : {c, b, b})
            self.add(animator);
    };
    stack->add(a);
    stack->add(b);
    stack->animate();
    EXPECT_EQ(heard(), (Notes{"A 0.0", "B end 0.0", "removed, left 2"}));
    EXPECT_THAT(stack->getItems(), ElementsAre(c, b));
}

TEST_F(AnimatorStackTest, ATickWithinATickStepsAllOnceMore)
{
    const auto a = makeAnimator("A", 1);
    const auto b = makeAnimator("B", 5);
    stack->onAnimation = [&](AnimatorStack &self, Animator &) {
        self.onAnimation = nullptr;
        self.animate();
    };
    stack->add(a);
    stack->add(b);
    stack->animate();
    EXPECT_EQ(heard(), (Notes{"A 0.0", "B 0.0", "A end 1.0", "removed, left 1", "B 1.0"}));
    EXPECT_THAT(stack->getItems(), ElementsAre(b));
}

TEST_F(AnimatorStackTest, TakesAnAnimatorOfSeveralStacksOutOfTheOneThatEndsIt)
{
    const auto shared = makeAnimator("A", 1);
    const auto other = std::make_shared<AnimatorStack>();
    other->add(shared);
    stack->add(makeAnimator("B", 5));
    stack->add(shared);
    stack->animate();
    stack->animate();
    EXPECT_EQ(heard(), (Notes{"B 0.0", "A 0.0", "B 1.0", "A end 1.0", "removed, left 1"}));
    EXPECT_THAT(other->getItems(), ElementsAre(shared));
}

TEST_F(AnimatorStackTest, HoldsAnAnimatorAnyNumberOfTimes)
{
    constexpr std::int64_t entries = 100'000;
    const auto animator = makeAnimator("A", 0);
    for (std::int64_t i = 0; i < entries; ++i)
        stack->add(animator);
    stack->animate();
    EXPECT_EQ(heard(), (Notes{"A end 0.0", "removed, left 99999"}));
    stack->stop();
    const auto last = makeAnimator("B", 5);
    animator->setup(0, 1, 0);
    for (const auto &item : {animator, last, animator})
        stack->add(item);
    stack->animate();
    EXPECT_THAT(stack->getItems(), ElementsAre(last, animator));
}

TEST_F(AnimatorStackTest, StartedTwiceIsDrivenByBothTimers)
{
    stack->add(makeAnimator("A", 9));
    stack->start();
    stack->start();
    tick();
    EXPECT_EQ(heard(), (Notes{"A 0.0", "A 1.0"}));
    stack->stop();
    EXPECT_EQ(clock->running(), 1U);
    tick();
    EXPECT_EQ(heard(), Notes{"finished"}) << "the first timer still finds the stack empty";
}

TEST_F(AnimatorStackTest, StartReadsTheInterval)
{
    stack->start();
    EXPECT_EQ(clock->intervals.back(), static_cast<double>(0.005F));
    stack->stop();
    stack->interval = 0.25F;
    stack->start();
    EXPECT_EQ(clock->intervals.back(), 0.25);
    stack->stop();
}

TEST_F(AnimatorStackTest, ARunningStackLivesUntilItEnds)
{
    const std::weak_ptr<AnimatorStack> watched = stack;
    stack->add(makeAnimator("A", 1));
    stack->onFinished = nullptr;
    stack->start();
    stack = nullptr;
    tick(2);
    EXPECT_FALSE(watched.expired());
    tick();
    EXPECT_TRUE(watched.expired());
}

class OwnStack : public AnimatorStack
{
public:
    void animate() override
    {
        calls.emplace_back("animate");
        AnimatorStack::animate();
    }
    void stop() override
    {
        calls.emplace_back("stop");
        AnimatorStack::stop();
    }
    void reset() override
    {
        calls.emplace_back("reset");
        AnimatorStack::reset();
    }

    std::vector<std::string> calls;
};

TEST_F(AnimatorStackTest, GoesThroughItsOverridableOperations)
{
    const auto own = std::make_shared<OwnStack>();
    own->start();
    tick();
    EXPECT_THAT(own->calls, ElementsAre("animate", "stop", "reset"));
}

TEST_F(AnimatorStackDeathTest, AnAnimatorThatFinishesAfterItWasTakenOutIsFatal)
{
    const auto animator = makeAnimator("A", 0);
    animator->onFinished = [&](Animator &, float) { stack->stop(); };
    stack->add(animator);
    EXPECT_DEATH(stack->animate(),
                 "Fatal error: Unexpectedly found nil while unwrapping an Optional value\n");
}

/// What the stack promises, taken literally: a copy of the list for every tick.
class LiteralStack
{
public:
    void add(const std::shared_ptr<Animator> &item) { animators.push_back(item); }

    void animate()
    {
        bool stepped = false;
        for (const auto &animator : std::vector(animators)) {
            if (animator->isFinished())
                continue;
            animator->animate();
            stepped = true;
            if (!animator->isFinished())
                continue;
            animators.erase(std::find(animators.begin(), animators.end(), animator));
            onRemovedItem();
        }
        if (!stepped)
            animators.clear();
    }

    std::vector<std::shared_ptr<Animator>> animators;
    std::function<void()> onRemovedItem;
};

TEST_F(AnimatorStackTest, BehavesAsIfItCopiedItsListForEveryTick)
{
    for (unsigned seed = 0; seed < 200; ++seed) {
        // The same decisions for both: lengths, entries, and what is added or begun
        // anew when an animator is removed.
        const auto play = [seed](auto &played, auto add, auto items) {
            std::mt19937 random(seed);
            std::vector<std::shared_ptr<Animator>> pool;
            std::vector<std::string> log;
            for (int i = 0; i < 12; ++i) {
                pool.push_back(std::make_shared<Animator>());
                pool.back()->setup(0, 1, static_cast<std::int64_t>(random() % 7));
                pool.back()->onAnimation = [&log, i](Animator &, float) {
                    log.push_back("step " + std::to_string(i));
                };
            }
            for (int i = 0; i < 20; ++i)
                add(pool[random() % pool.size()]);
            const auto whenRemoved = [&] {
                if (random() % 3 == 0)
                    add(pool[random() % pool.size()]);
                if (random() % 3 == 0)
                    pool[random() % pool.size()]->setup(0, 1, random() % 3);
                log.push_back("left " + std::to_string(items().size()));
            };
            played.onRemovedItem = [&](auto &...) { whenRemoved(); };
            for (int i = 0; i < 12; ++i) {
                played.animate();
                for (const auto &item : items()) {
                    const auto position = std::find(pool.begin(), pool.end(), item);
                    log.push_back(std::to_string(position - pool.begin()));
                }
            }
            return log;
        };
        LiteralStack literal;
        const auto expected = play(
            literal, [&](const auto &item) { literal.add(item); },
            [&] { return literal.animators; });
        AnimatorStack real;
        const auto seen = play(
            real, [&](const auto &item) { real.add(item); }, [&] { return real.getItems(); });
        EXPECT_GT(expected.size(), 60U);
        EXPECT_EQ(seen, expected) << "seed " << seed;
    }
}

} // namespace
