#include "Tests/Platform/Audio/Files/AudioFiles.hpp"

#include "Platform/Foundation/PlatformError.hpp"

#include <algorithm>
#include <array>
#include <random>

namespace
{

/// Changes files in the ways that break parsers: flipped bytes, numbers at their
/// limits, missing and repeated pieces, missing ends. Deterministic: the engine
/// is the standard's, and no distribution is used, whose results are not fixed.
class Mutator
{
public:
    explicit Mutator(std::uint32_t seed) : random_(seed) {}

    Bytes mutate(Bytes bytes)
    {
        const std::size_t changes = 1 + below(8);
        for (std::size_t i = 0; i < changes && bytes.size() > 64; ++i)
            change(bytes);
        return bytes;
    }

private:
    std::size_t below(std::size_t limit) { return random_() % limit; }

    void change(Bytes &bytes)
    {
        static constexpr std::array<std::uint32_t, 8> extremes = {
            0, 1, 7, 8, 0x7fffffff, 0x80000000, 0xfffffffe, 0xffffffff};
        const std::size_t place = below(bytes.size() - 4);
        const auto at = bytes.begin() + static_cast<std::ptrdiff_t>(place);
        switch (below(6)) {
        case 0:
            bytes[place] = static_cast<std::uint8_t>(random_());
            break;
        case 1:
            bytes[place] = static_cast<std::uint8_t>(bytes[place] ^ 1U << below(8));
            break;
        case 2:
        case 3:
            put32(bytes, place, extremes.at(below(extremes.size())));
            break;
        case 4: {
            const std::size_t length = std::min<std::size_t>(below(200), bytes.size() - place);
            const Bytes piece(at, at + static_cast<std::ptrdiff_t>(length));
            if (below(2) == 0)
                bytes.erase(at, at + static_cast<std::ptrdiff_t>(length));
            else
                bytes.insert(at, piece.begin(), piece.end());
            break;
        }
        default:
            if (below(4) == 0)
                bytes.resize(place + 4);
            break;
        }
    }

    std::mt19937 random_;
};

class Mutations : public AudioFiles, public testing::WithParamInterface<const char *>
{
};

// That each file meets an error or an end is all that can be expected of it, and
// that the sanitizers and the test's time limit see nothing.
TEST_P(Mutations, EndInTimeWithAnErrorOrAnEarlyEnd)
{
    encode("sound.m4a", 44'100, 2, 30'000, GetParam());
    const Bytes original = bytesOf(path("sound.m4a"));
    // Mostly the tables are changed: they are where a file can lie.
    const std::size_t tables = find(original, "moov");

    Mutator mutator(20'240'229);
    int opened = 0;
    int refused = 0;
    for (int i = 0; i < 300; ++i) {
        const bool wholeFile = i % 4 == 0;
        const auto split = original.begin() + static_cast<std::ptrdiff_t>(wholeFile ? 0 : tables);
        const Bytes end = mutator.mutate(Bytes(split, original.end()));
        Bytes bytes(original.begin(), split);
        bytes.insert(bytes.end(), end.begin(), end.end());
        writeBytes(path("mutant.m4a"), bytes);
        try {
            AVAudioFile file(url("mutant.m4a"));
            ++opened;
            const AVAudioFormat format = *file.processingFormat();
            ASSERT_GE(file.length(), 0);
            AVAudioPCMBuffer buffer(format, 4'096);
            // A file may claim to be longer than it is; what it gives is bounded by
            // its bytes.
            std::int64_t frames = 0;
            do {
                file.read(buffer, 4'096);
                frames += buffer.frameLength();
            } while (buffer.frameLength() > 0);
            ASSERT_LE(frames, std::min<std::int64_t>(file.length(), 10'000'000));
            file.setFramePosition(file.length() / 2);
            file.read(buffer, 4'096);
        } catch (const PlatformError &error) {
            ++refused;
            ASSERT_STRNE(error.what(), "");
        }
    }
    // Both happen: else the changes would be too weak or too strong to tell.
    EXPECT_GT(opened, 30);
    EXPECT_GT(refused, 30);
}

INSTANTIATE_TEST_SUITE_P(AudioFiles, Mutations,
                         testing::Values("-c:a aac",
                                         "-c:a aac -movflags frag_keyframe+empty_moov"));

} // namespace
