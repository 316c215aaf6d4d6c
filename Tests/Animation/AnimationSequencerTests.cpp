#include "Animation/Inspection.hpp"
#include "Tests/Animation/KitTest.hpp"
#include "Tests/Utilities/PrintedLines.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace
{

using animation::Inspection;
using test::linesOf;
using test::Notes;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class AnimationSequencerTest : public test::KitTest
{
protected:
    AnimationSequencerTest()
    {
        sequencer->onFinished = [this](AnimationSequencer &self) {
            EXPECT_EQ(&self, sequencer.get());
            note("finished at " + std::to_string(self.getCurrentFrame()));
        };
    }

    std::shared_ptr<Animator> place(const std::string &name, std::int64_t frames, std::int64_t at)
    {
        auto animator = makeAnimator(name, frames);
        sequencer->add(animator, at);
        return animator;
    }

    std::shared_ptr<AnimationSequencer> sequencer = std::make_shared<AnimationSequencer>();
};

using AnimationSequencerDeathTest = AnimationSequencerTest;

TEST_F(AnimationSequencerTest, RunsAnimatorsFromTheirStartFramesToTheEndOfTheLatest)
{
    place("A", 5, 0);
    place("B", 5, 10);
    EXPECT_EQ(Inspection::latestEnd(*sequencer), 15);
    sequencer->start();
    tick();
    EXPECT_EQ(heard(), Notes{"A 0.0"});
    EXPECT_EQ(sequencer->getCurrentFrame(), 1);
    tick(5);
    EXPECT_EQ(heard(), (Notes{"A 1.0", "A 2.0", "A 3.0", "A 4.0", "A end 5.0"}));
    EXPECT_EQ(sequencer->getCurrentCount(), 0);
    tick(3);
    EXPECT_EQ(heard(), Notes());
    tick();
    EXPECT_EQ(heard(), Notes{"B 0.0"});
    EXPECT_EQ(sequencer->getCurrentFrame(), 10);
    tick(4);
    EXPECT_EQ(heard().size(), 4U);
    tick();
    EXPECT_EQ(heard(), (Notes{"B end 5.0", "finished at 15"}));
    EXPECT_EQ(sequencer->getCurrentFrame(), 0);
    EXPECT_EQ(sequencer->getCurrentIndex(), 0);
    EXPECT_EQ(clock->running(), 0U);
    EXPECT_EQ(sequencer->getCount(), 2);
}

TEST_F(AnimationSequencerTest, SortsByStartFrame)
{
    place("late", 9, 10);
    place("early", 9, 0);
    place("between", 9, 5);
    sequencer->start();
    tick(10);
    const Notes all = heard();
    EXPECT_EQ((Notes{all[0], all[5], all[16]}), (Notes{"early 0.0", "between 0.0", "late 0.0"}));
    EXPECT_EQ(sequencer->getCurrentIndex(), 2);
    sequencer->stop();
}

TEST_F(AnimationSequencerTest, AnAnimatorAtFrame0StartsLikeOneAtFrame1)
{
    place("A", 9, 0);
    place("B", 9, 1);
    place("C", 9, -5);
    sequencer->start();
    tick();
    EXPECT_EQ(heard(), (Notes{"C 0.0", "A 0.0", "B 0.0"}));
    sequencer->stop();
}

TEST_F(AnimationSequencerTest, StopsAnAnimatorThatIsLongerThanItsTimeline)
{
    const auto looped = place("A", 2, 1);
    looped->looped = true;
    sequencer->start();
    tick(3);
    EXPECT_EQ(heard(), (Notes{"A 0.0", "A 1.0", "A loop", "finished at 3"}));
    EXPECT_EQ(sequencer->getCurrentCount(), 1) << "it stays among the running ones";
    EXPECT_FALSE(looped->isFinished());
    sequencer->start();
    tick();
    EXPECT_EQ(heard(), Notes{"A 2.0"});
    sequencer->stop();
}

TEST_F(AnimationSequencerTest, ReportsEveryRunningAnimatorBeforeItsStep)
{
    const auto a = place("A", 9, 1);
    const auto b = place("B", 9, 2);
    sequencer->onAnimation = [&](AnimationSequencer &self, Animator &item) {
        EXPECT_EQ(&self, sequencer.get());
        note(&item == a.get() ? "before A" : "before B");
    };
    sequencer->start();
    tick(2);
    EXPECT_EQ(heard(), (Notes{"before A", "A 0.0", "before A", "A 1.0", "before B", "B 0.0"}));
    sequencer->pause();
    tick(2);
    EXPECT_EQ(heard(), Notes());
    sequencer->stop();
}

TEST_F(AnimationSequencerTest, GrowsOnlyAndForgetsItsLengthWithAllAnimators)
{
    const auto longest = place("A", 50, 100);
    place("B", 5, 10);
    EXPECT_EQ(Inspection::latestEnd(*sequencer), 150);
    sequencer->remove(longest);
    EXPECT_EQ(sequencer->getCount(), 1);
    EXPECT_EQ(Inspection::latestEnd(*sequencer), 150);
    sequencer->removeAll();
    EXPECT_EQ(sequencer->getCount(), 0);
    EXPECT_EQ(Inspection::latestEnd(*sequencer), 0);
}

TEST_F(AnimationSequencerTest, LooksAtAllLengthsWheneverOneIsPlaced)
{
    const auto first = std::make_shared<Animator>();
    sequencer->add(first, 20);
    EXPECT_EQ(Inspection::latestEnd(*sequencer), 19) << "an idle one has -1 frames";
    first->setup(0, 1, 30);
    EXPECT_EQ(Inspection::latestEnd(*sequencer), 19);
    place("B", 5, 0);
    EXPECT_EQ(Inspection::latestEnd(*sequencer), 50);
    first->setup(0, 1, 100);
    sequencer->remove(nullptr);
    EXPECT_EQ(Inspection::latestEnd(*sequencer), 120);
}

TEST_F(AnimationSequencerTest, ReportsAMissingItem)
{
    EXPECT_THAT(linesOf([&] { sequencer->add(nullptr, 3); }),
                ElementsAre("FEHLER: Das Animator Objekt ist ungültig."));
    EXPECT_EQ(sequencer->getCount(), 0);
    EXPECT_EQ(Inspection::latestEnd(*sequencer), 0);
    EXPECT_THAT(linesOf([&] { sequencer->remove(nullptr); }), IsEmpty());
}

TEST_F(AnimationSequencerTest, WarnsOnEveryTickWithoutAnimators)
{
    EXPECT_THAT(linesOf([&] {
                    sequencer->start();
                    tick(2);
                }),
                ElementsAre("WARNUNG: Es sind keine Animator Objekte definiert.",
                            "WARNUNG: Es sind keine Animator Objekte definiert."));
    EXPECT_EQ(clock->running(), 1U);
    EXPECT_EQ(sequencer->getCurrentFrame(), 2);
    EXPECT_EQ(heard(), Notes());
    sequencer->pause();
    EXPECT_THAT(linesOf([&] { tick(); }), IsEmpty());
    sequencer->stop();
}

TEST_F(AnimationSequencerTest, CountsFramesThroughAPause)
{
    place("A", 4, 1);
    place("B", 4, 10);
    place("C", 4, 20);
    place("D", 4, 60);
    sequencer->start();
    tick();
    sequencer->pause();
    tick(20);
    EXPECT_EQ(heard(), Notes{"A 0.0"});
    EXPECT_EQ(sequencer->getCurrentFrame(), 21);
    sequencer->continue_();
    tick();
    EXPECT_EQ(heard(), (Notes{"A 1.0", "B 0.0", "C 0.0"}));
    EXPECT_EQ(sequencer->getCurrentCount(), 3);
    sequencer->stop();
}

TEST_F(AnimationSequencerTest, EndsAfterAPauseInWhichTheEndPassed)
{
    place("A", 4, 1);
    sequencer->start();
    sequencer->pause();
    tick(100);
    EXPECT_EQ(heard(), Notes());
    EXPECT_EQ(clock->running(), 1U);
    sequencer->continue_();
    tick();
    EXPECT_EQ(heard(), (Notes{"A 0.0", "finished at 101"}));
    EXPECT_EQ(clock->running(), 0U);
}

TEST_F(AnimationSequencerTest, StopLeavesThePauseAndTheRunningAnimators)
{
    place("A", 9, 1);
    sequencer->start();
    tick(2);
    sequencer->pause();
    sequencer->stop();
    EXPECT_EQ(sequencer->getCurrentFrame(), 0);
    EXPECT_EQ(sequencer->getCurrentCount(), 1);
    heard();
    sequencer->start();
    tick(3);
    EXPECT_EQ(heard(), Notes()) << "still paused";
    sequencer->continue_();
    tick();
    EXPECT_EQ(heard(), Notes{"A 2.0"});
    sequencer->stop();
}

TEST_F(AnimationSequencerTest, RewindRewindsAllAndKeepsTheFrame)
{
    const auto a = place("A", 4, 1);
    const auto b = place("B", 4, 3);
    sequencer->start();
    tick(3);
    sequencer->rewind();
    EXPECT_EQ(sequencer->getCurrentFrame(), 3);
    EXPECT_EQ(a->getValue(), 0);
    EXPECT_EQ(b->getValue(), 0);
    heard();
    tick();
    EXPECT_EQ(heard(), (Notes{"A 0.0", "B 0.0"}));
    sequencer->stop();
}

TEST_F(AnimationSequencerTest, SeekStopsWhatStartsBeforeAndRewindsTheRest)
{
    const auto a = place("A", 4, 0);
    const auto b = place("B", 4, 5);
    const auto c = place("C", 4, 10);
    c->stop();
    sequencer->seek(7);
    EXPECT_TRUE(a->isFinished());
    EXPECT_TRUE(b->isFinished());
    EXPECT_FALSE(c->isFinished());
    EXPECT_EQ(sequencer->getCurrentIndex(), 2);
    EXPECT_EQ(sequencer->getCurrentFrame(), 7);
    sequencer->start();
    tick(3);
    EXPECT_EQ(heard(), Notes{"C 0.0"});
    sequencer->seek(10);
    EXPECT_EQ(sequencer->getCurrentIndex(), 2) << "a start at the very frame is not before it";
    sequencer->stop();
}

TEST_F(AnimationSequencerTest, SeekPastTheEndStops)
{
    const auto a = place("A", 4, 0);
    sequencer->start();
    tick();
    sequencer->seek(5);
    EXPECT_EQ(clock->running(), 0U);
    EXPECT_EQ(sequencer->getCurrentFrame(), 0);
    EXPECT_FALSE(a->isFinished()) << "the animators are left as they are";
    sequencer->seek(4);
    EXPECT_EQ(sequencer->getCurrentFrame(), 4) << "the end itself is not past it";
}

TEST_F(AnimationSequencerTest, SeekKeepsRunningAnimators)
{
    place("A", 9, 1);
    sequencer->start();
    tick(2);
    heard();
    sequencer->seek(5);
    EXPECT_EQ(sequencer->getCurrentCount(), 1);
    tick();
    EXPECT_EQ(heard(), Notes()) << "stopped, it is looked at once more and dropped";
    EXPECT_EQ(sequencer->getCurrentCount(), 0);
    sequencer->stop();
}

/// Takes everything off a timeline when it is stopped.
class Clearing : public Animator
{
public:
    void stop() override
    {
        Animator::stop();
        timeline->removeAll();
    }

    AnimationSequencer *timeline = nullptr;
};

TEST_F(AnimationSequencerTest, SeekGoesOnOverAnimatorsThatAStopTakesOffTheTimeline)
{
    const auto clearing = Animator::create<Clearing>(0, 1, 4);
    clearing->timeline = sequencer.get();
    sequencer->add(clearing, 0);
    const auto before = place("A", 4, 2);
    const auto after = place("B", 4, 5);
    after->stop();
    sequencer->seek(3);
    EXPECT_TRUE(before->isFinished());
    EXPECT_FALSE(after->isFinished()) << "rewound, since it started later";
    EXPECT_EQ(sequencer->getCurrentIndex(), 2);
    EXPECT_EQ(sequencer->getCount(), 0);
}

TEST_F(AnimationSequencerTest, ARemovedAnimatorGoesOnRunning)
{
    const auto a = place("A", 2, 1);
    place("B", 5, 1);
    sequencer->start();
    tick();
    sequencer->remove(a);
    heard();
    tick(2);
    EXPECT_EQ(heard(), (Notes{"A 1.0", "B 1.0", "A end 2.0", "B 2.0"}));
    sequencer->stop();
}

TEST_F(AnimationSequencerTest, RemoveAllLeavesTimerCountersAndRunningAnimators)
{
    place("A", 9, 1);
    place("B", 9, 2);
    sequencer->start();
    tick(2);
    sequencer->removeAll();
    EXPECT_EQ(sequencer->getCurrentCount(), 2);
    EXPECT_EQ(sequencer->getCurrentFrame(), 2);
    EXPECT_EQ(sequencer->getCurrentIndex(), 1);
    EXPECT_EQ(clock->running(), 1U);
    sequencer->stop();
}

TEST_F(AnimationSequencerTest, AnIdleAnimatorIsNotTakenInUntilItIsSetUp)
{
    const auto idle = std::make_shared<Animator>();
    sequencer->add(idle, 1);
    place("B", 9, 2);
    sequencer->start();
    tick();
    EXPECT_EQ(sequencer->getCurrentCount(), 0);
    idle->setup(0, 9, 9);
    listenTo(*idle, "A");
    tick();
    EXPECT_EQ(heard(), (Notes{"A 0.0", "B 0.0"}));
    sequencer->stop();
}

TEST_F(AnimationSequencerTest, AnAnimatorSetUpAgainBehindTheSearchIsNotTakenIn)
{
    const auto a = place("A", 0, 1);
    place("B", 9, 2);
    sequencer->start();
    tick(2);
    EXPECT_EQ(sequencer->getCurrentIndex(), 1);
    heard();
    a->setup(0, 1, 5);
    tick();
    EXPECT_EQ(heard(), Notes{"B 1.0"});
    sequencer->stop();
}

TEST_F(AnimationSequencerTest, AnAnimatorPlacedTwiceTakesTheLaterPlaceAndRunsOnce)
{
    const auto a = place("A", 9, 5);
    sequencer->add(a, 2);
    EXPECT_EQ(sequencer->getCount(), 2);
    sequencer->start();
    tick(2);
    EXPECT_EQ(heard(), Notes{"A 0.0"});
    EXPECT_EQ(sequencer->getCurrentCount(), 1);
    sequencer->remove(a);
    EXPECT_EQ(sequencer->getCount(), 1);
    sequencer->stop();
}

TEST_F(AnimationSequencerTest, AnAnimatorMovedByAnotherSequencerMovesHereUnsorted)
{
    // Its start frame is its own property; this list is not sorted again.
    const auto a = place("A", 9, 1);
    place("B", 9, 3);
    const auto other = std::make_shared<AnimationSequencer>();
    other->add(a, 8);
    sequencer->start();
    tick(3);
    EXPECT_EQ(heard(), Notes{"B 0.0"});
    EXPECT_EQ(sequencer->getCurrentIndex(), 1);
    tick(7);
    EXPECT_EQ(heard().size(), 7U) << "the search begins behind A";
    place("C", 9, 100); // sorts again
    tick();
    EXPECT_EQ(heard(), (Notes{"B 8.0", "A 0.0"}));
    sequencer->stop();
}

TEST_F(AnimationSequencerTest, AddingWithinATickTakesPartFromTheNext)
{
    place("A", 9, 1);
    sequencer->onAnimation = [&](AnimationSequencer &self, Animator &) {
        self.onAnimation = nullptr;
        place("B", 9, 1);
    };
    sequencer->start();
    tick();
    EXPECT_EQ(heard(), Notes{"A 0.0"});
    tick();
    const Notes second = heard();
    EXPECT_EQ(second.size(), 2U);
    EXPECT_EQ(sequencer->getCurrentCount(), 2);
    sequencer->stop();
}

TEST_F(AnimationSequencerTest, StopWithinATickLetsTheTickEnd)
{
    place("A", 9, 1);
    place("B", 9, 1);
    sequencer->onAnimation = [&](AnimationSequencer &self, Animator &) {
        self.onAnimation = nullptr;
        self.stop();
    };
    sequencer->start();
    tick(3);
    EXPECT_EQ(heard(), (Notes{"A 0.0", "B 0.0"}));
    EXPECT_EQ(clock->running(), 0U);
}

TEST_F(AnimationSequencerTest, StartedTwiceAdvancesTwice)
{
    place("A", 9, 1);
    sequencer->start();
    sequencer->start();
    tick();
    EXPECT_EQ(sequencer->getCurrentFrame(), 2);
    EXPECT_EQ(heard(), (Notes{"A 0.0", "A 1.0"}));
    sequencer->stop();
    EXPECT_EQ(clock->running(), 1U);
}

TEST_F(AnimationSequencerTest, StartReadsTheInterval)
{
    sequencer->start();
    EXPECT_EQ(clock->intervals.back(), static_cast<double>(0.005F));
    sequencer->stop();
    sequencer->interval = 0.5F;
    sequencer->start();
    EXPECT_EQ(clock->intervals.back(), 0.5);
    sequencer->stop();
}

TEST_F(AnimationSequencerTest, ARunningSequencerLivesUntilItEndsAndHoldsItsAnimators)
{
    const std::int64_t before = Animator::classCount;
    const std::weak_ptr<AnimationSequencer> watched = sequencer;
    place("A", 1, 1);
    sequencer->onFinished = nullptr;
    sequencer->start();
    sequencer = nullptr;
    tick();
    EXPECT_FALSE(watched.expired());
    EXPECT_EQ(Animator::classCount, before + 1);
    tick();
    EXPECT_TRUE(watched.expired());
    EXPECT_EQ(Animator::classCount, before);
}

TEST_F(AnimationSequencerTest, AnAnimatorMayOutliveItsSequencer)
{
    const auto a = place("A", 3, 1);
    sequencer = std::make_shared<AnimationSequencer>();
    a->setup(0, 1, 5);
    sequencer->add(a, 7);
    EXPECT_EQ(Inspection::latestEnd(*sequencer), 12);
}

/// Takes animators out of the sequencer while it is asked for its state.
class TreacherousAnimator : public Animator
{
public:
    bool isFinished() const override
    {
        if (const auto from = sequencer.lock())
            from->removeAll();
        return Animator::isFinished();
    }

    std::weak_ptr<AnimationSequencer> sequencer;
};

TEST_F(AnimationSequencerTest, ReportsAnimatorsThatVanishDuringTheSearch)
{
    const auto treacherous = Animator::create<TreacherousAnimator>(0, 1, 1);
    sequencer->add(treacherous, 0);
    place("B", 5, 0);
    treacherous->sequencer = sequencer;
    EXPECT_THAT(linesOf([&] { sequencer->animate(); }),
                ElementsAre("ERROR: Animationsobjekt is undefiniert!"));
}

class OwnSequencer : public AnimationSequencer
{
public:
    void animate() override
    {
        calls.emplace_back("animate");
        AnimationSequencer::animate();
    }
    void stop() override
    {
        calls.emplace_back("stop");
        AnimationSequencer::stop();
    }

    std::vector<std::string> calls;

private:
    void findAnimators() override { calls.emplace_back("findAnimators"); }
    void calculateFrames() override { calls.emplace_back("calculateFrames"); }
    void reset() override { calls.emplace_back("reset"); }
};

TEST_F(AnimationSequencerTest, GoesThroughItsOverridableOperations)
{
    const auto own = std::make_shared<OwnSequencer>();
    own->add(makeAnimator("A", 3), 1);
    own->remove(nullptr);
    own->animate();
    EXPECT_THAT(own->calls, ElementsAre("calculateFrames", "calculateFrames", "animate",
                                        "findAnimators", "stop", "reset"));
    EXPECT_EQ(heard(), Notes());
}

TEST_F(AnimationSequencerDeathTest, RemovingAStrangerIsFatal)
{
    place("A", 1, 1);
    EXPECT_DEATH(sequencer->remove(makeAnimator("B", 1)),
                 "Fatal error: Unexpectedly found nil while unwrapping an Optional value\n");
}

TEST_F(AnimationSequencerDeathTest, ASearchFromBeyondTheListIsFatal)
{
    const auto a = place("A", 9, 1);
    const auto b = place("B", 9, 1);
    const auto c = place("C", 9, 1);
    sequencer->start();
    tick();
    EXPECT_EQ(sequencer->getCurrentIndex(), 2);
    sequencer->remove(a);
    tick();
    EXPECT_EQ(sequencer->getCurrentIndex(), 2) << "as far as the list is long";
    sequencer->remove(b);
    EXPECT_DEATH(tick(), "Fatal error: The search for animators begins beyond the last of them\n");
    sequencer->stop();
}

TEST_F(AnimationSequencerDeathTest, OverflowIsFatal)
{
    EXPECT_DEATH(place("A", 1, INT64_MAX), "Fatal error: Arithmetic overflow");
    EXPECT_DEATH(sequencer->add(std::make_shared<Animator>(), INT64_MIN),
                 "Fatal error: Arithmetic overflow");
    sequencer->start();
    Inspection::setFrame(*sequencer, INT64_MAX);
    EXPECT_DEATH(tick(), "Fatal error: Arithmetic overflow");
    sequencer->stop();
}

/// What the sequencer promises of its list, taken literally: sorted, and every end
/// looked at, whenever an animator is placed.
struct LiteralTimeline {
    using Starts = std::map<const Animator *, std::int64_t>;
    using Frames = std::map<const Animator *, std::int64_t>;

    void sort(Starts &starts)
    {
        std::stable_sort(places.begin(), places.end(), [&](const auto &left, const auto &right) {
            return starts[left.get()] < starts[right.get()];
        });
    }
    void calculate(Starts &starts, Frames &frames)
    {
        for (const auto &animator : places)
            end = std::max(end, starts[animator.get()] + frames[animator.get()]);
    }

    std::vector<std::shared_ptr<Animator>> places;
    std::int64_t end = 0;
};

/// Tells in which order a sequencer rewinds its animators.
class NamedAnimator : public Animator
{
public:
    void rewind() override
    {
        if (log)
            log->push_back(this);
        Animator::rewind();
    }

    std::vector<const Animator *> *log = nullptr;
};

// Two sequencers share animators, which makes every shortcut of theirs doubtful.
TEST_F(AnimationSequencerTest, BehavesAsIfItSortedAndLookedAtAllForEveryAnimatorPlaced)
{
    for (unsigned seed = 0; seed < 300; ++seed) {
        std::mt19937 random(seed);
        const auto below = [&](std::size_t end) { return random() % end; };
        std::vector<std::shared_ptr<NamedAnimator>> pool;
        LiteralTimeline::Starts starts;
        LiteralTimeline::Frames frames;
        for (int i = 0; i < 6; ++i) {
            pool.push_back(std::make_shared<NamedAnimator>());
            frames[pool.back().get()] = -1;
        }
        std::array<std::shared_ptr<AnimationSequencer>, 2> real{
            std::make_shared<AnimationSequencer>(), std::make_shared<AnimationSequencer>()};
        std::array<LiteralTimeline, 2> literal;
        for (int step = 0; step < 60; ++step) {
            const std::size_t which = below(2);
            const std::size_t index = below(pool.size());
            const auto &animator = pool[index];
            auto &places = literal[which].places;
            switch (below(8)) {
            case 0:
            case 1:
            case 2: {
                // Never the same for two of them: their order would be open.
                const auto at = static_cast<std::int64_t>(below(40) * pool.size() + index);
                real[which]->add(animator, at);
                starts[animator.get()] = at;
                places.push_back(animator);
                literal[which].sort(starts);
                literal[which].calculate(starts, frames);
                break;
            }
            case 3:
            case 4: {
                const auto count = static_cast<std::int64_t>(below(30));
                animator->setup(0, 1, count);
                frames[animator.get()] = count;
                break;
            }
            case 5:
                animator->stop();
                frames[animator.get()] = -1;
                break;
            case 6:
                if (const auto found = std::find(places.begin(), places.end(), animator);
                    found != places.end()) {
                    real[which]->remove(animator);
                    places.erase(found);
                } else {
                    real[which]->remove(nullptr);
                }
                literal[which].calculate(starts, frames);
                break;
            default:
                if (below(10) == 0) {
                    real[which]->removeAll();
                    literal[which] = {};
                }
            }
            for (std::size_t i = 0; i < 2; ++i)
                ASSERT_EQ(Inspection::latestEnd(*real[i]), literal[i].end) << "seed " << seed;
        }
        for (std::size_t i = 0; i < 2; ++i) {
            std::vector<const Animator *> order;
            for (const auto &animator : pool)
                animator->log = &order;
            real[i]->rewind();
            std::vector<const Animator *> expected;
            for (const auto &animator : literal[i].places)
                expected.push_back(animator.get());
            EXPECT_EQ(order, expected) << "seed " << seed;
        }
    }
}

} // namespace
