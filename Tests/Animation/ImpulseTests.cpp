#include "Animation/Inspection.hpp"
#include "Tests/Animation/KitTest.hpp"

#include <gmock/gmock.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace
{

using animation::Inspection;
using test::Notes;
using ::testing::ElementsAre;

class ImpulseTest : public test::KitTest
{
protected:
    ImpulseTest()
    {
        impulse->onAnimation = [this](Impulse &self) {
            EXPECT_EQ(&self, impulse.get());
            note("at", Inspection::value(self));
        };
        impulse->onCollision = [this](Impulse &self) { note("bounce", Inspection::value(self)); };
        impulse->onFinished = [this](Impulse &self) { note("end", Inspection::value(self)); };
    }

    std::shared_ptr<Impulse> impulse = Impulse::create();
};

using ImpulseDeathTest = ImpulseTest;

TEST_F(ImpulseTest, IsFinishedUntilItIsSetUp)
{
    EXPECT_TRUE(impulse->isFinished());
    EXPECT_EQ(impulse->getSourceValue(), 0);
    impulse->setup(10, 2);
    EXPECT_FALSE(impulse->isFinished());
    EXPECT_EQ(impulse->getSourceValue(), 2);
    impulse->stop();
    EXPECT_TRUE(impulse->isFinished());
    EXPECT_EQ(impulse->getSourceValue(), 2);
    impulse->setup(-3, 1);
    EXPECT_FALSE(impulse->isFinished());
}

TEST_F(ImpulseTest, AddsADecayingAmount)
{
    impulse->setup(10, 1);
    std::vector<float> values;
    impulse->onAnimation = [&](Impulse &self) {
        values.push_back(Inspection::value(self));
        EXPECT_EQ(Inspection::steps(self), static_cast<std::int64_t>(values.size()));
    };
    for (int step = 0; step < 3; ++step)
        impulse->animate();
    EXPECT_THAT(values, ElementsAre(0.75F, 1.3125F, 1.734375F));
    for (int step = 3; step < 24; ++step)
        impulse->animate();
    // 0.75 to the power of 24 is 0.00100…; the next step ends it.
    EXPECT_EQ(values.size(), 24U);
    EXPECT_NEAR(values.back(), 3, 0.004);
    EXPECT_EQ(heard(), Notes());
    impulse->animate();
    ASSERT_EQ(notes.size(), 1U);
    EXPECT_EQ(notes[0].substr(0, 7), "end 2.9") << "before the value is set back";
    EXPECT_EQ(values.size(), 24U);
    EXPECT_EQ(Inspection::value(*impulse), 0);
    EXPECT_EQ(Inspection::steps(*impulse), 0);
    EXPECT_TRUE(impulse->isFinished());
}

TEST_F(ImpulseTest, ATinyAmountEndsOnTheFirstTick)
{
    impulse->setup(10, 0.001F, 0.005F);
    impulse->start();
    tick();
    EXPECT_EQ(heard(), Notes{"end 0.0"});
    EXPECT_EQ(clock->running(), 0U);
}

TEST_F(ImpulseTest, TheThresholdItselfIsNotBelow)
{
    impulse->setup(10, 0.001F, 0.009F, 1);
    impulse->animate();
    EXPECT_EQ(heard(), Notes{"at 0.001"});
}

TEST_F(ImpulseTest, ANegativePushGoesDown)
{
    impulse->setup(10, -4, 0.009F, 0.5F);
    impulse->animate();
    impulse->animate();
    EXPECT_EQ(heard(), (Notes{"at -2.0", "at -3.0"}));
}

TEST_F(ImpulseTest, BouncesAtItsBounds)
{
    impulse->setMinMax(true, 0, 1);
    impulse->setup(10, 2);
    impulse->animate();
    EXPECT_EQ(heard(), (Notes{"bounce 0.0", "at 0.0"}));
    impulse->animate();
    EXPECT_EQ(heard(), (Notes{"bounce 0.0", "at 0.0"}));
    impulse->animate();
    EXPECT_EQ(heard(), Notes{"at 0.84375"}) << "the push has turned up again";
}

TEST_F(ImpulseTest, ReachingABoundIsEnough)
{
    impulse->setMinMax(true, -1, 1);
    impulse->setup(10, 2, 0.009F, 0.5F);
    impulse->animate();
    EXPECT_EQ(heard(), (Notes{"bounce 0.0", "at 0.0"}));
    impulse->animate();
    EXPECT_EQ(heard(), Notes{"at -0.5"});
    impulse->setup(10, -1, 0.009F, 0.5F);
    impulse->animate();
    EXPECT_EQ(heard(), (Notes{"bounce -0.5", "at -0.5"}));
}

TEST_F(ImpulseTest, BouncesOnceAStepEvenBeyondBothBounds)
{
    impulse->setMinMax(true, 5, 1); // unchecked
    impulse->setup(10, 4, 0.009F, 0.75F);
    impulse->animate();
    EXPECT_EQ(heard(), (Notes{"bounce 0.0", "at 0.0"}));
}

TEST_F(ImpulseTest, BoundsCountOnlyWhenEnabled)
{
    impulse->setMinMax(false, 0, 1);
    impulse->setup(10, 4);
    impulse->animate();
    EXPECT_EQ(heard(), Notes{"at 3.0"});
    const auto untouched = Impulse::create(1, 4000);
    untouched->animate();
    EXPECT_EQ(Inspection::value(*untouched), 3000) << "nor do the ones that it begins with";
}

TEST_F(ImpulseTest, BoundsCountFromTheNextStep)
{
    impulse->setup(10, 2, 0.009F, 1);
    impulse->animate();
    impulse->setMinMax(true, -100, 3);
    impulse->animate();
    EXPECT_EQ(heard(), (Notes{"at 2.0", "bounce 2.0", "at 2.0"}));
    impulse->stop();
    impulse->setup(10, 4, 0.009F, 1);
    impulse->animate();
    EXPECT_EQ(heard(), (Notes{"bounce 0.0", "at 0.0"})) << "and outlast a stop";
}

TEST_F(ImpulseTest, AnotherPushGoesOnFromTheValue)
{
    impulse->setup(10, 1, 0.005F);
    impulse->start();
    tick();
    impulse->setup(10, 8, 0.02F, 0.5F);
    EXPECT_EQ(Inspection::steps(*impulse), 0);
    tick(2); // the timer keeps its period
    EXPECT_EQ(heard(), (Notes{"at 0.75", "at 4.75", "at 6.75"}));
    impulse->start();
    EXPECT_EQ(clock->intervals.back(), static_cast<double>(0.02F));
    impulse->stop();
    EXPECT_EQ(clock->running(), 1U) << "the first timer cannot be reached any more";
}

TEST_F(ImpulseTest, StopSetsTheValueBack)
{
    impulse->setup(10, 1, 0.005F);
    impulse->start();
    tick(2);
    heard();
    impulse->stop();
    EXPECT_EQ(Inspection::value(*impulse), 0);
    EXPECT_EQ(Inspection::steps(*impulse), 0);
    EXPECT_EQ(clock->running(), 0U);
    tick(2);
    EXPECT_EQ(heard(), Notes());
}

TEST_F(ImpulseTest, WithFullIntensityNeverEnds)
{
    impulse->setup(1, 1, 0.009F, 1);
    impulse->setMinMax(true, -10.5F, 10.5F);
    for (int step = 0; step < 10000; ++step)
        impulse->animate();
    EXPECT_FALSE(impulse->isFinished());
    impulse->setup(1, std::numeric_limits<float>::quiet_NaN());
    for (int step = 0; step < 1000; ++step)
        impulse->animate();
    EXPECT_FALSE(impulse->isFinished()) << "nor does a push that is no number";
}

TEST_F(ImpulseTest, UnsetEndsAtOnce)
{
    impulse->animate();
    EXPECT_EQ(heard(), Notes{"end 0.0"});
}

TEST_F(ImpulseTest, MayBePushedAgainWithinOnFinished)
{
    impulse->onFinished = [&](Impulse &self) {
        note("end");
        self.setup(1, 8, 0.005F, 0.5F);
    };
    impulse->setup(1, 0, 0.005F);
    impulse->start();
    tick();
    EXPECT_EQ(heard(), Notes{"end"});
    EXPECT_TRUE(impulse->isFinished()) << "the stop that follows takes it back";
    EXPECT_EQ(clock->running(), 0U);
}

TEST_F(ImpulseTest, CreateTakesTheDefaults)
{
    const auto made = Impulse::create(5, 4);
    made->animate();
    EXPECT_EQ(Inspection::value(*made), 3);
    made->start();
    EXPECT_EQ(clock->intervals.back(), static_cast<double>(0.009F));
    made->stop();
}

TEST_F(ImpulseTest, ARunningImpulseLivesUntilItEnds)
{
    const std::weak_ptr<Impulse> watched = impulse;
    impulse->onAnimation = nullptr;
    impulse->setup(1, 0.01F, 0.005F, 0.5F);
    impulse->start();
    impulse = nullptr;
    tick(3);
    EXPECT_FALSE(watched.expired());
    tick();
    EXPECT_TRUE(watched.expired());
}

class OwnImpulse : public Impulse
{
public:
    void animate() override
    {
        calls.emplace_back("animate");
        Impulse::animate();
    }
    void setup(std::int64_t frames, float amount, float interval, float intensity) override
    {
        calls.emplace_back("setup");
        Impulse::setup(frames, amount, interval, intensity);
    }
    void stop() override
    {
        calls.emplace_back("stop");
        Impulse::stop();
    }
    void reset() override
    {
        calls.emplace_back("reset");
        Impulse::reset();
    }

    std::vector<std::string> calls;
};

TEST_F(ImpulseDeathTest, OverflowIsFatal)
{
    impulse->setup(1, 1, 0.009F, 1);
    Inspection::setSteps(*impulse, INT64_MAX - 1);
    impulse->animate();
    EXPECT_DEATH(impulse->animate(), "Fatal error: Arithmetic overflow");
}

TEST_F(ImpulseTest, GoesThroughItsOverridableOperations)
{
    const auto own = Impulse::create<OwnImpulse>(1, 0, 0.005F);
    own->start();
    tick();
    EXPECT_THAT(own->calls, ElementsAre("reset", "setup", "animate", "stop", "reset"));
}

} // namespace
