#include "Effect/Rotor.hpp"
#include "Effect/Tick.hpp"
#include "Tests/Effect/Signals.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

using effect::drumDesign;
using effect::hornDesign;
using effect::Rotor;
using effect::RotorDesign;
using effect::tickFrames;

namespace
{

constexpr double tickSeconds = static_cast<double>(tickFrames) / signals::sampleRate;

Rotor rotorAt(const RotorDesign &design, float position)
{
    Rotor rotor(design, signals::sampleRate);
    rotor.setPosition(position);
    rotor.reset();
    return rotor;
}

/// Seconds until the rotor has covered 1 - 1/e of the way to its new speed.
double timeConstant(Rotor &rotor, const RotorDesign &design, float position)
{
    const double from = rotor.speed();
    const double to = Rotor::speedAt(design, position);
    rotor.setPosition(position);
    double seconds = 0;
    while (std::abs(rotor.speed() - to) > std::abs(from - to) * std::exp(-1.0)) {
        rotor.advance();
        seconds += tickSeconds;
    }
    return seconds;
}

} // namespace

TEST(Rotor, RunsAtTheMotorsSpeeds)
{
    for (const RotorDesign &design : {hornDesign, drumDesign}) {
        EXPECT_DOUBLE_EQ(Rotor::speedAt(design, 0), 0);
        EXPECT_DOUBLE_EQ(Rotor::speedAt(design, 0.5F), design.slow / 2);
        EXPECT_DOUBLE_EQ(Rotor::speedAt(design, 1), design.slow);
        EXPECT_NEAR(Rotor::speedAt(design, 1.5F), std::sqrt(design.slow * design.fast), 1e-9);
        EXPECT_NEAR(Rotor::speedAt(design, 2), design.fast, 1e-9);
        EXPECT_NEAR(Rotor::speedAt(design, 3), design.fast, 1e-9);
    }
}

TEST(Rotor, ChangesSpeedWithItsTimeConstants)
{
    for (const RotorDesign &design : {hornDesign, drumDesign}) {
        Rotor rotor = rotorAt(design, 1);
        EXPECT_NEAR(timeConstant(rotor, design, 2), design.rise, 0.02 * design.rise);
        rotor = rotorAt(design, 2);
        EXPECT_NEAR(timeConstant(rotor, design, 1), design.fall, 0.02 * design.fall);
    }
}

TEST(Rotor, ScalesItsTimesByInertia)
{
    Rotor rotor = rotorAt(hornDesign, 1);
    rotor.setInertia(3);
    EXPECT_NEAR(timeConstant(rotor, hornDesign, 2), 3 * hornDesign.rise, 0.05);
}

TEST(Rotor, LeavesTheDrumBehindTheHorn)
{
    Rotor horn = rotorAt(hornDesign, 1);
    Rotor drum = rotorAt(drumDesign, 1);
    EXPECT_LT(2 * timeConstant(horn, hornDesign, 2), timeConstant(drum, drumDesign, 2));
}

TEST(Rotor, ComesToRestWhenBraked)
{
    Rotor rotor = rotorAt(drumDesign, 2);
    rotor.setPosition(0);
    double seconds = 0;
    while (rotor.speed() > 0 && seconds < 60) {
        rotor.advance();
        seconds += tickSeconds;
    }
    EXPECT_EQ(rotor.speed(), 0);
    EXPECT_LT(seconds, 10);
    const double angle = rotor.angle();
    for (int tick = 0; tick < 1000; ++tick) {
        rotor.advance();
        EXPECT_FALSE(rotor.turn());
    }
    EXPECT_NEAR(rotor.angle(), angle, 1e-3);
}

TEST(Rotor, TellsEachTurnAtItsFrame)
{
    for (const float position : {0.4F, 1.0F, 2.0F}) {
        Rotor rotor = rotorAt(hornDesign, position);
        const double speed = Rotor::speedAt(hornDesign, position);
        std::vector<std::size_t> turns;
        const std::size_t ticks = static_cast<std::size_t>(20.1 / tickSeconds);
        for (std::size_t tick = 0; tick < ticks; ++tick) {
            rotor.advance();
            ASSERT_GE(rotor.angle(), 0);
            ASSERT_LT(rotor.angle(), 1);
            if (rotor.turn()) {
                turns.push_back(tick * tickFrames + *rotor.turn());
            }
        }
        ASSERT_EQ(turns.size(), static_cast<std::size_t>(20.1 * speed));
        for (std::size_t turn = 0; turn < turns.size(); ++turn) {
            const double frame = static_cast<double>(turn + 1) * signals::sampleRate / speed;
            EXPECT_NEAR(static_cast<double>(turns[turn]), std::ceil(frame), 1);
        }
    }
}

TEST(Rotor, TellsEachTurnOnceWhileItsSpeedChanges)
{
    Rotor rotor = rotorAt(hornDesign, 0);
    double travelled = 0;
    std::size_t turns = 0;
    for (std::size_t tick = 0; tick < 60000; ++tick) {
        rotor.setPosition(static_cast<float>(tick % 7000) / 3500.0F);
        rotor.advance();
        travelled += rotor.step() * tickFrames;
        turns += rotor.turn() ? 1 : 0;
    }
    EXPECT_GT(turns, 20U);
    EXPECT_NEAR(static_cast<double>(turns), std::floor(travelled), 1);
    EXPECT_LE(static_cast<double>(turns), travelled);
}
