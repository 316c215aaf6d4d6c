#include "MIDI/MIDIConstants.hpp"
#include "MIDI/MyMetaEvent.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

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

TEST(MyMetaEvent, TakesTwelveBytesMoreThanItsData)
{
    for (const std::size_t length : {0U, 1U, 2U, 3U, 4U, 5U, 7U, 8U, 9U, 4'095U, 65'536U}) {
        const Bytes data(length, 0xEE);
        arrays = {};
        const MyMetaEvent event(META_TEXT, data);
        EXPECT_EQ(arrays.allocated, 1U);
        EXPECT_EQ(arrays.lastSize, length + 12);
        event.withMIDIMetaEventPtr([&](const MIDIMetaEvent *record) {
            const std::uint8_t *const dataEnd = &record->data[0] + length;
            EXPECT_EQ(Bytes(&record->data[0], dataEnd), data);
            EXPECT_EQ(Bytes(dataEnd, dataEnd + 4), Bytes(4));
        });
    }
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

TEST(MyMetaEvent, GivesBackWhatItsSelfTestTook)
{
    arrays = {};
    test_MyMetaEvent();
    EXPECT_EQ(arrays.allocated, 1U);
    EXPECT_EQ(arrays.lastSize, 15U);
    EXPECT_EQ(arrays.freed, 1U);
}

} // namespace
