#include "Effect/SpeedSteering.hpp"

#include <gtest/gtest.h>

#include <vector>

using effect::SpeedSteering;

class SteeringBySpeed : public testing::Test
{
protected:
    void send(const std::vector<std::uint8_t> &message)
    {
        steering.receive(message.data(), message.size());
    }
    void press(std::uint8_t note) { send({0x90, note, 100}); }
    void release(std::uint8_t note) { send({0x80, note, 0}); }
    void control(std::uint8_t controller, std::uint8_t value) { send({0xB0, controller, value}); }

    SpeedSteering steering;
};

TEST_F(SteeringBySpeed, IsTheParameterWithoutMIDI)
{
    for (const float position : {0.0F, 0.7F, 1.0F, 2.0F}) {
        steering.setParameter(position);
        EXPECT_EQ(steering.position(), position);
    }
}

TEST_F(SteeringBySpeed, LeadsFromSlowToFastByTheWheel)
{
    float last = steering.position();
    EXPECT_EQ(last, 1);
    for (std::uint8_t value = 1; value < 128; ++value) {
        control(1, value);
        EXPECT_GT(steering.position(), last);
        last = steering.position();
    }
    EXPECT_EQ(last, 2);
}

TEST_F(SteeringBySpeed, LeadsFromFastToSlowByTheWheel)
{
    steering.setParameter(2);
    control(1, 127);
    EXPECT_EQ(steering.position(), 1);
}

TEST_F(SteeringBySpeed, ChangesOverWhileThePedalIsHeld)
{
    control(64, 127);
    EXPECT_EQ(steering.position(), 2);
    steering.setParameter(2);
    EXPECT_EQ(steering.position(), 1);
    control(64, 63);
    EXPECT_EQ(steering.position(), 2);
}

TEST_F(SteeringBySpeed, TurnsTheWheelAroundWhileThePedalIsHeld)
{
    control(1, 127);
    control(64, 127);
    EXPECT_EQ(steering.position(), 1);
}

TEST_F(SteeringBySpeed, FollowsTheLatestHeldNote)
{
    steering.setParameter(0.5F);
    press(36);
    EXPECT_EQ(steering.position(), 1);
    press(72);
    EXPECT_EQ(steering.position(), 2);
    press(54);
    EXPECT_FLOAT_EQ(steering.position(), 1.5F);
    release(72);
    EXPECT_FLOAT_EQ(steering.position(), 1.5F);
    release(54);
    EXPECT_EQ(steering.position(), 1);
    send({0x95, 36, 0});
    EXPECT_EQ(steering.position(), 0.5F);
}

TEST_F(SteeringBySpeed, StepsEvenlyFromNoteToNote)
{
    EXPECT_EQ(SpeedSteering::positionOf(0), 0);
    EXPECT_EQ(SpeedSteering::positionOf(35), 0);
    for (std::uint8_t note = 36; note < 72; ++note) {
        EXPECT_NEAR(SpeedSteering::positionOf(static_cast<std::uint8_t>(note + 1)) -
                        SpeedSteering::positionOf(note),
                    1.0 / 36, 1e-6);
    }
    EXPECT_EQ(SpeedSteering::positionOf(127), 2);
}

TEST_F(SteeringBySpeed, ReleasesNotesByModeMessages)
{
    for (const std::uint8_t mode : std::vector<std::uint8_t>{120, 123, 124, 125, 126, 127}) {
        press(72);
        press(60);
        control(1, 127);
        control(mode, 0);
        EXPECT_EQ(steering.position(), 2) << "the wheel counts again, " << int{mode};
        control(1, 0);
        EXPECT_EQ(steering.position(), 1) << int{mode};
    }
}

TEST_F(SteeringBySpeed, ReleasesControllersByReset)
{
    control(1, 90);
    control(64, 127);
    press(30);
    control(121, 0);
    EXPECT_EQ(steering.position(), 0) << "notes are no controllers";
    release(30);
    EXPECT_EQ(steering.position(), 1);
}

TEST_F(SteeringBySpeed, ForgetsAllOnSystemReset)
{
    control(1, 90);
    press(30);
    send({0xFF});
    EXPECT_EQ(steering.position(), 1);
}

TEST_F(SteeringBySpeed, HoldsEveryNoteAtOnce)
{
    for (int round = 0; round < 3; ++round) {
        for (std::uint8_t note = 0; note < 128; ++note) {
            press(note);
        }
    }
    EXPECT_EQ(steering.position(), 2);
    for (std::uint8_t note = 127; note > 0; --note) {
        release(note);
    }
    EXPECT_EQ(steering.position(), 0);
    release(0);
    EXPECT_EQ(steering.position(), 1);
}

TEST_F(SteeringBySpeed, PassesOverWhatItDoesNotKnow)
{
    for (const std::vector<std::uint8_t> &message :
         std::vector<std::vector<std::uint8_t>>{{},
                                                {0x90},
                                                {0x90, 60},
                                                {0x90, 0x80, 1},
                                                {0xB0, 1, 0xFF},
                                                {0xC0, 1},
                                                {0xE0, 1, 2},
                                                {0xF0, 1, 2, 0xF7},
                                                {60, 60, 60},
                                                {0xB0, 7, 127},
                                                {0xB0, 122, 127}}) {
        send(message);
        EXPECT_EQ(steering.position(), 1);
    }
}
