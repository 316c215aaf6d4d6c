#include "Effect/View/Parameter.hpp"

#include <gtest/gtest.h>

#include <clocale>
#include <limits>

using effect::controlRanges;
using effect::Port;
using namespace effect::view;

namespace
{

std::size_t control(Port port)
{
    return controlOf(static_cast<std::uint32_t>(port)).value();
}

std::string text(Port port, float value)
{
    return textOf(control(port), value);
}

} // namespace

TEST(Parameter, FollowsTheOrderOfTheRanges)
{
    for (std::size_t i = 0; i < controlCount; ++i) {
        EXPECT_EQ(parameters.at(i).port, controlRanges.at(i).port);
        EXPECT_GE(parameters.at(i).origin, controlRanges.at(i).least);
        EXPECT_LE(parameters.at(i).origin, controlRanges.at(i).most);
    }
}

TEST(Parameter, IsFoundByItsPortAlone)
{
    EXPECT_EQ(controlOf(6), 0U);
    EXPECT_EQ(controlOf(14), 8U);
    for (const std::uint32_t port : {0U, 5U, 15U, 18U, 19U, 0xFFFFFFFFU}) {
        EXPECT_EQ(controlOf(port), std::nullopt) << port;
    }
}

TEST(Parameter, MapsItsWholeRangeToTheKnobsWayAndBack)
{
    for (std::size_t i = 0; i < controlCount; ++i) {
        EXPECT_EQ(positionOf(i, controlRanges.at(i).least), 0);
        EXPECT_EQ(positionOf(i, controlRanges.at(i).most), 1);
        for (const double position : {0.0, 0.1, 0.5, 0.73, 1.0}) {
            EXPECT_NEAR(positionOf(i, valueAt(i, position)), position, 1e-6) << i;
        }
    }
}

TEST(Parameter, BringsPlacesAndValuesOutsideIn)
{
    for (std::size_t i = 0; i < controlCount; ++i) {
        EXPECT_EQ(valueAt(i, -3), controlRanges.at(i).least);
        EXPECT_EQ(valueAt(i, 3), controlRanges.at(i).most);
        EXPECT_EQ(positionOf(i, -1e9F), 0);
        EXPECT_EQ(positionOf(i, std::numeric_limits<float>::infinity()), 1);
    }
}

TEST(Parameter, TakesInertiaByEqualRatios)
{
    EXPECT_FLOAT_EQ(valueAt(control(Port::inertia), 0.5), 1);
    EXPECT_FLOAT_EQ(valueAt(control(Port::inertia), 0.25), 0.5F);
    EXPECT_FLOAT_EQ(valueAt(control(Port::inertia), 0.75), 2);
}

TEST(Parameter, StepsByWholeUnits)
{
    EXPECT_EQ(stepped(control(Port::level), 0, 1, false), 0.5F);
    EXPECT_EQ(stepped(control(Port::level), 0, -1, false), -0.5F);
    EXPECT_EQ(stepped(control(Port::spread), 110, 15, false), 125);
    EXPECT_EQ(stepped(control(Port::speed), 1, 100, false), 2);
    EXPECT_EQ(stepped(control(Port::inertia), 1, 20, false), 2);
    EXPECT_EQ(stepped(control(Port::enabled), 1, -1, false), 0);
}

TEST(Parameter, StepsATenthWhenFine)
{
    EXPECT_FLOAT_EQ(stepped(control(Port::spread), 110, 1, true), 110.1F);
    EXPECT_FLOAT_EQ(stepped(control(Port::level), -6, -1, true), -6.05F);
}

TEST(Parameter, GoesFromBesideTheGridToItsNextLine)
{
    EXPECT_EQ(stepped(control(Port::spread), 110.4F, 1, false), 111);
    EXPECT_EQ(stepped(control(Port::spread), 110.4F, -1, false), 110);
}

TEST(Parameter, ReturnsWhereItCameFromStepByStep)
{
    for (std::size_t i = 0; i < controlCount; ++i) {
        float value = controlRanges.at(i).least;
        for (int step = 0; step < parameters.at(i).steps; ++step) {
            const float next = stepped(i, value, 1, false);
            ASSERT_GT(next, value) << i << ' ' << step;
            ASSERT_EQ(stepped(i, next, -1, false), value) << i << ' ' << step;
            value = next;
        }
        EXPECT_EQ(value, controlRanges.at(i).most);
        EXPECT_EQ(stepped(i, value, 1, false), value) << "stays at the end";
    }
}

TEST(Parameter, ShowsValuesInTheirUnits)
{
    EXPECT_EQ(text(Port::enabled, 1), "On");
    EXPECT_EQ(text(Port::enabled, 0), "Bypass");
    EXPECT_EQ(text(Port::speed, 0), "Stop");
    EXPECT_EQ(text(Port::speed, 1), "Slow");
    EXPECT_EQ(text(Port::speed, 2), "Fast");
    EXPECT_EQ(text(Port::speed, 1.25F), "1.25");
    EXPECT_EQ(text(Port::depth, 0.75F), "75 %");
    EXPECT_EQ(text(Port::balance, -0.4F), "Drum 40 %");
    EXPECT_EQ(text(Port::balance, 0), "Both");
    EXPECT_EQ(text(Port::balance, 1), "Horn 100 %");
    EXPECT_EQ(text(Port::drive, 0.004F), "0 %");
    EXPECT_EQ(text(Port::spread, 110), "110\u00B0");
    EXPECT_EQ(text(Port::inertia, 0.25F), "\u00D7 0.25");
    EXPECT_EQ(text(Port::mix, 1), "100 %");
    EXPECT_EQ(text(Port::level, -3.5F), "\u22123.5 dB");
    EXPECT_EQ(text(Port::level, 12), "+12.0 dB");
    EXPECT_EQ(text(Port::level, 0), "0.0 dB");
    EXPECT_EQ(speedText(6.7), "6.70 Hz");
}

TEST(Parameter, ShowsNoSignForWhatRoundsToNothing)
{
    EXPECT_EQ(text(Port::level, -0.04F), "0.0 dB");
    EXPECT_EQ(text(Port::level, 0.04F), "0.0 dB");
    EXPECT_EQ(text(Port::balance, -0.004F), "Both");
    EXPECT_EQ(speedText(-0.0), "0.00 Hz");
}

TEST(Parameter, ShowsTheSameInEveryLocale)
{
    const std::string former = std::setlocale(LC_NUMERIC, nullptr);
    for (const char *name : {"de_DE.UTF-8", "fr_FR.UTF-8", "C.UTF-8"}) {
        std::setlocale(LC_NUMERIC, name);
        EXPECT_EQ(text(Port::speed, 1.25F), "1.25") << name;
    }
    std::setlocale(LC_NUMERIC, former.c_str());
}
