#include "HeldPlugin.hpp"

#include "Platform/LV2/SymbolTable.hpp"

#include <gmock/gmock.h>

#include <lv2/buf-size/buf-size.h>
#include <lv2/options/options.h>
#include <lv2/resize-port/resize-port.h>

#include <cmath>

using namespace testsupport;
using platform::lv2::Instance;
using platform::lv2::InstancePointer;
using platform::lv2::Plugin;
using platform::lv2::PortKind;
using testing::Each;
using testing::ElementsAre;

namespace
{

constexpr std::uint32_t blockFrames = 256;

/// The same plug-in in a loop of its own, the ports connected by hand.
class BareLoop
{
public:
    explicit BareLoop(const Plugin &plugin)
        : values_(plugin.ports().size()), instance_(plugin.instantiate(48000.0, features_.data()))
    {
        for (const auto &port : plugin.ports()) {
            values_[port.index] = port.defaultValue;
            if (port.kind == PortKind::control)
                lilv_instance_connect_port(instance_.get(), port.index, &values_[port.index]);
            else if (port.kind == PortKind::audio)
                (port.isInput ? inputs_ : outputs_).push_back(port.index);
        }
        lilv_instance_activate(instance_.get());
    }
    ~BareLoop() { lilv_instance_deactivate(instance_.get()); }
    BareLoop(const BareLoop &) = delete;
    BareLoop &operator=(const BareLoop &) = delete;

    void run(Channels &in, Channels &out)
    {
        for (std::size_t i = 0; i < inputs_.size(); ++i)
            lilv_instance_connect_port(instance_.get(), inputs_[i], in[i].data());
        for (std::size_t i = 0; i < outputs_.size(); ++i)
            lilv_instance_connect_port(instance_.get(), outputs_[i], out[i].data());
        lilv_instance_run(instance_.get(), blockFrames);
    }

private:
    LV2_Feature map_{LV2_URID__map, platform::lv2::SymbolTable::shared().mapFeature()};
    std::array<const LV2_Feature *, 2> features_{&map_, nullptr};
    std::vector<float> values_;
    std::vector<std::uint32_t> inputs_;
    std::vector<std::uint32_t> outputs_;
    InstancePointer instance_;
};

void expectSamplesOfBareLoop(const std::string &uri, const std::vector<std::string> &bundles,
                             std::size_t channels)
{
    HeldPlugin held(uri, bundles);
    BareLoop bare(held.plugin);
    float energy = 0.0F;
    for (std::uint32_t block = 0; block < 40; ++block) {
        Channels in(test::noise(channels, blockFrames, block));
        Channels out(channels, blockFrames);
        Channels wanted(channels, blockFrames);
        bare.run(in, wanted);
        ASSERT_TRUE(held.instance.run(in.constData(), out.data(), blockFrames, 0));
        for (std::size_t i = 0; i < channels; ++i) {
            ASSERT_EQ(out[i], wanted[i]) << uri << ", block " << block;
            for (const float sample : out[i])
                energy += sample * sample;
        }
    }
    EXPECT_GT(energy, 1.0F) << uri;
}

} // namespace

TEST(Instance, RendersTheSamplesOfABareLoop)
{
    expectSamplesOfBareLoop("urn:test:amplifier", ownBundle("amplifier"), 2);
    expectSamplesOfBareLoop("urn:test:mono", ownBundle("amplifier"), 1);
}

TEST(Instance, RendersInstalledPluginsAsABareLoopDoes)
{
    if (!isInstalled("eg-amp") || !isInstalled("mda"))
        GTEST_SKIP() << "needs lv2-examples and mda-lv2";
    expectSamplesOfBareLoop("http://lv2plug.in/plugins/eg-amp", installedBundle("eg-amp"), 1);
    for (const char *name : {"Delay", "Overdrive", "Leslie", "Detune"})
        expectSamplesOfBareLoop(std::string("http://drobilla.net/plugins/mda/") + name,
                                installedBundle("mda"), 2);
}

TEST(Instance, ConnectsEveryKindOfPort)
{
    HeldPlugin held("urn:test:everything", ownBundle("ports"));
    const std::vector<float> report = held.run(16, 1);
    ASSERT_EQ(report.size(), 16U);
    EXPECT_THAT(std::vector<float>(report.begin(), report.begin() + 8), Each(1.0F));
    EXPECT_EQ(report[8], 0.0F);
    EXPECT_EQ(report[9], 5.0F);
    EXPECT_EQ(report[10], 12000.0F);
}

TEST(Instance, ReportsLatencyBeforeTheFirstBlock)
{
    const HeldPlugin held("urn:test:delay", ownBundle("ports"));
    EXPECT_EQ(held.instance.latency(), 64.0);
    EXPECT_EQ(HeldPlugin("urn:test:mono", ownBundle("amplifier")).instance.latency(), 0.0);
}

TEST(Instance, RefusesMoreFramesThanAgreed)
{
    HeldPlugin held("urn:test:mono", ownBundle("amplifier"), {48000.0, 32, false, std::nullopt});
    EXPECT_EQ(held.run(32, 1).size(), 32U);
    EXPECT_TRUE(held.run(33, 1).empty());
    EXPECT_TRUE(held.instance.run(nullptr, nullptr, 33, 0) == false);
}

TEST(Instance, TellsThePluginItsOptions)
{
    HeldPlugin held("urn:test:curious", ownBundle("ports"), {44100.0, 777, false, "abc"});
    EXPECT_THAT(held.run(4), ElementsAre(3.0F, 3.0F, 777.0F, 1.0F));
    held.instance.setContextName("abcdefg");
    EXPECT_THAT(held.run(4), ElementsAre(3.0F, 7.0F, 777.0F, 1.0F));
    held.instance.setContextName(std::nullopt);
    EXPECT_THAT(held.run(4), ElementsAre(3.0F, 0.0F, 777.0F, 1.0F));
}

TEST(Instance, KeepsWhatIsLoggedInARunUntilItIsAskedFor)
{
    HeldPlugin held("urn:test:curious", ownBundle("ports"));
    testing::internal::CaptureStderr();
    held.run(4);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    testing::internal::CaptureStderr();
    held.exchange.log.writeOut();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Test Curious: a block of 4 frames\n");
}

TEST(Instance, SaysOnceWhenThePluginWritesBeyondItsRoom)
{
    const auto said = [](const std::string &uri, const std::string &bundle) {
        Instance::Settings settings;
        settings.checksBounds = true;
        HeldPlugin held(uri, ownBundle(bundle), settings);
        for (const std::uint32_t frames : {16U, 1U, 1024U}) {
            const auto rendered = held.run(frames, 1);
            // Its own block is what it was.
            EXPECT_EQ(rendered, std::vector<float>(frames, 0.0F));
        }
        testing::internal::CaptureStderr();
        held.exchange.log.writeOut();
        return testing::internal::GetCapturedStderr();
    };
    EXPECT_EQ(said("urn:test:rude:overrun", "rude"), "Test Overrun: writes beyond its block\n");
    EXPECT_EQ(said("urn:test:rude:event-overrun", "rude"),
              "Test Event Overrun: writes beyond its room for events\n");
    EXPECT_EQ(said("urn:test:mono", "amplifier"), "");
    EXPECT_EQ(said("urn:test:rude:torrent", "rude"), "");
}

TEST(Instance, EnlargesPortsForEventsInARun)
{
    Instance::Settings settings;
    settings.checksBounds = true;
    HeldPlugin held("urn:test:growing", ownBundle("growing"), settings);
    auto &traffic = held.instance.traffic();
    traffic.setWatched(true);
    const auto expectBoth = [&] {
        auto event = traffic.next();
        ASSERT_TRUE(event);
        EXPECT_EQ(event->atom->size, 1U) << "what stood there before is kept";
        event = traffic.next();
        ASSERT_TRUE(event);
        EXPECT_EQ(event->atom->size, 200000U);
        EXPECT_EQ(*static_cast<const std::uint8_t *>(LV2_ATOM_BODY_CONST(event->atom)), 0xF0);
        EXPECT_FALSE(traffic.next());
    };
    const auto noSpace = static_cast<float>(LV2_RESIZE_PORT_ERR_NO_SPACE);
    const auto unknown = static_cast<float>(LV2_RESIZE_PORT_ERR_UNKNOWN);
    EXPECT_THAT(held.run(4), ElementsAre(0.0F, noSpace, unknown, 32768.0F - 8.0F));
    expectBoth();
    EXPECT_THAT(held.run(4), ElementsAre(0.0F, noSpace, unknown, 210000.0F - 8.0F));
    expectBoth();
    testing::internal::CaptureStderr();
    held.exchange.log.writeOut();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "nothing beyond its room";
}

TEST(Instance, NoticesThatAPluginsStateHasChangedByItself)
{
    HeldPlugin held("urn:test:telling", ownBundle("telling"));
    held.run();
    EXPECT_FALSE(held.instance.takeStateChange());
    EXPECT_TRUE(held.exchange.midiInput.push(0, std::array<std::uint8_t, 3>{0x90, 60, 100}));
    EXPECT_EQ(held.run().front(), 60.0F);
    held.run();
    EXPECT_TRUE(held.instance.takeStateChange());
    EXPECT_FALSE(held.instance.takeStateChange());
}

TEST(Instance, TakesNoValuesBeyondStrictBounds)
{
    HeldPlugin held("urn:test:surroundings", ownBundle("surroundings"));
    constexpr std::size_t strictPort = 13;
    held.instance.setControl("strict", 99.0F);
    EXPECT_EQ(held.run(32)[strictPort], 3.0F);
    held.instance.setControl("strict", -99.0F);
    EXPECT_EQ(held.run(32)[strictPort], 1.0F);
    held.instance.setControl("strict", 1.5F);
    EXPECT_EQ(held.run(32)[strictPort], 1.5F);
}

TEST(Instance, DoesNotKeepWhatTheHostSetsItself)
{
    const HeldPlugin held("urn:test:surroundings", ownBundle("surroundings"));
    EXPECT_THAT(held.instance.controls(),
                ElementsAre(testing::Pair("enabled", 1.0F), testing::Pair("strict", 2.0F)));
}

TEST(Instance, EchoesMidiAtItsFrames)
{
    HeldPlugin held("urn:test:midi:echo", ownBundle("midi"));
    const std::array<std::uint8_t, 3> note{0x90, 60, 100};
    EXPECT_TRUE(held.exchange.midiInput.push(5, note));
    EXPECT_TRUE(held.exchange.midiInput.push(2, std::array<std::uint8_t, 1>{0xF8}));
    ASSERT_TRUE(held.instance.run(nullptr, nullptr, 64, 1000));

    auto event = held.exchange.midiOutput.pop();
    ASSERT_TRUE(event);
    EXPECT_EQ(event->sampleTime, 1002);
    EXPECT_THAT(std::vector(event->bytes.begin(), event->bytes.end()), ElementsAre(0xF8));
    event = held.exchange.midiOutput.pop();
    ASSERT_TRUE(event);
    EXPECT_EQ(event->sampleTime, 1005);
    EXPECT_THAT(std::vector(event->bytes.begin(), event->bytes.end()), ElementsAre(0x90, 60, 100));
    EXPECT_FALSE(held.exchange.midiOutput.pop());
    held.instance.run(nullptr, nullptr, 64, 1064);
    EXPECT_FALSE(held.exchange.midiOutput.pop());
}

TEST(Instance, PassesOnMessagesOfAnyLengthAndCountsWhatIsLost)
{
    HeldPlugin held("urn:test:midi:flood", ownBundle("midi"));
    held.instance.run(nullptr, nullptr, 64, 0);
    std::vector<std::size_t> sizes;
    while (const auto event = held.exchange.midiOutput.pop())
        sizes.push_back(event->bytes.size());
    EXPECT_THAT(sizes, ElementsAre(1U, 2U, 3U, 300U));
    EXPECT_EQ(held.exchange.midiOutput.takeLostCount(), 0U);

    constexpr int blocks = 2000;
    for (int i = 0; i < blocks; ++i)
        held.instance.run(nullptr, nullptr, 64, i * 64);
    std::uint64_t kept = 0;
    while (held.exchange.midiOutput.pop())
        ++kept;
    EXPECT_EQ(kept + held.exchange.midiOutput.takeLostCount(), 4U * blocks);
}

TEST(Instance, SurvivesAPluginThatLiesAboutItsEvents)
{
    for (const char *uri : {"urn:test:midi:liar", "urn:test:midi:braggart"}) {
        HeldPlugin held(uri, ownBundle("midi"));
        for (int i = 0; i < 10; ++i)
            EXPECT_TRUE(held.instance.run(nullptr, nullptr, 64, 0));
        int events = 0;
        while (held.exchange.midiOutput.pop())
            ++events;
        EXPECT_LE(events, 10) << uri;
    }
}

TEST(Instance, RunsInstalledPluginsWithEvents)
{
    struct Candidate {
        const char *bundle;
        const char *uri;
        std::size_t inputs;
        std::size_t outputs;
    };
    for (const Candidate &each :
         {Candidate{"eg-midigate", "http://lv2plug.in/plugins/eg-midigate", 1, 1},
          Candidate{"eg-fifths", "http://lv2plug.in/plugins/eg-fifths", 0, 0},
          Candidate{"eg-sampler", "http://lv2plug.in/plugins/eg-sampler", 0, 1}}) {
        if (!isInstalled(each.bundle))
            GTEST_SKIP() << "needs lv2-examples";
        HeldPlugin held(each.uri, installedBundle(each.bundle));
        const Channels in(each.inputs, blockFrames, 0.25F);
        Channels out(each.outputs, blockFrames);
        const auto runBlock = [&] {
            return held.instance.run(in.constData(), out.data(), blockFrames, 0);
        };
        ASSERT_TRUE(runBlock()) << each.uri;
        if (each.inputs == 1) {
            EXPECT_EQ(out[0], std::vector<float>(blockFrames, 0.0F)) << "the gate is closed";
        }

        const std::array<std::uint8_t, 3> note{0x90, 60, 100};
        held.exchange.midiInput.push(128, note);
        ASSERT_TRUE(runBlock()) << each.uri;
        if (each.inputs == 1) {
            EXPECT_EQ(out[0].back(), 0.25F) << "the gate is open";
        }
        if (each.outputs == 0) {
            const auto first = held.exchange.midiOutput.pop();
            ASSERT_TRUE(first);
            EXPECT_EQ(first->sampleTime, 128);
            EXPECT_TRUE(held.exchange.midiOutput.pop());
        }
    }
}
