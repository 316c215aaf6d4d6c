#include "Platform/LV2/EventBuffer.hpp"
#include "Platform/LV2/Symbols.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <vector>

using platform::lv2::EventBuffer;
using platform::lv2::Symbols;

namespace
{

struct Seen {
    std::int64_t frame;
    std::vector<std::uint8_t> bytes;
    friend bool operator==(const Seen &, const Seen &) = default;
};

std::vector<Seen> eventsIn(EventBuffer &buffer)
{
    std::vector<Seen> seen;
    buffer.forEach([&](const EventBuffer::Event &event) {
        seen.push_back({event.frame, {event.bytes.begin(), event.bytes.end()}});
    });
    return seen;
}

constexpr std::array<std::uint8_t, 3> note{0x90, 60, 100};

} // namespace

TEST(EventBuffer, HoldsEventsInOrder)
{
    EventBuffer buffer(1024);
    EXPECT_TRUE(buffer.append(0, 7, note));
    EXPECT_TRUE(buffer.append(5, 7, std::span(note).first(1)));
    EXPECT_EQ(eventsIn(buffer), (std::vector<Seen>{{0, {0x90, 60, 100}}, {5, {0x90}}}));
    buffer.clear();
    EXPECT_TRUE(eventsIn(buffer).empty());
}

TEST(EventBuffer, RefusesWhatHasNoRoom)
{
    EventBuffer buffer(16 + 24);
    EXPECT_TRUE(buffer.append(0, 7, note));
    EXPECT_FALSE(buffer.append(0, 7, note));
    EXPECT_EQ(eventsIn(buffer).size(), 1U);
}

TEST(EventBuffer, OffersAnEmptyChunkOfItsWholeSize)
{
    EventBuffer buffer(1001);
    buffer.offerChunk();
    EXPECT_EQ(buffer.sequence()->atom.type, Symbols::shared().atomChunk);
    EXPECT_EQ(buffer.sequence()->atom.size + sizeof(LV2_Atom), buffer.capacity());
    EXPECT_GE(buffer.capacity(), 1001U);
    EXPECT_TRUE(eventsIn(buffer).empty());
}

TEST(EventBuffer, DoesNotTrustSizes)
{
    EventBuffer buffer(64);
    buffer.append(0, 7, note);
    buffer.sequence()->atom.size = 0x7FFFFFFF;
    EXPECT_TRUE(eventsIn(buffer).empty());
    buffer.sequence()->atom.size = 3;
    EXPECT_TRUE(eventsIn(buffer).empty());

    buffer.clear();
    buffer.append(0, 7, note);
    auto *event = reinterpret_cast<LV2_Atom_Event *>(buffer.sequence() + 1);
    event->body.size = 0xFFFFFFFF;
    EXPECT_TRUE(eventsIn(buffer).empty());
}
