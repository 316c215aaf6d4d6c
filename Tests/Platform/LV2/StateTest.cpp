#include "HeldPlugin.hpp"

#include "Platform/LV2/Symbols.hpp"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>

using namespace testsupport;
using platform::lv2::Exchange;
using platform::lv2::Instance;
using platform::lv2::Plugin;
using platform::lv2::State;

namespace
{

enum Report { value, sampleRate, number, meetings };

std::vector<float> reportOf(Instance &instance)
{
    Channels out(1, 16);
    instance.run(nullptr, out.data(), 16, 0);
    return out[0];
}

} // namespace

TEST(State, SurvivesAChangeOfTheSampleRate)
{
    Plugin plugin("urn:test:state", ownBundle("state"));
    Exchange exchange(plugin.name());
    Instance first(plugin, exchange, {});
    first.setControl("set", 12.5F);
    reportOf(first);
    first.setControl("set", 0.0F);

    const State state = first.save();
    Instance second(plugin, exchange, {96000.0, 512, false, std::nullopt}, &state);
    const auto report = reportOf(second);
    EXPECT_EQ(report[value], 12.5F);
    EXPECT_EQ(report[sampleRate], 96000.0F);
    EXPECT_EQ(report[number], 42.0F);
}

TEST(State, KeepsControlValues)
{
    Plugin plugin("urn:test:amplifier", ownBundle("amplifier"));
    Exchange exchange(plugin.name());
    Instance first(plugin, exchange, {});
    first.setControl("gain", 4.0F);
    first.setControl("gain", NAN);
    first.setControl("no such port", 1.0F);
    const State state = first.save();
    const Instance second(plugin, exchange, {}, &state);
    EXPECT_THAT(second.controls(), testing::ElementsAre(testing::Pair("gain", 4.0F)));
}

TEST(State, TakesItsFilesAwayAtTheEnd)
{
    std::string file;
    {
        HeldPlugin held("urn:test:state", ownBundle("state"));
        const State state = held.instance.save();
        file = state.properties.at("urn:test:state:file").value.c_str();
        EXPECT_TRUE(std::filesystem::exists(file));
    }
    EXPECT_FALSE(std::filesystem::exists(file));
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(file).parent_path().parent_path()));
}

TEST(State, LetsNoFileLeaveItsFolder)
{
    platform::lv2::ScratchFolder folder;
    LV2_State_Make_Path *makePath = folder.makePathFeature();
    EXPECT_EQ(makePath->path(makePath->handle, "../outside"), nullptr);
    EXPECT_EQ(makePath->path(makePath->handle, "a/../../outside"), nullptr);
    EXPECT_EQ(makePath->path(makePath->handle, "/outside"), nullptr);
}

TEST(State, LoadsTheDefaultStateOfAPluginThatAsksForIt)
{
    HeldPlugin held("urn:test:state:default", ownBundle("state"));
    EXPECT_EQ(held.run()[number], 7.0F);
    HeldPlugin other("urn:test:state", ownBundle("state"));
    EXPECT_EQ(other.run()[number], 0.0F);
}

TEST(State, LoadsPresets)
{
    HeldPlugin held("urn:test:state", ownBundle("state"));
    EXPECT_TRUE(held.instance.loadState(held.plugin.presets().at(0).uri));
    EXPECT_EQ(held.run()[number], 9.0F);
    EXPECT_FALSE(held.instance.loadState("urn:test:no-such-preset"));
}

TEST(State, TakesNumbersOfAnyKindForPorts)
{
    HeldPlugin held("urn:test:state:default", ownBundle("state"));
    const auto valueAfter = [&held](const std::string &kind) {
        EXPECT_TRUE(held.instance.loadState("urn:test:state:default:" + kind)) << kind;
        return held.run()[value];
    };
    EXPECT_EQ(valueAfter("integer"), 12.0F);
    EXPECT_EQ(valueAfter("long"), 13.0F);
    EXPECT_EQ(valueAfter("double"), 14.5F);
    EXPECT_EQ(valueAfter("boolean"), 1.0F);
    // What is no number changes nothing.
    EXPECT_EQ(valueAfter("text"), 1.0F);
}

TEST(State, NeverRestoresDuringARun)
{
    HeldPlugin held("urn:test:state", ownBundle("state"));
    std::atomic<bool> ending{false};
    std::atomic<int> refusedBlocks{0};
    std::thread audio([&] {
        while (!ending) {
            if (held.run().empty())
                ++refusedBlocks;
            std::this_thread::yield();
        }
    });
    for (int i = 0; i < 5; ++i)
        EXPECT_TRUE(held.instance.loadState("urn:test:state:preset"));
    ending = true;
    audio.join();
    EXPECT_GT(refusedBlocks, 0);
    EXPECT_EQ(held.run()[meetings], 0.0F);
}

TEST(State, StoresOnlyWhatCanBeCopied)
{
    auto &symbols = platform::lv2::SymbolTable::shared();
    State state;
    const LV2_URID key = symbols.map("urn:test:key");
    const LV2_URID type = platform::lv2::Symbols::shared().atomInt;
    const std::int32_t five = 5;
    EXPECT_EQ(storeProperty(&state, key, &five, sizeof five, type, 0), LV2_STATE_ERR_BAD_FLAGS);
    EXPECT_EQ(storeProperty(&state, 0, &five, sizeof five, type, LV2_STATE_IS_POD),
              LV2_STATE_ERR_UNKNOWN);
    EXPECT_EQ(storeProperty(&state, key, &five, sizeof five, 0, LV2_STATE_IS_POD),
              LV2_STATE_ERR_BAD_TYPE);
    EXPECT_EQ(storeProperty(&state, key, &five, sizeof five, type, LV2_STATE_IS_POD),
              LV2_STATE_SUCCESS);
    std::size_t size = 0;
    const void *stored = retrieveProperty(&state, key, &size, nullptr, nullptr);
    ASSERT_EQ(size, sizeof five);
    EXPECT_EQ(*static_cast<const std::int32_t *>(stored), 5);
    EXPECT_EQ(retrieveProperty(&state, type, &size, nullptr, nullptr), nullptr);
}

TEST(State, EndsTextsThatWereStoredWithoutTheirEnd)
{
    auto &symbols = platform::lv2::SymbolTable::shared();
    State state;
    const LV2_URID key = symbols.map("urn:test:key");
    // Longer than what a string keeps within itself.
    const std::string text(100, 'x');
    EXPECT_EQ(storeProperty(&state, key, text.data(), text.size(),
                            platform::lv2::Symbols::shared().atomPath, LV2_STATE_IS_POD),
              LV2_STATE_SUCCESS);
    std::size_t size = 0;
    const void *stored = retrieveProperty(&state, key, &size, nullptr, nullptr);
    EXPECT_EQ(size, text.size());
    EXPECT_EQ(static_cast<const char *>(stored), text);
}
