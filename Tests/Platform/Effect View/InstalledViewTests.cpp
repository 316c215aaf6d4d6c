#include "Tests/Platform/Effect View/ShownView.hpp"
#include "Tests/Utilities/EnvironmentVariable.hpp"
#include "Tests/Utilities/MainThread.hpp"

#include <fmt/format.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <numbers>
#include <vector>

namespace
{

constexpr std::uint32_t blockFrames = 256;
constexpr double sampleRate = 48000;

/// The loudest sample of a second of a quiet tone through the unit.
float loudnessOf(RemoteAudioUnit &unit)
{
    std::vector<float> input(blockFrames);
    std::array<std::vector<float>, 2> output{std::vector<float>(blockFrames),
                                             std::vector<float>(blockFrames)};
    const std::array<const float *, 2> in{input.data(), input.data()};
    const std::array<float *, 2> out{output[0].data(), output[1].data()};
    float peak = 0;
    for (int block = 0; block < static_cast<int>(sampleRate / blockFrames); ++block) {
        for (std::uint32_t i = 0; i < blockFrames; ++i)
            input[i] = 0.01F *
                       static_cast<float>(std::sin(2 * std::numbers::pi * 440.0 *
                                                   (block * double{blockFrames} + i) / sampleRate));
        // What the last setting left behind fades in the first half.
        if (unit.render({in.data(), out.data(), blockFrames, block * std::int64_t{blockFrames}}) &&
            block > sampleRate / blockFrames / 2)
            for (const float sample : output[0])
                peak = std::max(peak, std::fabs(sample));
    }
    return peak;
}

} // namespace

TEST(InstalledView, TurnsAKnobThatIsHeard)
{
    if (!std::filesystem::exists("/usr/lib/lv2/dpl.lv2"))
        GTEST_SKIP() << "x42-plugins is not installed.";
    const test::EnvironmentVariable path{"LV2_PATH", "/usr/lib/lv2"};
    RemoteAudioUnit unit(AVAudioUnitComponent({}, "http://gareus.org/oss/lv2/dpl#stereo"));
    unit.setRenderingOffline(true);
    unit.allocateRenderResources(sampleRate, blockFrames);
    test::ShownView shown(unit, 900, 400);
    ASSERT_TRUE(shown.controller);
    ASSERT_TRUE(shown.waitUntilOpen());
    ASSERT_TRUE(shown.waitUntil([&] { return shown.x.colours(shown.outer()) > 100; }));
    const float before = loudnessOf(unit);
    EXPECT_NEAR(before, 0.01F, 0.001F);

    // The knob for the input's gain is at the left; the wheel turns it up.
    const auto place = shown.x.onScreen(shown.own());
    const std::string wheel =
        fmt::format("xdotool mousemove {} {} click --repeat 12 --delay 20 4",
                    place.x + place.width * 34 / 541, place.y + place.height / 2);
    EXPECT_EQ(std::system(wheel.c_str()), 0);
    EXPECT_TRUE(shown.waitUntil([&] { return loudnessOf(unit) > 1.5F * before; }));
}
