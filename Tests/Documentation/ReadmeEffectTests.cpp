// The example effect of the front page, built from its very text.
#include "Platform/Audio/AUAudioUnit.hpp"
#include "Platform/Audio/AVAudioUnit.hpp"
#include "Platform/Audio/AVAudioUnitComponentManager.hpp"
#include "Tests/Utilities/EnvironmentVariable.hpp"
#include "Tests/Utilities/StandInEffect.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace
{

constexpr AudioComponentDescription searchKey{platform::audio::fourCharacterCode("aumf"),
                                              platform::audio::fourCharacterCode("zvqr"),
                                              platform::audio::fourCharacterCode("QRVX"), 2, 0};

/// With the stand-in in front of it on the path, as it may be on a reader's machine.
class ReadmeEffect : public testing::Test
{
protected:
    const test::StandInEffect standIn_;
    const test::EnvironmentVariable path_{"LV2_PATH", std::string(std::getenv("LV2_PATH")) +
                                                          ":" README_HOME "/.lv2"};
};

} // namespace

TEST_F(ReadmeEffect, IsFoundBeforeTheStandIn)
{
    std::vector<std::string> uris;
    for (const auto &component : AVAudioUnitComponentManager::shared().components(searchKey))
        uris.push_back(component.pluginURI());
    EXPECT_EQ(uris, (std::vector<std::string>{"urn:example:fuzz", "urn:qrvx:parvane"}));
}

TEST_F(ReadmeEffect, RendersWhatItsFormulaSays)
{
    const auto unit = standIn_.instantiate();
    ASSERT_TRUE(unit);
    EXPECT_EQ(unit->name(), "Fuzz");
    AUAudioUnit &effect = *unit->auAudioUnit();
    effect.setRenderingOffline(true);
    constexpr std::uint32_t frames = 64;
    effect.allocateRenderResources(48000, frames);

    std::array<float, frames> input{};
    std::array<float, frames> output{};
    for (std::size_t i = 0; i < frames; ++i)
        input[i] = std::sin(0.3F * static_cast<float>(i));
    const float *const in = input.data();
    float *const out = output.data();
    ASSERT_TRUE(effect.render({.input = &in, .output = &out, .frames = frames}));
    for (std::size_t i = 0; i < frames; ++i)
        EXPECT_NEAR(output[i], 0.5F * input[i] / (0.1F + std::fabs(input[i])), 1e-6F) << i;
}
