#include "Platform/Effect Process/LinkEvents.hpp"

#include <gmock/gmock.h>

#include <array>
#include <cstring>
#include <vector>

using platform::effect::LinkEvent;
using platform::effect::LinkEventWriter;
using platform::effect::readLinkEvent;

namespace
{

const std::array<std::uint8_t, 3> note{0x90, 60, 100};
const std::array<std::uint8_t, 9> longer{0xF0, 1, 2, 3, 4, 5, 6, 7, 0xF7};

} // namespace

TEST(LinkEvents, AreReadAsTheyWereWritten)
{
    alignas(8) std::array<std::byte, 256> room{};
    LinkEventWriter writer(room);
    EXPECT_TRUE(writer.append({17, 0, note}));
    EXPECT_TRUE(writer.append({-5, 3, longer}));
    EXPECT_TRUE(writer.append({1LL << 40, 0, {}}));

    std::span<const std::byte> events(room.data(), writer.size());
    LinkEvent event;
    ASSERT_TRUE(readLinkEvent(events, event));
    EXPECT_EQ(event.time, 17);
    EXPECT_EQ(event.output, 0U);
    EXPECT_THAT(event.bytes, testing::ElementsAreArray(note));
    ASSERT_TRUE(readLinkEvent(events, event));
    EXPECT_EQ(event.time, -5);
    EXPECT_EQ(event.output, 3U);
    EXPECT_THAT(event.bytes, testing::ElementsAreArray(longer));
    ASSERT_TRUE(readLinkEvent(events, event));
    EXPECT_EQ(event.time, 1LL << 40);
    EXPECT_TRUE(event.bytes.empty());
    EXPECT_FALSE(readLinkEvent(events, event));
    EXPECT_TRUE(events.empty());
}

TEST(LinkEvents, AreWrittenWholeOrNotAtAll)
{
    alignas(8) std::array<std::byte, 40> room{};
    LinkEventWriter writer(room);
    EXPECT_TRUE(writer.append({0, 0, note})); // 16 + 8
    const std::uint32_t before = writer.size();
    EXPECT_EQ(before, 24U);
    EXPECT_FALSE(writer.append({0, 0, note}));
    EXPECT_EQ(writer.size(), before);
}

TEST(LinkEvents, EndWhereSizesLie)
{
    alignas(8) std::array<std::byte, 64> room{};
    LinkEventWriter writer(room);
    writer.append({0, 0, note});
    for (const std::uint32_t lie : {9U, 48U, 1U << 20U, 0xFFFFFFFFU}) {
        std::memcpy(room.data() + 12, &lie, sizeof lie);
        std::span<const std::byte> events(room.data(), 24);
        LinkEvent event;
        EXPECT_FALSE(readLinkEvent(events, event)) << lie;
        EXPECT_FALSE(events.empty());
    }
    for (std::size_t cut = 1; cut < 24; ++cut) {
        const std::uint32_t truth = 3;
        std::memcpy(room.data() + 12, &truth, sizeof truth);
        std::span<const std::byte> events(room.data(), cut);
        LinkEvent event;
        EXPECT_FALSE(readLinkEvent(events, event)) << cut;
    }
}
