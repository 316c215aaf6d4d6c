#include "Tests/Platform/Audio/Files/AudioFiles.hpp"

#include "Platform/Foundation/PlatformError.hpp"

#include <algorithm>
#include <array>
#include <filesystem>
#include <optional>
#include <sys/resource.h>
#include <sys/stat.h>

namespace
{

/// Files that cannot be read as they should. Whatever happens, standard error
/// stays clean: it belongs to the program's own lines.
class BadInput : public AudioFiles
{
protected:
    void SetUp() override { testing::internal::CaptureStderr(); }
    void TearDown() override { EXPECT_EQ(testing::internal::GetCapturedStderr(), ""); }

    /// Why the file does not open; empty when it does.
    std::string fault(std::string_view name) const
    {
        try {
            const AVAudioFile file(url(name));
            return {};
        } catch (const PlatformError &error) {
            return error.what();
        }
    }

    /// An AAC file of 44,100 frames, its tables in front or at the end.
    Bytes sound(const std::string &options = "") const
    {
        encode("sound.m4a", 44'100, 1, 44'100, "-c:a aac " + options);
        return bytesOf(path("sound.m4a"));
    }

    std::string faultOf(const Bytes &bytes) const
    {
        writeBytes(path("bad.m4a"), bytes);
        return fault("bad.m4a");
    }
};

long peakMegabytes()
{
    struct rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1'024;
}

TEST_F(BadInput, IsNamedWhenItIsNotAFileOfSound)
{
    EXPECT_EQ(fault("missing.m4a"), "No such file or directory");

    writeText(path("empty.m4a"), "");
    EXPECT_EQ(fault("empty.m4a"), "The file is empty");

    writeText(path("text.m4a"), std::string(10'000, 'x'));
    EXPECT_EQ(fault("text.m4a"), "The file is damaged or not an audio file");

    writeText(path("short.m4a"), "x");
    EXPECT_EQ(fault("short.m4a"), "The file is damaged or not an audio file");

    std::filesystem::create_directory(path("folder.m4a"));
    EXPECT_EQ(fault("folder.m4a"), "Is a directory");

    ASSERT_EQ(mkfifo(path("fifo.m4a").c_str(), 0600), 0);
    EXPECT_EQ(fault("fifo.m4a"), "Not a regular file");

    std::filesystem::create_symlink("loop.m4a", path("loop.m4a"));
    EXPECT_EQ(fault("loop.m4a"), "Too many levels of symbolic links");
}

TEST_F(BadInput, IsRefusedWhenItIsNotAFileAtAll)
{
    for (const char *text : {"http://localhost/sound.m4a", "concat:sound.m4a", "pipe:0"}) {
        const std::optional<URL> location = URL::fromString(text);
        ASSERT_TRUE(location) << text;
        EXPECT_THROW(AVAudioFile file(*location), PlatformError) << text;
    }
    EXPECT_EQ(fault("http:"), "No such file or directory");
}

TEST_F(BadInput, OfPicturesAloneHoldsNoAudio)
{
    ffmpeg("-f lavfi -i testsrc=d=1:s=64x64:r=10 -c:v mpeg4 video.mp4");
    EXPECT_EQ(fault("video.mp4"), "There is no audio in the file");
}

TEST_F(BadInput, WithoutItsTablesDoesNotOpen)
{
    Bytes bytes = sound();
    bytes.resize(find(bytes, "moov") - 4);
    EXPECT_EQ(faultOf(bytes), "The file is damaged or not an audio file");
}

TEST_F(BadInput, WithoutItsSoundDoesNotOpen)
{
    Bytes bytes = sound("-movflags +faststart");
    bytes.resize(find(bytes, "mdat") + 4);
    EXPECT_EQ(faultOf(bytes), "The file is damaged: no audio can be decoded");
}

TEST_F(BadInput, CutInTheMiddlePlaysUntilThere)
{
    Bytes bytes = sound("-movflags +faststart");
    const Samples whole = decode("sound.m4a");
    const std::size_t data = find(bytes, "mdat");
    bytes.resize(data + (bytes.size() - data) / 2);
    writeBytes(path("cut.m4a"), bytes);

    AVAudioFile file(url("cut.m4a"));
    EXPECT_EQ(file.length(), 44'100);
    const Samples samples = readAll(file);
    EXPECT_GT(samples.size(), 15'000U);
    EXPECT_LT(samples.size(), 30'000U);
    EXPECT_TRUE(samples == part(whole, 0, static_cast<std::int64_t>(samples.size()), 1));
    EXPECT_TRUE(readFrames(file, 1).empty());
}

TEST_F(BadInput, WithZerosForSoundEndsWhereTheyBegin)
{
    Bytes bytes = sound("-movflags +faststart");
    const Samples whole = decode("sound.m4a");
    const std::size_t data = find(bytes, "mdat");
    const std::size_t middle = data + (bytes.size() - data) / 2;
    std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(middle), bytes.end(), std::uint8_t{0xff});
    writeBytes(path("bad.m4a"), bytes);
    AVAudioFile file(url("bad.m4a"));
    const Samples samples = readAll(file);
    EXPECT_LT(samples.size(), 30'000U);
    EXPECT_GT(samples.size(), 10'000U);
}

TEST_F(BadInput, OfZeroFramesIsAnEmptyFile)
{
    writeBytes(path("empty.wav"), wave(44'100, 2, 0));
    Bytes bytes = sound();
    for (const char *table : {"stts", "stsc", "stco"})
        put32(bytes, find(bytes, table) + 8, 0);
    put32(bytes, find(bytes, "stsz") + 12, 0);
    put32(bytes, find(bytes, "elst") + 12, 0);
    put32(bytes, find(bytes, "elst") + 16, 0);
    writeBytes(path("empty.m4a"), bytes);

    for (const char *name : {"empty.wav", "empty.m4a"}) {
        AVAudioFile file(url(name));
        EXPECT_EQ(file.length(), 0) << name;
        EXPECT_EQ(file.processingFormat()->sampleRate(), 44'100.0) << name;
        file.setFramePosition(10);
        EXPECT_EQ(file.framePosition(), 0) << name;
        EXPECT_TRUE(readAll(file).empty()) << name;
    }
}

TEST_F(BadInput, OfAbsurdFormatIsRefused)
{
    writeBytes(path("rate.wav"), wave(1'000'000'000, 1, 1'000));
    EXPECT_EQ(fault("rate.wav"), "A sample rate of 1000000000 Hz is not supported");
    writeBytes(path("still.wav"), wave(0, 1, 1'000));
    EXPECT_NE(fault("still.wav"), "");
    writeBytes(path("channels.wav"), wave(44'100, 10'000, 4));
    EXPECT_EQ(fault("channels.wav"), "Audio with 10000 channels is not supported");
    writeBytes(path("none.wav"), wave(44'100, 0, 1'000));
    EXPECT_NE(fault("none.wav"), "");
}

TEST_F(BadInput, OfAbsurdLengthIsReadForWhatItHolds)
{
    // 2^31 - 1 samples of 2^29 ticks each: 2^60 frames.
    Bytes bytes = sound();
    const std::size_t times = find(bytes, "stts");
    put32(bytes, times + 12, 0x7fffffff);
    put32(bytes, times + 16, 0x20000000);
    put32(bytes, find(bytes, "elst") + 12, 0);
    writeBytes(path("long.m4a"), bytes);
    try {
        AVAudioFile file(url("long.m4a"));
        EXPECT_GT(file.length(), std::int64_t{1} << 59);
        EXPECT_LT(readAll(file).size(), 50'000U);
        file.setFramePosition(file.length() - 1);
        EXPECT_TRUE(readFrames(file, 1).empty());
    } catch (const PlatformError &error) {
        EXPECT_STRNE(error.what(), "");
    }

    // More than a signed count of 64 bits holds.
    put32(bytes, times + 8, 2);
    put32(bytes, times + 12, 0xffffffff);
    put32(bytes, times + 16, 0xffffffff);
    EXPECT_NE(faultOf(bytes), "");
}

TEST_F(BadInput, ThatClaimsMoreSamplesThanBytesIsRefusedBeforeItCostsMemory)
{
    const long before = peakMegabytes();
    Bytes bytes = sound();
    const std::size_t sizes = find(bytes, "stsz");
    put32(bytes, sizes + 8, 1);
    put32(bytes, sizes + 12, 150'000'000);
    put32(bytes, find(bytes, "stsc") + 16, 150'000'000);
    EXPECT_EQ(faultOf(bytes), "The file is damaged: its tables claim more than it can hold");

    Bytes fragments = sound("-movflags frag_keyframe+empty_moov");
    put32(fragments, find(fragments, "trun") + 8, 150'000'000);
    EXPECT_EQ(faultOf(fragments), "The file is damaged: its tables claim more than it can hold");
    EXPECT_LT(peakMegabytes() - before, 300);
}

TEST_F(BadInput, ThatClaimsAHeaderOfGigabytesIsRefusedBeforeItCostsMemory)
{
    const long before = peakMegabytes();
    Bytes bytes = wave(44'100, 1, 1'000);
    // Little-endian: 1,920,204,816 bytes.
    const std::size_t size = find(bytes, "fmt ") + 4;
    const std::array<std::uint8_t, 4> claimed = {0x10, 0x00, 0x74, 0x72};
    std::copy(claimed.begin(), claimed.end(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
    writeBytes(path("header.wav"), bytes);
    EXPECT_EQ(fault("header.wav"), "The file is damaged: it asks for more memory than it can need");
    EXPECT_LT(peakMegabytes() - before, 300);
}

TEST_F(BadInput, OfBoxesWithoutEndIsRefused)
{
    // Each box holds the next.
    Bytes nested;
    for (std::uint32_t i = 0; i < 1'000; ++i) {
        const std::size_t place = nested.size();
        nested.resize(place + 8);
        put32(nested, place, 8 * (1'000 - i));
        const std::string_view name = i == 0 ? "moov" : "trak";
        std::copy(name.begin(), name.end(),
                  nested.begin() + static_cast<std::ptrdiff_t>(place) + 4);
    }
    EXPECT_NE(faultOf(nested), "");

    // A box of no size stands still.
    Bytes still = sound();
    put32(still, find(still, "trak") - 4, 0);
    EXPECT_NO_THROW(faultOf(still));
    put32(still, find(still, "trak") - 4, 1);
    EXPECT_NO_THROW(faultOf(still));
}

TEST_F(BadInput, CannotMakeOtherFilesBeOpened)
{
    encode("sound.wav", 44'100, 1, 1'000, "-c:a pcm_s16le");
    encode("sound.aac", 44'100, 1, 44'100, "-c:a aac");
    writeText(path("list.m4a"), "ffconcat version 1.0\nfile sound.wav\n");
    EXPECT_NE(fault("list.m4a"), "");
    writeText(path("hls.m4a"), "#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:1\n"
                               "#EXTINF:1.0,\nsound.aac\n#EXT-X-ENDLIST\n");
    EXPECT_NE(fault("hls.m4a"), "");
    writeText(path("dash.m4a"),
              "<?xml version=\"1.0\"?><MPD xmlns=\"urn:mpeg:dash:schema:mpd:2011\"><Period>"
              "<AdaptationSet><Representation><BaseURL>sound.aac</BaseURL></Representation>"
              "</AdaptationSet></Period></MPD>");
    EXPECT_NE(fault("dash.m4a"), "");
    writeText(path("session.m4a"), "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\n"
                                   "t=0 0\nm=audio 5004 RTP/AVP 0\n");
    EXPECT_NE(fault("session.m4a"), "");
}

} // namespace
