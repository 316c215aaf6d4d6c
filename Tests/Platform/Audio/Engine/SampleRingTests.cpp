#include "Platform/Audio/SampleRing.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <thread>
#include <vector>

namespace
{

using platform::audio::SampleRing;

// Reads up to `frames` frames out of the ring.
std::uint32_t read(SampleRing &ring, float *const *channels, std::uint32_t frames)
{
    const std::uint32_t count = std::min({frames, ring.available(), ring.largestBlock()});
    for (std::uint32_t channel = 0; channel < ring.format().channelCount(); ++channel)
        std::copy_n(ring.front(count)[channel], count, channels[channel]);
    ring.take(count);
    return count;
}

TEST(SampleRing, TakesWhatFitsAndGivesWhatIsThere)
{
    SampleRing ring(AVAudioFormat(48000, 2), 4, 4);
    const std::array<float, 6> left{0, 1, 2, 3, 4, 5};
    const std::array<float, 6> right{10, 11, 12, 13, 14, 15};
    const std::array<const float *, 2> in{left.data(), right.data()};
    EXPECT_EQ(ring.write(in.data(), 1, 5), 4U);
    EXPECT_EQ(ring.space(), 0U);
    EXPECT_EQ(ring.available(), 4U);

    std::array<float, 8> outLeft{};
    std::array<float, 8> outRight{};
    const std::array<float *, 2> out{outLeft.data(), outRight.data()};
    EXPECT_EQ(read(ring, out.data(), 8), 4U);
    EXPECT_EQ(outLeft, (std::array<float, 8>{1, 2, 3, 4}));
    EXPECT_EQ(outRight, (std::array<float, 8>{11, 12, 13, 14}));
    EXPECT_EQ(read(ring, out.data(), 8), 0U);
}

TEST(SampleRing, ABlockLiesInOnePieceWhereverItBegins)
{
    SampleRing ring(AVAudioFormat(48000, 1), 14, 7);
    float next = 0;
    float expected = 0;
    for (int turn = 0; turn < 50; ++turn) {
        std::array<float, 5> frames{};
        for (float &frame : frames)
            frame = next++;
        const float *const in = frames.data();
        ASSERT_EQ(ring.write(&in, 0, 5), 5U);
        for (std::uint32_t index = 0; index < 5; ++index)
            ASSERT_EQ(ring.front(5)[0][index], expected++);
        ring.take(5);
    }
}

TEST(SampleRing, IsWrittenWhereItsFramesLie)
{
    SampleRing ring(AVAudioFormat(48000, 1), 8, 4);
    std::vector<float> heard;
    float next = 0;
    while (heard.size() < 100) {
        const SampleRing::Room room = ring.back();
        const std::uint32_t written = std::min(room.frames, 3U);
        ASSERT_GT(written, 0U);
        for (std::uint32_t index = 0; index < written; ++index)
            room.channels[0][index] = next++;
        ring.add(written);
        std::array<float, 4> block{};
        float *const out = block.data();
        const std::uint32_t count = read(ring, &out, 4);
        heard.insert(heard.end(), block.begin(), block.begin() + count);
    }
    for (std::size_t index = 0; index < heard.size(); ++index)
        ASSERT_EQ(heard[index], static_cast<float>(index));
}

TEST(SampleRing, HasRoomInOnePieceUpToItsEnd)
{
    SampleRing ring(AVAudioFormat(48000, 1), 8, 4);
    EXPECT_EQ(ring.back().frames, 8U);
    ring.add(6);
    EXPECT_EQ(ring.back().frames, 2U);
    ring.take(4);
    EXPECT_EQ(ring.back().frames, 2U);
    ring.add(2);
    EXPECT_EQ(ring.back().frames, 4U);
    ring.add(4);
    EXPECT_EQ(ring.back().frames, 0U);
}

TEST(SampleRing, KeepsOrderAndChannelsTogetherBetweenTwoThreads)
{
    constexpr std::uint32_t total = 200000;
    SampleRing ring(AVAudioFormat(48000, 2), 100, 13);
    std::thread writer([&ring] {
        std::array<float, 17> left{};
        std::array<float, 17> right{};
        const std::array<const float *, 2> in{left.data(), right.data()};
        for (std::uint32_t next = 0; next < total;) {
            for (std::uint32_t index = 0; index < 17; ++index) {
                left[index] = static_cast<float>(next + index);
                right[index] = -left[index];
            }
            next += ring.write(in.data(), 0, std::min(17U, total - next));
            if (ring.space() == 0)
                std::this_thread::yield();
        }
    });
    std::array<float, 13> left{};
    std::array<float, 13> right{};
    const std::array<float *, 2> out{left.data(), right.data()};
    std::uint32_t wrong = 0;
    for (std::uint32_t next = 0; next < total;) {
        const std::uint32_t count = read(ring, out.data(), 13);
        for (std::uint32_t index = 0; index < count; ++index, ++next)
            if (left[index] != static_cast<float>(next) || right[index] != -left[index])
                ++wrong;
        if (count == 0)
            std::this_thread::yield();
    }
    writer.join();
    EXPECT_EQ(wrong, 0U);
}

} // namespace
