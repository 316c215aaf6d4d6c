#include "Platform/LV2/MidiInput.hpp"
#include "Platform/LV2/EventBuffer.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

using platform::lv2::EventBuffer;
using platform::lv2::isWholeMidiMessage;
using platform::lv2::MidiInput;

namespace
{

using Bytes = std::vector<std::uint8_t>;

Bytes note(std::uint8_t key)
{
    return {0x90, key, 100};
}

std::vector<std::pair<std::int64_t, Bytes>> drained(MidiInput &input, std::uint32_t frames,
                                                    std::uint32_t capacity = 65536)
{
    EventBuffer buffer(capacity);
    input.drainInto(buffer, frames);
    std::vector<std::pair<std::int64_t, Bytes>> events;
    buffer.forEach([&](const EventBuffer::Event &event) {
        events.emplace_back(event.frame, Bytes(event.bytes.begin(), event.bytes.end()));
    });
    return events;
}

} // namespace

TEST(MidiInput, KnowsWholeMessages)
{
    for (const Bytes &whole :
         {Bytes{0x90, 60, 100}, Bytes{0xC0, 5}, Bytes{0xD5, 5}, Bytes{0xF8}, Bytes{0xFE},
          Bytes{0xF2, 1, 2}, Bytes{0xF3, 1}, Bytes{0xF0, 0xF7}, Bytes{0xF0, 1, 2, 0xF7}})
        EXPECT_TRUE(isWholeMidiMessage(whole)) << static_cast<int>(whole[0]);
    for (const Bytes &broken :
         {Bytes{}, Bytes{60}, Bytes{0x90, 60}, Bytes{0x90, 60, 100, 1}, Bytes{0x90, 0x90, 1},
          Bytes{0xC0, 5, 5}, Bytes{0xF0}, Bytes{0xF0, 1}, Bytes{0xF0, 0x80, 0xF7}, Bytes{0xF7},
          Bytes{0xF9}, Bytes{0xF8, 1}})
        EXPECT_FALSE(isWholeMidiMessage(broken));
}

TEST(MidiInput, OrdersByFrameThenByArrival)
{
    MidiInput input;
    EXPECT_TRUE(input.push(30, note(1)));
    EXPECT_TRUE(input.push(10, note(2)));
    EXPECT_TRUE(input.push(10, note(3)));
    EXPECT_TRUE(input.push(900, note(4)));
    const auto events = drained(input, 64);
    ASSERT_EQ(events.size(), 4U);
    EXPECT_EQ(events[0], std::pair(std::int64_t{10}, note(2)));
    EXPECT_EQ(events[1], std::pair(std::int64_t{10}, note(3)));
    EXPECT_EQ(events[2], std::pair(std::int64_t{30}, note(1)));
    EXPECT_EQ(events[3], std::pair(std::int64_t{63}, note(4)));
    EXPECT_TRUE(drained(input, 64).empty());
}

TEST(MidiInput, RefusesWhatIsTooMuch)
{
    MidiInput input;
    Bytes dump(MidiInput::longestMessage + 1, 0);
    dump.front() = 0xF0;
    dump.back() = 0xF7;
    EXPECT_FALSE(input.push(0, dump));
    for (std::size_t i = 0; i < MidiInput::slotCount; ++i)
        EXPECT_TRUE(input.push(0, note(1)));
    EXPECT_FALSE(input.push(0, note(1)));
    EXPECT_EQ(drained(input, 64).size(), MidiInput::slotCount);
    EXPECT_TRUE(input.push(0, note(1)));
}

TEST(MidiInput, LeadsTheNextBlockWithWhatFoundNoRoom)
{
    MidiInput input;
    input.push(40, note(1));
    input.push(20, note(2));
    input.push(0, note(3));
    constexpr std::uint32_t roomForOne = 16 + 24;
    EXPECT_EQ(drained(input, 64, roomForOne).at(0).second, note(3));
    input.push(0, note(4));
    const auto events = drained(input, 64);
    ASSERT_EQ(events.size(), 3U);
    EXPECT_EQ(events[0], std::pair(std::int64_t{0}, note(2)));
    EXPECT_EQ(events[1], std::pair(std::int64_t{0}, note(1)));
    EXPECT_EQ(events[2], std::pair(std::int64_t{0}, note(4)));
}

TEST(MidiInput, LosesNothingBetweenThreads)
{
    MidiInput input;
    constexpr int perThread = 3000;
    std::vector<std::thread> senders;
    std::atomic<int> done{0};
    for (std::uint8_t sender = 0; sender < 3; ++sender)
        senders.emplace_back([&, sender] {
            for (int i = 0; i < perThread; ++i) {
                const Bytes message{static_cast<std::uint8_t>(0x90 + sender),
                                    static_cast<std::uint8_t>(i / 128 % 128),
                                    static_cast<std::uint8_t>(i % 128)};
                while (!input.push(0, message))
                    std::this_thread::yield();
            }
            ++done;
        });
    std::vector<int> next(3, 0);
    while (true) {
        const bool wasDone = done == 3;
        for (const auto &[frame, bytes] : drained(input, 64)) {
            int &expected = next[bytes[0] - 0x90U];
            EXPECT_EQ(bytes[1] * 128 + bytes[2], expected % (128 * 128));
            ++expected;
        }
        if (wasDone)
            break;
        std::this_thread::yield();
    }
    for (std::thread &sender : senders)
        sender.join();
    EXPECT_EQ(next, std::vector<int>(3, perThread));
}
