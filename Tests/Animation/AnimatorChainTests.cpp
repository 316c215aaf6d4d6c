#include "Tests/Animation/KitTest.hpp"
#include "Tests/Utilities/PrintedLines.hpp"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

namespace
{

using test::linesOf;
using test::Notes;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class AnimatorChainTest : public test::KitTest
{
protected:
    AnimatorChainTest()
    {
        chain->onFinished = [this](AnimatorChain &self) {
            EXPECT_EQ(&self, chain.get());
            note("finished at " + std::to_string(self.getCurrentIndex()));
        };
    }

    /// Fills the chain with animators A, B, … of so many frames each.
    void fill(const std::vector<std::int64_t> &frames)
    {
        for (const std::int64_t count : frames) {
            animators.push_back(
                makeAnimator(std::string(1, static_cast<char>('A' + animators.size())), count));
            chain->add(animators.back());
        }
    }

    std::shared_ptr<AnimatorChain> chain = std::make_shared<AnimatorChain>();
    std::vector<std::shared_ptr<Animator>> animators;
};

using AnimatorChainDeathTest = AnimatorChainTest;

TEST_F(AnimatorChainTest, RunsOneAnimatorAfterTheOther)
{
    fill({1, 2});
    chain->start();
    EXPECT_EQ(clock->running(), 1U) << "the chain's timer alone";
    tick();
    EXPECT_EQ(heard(), Notes{"A 0.0"});
    EXPECT_EQ(chain->getCurrentIndex(), 0);
    tick();
    EXPECT_EQ(heard(), Notes{"A end 1.0"});
    EXPECT_EQ(chain->getCurrentIndex(), 1) << "first stepped on the next tick";
    tick(2);
    EXPECT_EQ(heard(), (Notes{"B 0.0", "B 1.0"}));
    tick();
    EXPECT_EQ(heard(), (Notes{"B end 2.0", "finished at 2"}));
    EXPECT_EQ(chain->getCurrentIndex(), 0);
    EXPECT_EQ(clock->running(), 0U);
    EXPECT_EQ(chain->getCount(), 2);
}

TEST_F(AnimatorChainTest, OfOneAnimatorEndsWithIt)
{
    fill({1});
    chain->start();
    tick(2);
    EXPECT_EQ(heard(), (Notes{"A 0.0", "A end 1.0", "finished at 1"}));
    EXPECT_EQ(chain->getCurrentIndex(), 0);
    EXPECT_EQ(clock->running(), 0U);
}

TEST_F(AnimatorChainTest, ReportsEachTickAndGivesInnerAnimatorsAlone)
{
    fill({0, 1, 0});
    std::vector<std::shared_ptr<Animator>> current;
    chain->onAnimation = [&](AnimatorChain &self, Animator &item) {
        EXPECT_EQ(&item, animators[static_cast<std::size_t>(self.getCurrentIndex())].get());
        current.push_back(self.getCurrentItem());
        note("tick");
    };
    chain->start();
    tick(4);
    EXPECT_THAT(current, ElementsAre(nullptr, animators[1], animators[1], nullptr));
    EXPECT_EQ(heard(), (Notes{"tick", "A end 0.0", "tick", "B 0.0", "tick", "B end 1.0", "tick",
                              "C end 0.0", "finished at 3"}));
}

TEST_F(AnimatorChainTest, AsynchronouslyStartsOneAnimatorATick)
{
    fill({10, 10, 10});
    chain->async = true;
    chain->start();
    tick();
    EXPECT_EQ(clock->running(), 2U);
    EXPECT_EQ(chain->getCurrentIndex(), 1);
    tick();
    EXPECT_EQ(clock->running(), 3U);
    heard();
    tick();
    EXPECT_EQ(clock->running(), 3U) << "three animators, no chain";
    EXPECT_EQ(heard(), (Notes{"finished at 3", "A 1.0", "B 0.0"}));
    EXPECT_EQ(chain->getCurrentIndex(), 0);
    tick(20);
    EXPECT_EQ(clock->running(), 0U);
}

TEST_F(AnimatorChainTest, AsynchronouslyDoesNotAskForTheAnimatorsState)
{
    const auto idle = std::make_shared<Animator>();
    chain->add(idle);
    chain->async = true;
    chain->animate();
    EXPECT_EQ(heard(), Notes{"finished at 1"});
    EXPECT_EQ(clock->running(), 1U) << "the idle animator's";
    idle->stop();
}

TEST_F(AnimatorChainTest, BackwardsFromTheFirstStepsItOnceAndEnds)
{
    fill({5, 5});
    chain->setBackwards(true);
    chain->start();
    tick();
    EXPECT_EQ(heard(), (Notes{"A 0.0", "finished at 0"}));
    EXPECT_EQ(clock->running(), 0U);
}

TEST_F(AnimatorChainTest, BackwardsFromFurtherUpDoesNotRunTheFirst)
{
    fill({0, 0, 1, 0});
    for (int i = 0; i < 2; ++i)
        chain->animate();
    EXPECT_EQ(chain->getCurrentIndex(), 2);
    heard();
    chain->setBackwards(true);
    EXPECT_EQ(chain->getCurrentIndex(), 2);
    animators[1]->setup(0, 1, 0);
    chain->animate();
    chain->animate();
    EXPECT_EQ(chain->getCurrentIndex(), 1);
    chain->animate();
    EXPECT_EQ(heard(), (Notes{"C 0.0", "C end 1.0", "B end 1.0", "finished at 0"}));
}

TEST_F(AnimatorChainTest, StoppingKeepsTheDirection)
{
    fill({5, 5});
    chain->setBackwards(true);
    chain->animate();
    chain->animate();
    EXPECT_EQ(heard(), (Notes{"A 0.0", "finished at 0", "A 1.0", "finished at 0"}));
    chain->setBackwards(false);
    chain->animate();
    EXPECT_EQ(heard(), Notes{"A 2.0"});
}

TEST_F(AnimatorChainTest, PassesOverAnIdleAnimatorInOneTick)
{
    chain->add(std::make_shared<Animator>());
    fill({1});
    chain->animate();
    EXPECT_EQ(chain->getCurrentIndex(), 1);
    chain->animate();
    EXPECT_EQ(heard(), Notes{"A 0.0"});
}

TEST_F(AnimatorChainTest, WarnsOnEveryTickWithoutAnimators)
{
    EXPECT_THAT(linesOf([&] {
                    chain->start();
                    tick(2);
                }),
                ElementsAre("WARNUNG: Es sind keine Animator Objekte definiert.",
                            "WARNUNG: Es sind keine Animator Objekte definiert."));
    EXPECT_EQ(clock->running(), 1U);
    EXPECT_EQ(heard(), Notes());
    fill({0});
    EXPECT_THAT(linesOf([&] { tick(); }), IsEmpty());
    EXPECT_EQ(heard(), (Notes{"A end 0.0", "finished at 1"}));
}

TEST_F(AnimatorChainTest, BringsAnIndexBeyondTheEndBackToTheLast)
{
    fill({0, 0, 5});
    chain->animate();
    chain->animate();
    EXPECT_EQ(chain->getCurrentIndex(), 2);
    chain->remove(animators[2]);
    chain->remove(animators[0]);
    heard();
    animators[1]->setup(0, 5, 5);
    chain->animate();
    EXPECT_EQ(heard(), Notes{"B 0.0"});
    EXPECT_EQ(chain->getCurrentIndex(), 0);
}

TEST_F(AnimatorChainTest, ANegativeIndexMeansTheLast)
{
    fill({0, 1, 5});
    chain->setBackwards(true);
    chain->onFinished = [&](AnimatorChain &self) {
        // Down to -1 before the chain can stop.
        note("finished at " + std::to_string(self.getCurrentIndex()));
        if (self.getCurrentIndex() == -1) {
            self.onFinished = nullptr;
            self.animate();
        }
    };
    chain->animate();
    EXPECT_EQ(heard(), (Notes{"A end 0.0", "finished at -1", "C 0.0"}));
}

TEST_F(AnimatorChainTest, TheCountIsReadAnewAtTheEndOfATick)
{
    fill({5});
    chain->onAnimation = [&](AnimatorChain &self, Animator &) {
        self.onAnimation = nullptr;
        self.removeAll();
        animators.clear();
    };
    chain->start();
    tick();
    EXPECT_EQ(heard(), (Notes{"A 0.0", "finished at 0"})) << "0 is not below a count of 0";
    EXPECT_EQ(clock->running(), 0U);
}

TEST_F(AnimatorChainTest, AnAnimatorAddedWhileItRunsTakesPart)
{
    fill({0});
    chain->onAnimation = [&](AnimatorChain &self, Animator &) {
        self.onAnimation = nullptr;
        fill({0});
    };
    chain->start();
    tick(2);
    EXPECT_EQ(heard(), (Notes{"A end 0.0", "B end 0.0", "finished at 2"}));
}

TEST_F(AnimatorChainTest, HoldsAnimatorsInOrderAndSeveralTimes)
{
    fill({1, 1});
    chain->add(animators[0]);
    chain->add(nullptr);
    EXPECT_EQ(chain->getCount(), 3);
    chain->remove(nullptr);
    EXPECT_EQ(chain->getCount(), 3);
    chain->remove(animators[0]); // the first entry
    EXPECT_EQ(chain->getCount(), 2);
    chain->animate();
    EXPECT_EQ(heard(), Notes{"B 0.0"});
}

TEST_F(AnimatorChainTest, RemoveAllStops)
{
    fill({5, 5});
    chain->start();
    tick();
    chain->removeAll();
    EXPECT_EQ(chain->getCount(), 0);
    EXPECT_EQ(clock->running(), 0U);
    EXPECT_EQ(animators[0].use_count(), 1);
}

TEST_F(AnimatorChainTest, StopGoesBackToTheFirstButLeavesTheAnimators)
{
    fill({0, 5});
    chain->start();
    tick(2);
    heard();
    chain->stop();
    EXPECT_EQ(chain->getCurrentIndex(), 0);
    EXPECT_EQ(chain->getCount(), 2);
    EXPECT_FALSE(animators[1]->isFinished());
    chain->start();
    tick(2);
    EXPECT_EQ(heard(), Notes{"B 1.0"}) << "the first is idle and passed over";
    chain->stop();
}

TEST_F(AnimatorChainTest, StartedTwiceIsDrivenByBothTimers)
{
    fill({5});
    chain->start();
    chain->start();
    tick();
    EXPECT_EQ(heard(), (Notes{"A 0.0", "A 1.0"}));
    chain->stop();
    EXPECT_EQ(clock->running(), 1U);
    tick();
    EXPECT_EQ(heard(), Notes{"A 2.0"});
}

TEST_F(AnimatorChainTest, StartReadsTheInterval)
{
    chain->start();
    EXPECT_EQ(clock->intervals.back(), static_cast<double>(0.005F));
    chain->stop();
    chain->interval = 0.5F;
    chain->start();
    EXPECT_EQ(clock->intervals.back(), 0.5);
    chain->stop();
}

TEST_F(AnimatorChainTest, ARunningChainLivesUntilItEnds)
{
    const std::weak_ptr<AnimatorChain> watched = chain;
    fill({1});
    chain->onFinished = nullptr;
    chain->start();
    chain = nullptr;
    tick();
    EXPECT_FALSE(watched.expired());
    tick();
    EXPECT_TRUE(watched.expired());
}

class OwnChain : public AnimatorChain
{
public:
    void animate() override
    {
        calls.emplace_back("animate");
        AnimatorChain::animate();
    }
    void stop() override
    {
        calls.emplace_back("stop");
        AnimatorChain::stop();
    }
    void reset() override
    {
        calls.emplace_back("reset");
        AnimatorChain::reset();
    }

    std::vector<std::string> calls;
};

TEST_F(AnimatorChainTest, GoesThroughItsOverridableOperations)
{
    const auto own = std::make_shared<OwnChain>();
    own->add(makeAnimator("A", 0));
    own->start();
    tick();
    EXPECT_THAT(own->calls, ElementsAre("animate", "stop", "reset"));
    own->calls.clear();
    own->removeAll();
    EXPECT_THAT(own->calls, ElementsAre("stop", "reset"));
}

TEST_F(AnimatorChainDeathTest, RemovingAStrangerIsFatal)
{
    fill({1});
    EXPECT_DEATH(chain->remove(makeAnimator("B", 1)),
                 "Fatal error: Unexpectedly found nil while unwrapping an Optional value\n");
}

} // namespace
