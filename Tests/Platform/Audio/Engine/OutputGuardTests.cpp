#include "Platform/Audio/OutputGuard.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

namespace
{

using platform::audio::OutputGuard;

using Block = std::array<float, 3>;
using Interleaved = std::array<float, 6>;

Interleaved passed(OutputGuard &guard, const Block &left, const Block &right)
{
    const std::array<const float *, 2> channels{left.data(), right.data()};
    Interleaved out;
    out.fill(99.0F);
    guard.pass(channels.data(), 2, 3, out.data());
    return out;
}

TEST(OutputGuard, InterleavesWhatIsInRangeBitForBit)
{
    OutputGuard guard;
    EXPECT_EQ(passed(guard, {0.25F, -1.0F, 1.0F}, {0.5F, -0.0F, 1e-30F}),
              (Interleaved{0.25F, 0.5F, -1.0F, -0.0F, 1.0F, 1e-30F}));
    EXPECT_FALSE(guard.sawNonFinite());
    EXPECT_FALSE(guard.sawTooLoud());
}

TEST(OutputGuard, LimitsLouderSamples)
{
    OutputGuard guard;
    EXPECT_EQ(passed(guard, {0.25F, 1.5F, -1e30F}, {0, 0, 0}),
              (Interleaved{0.25F, 0, 1.0F, 0, -1.0F, 0}));
    EXPECT_TRUE(guard.sawTooLoud());
    EXPECT_FALSE(guard.sawNonFinite());
}

TEST(OutputGuard, SilencesABlockThatIsNotFinite)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    for (const float bad : {nan, -nan, infinity, -infinity}) {
        OutputGuard guard;
        EXPECT_EQ(passed(guard, {0.25F, 0.5F, 0.5F}, {0, bad, 0}), Interleaved{});
        EXPECT_TRUE(guard.sawNonFinite());
    }
}

} // namespace
