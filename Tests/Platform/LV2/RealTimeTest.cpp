#include "HeldPlugin.hpp"

#include "Platform/LV2/SymbolTable.hpp"
#include "Tests/Utilities/RealtimeProbe.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace
{

using namespace testsupport;
using test::RealtimeProbe;

class RealTime : public testing::Test
{
protected:
    void SetUp() override
    {
        if (RealtimeProbe::obstacle() != nullptr)
            GTEST_SKIP() << RealtimeProbe::obstacle();
    }
};

/// Runs blocks with MIDI coming in and answers what the callback did that it must
/// not.
RealtimeProbe::Counts forbiddenCallsOf(HeldPlugin &held, std::size_t inputs, std::size_t outputs)
{
    const Channels in(inputs, 128, 0.5F);
    Channels out(outputs, 128);
    const std::array<std::uint8_t, 3> note{0x90, 60, 100};
    RealtimeProbe::Counts counts;
    for (int block = 0; block < 200; ++block) {
        RealtimeProbe::enter();
        held.exchange.midiInput.push(64, note);
        held.instance.run(in.constData(), out.data(), 128, std::int64_t{block} * 128);
        counts += RealtimeProbe::leave();
    }
    return counts;
}

} // namespace

TEST_F(RealTime, NoticesWhatIsForbidden)
{
    RealtimeProbe::enter();
    const Channels allocated(2, 100);
    EXPECT_GE(RealtimeProbe::leave().allocations, 4U);
}

TEST_F(RealTime, RunNeitherAllocatesNorLocksNorEntersTheKernel)
{
    struct Case {
        const char *uri;
        const char *bundle;
        std::size_t inputs;
        std::size_t outputs;
    };
    for (const Case &each :
         {Case{"urn:test:amplifier", "amplifier", 2, 2}, Case{"urn:test:midi:echo", "midi", 0, 0},
          Case{"urn:test:midi:flood", "midi", 0, 0}, Case{"urn:test:everything", "ports", 1, 1},
          Case{"urn:test:delay", "ports", 1, 1}, Case{"urn:test:curious", "ports", 0, 1},
          Case{"urn:test:worker", "worker", 0, 1},
          Case{"urn:test:surroundings", "surroundings", 0, 1},
          Case{"urn:test:blocks:power", "blocks", 1, 1},
          Case{"urn:test:blocks:fixed", "blocks", 1, 1},
          Case{"urn:test:rude:torrent", "rude", 1, 1}}) {
        HeldPlugin held(each.uri, ownBundle(each.bundle));
        held.instance.setControl("requests", 5.0F);
        EXPECT_EQ(forbiddenCallsOf(held, each.inputs, each.outputs), RealtimeProbe::Counts{})
            << each.uri;
    }
}

TEST_F(RealTime, RunIsAsQuietWhileAViewWatchesThePorts)
{
    for (const char *uri : {"urn:test:midi:echo", "urn:test:midi:flood"}) {
        HeldPlugin held(uri, ownBundle("midi"));
        auto &traffic = held.instance.traffic();
        traffic.setWatched(true);
        const auto ports = held.plugin.ports();
        const auto input = std::find_if(ports.begin(), ports.end(), [](const auto &port) {
            return port.kind == platform::lv2::PortKind::atom && port.isInput;
        });
        ASSERT_NE(input, ports.end());
        const LV2_Atom word{0, platform::lv2::SymbolTable::shared().map("urn:test:word")};
        RealtimeProbe::Counts counts;
        std::size_t told = 0;
        for (int round = 0; round < 50; ++round) {
            EXPECT_TRUE(traffic.send(input->index, word));
            // The view may be slow: what finds no room is lost, not waited for.
            counts += forbiddenCallsOf(held, 0, 0);
            while (traffic.next())
                ++told;
        }
        EXPECT_EQ(counts, RealtimeProbe::Counts{}) << uri;
        EXPECT_GT(told, 0U) << uri;
    }
}

TEST_F(RealTime, MappingAKnownURINeitherAllocatesNorLocksNorEntersTheKernel)
{
    auto &table = platform::lv2::SymbolTable::shared();
    table.map("urn:test:known");
    RealtimeProbe::enter();
    const LV2_URID symbol = table.map("urn:test:known");
    const char *uri = table.unmap(symbol);
    const RealtimeProbe::Counts counts = RealtimeProbe::leave();
    EXPECT_STREQ(uri, "urn:test:known");
    EXPECT_EQ(counts, RealtimeProbe::Counts{});
}
