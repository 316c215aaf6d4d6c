#include "Animation/Animator.hpp"
#include "Animation/Inspection.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

namespace
{

using animation::Inspection;

/// The curve of `type` at one frame, as an animator selects it.
float curve(EnumEasing type, std::int64_t frame, float source, float amount, std::int64_t frames)
{
    Animator animator;
    animator.setType(type);
    return Inspection::curve(animator, frame, source, amount, frames);
}

constexpr std::array<EnumEasing, 42> all = [] {
    std::array<EnumEasing, 42> types{};
    for (std::size_t raw = 0; raw < types.size(); ++raw)
        types[raw] = static_cast<EnumEasing>(raw);
    return types;
}();

TEST(EnumEasing, IsMadeFromRawValues0To41)
{
    EXPECT_EQ(easingFromRawValue(0), EASING_easeNone);
    EXPECT_EQ(easingFromRawValue(41), EASING_easeLast);
    for (const std::int64_t raw : {std::int64_t{-1}, std::int64_t{42}, INT64_MIN, INT64_MAX})
        EXPECT_EQ(easingFromRawValue(raw), std::nullopt) << raw;
    for (std::int64_t raw = 0; raw <= 41; ++raw)
        EXPECT_EQ(static_cast<std::int64_t>(easingFromRawValue(raw).value()), raw);
}

TEST(EnumEasing, NumbersTheFamiliesInTurn)
{
    EXPECT_EQ(EASING_easeOutInQuad, 4);
    EXPECT_EQ(EASING_easeInCubic, 5);
    EXPECT_EQ(EASING_easeInOutQuart, 11);
    EXPECT_EQ(EASING_easeOutQuint, 14);
    EXPECT_EQ(EASING_easeInSine, 17);
    EXPECT_EQ(EASING_easeInExpo, 21);
    EXPECT_EQ(EASING_easeOutInCirc, 28);
    EXPECT_EQ(EASING_easeInElastic, 29);
    EXPECT_EQ(EASING_easeInBack, 33);
    EXPECT_EQ(EASING_easeOutInBounce, 40);
    static_assert(std::is_same_v<std::underlying_type_t<EnumEasing>, std::int64_t>);
}

TEST(EnumEasing, EqualsAndHashesAsItsRawValue)
{
    for (const EnumEasing type : all)
        EXPECT_EQ(std::hash<EnumEasing>()(type), std::hash<std::int64_t>()(type));
    EXPECT_EQ((std::unordered_set<EnumEasing>(all.begin(), all.end()).size()), all.size());
}

TEST(EasingCurves, TheEndMarkerMovesAsNone)
{
    for (std::int64_t frame = -2; frame <= 12; ++frame)
        EXPECT_EQ(curve(EASING_easeLast, frame, 3, 7, 10), curve(EASING_easeNone, frame, 3, 7, 10));
    EXPECT_EQ(curve(EASING_easeNone, 4, 3, 10, 10), 7);
}

/// The value at the beginning of a run of 100 frames from `source` by `amount`.
float expectedStart(EnumEasing type, float source, float amount)
{
    switch (type) {
    case EASING_easeOutQuart:
        return source + 2 * amount;
    case EASING_easeOutInQuart:
        return source + amount; // its Out half falls, too
    default:
        return source;
    }
}

TEST(EasingCurves, BeginAndEndExactly)
{
    // Numbers for which no sum is rounded: what is off is the curve.
    constexpr float source = 8;
    constexpr std::array<EnumEasing, 6> offAtTheStart{
        EASING_easeInExpo,  EASING_easeInElastic, EASING_easeInSine,
        EASING_easeOutExpo, EASING_easeInOutExpo, EASING_easeInOutElastic};
    for (const EnumEasing type : offAtTheStart)
        EXPECT_EQ(curve(type, 0, source, 16, 100), source) << type;
    for (const float amount : {16.0F, -4.0F}) {
        for (const EnumEasing type : all) {
            EXPECT_EQ(curve(type, 0, source, amount, 100), expectedStart(type, source, amount))
                << type;
            // The sine of a quarter turn and its like are not whole.
            const bool isSine = type >= EASING_easeInSine && type <= EASING_easeOutInSine;
            EXPECT_NEAR(curve(type, 100, source, amount, 100), source + amount, isSine ? 2e-6 : 0)
                << type;
        }
    }
}

TEST(EasingCurves, OutQuartFallsFromTwiceTheDistance)
{
    EXPECT_EQ(curve(EASING_easeOutQuart, 0, 1, 3, 50), 7);
    EXPECT_EQ(curve(EASING_easeOutQuart, 50, 1, 3, 50), 4);
    for (std::int64_t frame = 1; frame <= 50; ++frame)
        EXPECT_LE(curve(EASING_easeOutQuart, frame, 1, 3, 50),
                  curve(EASING_easeOutQuart, frame - 1, 1, 3, 50));
}

TEST(EasingCurves, InOutQuartJumpsHalfWay)
{
    EXPECT_NEAR(curve(EASING_easeInOutQuart, 49, 0, 2, 100), 1, 0.08);
    EXPECT_EQ(curve(EASING_easeInOutQuart, 50, 0, 2, 100), 3);
    EXPECT_EQ(curve(EASING_easeInOutQuart, 100, 0, 2, 100), 2);
}

TEST(EasingCurves, InOutExpoReachesASixtyFourthAndSnaps)
{
    EXPECT_EQ(curve(EASING_easeInOutExpo, 0, 0, 1, 100), 0);
    EXPECT_NEAR(curve(EASING_easeInOutExpo, 1, 0, 1, 100), 0.00051, 0.00001);
    EXPECT_NEAR(curve(EASING_easeInOutExpo, 99, 0, 1, 100), 0.0151, 0.00005);
    EXPECT_EQ(curve(EASING_easeInOutExpo, 100, 0, 1, 100), 1);
    // The other half of the formula is reached far outside the run only.
    EXPECT_EQ(curve(EASING_easeInOutExpo, 200, 0, 1, 100), 0.5F);
}

TEST(EasingCurves, OutInHalvesTheFramesAsIntegers)
{
    // 5 / 2 is 2: the Out half has the frames 0 and 1.
    for (const std::int64_t frame : {0, 1})
        EXPECT_EQ(curve(EASING_easeOutInQuad, frame, 1, 8, 5),
                  curve(EASING_easeOutQuad, 2 * frame, 1, 4, 5));
    for (const std::int64_t frame : {2, 3, 4, 5})
        EXPECT_EQ(curve(EASING_easeOutInQuad, frame, 1, 8, 5),
                  curve(EASING_easeInQuad, 2 * frame - 5, 5, 4, 5));
    // -3 / 2 is -1.
    EXPECT_EQ(curve(EASING_easeOutInCubic, -1, 1, 8, -3), curve(EASING_easeInCubic, 1, 5, 4, -3));
    EXPECT_EQ(curve(EASING_easeOutInCubic, -2, 1, 8, -3), curve(EASING_easeOutCubic, -4, 1, 4, -3));
}

TEST(EasingCurves, OutInJoinsTheTwoCurvesOfEveryFamily)
{
    for (std::int64_t first = EASING_easeInQuad; first < EASING_easeLast; first += 4) {
        const auto in = static_cast<EnumEasing>(first);
        const auto out = static_cast<EnumEasing>(first + 1);
        const auto outIn = static_cast<EnumEasing>(first + 3);
        for (std::int64_t frame = 0; frame <= 21; ++frame) {
            const float expected =
                frame < 10 ? curve(out, 2 * frame, 2, 3, 21) : curve(in, 2 * frame - 21, 5, 3, 21);
            EXPECT_EQ(curve(outIn, frame, 2, 6, 21), expected) << outIn << " at " << frame;
        }
    }
}

TEST(EasingCurves, ANegativeAmountMirrorsThem)
{
    for (const EnumEasing type : all) {
        for (std::int64_t frame = -2; frame <= 14; ++frame) {
            const float up = curve(type, frame, 0, 5, 12);
            const float down = curve(type, frame, 0, -5, 12);
            EXPECT_TRUE(down == -up || (std::isnan(up) && std::isnan(down)))
                << type << " at " << frame;
        }
    }
}

TEST(EasingCurves, ClampNothing)
{
    EXPECT_EQ(curve(EASING_easeNone, 30, 0, 1, 10), 3);
    EXPECT_EQ(curve(EASING_easeNone, -10, 0, 1, 10), -1);
    EXPECT_LT(curve(EASING_easeInBack, 20, 0, 1, 100), 0);
    EXPECT_GT(curve(EASING_easeOutElastic, 15, 0, 1, 100), 1);
    EXPECT_TRUE(std::isnan(curve(EASING_easeInCirc, 11, 0, 1, 10)));
}

TEST(EasingCurves, WithoutFramesGiveWhatTheDivisionGives)
{
    EXPECT_TRUE(std::isnan(curve(EASING_easeNone, 0, 0, 1, 0)));
    EXPECT_EQ(curve(EASING_easeNone, 1, 0, 1, 0), std::numeric_limits<float>::infinity());
    EXPECT_EQ(curve(EASING_easeInQuad, -1, 0, -1, 0), -std::numeric_limits<float>::infinity());
    EXPECT_TRUE(std::isnan(curve(EASING_easeOutBounce, 0, 0, 1, 0)));
    EXPECT_TRUE(std::isnan(curve(EASING_easeInBounce, 0, 0, 1, 0)));
}

TEST(EasingCurves, BounceCountsInWholeFrames)
{
    // A run so long that single precision skips frames.
    constexpr std::int64_t length = (std::int64_t{1} << 25) + 2;
    constexpr std::int64_t frame = (std::int64_t{1} << 24) + 1; // is read as one less
    EXPECT_EQ(curve(EASING_easeInBounce, frame, 0, 1, length),
              1 - curve(EASING_easeOutBounce, length - frame + 1, 0, 1, length));
}

/// Elastic and Back curves of its own.
class OwnCurves : public Animator
{
public:
    float easeInElastic(std::int64_t, float, float, std::int64_t) const override { return 1; }
    float easeOutElastic(std::int64_t, float, float, std::int64_t) const override { return 2; }
    float easeInBack(std::int64_t, float, float, std::int64_t) const override { return 3; }
    float easeOutBack(std::int64_t, float, float, std::int64_t) const override { return 4; }
};

class OwnComposites : public Animator
{
public:
    float easeInOutElastic(std::int64_t, float, float, std::int64_t) const override { return 5; }
    float easeOutInElastic(std::int64_t, float, float, std::int64_t) const override { return 6; }
    float easeInOutBack(std::int64_t, float, float, std::int64_t) const override { return 7; }
    float easeOutInBack(std::int64_t, float, float, std::int64_t) const override { return 8; }
};

TEST(EasingCurves, AnOverrideChangesEveryCurveBuiltOnIt)
{
    OwnCurves own;
    EXPECT_EQ(own.easeOutInElastic(1, 0, 10, 10), 2);
    EXPECT_EQ(own.easeOutInElastic(9, 0, 10, 10), 1);
    EXPECT_EQ(own.easeOutInBack(1, 0, 10, 10), 4);
    EXPECT_EQ(own.easeOutInBack(9, 0, 10, 10), 3);
    EXPECT_EQ(own.easeInOutBack(10, 0, 10, 10), 10);
}

TEST(EasingCurves, AnAnimatorSelectsTheOverride)
{
    const auto selected = [](Animator &&animator, EnumEasing type) {
        animator.setType(type);
        return Inspection::curve(animator, 1, 0, 10, 10);
    };
    EXPECT_EQ(selected(OwnCurves(), EASING_easeInElastic), 1);
    EXPECT_EQ(selected(OwnCurves(), EASING_easeOutElastic), 2);
    EXPECT_EQ(selected(OwnCurves(), EASING_easeInBack), 3);
    EXPECT_EQ(selected(OwnCurves(), EASING_easeOutBack), 4);
    EXPECT_EQ(selected(OwnCurves(), EASING_easeOutInElastic), 2);
    EXPECT_EQ(selected(OwnCurves(), EASING_easeOutInBack), 4);
    EXPECT_EQ(selected(OwnComposites(), EASING_easeInOutElastic), 5);
    EXPECT_EQ(selected(OwnComposites(), EASING_easeOutInElastic), 6);
    EXPECT_EQ(selected(OwnComposites(), EASING_easeInOutBack), 7);
    EXPECT_EQ(selected(OwnComposites(), EASING_easeOutInBack), 8);
}

/// Selects its curve before the class that overrides it has been constructed.
class SetUpByItself : public Animator
{
public:
    SetUpByItself() { Animator::setup(0, 10, 10, 0.01F, EASING_easeInBack); }
};
class OverridingLater : public SetUpByItself
{
public:
    float easeInBack(std::int64_t, float, float, std::int64_t) const override { return 3; }
};

TEST(EasingCurves, AnOverrideCountsForACurveSelectedDuringConstruction)
{
    OverridingLater animator;
    EXPECT_EQ(Inspection::curve(animator, 1, 0, 10, 10), 3);
}

class EasingDeathTest : public ::testing::Test
{
protected:
    EasingDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(EasingDeathTest, OutInCurvesDoNotOverflow)
{
    for (std::int64_t type = EASING_easeOutInQuad; type < EASING_easeLast; type += 4) {
        const auto outIn = static_cast<EnumEasing>(type);
        EXPECT_DEATH(curve(outIn, INT64_MAX / 2 + 1, 0, 1, 10), "Fatal error: Arithmetic overflow");
        EXPECT_DEATH(curve(outIn, INT64_MIN / 2 - 1, 0, 1, 10), "Fatal error: Arithmetic overflow");
        EXPECT_DEATH(curve(outIn, INT64_MAX / 2, 0, 1, -2), "Fatal error: Arithmetic overflow");
    }
    EXPECT_GT(curve(EASING_easeOutInQuad, INT64_MAX / 2, 0, 1, 10), 0);
}

TEST_F(EasingDeathTest, BounceFramesHaveToFitAnInteger)
{
    const std::string start =
        "Fatal error: Float value cannot be converted to Int because the result would be ";
    const std::string tooLarge = start + "greater than Int.max\n";
    const std::string tooSmall = start + "less than Int.min\n";
    EXPECT_DEATH(curve(EASING_easeInBounce, INT64_MIN, 0, 1, 1), tooLarge);
    EXPECT_DEATH(curve(EASING_easeInBounce, INT64_MAX, 0, 1, INT64_MIN), tooSmall);
    // The number of frames itself, rounded up past the end.
    EXPECT_DEATH(curve(EASING_easeInBounce, INT64_MAX, 0, 1, INT64_MAX), tooLarge);
    EXPECT_DEATH(curve(EASING_easeInOutBounce, INT64_MAX, 0, 1, 10), tooLarge);
    EXPECT_DEATH(curve(EASING_easeInOutBounce, INT64_MIN, 0, 1, 10), tooSmall);
    EXPECT_DEATH(curve(EASING_easeInOutBounce, INT64_MAX, 0, 1, INT64_MAX), tooLarge);
    // The least integer fits.
    EXPECT_TRUE(std::isinf(curve(EASING_easeInBounce, INT64_MAX, 0, 1, 0)));
}

TEST_F(EasingDeathTest, ANumberThatNamesNoCurveIsFatal)
{
    Animator animator;
    EXPECT_DEATH(animator.setType(static_cast<EnumEasing>(42)), "Fatal error: There is no easing");
    EXPECT_DEATH(animator.setType(static_cast<EnumEasing>(-1)), "Fatal error: There is no easing");
}

} // namespace
