#include "Tests/Platform/Audio/Files/AudioFiles.hpp"

#include "Platform/Audio/AVAudioFormat.hpp"

#include <algorithm>
#include <ostream>

namespace
{

struct Coding {
    const char *extension;
    const char *codec;
    /// The container states how many frames were encoded.
    bool tellsLength;
};

std::ostream &operator<<(std::ostream &out, const Coding &coding)
{
    return out << coding.extension << " " << coding.codec;
}

class Codings : public AudioFiles, public testing::WithParamInterface<Coding>
{
};

TEST_P(Codings, DecodeToTheSameBitsAsFFmpegsCommand)
{
    constexpr int frames = 100'123;
    const std::string name = std::string("sound.") + GetParam().extension;
    encode(name, 48'000, 2, frames, GetParam().codec);
    const Samples expected = decode(name);

    AVAudioFile file(url(name));
    EXPECT_EQ(file.processingFormat()->description(), "48000 Hz, 2 channels");
    if (GetParam().tellsLength)
        EXPECT_EQ(file.length(), frames);
    else
        EXPECT_EQ(file.length() * 2, static_cast<std::int64_t>(expected.size()));
    const Samples samples = readAll(file);
    EXPECT_EQ(samples.size(), static_cast<std::size_t>(file.length()) * 2);
    EXPECT_TRUE(samples == part(expected, 0, file.length(), 2));
    EXPECT_EQ(file.framePosition(), file.length());
}

INSTANTIATE_TEST_SUITE_P(
    AudioFiles, Codings,
    testing::Values(
        Coding{"m4a", "-c:a aac", true}, Coding{"m4a", "-c:a aac -movflags +faststart", true},
        Coding{"m4a", "-c:a aac -movie_timescale 48000", true},
        Coding{"m4a", "-c:a aac -movie_timescale 600", true},
        Coding{"m4a", "-c:a aac -movflags frag_keyframe+empty_moov", false},
        Coding{"m4a", "-c:a alac", true}, Coding{"mp4", "-c:a libopus", true},
        Coding{"mp4", "-c:a libmp3lame", true}, Coding{"mov", "-c:a aac", true},
        Coding{"mov", "-c:a pcm_s24be", true}, Coding{"wav", "-c:a pcm_u8", true},
        Coding{"wav", "-c:a pcm_s16le", true}, Coding{"wav", "-c:a pcm_s24le", true},
        Coding{"wav", "-c:a pcm_s32le", true}, Coding{"wav", "-c:a pcm_f32le", true},
        Coding{"wav", "-c:a pcm_f64le", true}, Coding{"wav", "-c:a pcm_s64le", true},
        Coding{"wav", "-c:a adpcm_ima_wav", false}, Coding{"w64", "-c:a pcm_s32le", true},
        Coding{"aiff", "-c:a pcm_s16be", true}, Coding{"au", "-c:a pcm_s16be", true},
        Coding{"caf", "-c:a pcm_s16le", true}, Coding{"flac", "-c:a flac -sample_fmt s16", true},
        Coding{"flac", "-c:a flac -sample_fmt s32", true}, Coding{"oga", "-c:a flac", true},
        Coding{"wv", "-c:a wavpack", true}, Coding{"mp3", "-c:a libmp3lame", true},
        Coding{"mp3", "-c:a libmp3lame -write_xing 0", false},
        Coding{"ogg", "-c:a libvorbis", true}, Coding{"opus", "-c:a libopus", true},
        Coding{"aac", "-c:a aac", false}, Coding{"wma", "-c:a wmav2", false},
        Coding{"ac3", "-c:a ac3", false}, Coding{"mkv", "-c:a aac", false}));

class Lengths : public AudioFiles, public testing::WithParamInterface<int>
{
};

TEST_P(Lengths, AreThoseThatWereEncoded)
{
    encode("sound.m4a", 44'100, 1, GetParam(), "-c:a aac");
    // FFmpeg's command drops all of an edit shorter than one tick of the movie's
    // clock; with edits ignored the priming of 1,024 frames stays.
    const Samples raw = decode("sound.m4a", "-ignore_editlist 1");

    AVAudioFile file(url("sound.m4a"));
    EXPECT_EQ(file.length(), GetParam());
    EXPECT_TRUE(readAll(file) == part(raw, 1'024, GetParam(), 1));
}

INSTANTIATE_TEST_SUITE_P(AudioFiles, Lengths,
                         testing::Values(1, 10, 44, 1'023, 1'024, 1'025, 44'099, 88'200, 88'217));

TEST_F(AudioFiles, ReadsEightKilohertzMono)
{
    encode("sound.m4a", 8'000, 1, 20'001, "-c:a aac");
    AVAudioFile file(url("sound.m4a"));
    EXPECT_EQ(*file.processingFormat(), AVAudioFormat(8'000.0, 1));
    EXPECT_EQ(file.length(), 20'001);
    EXPECT_TRUE(readAll(file) == part(decode("sound.m4a"), 0, 20'001, 1));
}

TEST_F(AudioFiles, ReadsSixChannelsAtNinetySixKilohertz)
{
    encode("sound.m4a", 96'000, 6, 96'001, "-c:a aac");
    AVAudioFile file(url("sound.m4a"));
    EXPECT_EQ(*file.processingFormat(), AVAudioFormat(96'000.0, 6));
    EXPECT_EQ(file.length(), 96'001);
    EXPECT_TRUE(readAll(file) == part(decode("sound.m4a"), 0, 96'001, 6));
}

TEST_F(AudioFiles, ReadsTheHighestRateAndTheMostChannels)
{
    Bytes bytes = wave(768'000, 64, 1'000);
    for (std::size_t i = 44; i < bytes.size(); ++i)
        bytes[i] = static_cast<std::uint8_t>(i * i / 7);
    writeBytes(path("sound.wav"), bytes);
    AVAudioFile file(url("sound.wav"));
    EXPECT_EQ(*file.processingFormat(), AVAudioFormat(768'000.0, 64));
    const Samples samples = readAll(file);
    EXPECT_EQ(samples.size(), static_cast<std::size_t>(file.length()) * 64);
    EXPECT_TRUE(samples == decode("sound.wav"));
}

TEST_F(AudioFiles, ReadsIntegersAsExactFractions)
{
    Bytes bytes = wave(44'100, 1, 4);
    std::copy_n(Bytes{0, 1, 127, 255}.begin(), 4, bytes.begin() + 44);
    writeBytes(path("sound.wav"), bytes);
    AVAudioFile file(url("sound.wav"));
    EXPECT_EQ(readAll(file), (Samples{-1.0F, -127.0F / 128, -1.0F / 128, 127.0F / 128}));
}

TEST_F(AudioFiles, PlaysTheSoundOfAFilmAndOfAFileWithACover)
{
    ffmpeg("-f lavfi -i testsrc=d=1:s=64x64:r=10 -f lavfi -i sine=d=1:r=48000 -c:v mpeg4 "
           "-c:a aac film.mp4");
    ffmpeg("-f lavfi -i testsrc=d=1:s=64x64:r=1 -frames:v 1 cover.png");
    ffmpeg("-i cover.png -f lavfi -i sine=d=1:r=48000 -map 1 -map 0 -c:v copy "
           "-disposition:v attached_pic -c:a aac cover.m4a");
    for (const char *name : {"film.mp4", "cover.m4a"}) {
        AVAudioFile file(url(name));
        EXPECT_EQ(file.length(), 48'000) << name;
        EXPECT_TRUE(readAll(file) == part(decode(name), 0, 48'000, 1)) << name;
    }
}

TEST_F(AudioFiles, CutsAnEditThatEndsBeforeTheMedia)
{
    encode("sound.m4a", 48'000, 2, 96'000, "-c:a aac");
    Bytes bytes = bytesOf(path("sound.m4a"));
    // The edit's duration, in the movie's milliseconds: 1.25 of 2 s.
    put32(bytes, find(bytes, "elst") + 12, 1'250);
    writeBytes(path("cut.m4a"), bytes);
    AVAudioFile file(url("cut.m4a"));
    EXPECT_EQ(file.length(), 60'000);
    EXPECT_TRUE(readAll(file) == part(decode("sound.m4a"), 0, 60'000, 2));
}

/// Adds what iTunes writes about priming and padding to the end of the tables,
/// which are the end of the file.
Bytes withGaplessInfo(Bytes bytes, const std::string &numbers)
{
    const auto box = [](std::string_view type, const std::string &content) {
        Bytes size(4);
        put32(size, 0, static_cast<std::uint32_t>(content.size() + 8));
        return std::string(size.begin(), size.end()) + std::string(type) + content;
    };
    const std::string zeros(4, '\0');
    const std::string info = box(
        "udta",
        box("meta", zeros + box("ilst", box("----", box("mean", zeros + "com.apple.iTunes") +
                                                        box("name", zeros + "iTunSMPB") +
                                                        box("data", zeros + zeros + numbers)))));
    const std::size_t tables = find(bytes, "moov") - 4;
    bytes.insert(bytes.end(), info.begin(), info.end());
    put32(bytes, tables, static_cast<std::uint32_t>(bytes.size() - tables));
    return bytes;
}

TEST_F(AudioFiles, ObeysITunesWhereThereIsNoEditList)
{
    // 88,200 frames (15888), led by 1,024 (400) and followed by 888 (378).
    encode("sound.m4a", 44'100, 2, 88'200, "-c:a aac -use_editlist 0");
    const Samples raw = decode("sound.m4a");
    const Bytes bytes = bytesOf(path("sound.m4a"));
    writeBytes(path("itunes.m4a"),
               withGaplessInfo(bytes, " 00000000 00000400 00000378 0000000000015888 00000000"));
    AVAudioFile file(url("itunes.m4a"));
    EXPECT_EQ(file.length(), 88'200);
    EXPECT_TRUE(readAll(file) == part(raw, 1'024, 88'200, 2));

    AVAudioFile plain(url("sound.m4a"));
    EXPECT_EQ(plain.length(), 1'024 + 88'200);
}

TEST_F(AudioFiles, IgnoresGaplessNumbersThatCannotBe)
{
    encode("sound.m4a", 44'100, 1, 44'100, "-c:a aac");
    const Bytes bytes = bytesOf(path("sound.m4a"));
    for (const char *numbers :
         {"", " ", " 0 400 0", " 0 400 0 FFFFFFFFFFFFFFFF", " 0 400 0 0", " 0 FFFFFFFF 0 10",
          " 0 7FFFFFFFFFFFFFFF 0 7FFFFFFFFFFFFFFF", " 0 401 0 10", " nothing to read"}) {
        writeBytes(path("itunes.m4a"), withGaplessInfo(bytes, numbers));
        AVAudioFile file(url("itunes.m4a"));
        EXPECT_EQ(file.length(), 44'100) << numbers;
    }
}

} // namespace
