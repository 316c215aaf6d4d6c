#include "Tests/Platform/Audio/Files/AudioFiles.hpp"

#include <algorithm>
#include <filesystem>
#include <random>

namespace
{

/// 48 s of stereo are more than the reader keeps decoded, two seconds less.
constexpr int longFrames = 48 * 44'100 + 123;
constexpr int shortFrames = 2 * 44'100 + 123;

TEST_F(AudioFiles, ReadsInPiecesOfAnySize)
{
    encode("sound.m4a", 44'100, 2, shortFrames, "-c:a aac");
    AVAudioFile file(url("sound.m4a"));
    const Samples whole = readAll(file);
    for (const std::uint32_t step : {1U, 7U, 1'024U, 8'192U, 200'000U}) {
        file.setFramePosition(0);
        EXPECT_TRUE(readFrames(file, file.length() + 1, step) == whole) << step;
    }
}

TEST_F(AudioFiles, ReadsNoMoreThanAskedAndThanFits)
{
    encode("sound.m4a", 44'100, 2, shortFrames, "-c:a aac");
    AVAudioFile file(url("sound.m4a"));
    AVAudioPCMBuffer buffer(*file.processingFormat(), 100);
    file.read(buffer, 30);
    EXPECT_EQ(buffer.frameLength(), 30U);
    EXPECT_EQ(file.framePosition(), 30);
    file.read(buffer, 5'000);
    EXPECT_EQ(buffer.frameLength(), 100U);
    EXPECT_EQ(file.framePosition(), 130);
    file.setFramePosition(file.length() - 40);
    file.read(buffer, 100);
    EXPECT_EQ(buffer.frameLength(), 40U);
    file.read(buffer, 100);
    EXPECT_EQ(buffer.frameLength(), 0U);
}

TEST_F(AudioFiles, BringsPositionsOutsideToTheEnds)
{
    encode("sound.m4a", 44'100, 1, shortFrames, "-c:a aac");
    AVAudioFile file(url("sound.m4a"));
    file.setFramePosition(-5);
    EXPECT_EQ(file.framePosition(), 0);
    file.setFramePosition(std::int64_t{1} << 60);
    EXPECT_EQ(file.framePosition(), shortFrames);
}

TEST_F(AudioFiles, RefusesABufferOfAnotherFormat)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    encode("sound.wav", 44'100, 2, 100, "-c:a pcm_s16le");
    AVAudioFile file(url("sound.wav"));
    AVAudioPCMBuffer mono(AVAudioFormat(44'100.0, 1), 100);
    EXPECT_DEATH(file.read(mono, 100), "buffer of another format");
}

TEST_F(AudioFiles, LoopsTenTimesTheSame)
{
    encode("sound.m4a", 44'100, 2, shortFrames, "-c:a aac");
    const Samples expected = part(decode("sound.m4a"), 0, shortFrames, 2);
    AVAudioFile file(url("sound.m4a"));
    for (int turn = 0; turn < 10; ++turn)
        EXPECT_TRUE(readAll(file) == expected) << turn;
}

TEST_F(AudioFiles, LoopsALongFileTheSame)
{
    encode("sound.m4a", 44'100, 2, longFrames, "-c:a aac");
    const Samples expected = part(decode("sound.m4a"), 0, longFrames, 2);
    AVAudioFile file(url("sound.m4a"));
    EXPECT_EQ(file.length(), longFrames);
    for (int turn = 0; turn < 3; ++turn)
        EXPECT_TRUE(readAll(file) == expected) << turn;
}

class Positions : public AudioFiles,
                  public testing::WithParamInterface<std::tuple<const char *, int>>
{
};

// Noise substitution is off in the AAC file: its noise depends on all that was
// decoded before, the rest of the sound does not.
TEST_P(Positions, AreExactToTheFrame)
{
    const auto [codec, frames] = GetParam();
    const std::string name = std::string("sound.") + codec;
    encode(name, 44'100, 2, frames, std::string(codec) == "m4a" ? "-c:a aac -aac_pns 0" : "");
    AVAudioFile file(url(name));
    const Samples whole = readAll(file);

    std::mt19937 random(1);
    std::uniform_int_distribution<std::int64_t> anywhere(0, frames - 1);
    std::vector<std::int64_t> positions = {0, 1, 1'023, 1'024, frames - 1, frames / 2, 5, 30'000};
    for (int i = 0; i < 20; ++i)
        positions.push_back(anywhere(random));
    for (const std::int64_t position : positions) {
        file.setFramePosition(position);
        EXPECT_EQ(file.framePosition(), position);
        EXPECT_TRUE(readFrames(file, 3'000) == part(whole, position, 3'000, 2)) << position;
        EXPECT_EQ(file.framePosition(), std::min<std::int64_t>(position + 3'000, frames));
    }
}

INSTANTIATE_TEST_SUITE_P(AudioFiles, Positions,
                         testing::Combine(testing::Values("m4a", "wav", "flac", "mp3"),
                                          testing::Values(shortFrames, longFrames)));

TEST_F(AudioFiles, ReadsAFileThatHasVanished)
{
    for (const int frames : {shortFrames, longFrames}) {
        encode("sound.m4a", 44'100, 2, frames, "-c:a aac");
        const Samples expected = part(decode("sound.m4a"), 0, frames, 2);
        AVAudioFile file(url("sound.m4a"));
        readFrames(file, 1'000);
        std::filesystem::remove(path("sound.m4a"));
        EXPECT_TRUE(readAll(file) == expected);
        EXPECT_TRUE(readAll(file) == expected);
    }
}

TEST_F(AudioFiles, EndsEarlyInAFileThatShrinks)
{
    // The shorter is kept decoded, and yet more than is read from a file at once.
    for (const int frames : {20 * 44'100, longFrames}) {
        encode("sound.m4a", 44'100, 2, frames, "-c:a aac -movflags +faststart");
        const Samples expected = decode("sound.m4a");
        AVAudioFile file(url("sound.m4a"));
        const Samples start = readFrames(file, 1'000);
        std::filesystem::resize_file(path("sound.m4a"),
                                     std::filesystem::file_size(path("sound.m4a")) / 2);
        const Samples rest = readFrames(file, file.length());
        EXPECT_LT(file.framePosition(), file.length());
        EXPECT_TRUE(rest == part(expected, 1'000, static_cast<std::int64_t>(rest.size()) / 2, 2));
        // Where it ended it stays ended, and the start can be read again.
        EXPECT_TRUE(readFrames(file, 1).empty());
        file.setFramePosition(0);
        EXPECT_TRUE(readFrames(file, 1'000) == start);
    }
}

TEST_F(AudioFiles, IsNotDisturbedByAFileThatGrows)
{
    encode("sound.m4a", 44'100, 2, longFrames, "-c:a aac");
    const Samples expected = part(decode("sound.m4a"), 0, longFrames, 2);
    AVAudioFile file(url("sound.m4a"));
    readFrames(file, 1'000);
    Bytes bytes = bytesOf(path("sound.m4a"));
    bytes.insert(bytes.end(), 100'000, 0x5a);
    writeBytes(path("sound.m4a"), bytes);
    EXPECT_TRUE(readAll(file) == expected);
}

TEST_F(AudioFiles, EndsInAFileReplacedByText)
{
    encode("sound.m4a", 44'100, 2, longFrames, "-c:a aac");
    AVAudioFile file(url("sound.m4a"));
    readFrames(file, 1'000);
    writeText(path("sound.m4a"), "Nothing to hear here.");
    readFrames(file, file.length());
    EXPECT_LT(file.framePosition(), file.length());
    EXPECT_TRUE(readAll(file).empty());
}

} // namespace
