#include "MIDI/MyMetaEvent.hpp"

#include "MIDI/MIDIConstants.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <numeric>
#include <span>
#include <stdexcept>
#include <type_traits>
#include <vector>

#include <sys/mman.h>

namespace
{

using Bytes = std::vector<std::uint8_t>;
using ::testing::Each;
using ::testing::ElementsAre;

/// All bytes of the block, whose end lies 4 past the data.
Bytes blockOf(const MyMetaEvent &event)
{
    Bytes bytes;
    event.withMIDIMetaEventPtr([&](const MIDIMetaEvent *record) {
        const auto *const first = reinterpret_cast<const std::uint8_t *>(record);
        bytes.assign(first, first + record->dataLength + 12);
    });
    return bytes;
}

TEST(MyMetaEvent, LaysOutAnEndOfTrack)
{
    const MyMetaEvent event(META_EOT, Bytes{});
    EXPECT_THAT(blockOf(event), ElementsAre(0x2F, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0));
}

TEST(MyMetaEvent, LaysOutATempo)
{
    const MyMetaEvent event(META_SETTEMPO, Bytes{0x07, 0xA1, 0x20});
    // The length stands in the machine's order.
    const std::uint32_t length = 3;
    Bytes expected{0x51, 0, 0, 0, 0, 0, 0, 0, 0x07, 0xA1, 0x20, 0, 0, 0, 0};
    std::memcpy(&expected[4], &length, sizeof length);
    EXPECT_EQ(blockOf(event), expected);
}

TEST(MyMetaEvent, ShowsTheBlockAsARecord)
{
    const MyMetaEvent event(META_MARKER, Bytes{'A', 'B'});
    event.withMIDIMetaEventPtr([](const MIDIMetaEvent *record) {
        EXPECT_EQ(record->metaEventType, META_MARKER);
        EXPECT_THAT(record->unused, Each(0));
        EXPECT_EQ(record->dataLength, 2U);
        EXPECT_EQ(record->data[0], 'A');
        EXPECT_EQ((&record->data[0])[1], 'B');
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(record) % alignof(MIDIMetaEvent), 0U);
    });
}

TEST(MyMetaEvent, HoldsEveryTypeAndEveryByte)
{
    Bytes all(256);
    std::iota(all.begin(), all.end(), std::uint8_t{0});
    for (const std::uint8_t type : all) {
        const Bytes block = blockOf(MyMetaEvent(type, all));
        ASSERT_EQ(block[0], type);
        ASSERT_EQ(Bytes(block.begin() + 8, block.end() - 4), all);
        ASSERT_THAT(Bytes(block.end() - 4, block.end()), Each(0));
    }
}

TEST(MyMetaEvent, KeepsItsOwnCopyOfTheData)
{
    Bytes data{1, 2, 3};
    const MyMetaEvent event(META_TEXT, data);
    data.assign(3, 9);
    data = Bytes();
    const Bytes block = blockOf(event);
    EXPECT_EQ(Bytes(block.begin() + 8, block.end()), (Bytes{1, 2, 3, 0, 0, 0, 0}));
}

TEST(MyMetaEvent, ShowsTheSameBlockToEveryOwner)
{
    static_assert(!std::is_copy_constructible_v<MyMetaEvent>);
    static_assert(!std::is_move_constructible_v<MyMetaEvent>);
    auto first = std::make_shared<MyMetaEvent>(META_TEXT, Bytes{1});
    const auto second = first;
    const MIDIMetaEvent *seenByFirst = nullptr;
    first->withMIDIMetaEventPtr([&](const MIDIMetaEvent *record) { seenByFirst = record; });
    first.reset();
    second->withMIDIMetaEventPtr(
        [&](const MIDIMetaEvent *record) { EXPECT_EQ(record, seenByFirst); });
}

TEST(MyMetaEvent, PassesOnAnExceptionOfTheBody)
{
    const MyMetaEvent event(META_TEXT, Bytes{1});
    EXPECT_THROW(
        event.withMIDIMetaEventPtr([](const MIDIMetaEvent *) { throw std::runtime_error("no"); }),
        std::runtime_error);
}

TEST(MyMetaEvent, PassesItsSelfTestInSilence)
{
    ::testing::internal::CaptureStdout();
    test_MyMetaEvent();
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
}

class MyMetaEventDeathTest : public ::testing::Test
{
protected:
    MyMetaEventDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

    static constexpr const char *message =
        "Fatal error: A number is beyond the range of the integer that it is to become";
};

TEST_F(MyMetaEventDeathTest, MoreDataThanTheLengthCanTellIsFatal)
{
    // Addresses without memory behind them: nothing may look at the data.
    constexpr std::size_t tooLong = std::size_t{1} << 32U;
    void *const reserved =
        mmap(nullptr, tooLong, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(reserved, MAP_FAILED);
    const std::span data(static_cast<const std::uint8_t *>(reserved), tooLong);
    EXPECT_DEATH(MyMetaEvent(META_TEXT, data), message);
    munmap(reserved, tooLong);
}

TEST_F(MyMetaEventDeathTest, ASizeBeyondTheCountersRangeIsFatal)
{
    constexpr auto longest = static_cast<std::size_t>(std::numeric_limits<std::int64_t>::max());
    const std::uint8_t byte = 0;
    EXPECT_DEATH(MyMetaEvent(META_TEXT, std::span(&byte, longest - 11)),
                 "Fatal error: Arithmetic overflow");
    EXPECT_DEATH(MyMetaEvent(META_TEXT, std::span(&byte, longest + 1)), message);
}

} // namespace
