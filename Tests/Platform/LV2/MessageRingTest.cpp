#include "Platform/LV2/MessageRing.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>
#include <vector>

using platform::lv2::MessageRing;

namespace
{

std::vector<std::byte> bytes(std::size_t size, unsigned char value)
{
    return std::vector<std::byte>(size, static_cast<std::byte>(value));
}

std::vector<std::byte> copyOf(std::span<const std::byte> message)
{
    return {message.begin(), message.end()};
}

} // namespace

TEST(MessageRing, KeepsOrderAndSizes)
{
    MessageRing ring(64);
    EXPECT_FALSE(ring.read());
    EXPECT_TRUE(ring.write(bytes(3, 1)));
    EXPECT_TRUE(ring.write({}));
    EXPECT_TRUE(ring.write(bytes(5, 2), bytes(1, 3)));
    EXPECT_EQ(copyOf(ring.read().value()), bytes(3, 1));
    EXPECT_EQ(ring.read().value().size(), 0U);
    auto joined = bytes(5, 2);
    joined.push_back(std::byte{3});
    EXPECT_EQ(copyOf(ring.read().value()), joined);
    EXPECT_FALSE(ring.read());
}

TEST(MessageRing, TakesAMessageAsAWholeOrNotAtAll)
{
    MessageRing ring(32);
    EXPECT_FALSE(ring.write(bytes(29, 1)));
    EXPECT_FALSE(ring.read());
    EXPECT_TRUE(ring.write(bytes(ring.longestMessage(), 2)));
    EXPECT_FALSE(ring.write({}));
    EXPECT_EQ(ring.read().value().size(), ring.longestMessage());
    EXPECT_TRUE(ring.write(bytes(20, 3)));
}

TEST(MessageRing, NeverShowsThePartOfAMessage)
{
    MessageRing ring(1000);
    constexpr std::uint32_t count = 20000;
    std::thread writer([&ring] {
        for (std::uint32_t i = 0; i < count; ++i) {
            const auto message = bytes(1 + i % 200, static_cast<unsigned char>(i));
            while (!ring.write(message))
                std::this_thread::yield();
        }
    });
    for (std::uint32_t i = 0; i < count;) {
        const auto message = ring.read();
        if (!message) {
            std::this_thread::yield();
            continue;
        }
        EXPECT_EQ(copyOf(*message), bytes(1 + i % 200, static_cast<unsigned char>(i)));
        ++i;
    }
    writer.join();
    EXPECT_FALSE(ring.read());
}
