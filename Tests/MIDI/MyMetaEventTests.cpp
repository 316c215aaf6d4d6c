#include "MIDI/MyMetaEvent.hpp"

#include "MIDI/MIDIConstants.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <numeric>
#include <span>
#include <stdexcept>
#include <type_traits>
#include <vector>

#include <sys/mman.h>

namespace
{

/// What goes through the program's `new[]` and `delete[]`.
struct ArrayAllocations {
    std::size_t allocated = 0;
    std::size_t lastSize = 0; // bytes
    std::size_t freed = 0;
};
thread_local ArrayAllocations arrays;

} // namespace

// NOLINTBEGIN: stands before the library's own, which a program may replace.
void *operator new[](std::size_t size)
{
    ++arrays.allocated;
    arrays.lastSize = size;
    void *const block = std::malloc(size);
    if (block == nullptr)
        throw std::bad_alloc();
    // Memory is seldom empty: what nobody clears shows.
    std::memset(block, 0xA5, size);
    return block;
}

void operator delete[](void *block) noexcept
{
    arrays.freed += block != nullptr;
    std::free(block);
}

void operator delete[](void *block, std::size_t /*size*/) noexcept
{
    operator delete[](block);
}
// NOLINTEND

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
    EXPECT_EQ(arrays.lastSize, 12U);
    EXPECT_THAT(blockOf(event), ElementsAre(0x2F, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0));
}

TEST(MyMetaEvent, LaysOutATempo)
{
    const MyMetaEvent event(META_SETTEMPO, Bytes{0x07, 0xA1, 0x20});
    EXPECT_EQ(arrays.lastSize, 15U);
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

TEST(MyMetaEvent, TakesTwelveBytesMoreThanItsData)
{
    for (const std::size_t length : {0U, 1U, 2U, 3U, 4U, 5U, 7U, 8U, 9U, 4'095U, 65'536U}) {
        const Bytes data(length, 0xEE);
        arrays = {};
        const MyMetaEvent event(META_TEXT, data);
        EXPECT_EQ(arrays.allocated, 1U);
        EXPECT_EQ(arrays.lastSize, length + 12);
        const Bytes block = blockOf(event);
        EXPECT_THAT(Bytes(block.begin() + 8, block.end() - 4), Each(0xEE));
        EXPECT_THAT(Bytes(block.end() - 4, block.end()), Each(0));
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

TEST(MyMetaEvent, AllocatesOnceAndFreesOnce)
{
    const Bytes data(1 << 20, 0x2A);
    arrays = {};
    {
        const MyMetaEvent event(META_SPECIFIC, data);
        int calls = 0;
        event.withMIDIMetaEventPtr([&](const MIDIMetaEvent *) { ++calls; });
        EXPECT_EQ(calls, 1);
        EXPECT_EQ(arrays.allocated, 1U);
        EXPECT_EQ(arrays.freed, 0U);
    }
    EXPECT_EQ(arrays.allocated, 1U);
    EXPECT_EQ(arrays.freed, 1U);
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

TEST(MyMetaEvent, PassesItsSelfTest)
{
    arrays = {};
    ::testing::internal::CaptureStdout();
    test_MyMetaEvent();
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(arrays.allocated, arrays.freed);
    EXPECT_GE(arrays.allocated, 1U);
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
