#include "Platform/Effect Process/EffectEnd.hpp"
#include "Platform/Effect Process/Futex.hpp"
#include "Platform/Effect Process/HostEnd.hpp"
#include "Platform/Effect Process/LinkEvents.hpp"
#include "Platform/Effect Process/LinkSlot.hpp"
#include "Platform/LV2/HostedPlugin.hpp"
#include "Tests/Utilities/Places.hpp"

#include <gmock/gmock.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <thread>
#include <vector>

#include <sched.h>
#include <unistd.h>

using namespace platform::effect;
using platform::lv2::HostedPlugin;
using platform::lv2::Instance;
using std::chrono::milliseconds;

namespace
{

constexpr std::uint32_t blockFrames = 64;
constexpr std::chrono::seconds patience{10};

HostEnd::Clock::time_point soon()
{
    return HostEnd::Clock::now() + patience;
}

/// Both ends of a link in one process, with a real plug-in at the far one.
class Link : public testing::Test
{
protected:
    void connect(const std::string &uri, const std::string &bundle,
                 std::chrono::nanoseconds spin = usualSpin())
    {
        plugin_ = std::make_unique<HostedPlugin>(
            uri, std::vector<std::string>{test::buildPath(TEST_LV2_BUNDLES "/" + bundle + ".lv2")},
            Instance::Settings{48000.0, blockFrames, true, std::nullopt});
        const LinkShape shape{plugin_->inputChannelCount(), plugin_->outputChannelCount(),
                              blockFrames,
                              static_cast<std::uint32_t>(plugin_->MIDIOutputNames().size())};
        host_ = std::make_unique<HostEnd>(shape, midi_);
        LinkMemory memory(FileDescriptor(::dup(host_->memory().descriptor())), shape);
        effect_ = std::make_unique<EffectEnd>(std::move(memory), plugin_->instance(),
                                              *plugin_->exchange(), spin);
    }

    /// The first output channel of a block of `value`s; empty when there was none.
    std::vector<float> render(float value, std::int64_t sampleTime = 0,
                              HostEnd::Clock::time_point deadline = soon())
    {
        const std::vector<float> in(blockFrames, value);
        std::vector<std::vector<float>> out(2, std::vector<float>(blockFrames, -1.0F));
        const std::array<const float *, 2> inputs{in.data(), in.data()};
        const std::array<float *, 2> outputs{out[0].data(), out[1].data()};
        if (!host_->render({inputs.data(), outputs.data(), blockFrames, sampleTime}, deadline))
            return {};
        return out[0];
    }

    MidiTraffic midi_;
    std::unique_ptr<HostedPlugin> plugin_;
    std::unique_ptr<HostEnd> host_;
    std::unique_ptr<EffectEnd> effect_;
};

/// The processors that this process may use.
std::vector<int> processors()
{
    cpu_set_t all;
    std::vector<int> found;
    if (::sched_getaffinity(0, sizeof all, &all) == 0)
        for (int processor = 0; processor < CPU_SETSIZE; ++processor)
            if (CPU_ISSET(processor, &all))
                found.push_back(processor);
    return found;
}

/// Keeps the calling thread, and those that it starts, on one processor meanwhile.
class OnProcessor
{
public:
    explicit OnProcessor(int processor)
    {
        ::sched_getaffinity(0, sizeof before_, &before_);
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(processor, &one);
        ::sched_setaffinity(0, sizeof one, &one);
    }
    ~OnProcessor() { ::sched_setaffinity(0, sizeof before_, &before_); }
    OnProcessor(const OnProcessor &) = delete;
    OnProcessor &operator=(const OnProcessor &) = delete;

private:
    cpu_set_t before_{};
};

/// Whether `flag` is set within `time`.
bool isSetWithin(const std::atomic<std::uint32_t> &flag, std::chrono::nanoseconds time)
{
    const auto end = HostEnd::Clock::now() + time;
    while (flag.load() == 0 && HostEnd::Clock::now() < end)
        std::this_thread::sleep_for(milliseconds(1));
    return flag.load() != 0;
}

/// A link whose far end the test itself writes, as an effect that lies would.
class LyingEffect : public testing::Test
{
protected:
    LinkHeader &header() { return host_.memory().header(); }

    /// Answers every block after `lie` had its way with the memory.
    template <typename Lie>
    bool renderAnsweredBy(Lie lie)
    {
        std::atomic<bool> ending{false};
        std::thread effect([&] {
            while (!ending) {
                const std::uint32_t wanted = header().request.load();
                if (header().answer.load() != wanted) {
                    header().isRendered = 1;
                    lie(host_.memory());
                    header().answer.store(wanted);
                    futexWake(header().answer);
                }
            }
        });
        const bool isRendered = host_.render({nullptr, outputs_.data(), blockFrames, 0}, soon());
        ending = true;
        effect.join();
        return isRendered;
    }

    MidiTraffic midi_;
    HostEnd host_{LinkShape{0, 1, blockFrames, 1}, midi_};
    std::vector<float> out_ = std::vector<float>(blockFrames);
    std::array<float *, 1> outputs_{out_.data()};
};

} // namespace

TEST_F(Link, BringsBlocksThereAndBack)
{
    connect("urn:test:mono", "amplifier");
    for (int block = 0; block < 1000; ++block) {
        const auto value = static_cast<float>(block);
        ASSERT_EQ(render(value), std::vector<float>(blockFrames, 2.0F * value));
    }
    EXPECT_EQ(host_->lateBlocks(), 0U);
}

TEST_F(Link, BringsMIDIThereAndBackWithItsTime)
{
    connect("urn:test:midi:echo", "midi");
    const std::array<std::uint8_t, 3> note{0x90, 60, 100};
    ASSERT_TRUE(midi_.input.push(9, note));
    ASSERT_TRUE(midi_.input.push(4, note));
    ASSERT_FALSE(render(0.0F, 1000).empty());
    auto event = midi_.output.pop();
    ASSERT_TRUE(event);
    EXPECT_EQ(event->sampleTime, 1004);
    EXPECT_THAT(event->bytes, testing::ElementsAreArray(note));
    event = midi_.output.pop();
    ASSERT_TRUE(event);
    EXPECT_EQ(event->sampleTime, 1009);
    EXPECT_FALSE(midi_.output.pop());
}

TEST_F(Link, RefusesBlocksThatAreTooLong)
{
    connect("urn:test:mono", "amplifier");
    EXPECT_FALSE(host_->render({nullptr, nullptr, blockFrames + 1, 0}, soon()));
}

TEST_F(Link, NeverTakesALateAnswerForANewBlock)
{
    // Nobody at the far end yet: the first block cannot be in time.
    const LinkShape shape{1, 1, blockFrames, 0};
    host_ = std::make_unique<HostEnd>(shape, midi_);
    EXPECT_TRUE(render(1.0F, 0, HostEnd::Clock::now() + milliseconds(5)).empty());
    EXPECT_TRUE(render(2.0F, 64, HostEnd::Clock::now() + milliseconds(5)).empty());
    EXPECT_EQ(host_->lateBlocks(), 2U);
    EXPECT_GT(host_->overdue(), milliseconds(5));

    plugin_ = std::make_unique<HostedPlugin>(
        "urn:test:mono",
        std::vector<std::string>{test::buildPath(TEST_LV2_BUNDLES "/amplifier.lv2")},
        Instance::Settings{48000.0, blockFrames, true, std::nullopt});
    effect_ = std::make_unique<EffectEnd>(
        LinkMemory(FileDescriptor(::dup(host_->memory().descriptor())), shape), plugin_->instance(),
        *plugin_->exchange());
    // The block of ones is answered first, and its twos are heard nowhere.
    EXPECT_EQ(render(3.0F, 128), std::vector<float>(blockFrames, 6.0F));
    EXPECT_EQ(host_->overdue(), milliseconds(0));
}

TEST_F(Link, IsNotWaitedForOnceAbandoned)
{
    host_ = std::make_unique<HostEnd>(LinkShape{1, 1, blockFrames, 0}, midi_);
    std::thread abandoner([this] {
        std::this_thread::sleep_for(milliseconds(20));
        host_->abandon();
    });
    const auto begun = HostEnd::Clock::now();
    EXPECT_TRUE(render(1.0F).empty());
    EXPECT_LT(HostEnd::Clock::now() - begun, patience);
    abandoner.join();
}

TEST_F(Link, EndsWhileNothingIsAskedFor)
{
    connect("urn:test:mono", "amplifier");
    std::this_thread::sleep_for(milliseconds(5));
    effect_.reset();
    EXPECT_TRUE(render(1.0F, 0, HostEnd::Clock::now() + milliseconds(1)).empty());
}

TEST_F(Link, LeavesTheProcessorThatItSharesWithTheHost)
{
    const OnProcessor both(processors().front());
    connect("urn:test:mono", "amplifier", patience);
    for (int block = 0; block < 10; ++block) {
        ASSERT_FALSE(render(1.0F).empty());
        EXPECT_TRUE(isSetWithin(host_->memory().header().effectSleeps, patience / 2));
    }
}

TEST_F(Link, IsLookedForOnAProcessorOfItsOwn)
{
    if (processors().size() < 2)
        GTEST_SKIP() << "there is one processor";
    {
        const OnProcessor effects(processors().front());
        connect("urn:test:mono", "amplifier", patience);
    }
    const OnProcessor hosts(processors().back());
    ASSERT_FALSE(render(1.0F).empty());
    EXPECT_FALSE(isSetWithin(host_->memory().header().effectSleeps, milliseconds(20)));
}

TEST_F(LyingEffect, IsHeardWhenItDoesNotLie)
{
    EXPECT_TRUE(renderAnsweredBy([](const LinkMemory &memory) {
        memory.outputs()[0][0] = 0.5F;
        memory.header().outputEventBytes = 0;
    }));
    EXPECT_EQ(out_[0], 0.5F);
}

TEST_F(LyingEffect, HasAllItsEventsLookedAt)
{
    EXPECT_FALSE(renderAnsweredBy([](const LinkMemory &memory) {
        // All bytes set: an event of four gigabytes.
        for (std::byte &byte : memory.outputEvents())
            byte = std::byte{0xFF};
        memory.header().outputEventBytes = LinkMemory::eventCapacity;
        memory.header().lostEvents = 0xFFFFFFFF;
    }));
    EXPECT_STREQ(host_.breach(), "its MIDI is not in order");
    EXPECT_FALSE(midi_.output.pop());
    EXPECT_EQ(midi_.output.takeLostCount(), 0xFFFFFFFFU);
}

TEST_F(LyingEffect, HasNoRoomBeyondItsOwn)
{
    EXPECT_FALSE(renderAnsweredBy(
        [](const LinkMemory &memory) { memory.header().outputEventBytes = 0xFFFFFFFF; }));
    EXPECT_STREQ(host_.breach(), "its MIDI is longer than its room");
}

TEST_F(LyingEffect, HasNoOutputsBeyondItsOwn)
{
    EXPECT_FALSE(renderAnsweredBy([](const LinkMemory &memory) {
        LinkEventWriter writer(memory.outputEvents());
        const std::array<std::uint8_t, 1> clock{0xF8};
        writer.append({0, 0, clock});
        writer.append({0, 256, clock});
        writer.append({0, 0, clock});
        memory.header().outputEventBytes = writer.size();
    }));
    EXPECT_STREQ(host_.breach(), "its MIDI is not in order");
    // What came before the lie was as agreed.
    EXPECT_TRUE(midi_.output.pop());
    EXPECT_FALSE(midi_.output.pop());
}

TEST_F(LyingEffect, IsNotListenedToAnyMore)
{
    renderAnsweredBy([](const LinkMemory &memory) { memory.header().latency = -1.0F; });
    EXPECT_STREQ(host_.breach(), "its delay is impossible");
    EXPECT_FALSE(host_.render({nullptr, outputs_.data(), blockFrames, 0}, soon()));
}

TEST_F(LyingEffect, HasAPlausibleLatency)
{
    for (const float possible : {0.0F, 64.0F, longestLatency}) {
        HostEnd host(LinkShape{0, 1, blockFrames, 1}, midi_);
        host.memory().header().latency = possible;
        host.noteLatency();
        EXPECT_EQ(host.latency(), possible);
        EXPECT_EQ(host.breach(), nullptr);
    }
    for (const float impossible : {NAN, -1.0F, INFINITY, 2 * longestLatency}) {
        HostEnd host(LinkShape{0, 1, blockFrames, 1}, midi_);
        host.memory().header().latency = impossible;
        host.noteLatency();
        EXPECT_EQ(host.latency(), 0.0);
        EXPECT_STREQ(host.breach(), "its delay is impossible");
    }
}

TEST_F(LyingEffect, MayNotCallAnUnrenderedBlockRendered)
{
    EXPECT_FALSE(
        renderAnsweredBy([](const LinkMemory &memory) { memory.header().isRendered = 2; }));
}

TEST(HostEnd, LeavesTheProcessorThatItSharesWithTheEffect)
{
    MidiTraffic midi;
    HostEnd host(LinkShape{0, 0, blockFrames, 0}, midi, patience);
    LinkHeader &header = host.memory().header();
    const int mine = processors().front();
    for (const bool isShared : {true, false}) {
        header.effectProcessor = isShared ? mine : mine + 1;
        std::thread effect([&] {
            while (header.request.load() == header.answer.load())
                std::this_thread::yield();
            EXPECT_EQ(isSetWithin(header.hostSleeps, isShared ? patience / 2 : milliseconds(20)),
                      isShared);
            header.isRendered = 1;
            header.answer.store(header.request.load());
            futexWake(header.answer);
        });
        const OnProcessor hosts(mine);
        EXPECT_TRUE(host.render({nullptr, nullptr, blockFrames, 0}, soon()));
        effect.join();
    }
}

TEST(LinkSlot, RendersNothingWithoutALink)
{
    LinkSlot slot(patience);
    EXPECT_FALSE(slot.render({nullptr, nullptr, 1, 0}));
    EXPECT_TRUE(slot.isEmpty());
    EXPECT_EQ(slot.latency(), 0.0);
}

TEST(LinkSlot, WaitsNoLongerThanABlockTakes)
{
    MidiTraffic midi;
    LinkSlot slot(patience);
    slot.put(std::make_unique<HostEnd>(LinkShape{0, 0, blockFrames, 0}, midi), 48000.0);
    const auto begun = HostEnd::Clock::now();
    EXPECT_FALSE(slot.render({nullptr, nullptr, blockFrames, 0}));
    // 64 frames are 1.3 ms; what is more is the machine's.
    EXPECT_LT(HostEnd::Clock::now() - begun, std::chrono::seconds(1));
    EXPECT_EQ(slot.lateBlocks(), 1U);
    slot.clear();
    EXPECT_EQ(slot.lateBlocks(), 1U);
}

TEST(LinkSlot, IsClearedUnderARenderingCallback)
{
    MidiTraffic midi;
    LinkSlot slot(patience);
    slot.setOffline(true);
    std::atomic<bool> ending{false};
    std::thread callback([&] {
        while (!ending)
            slot.render({nullptr, nullptr, blockFrames, 0});
    });
    for (int round = 0; round < 50; ++round) {
        slot.put(std::make_unique<HostEnd>(LinkShape{0, 0, blockFrames, 0}, midi), 48000.0);
        std::this_thread::sleep_for(milliseconds(1));
        slot.clear();
    }
    ending = true;
    callback.join();
    EXPECT_TRUE(slot.isEmpty());
}
