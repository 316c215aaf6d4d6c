#include "Effect/RotaryCabinet.hpp"
#include "Resources/Demonstration Loops/Composition/Catalogue.hpp"
#include "Resources/Demonstration Loops/Encoding/M4aWriter.hpp"
#include "Resources/Demonstration Loops/Mastering/Loudness.hpp"
#include "Resources/Demonstration Loops/Mastering/Master.hpp"
#include "Resources/Demonstration Loops/Mastering/Mixdown.hpp"
#include "Resources/Demonstration Loops/Random.hpp"
#include "Tests/Effect/Signals.hpp"
#include "Tests/Resources/LoopFeatures.hpp"
#include "Tests/Resources/LoopFile.hpp"
#include "Tests/Resources/Measuring.hpp"
#include "Tests/Utilities/Bytes.hpp"
#include "Tests/Utilities/Places.hpp"
#include "Tests/Utilities/TemporaryFolder.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <set>
#include <vector>

namespace
{

using namespace demonstration_loops;
namespace fs = std::filesystem;

fs::path loopFolder()
{
    return test::buildPath("share/parvane-host");
}

fs::path pathOf(std::size_t number)
{
    return loopFolder() / (std::to_string(number) + ".m4a");
}

const std::vector<LoopFile> &files()
{
    static const std::vector<LoopFile> all = [] {
        std::vector<LoopFile> result;
        for (std::size_t number = 1; number <= loopCount; ++number)
            result.push_back(LoopFile::read(pathOf(number)));
        return result;
    }();
    return all;
}

const std::vector<LoopFeatures> &features()
{
    static const std::vector<LoopFeatures> all = [] {
        std::vector<LoopFeatures> result;
        for (const LoopFile &file : files())
            result.push_back(LoopFeatures::of(file.audio));
        return result;
    }();
    return all;
}

TEST(LoopFileTests, ThereAreExactlyEightyNumberedFromOne)
{
    std::set<std::string> names;
    for (const auto &entry : fs::directory_iterator(loopFolder()))
        if (entry.path().extension() == ".m4a")
            names.insert(entry.path().filename().string());
    std::set<std::string> expected;
    for (int number = 1; number <= 80; ++number)
        expected.insert(std::to_string(number) + ".m4a");
    EXPECT_EQ(names, expected);
}

TEST(LoopFileTests, TogetherTheyStayUnderTwentyMegabytes)
{
    std::uintmax_t total = 0;
    for (std::size_t number = 1; number <= loopCount; ++number)
        total += fs::file_size(pathOf(number));
    EXPECT_LT(total, 20'000'000U);
}

TEST(LoopFileTests, EachIsStereoAacOfTheLengthComposed)
{
    for (std::size_t i = 0; i < loopCount; ++i) {
        const LoopFile &file = files()[i];
        EXPECT_EQ(file.codec, "aac") << i + 1;
        EXPECT_EQ(file.rate, 48000) << i + 1;
        EXPECT_EQ(file.channels, 2) << i + 1;
        EXPECT_EQ(file.presentedFrames, static_cast<std::int64_t>(compose(i + 1).frames()))
            << i + 1;
        EXPECT_EQ(file.decodedFrames, file.presentedFrames) << i + 1;
        EXPECT_GE(file.presentedFrames, 4 * 48000) << i + 1;
        EXPECT_LE(file.presentedFrames, 12 * 48000) << i + 1;
    }
}

TEST(LoopFileTests, EachIsAsLoudAsTheOthersAndHasHeadroom)
{
    for (std::size_t i = 0; i < loopCount; ++i) {
        const StereoLoop &audio = files()[i].audio;
        EXPECT_NEAR(integratedLoudness(audio), -16.0, 0.5) << i + 1;
        EXPECT_LE(measuring::decibels(audio.peak()), -1.0) << i + 1;
    }
}

class Unheard : public effect::TurnListener
{
public:
    void turned(std::uint32_t) override {}
};

/// The largest sample of half a minute of the loop, over and over, through the cabinet as
/// it is delivered but for the rotors' speed.
float peakThroughTheCabinet(const StereoLoop &loop, float speed)
{
    const std::vector<float> left(loop.left.begin(), loop.left.end());
    const std::vector<float> right(loop.right.begin(), loop.right.end());
    std::vector<float> leftOut(left.size());
    std::vector<float> rightOut(left.size());
    effect::RotaryCabinet cabinet(sampleRate);
    effect::CabinetSettings settings;
    settings.speed = speed;
    cabinet.setSettings(settings);
    Unheard nobody;
    float peak = 0;
    for (std::size_t played = 0; played < 30 * 48000; played += left.size()) {
        cabinet.process(left.data(), right.data(), leftOut.data(), rightOut.data(),
                        static_cast<std::uint32_t>(left.size()), nobody);
        peak = std::max({peak, signals::largest(leftOut), signals::largest(rightOut)});
    }
    return peak;
}

// Otherwise the host limits what it plays and says so, of an effect and a loop that
// come with it.
TEST(LoopFileTests, EachFitsTheDeviceThroughTheCabinetSlowAndFast)
{
    for (std::size_t i = 0; i < loopCount; ++i) {
        EXPECT_LE(peakThroughTheCabinet(files()[i].audio, 1), 1.0F) << i + 1;
        EXPECT_LE(peakThroughTheCabinet(files()[i].audio, 2), 1.0F) << i + 1;
    }
}

// A click is a break in the wave that lasts a few frames. Played end to end, the
// seam may stand out from the 10 ms around it no more than 999 of 1,000 other
// places of all the loops do.
TEST(LoopFileTests, TheSeamIsAPlaceLikeAnyOther)
{
    std::vector<double> elsewhere;
    for (const LoopFile &file : files())
        for (std::size_t place = 600; place + 600 < file.audio.frames(); place += 1361)
            elsewhere.push_back(
                std::max(prominence(file.audio.left, place), prominence(file.audio.right, place)));
    ASSERT_GT(elsewhere.size(), 10000U);
    const auto rank =
        elsewhere.begin() + static_cast<std::ptrdiff_t>(elsewhere.size() * 999 / 1000);
    std::nth_element(elsewhere.begin(), rank, elsewhere.end());
    for (std::size_t i = 0; i < loopCount; ++i) {
        const StereoLoop &audio = files()[i].audio;
        EXPECT_LE(std::max(prominence(audio.left, 0), prominence(audio.right, 0)), *rank) << i + 1;
    }
}

TEST(LoopFileTests, TheStepOverTheSeamIsNoLargerThanStepsElsewhere)
{
    for (std::size_t i = 0; i < loopCount; ++i) {
        for (const auto *channel : {&files()[i].audio.left, &files()[i].audio.right}) {
            double largest = 0.0;
            for (std::size_t k = 1; k < channel->size(); ++k)
                largest = std::max(largest, std::abs((*channel)[k] - (*channel)[k - 1]));
            EXPECT_LE(std::abs(channel->front() - channel->back()), largest) << i + 1;
        }
    }
}

TEST(LoopFileTests, AClickAtTheSeamWouldBeSeen)
{
    // The same measure on a loop that is cut off in the middle of its sound.
    const StereoLoop &audio = files()[7].audio;
    std::vector<double> cut(audio.left.begin(), audio.left.begin() + 200000);
    cut.resize(199987);
    EXPECT_GT(prominence(cut, 0), 2.0);
}

TEST(LoopFileTests, NoTwoSoundAlike)
{
    const auto table = distances(features());
    double smallest = std::numeric_limits<double>::max();
    for (std::size_t i = 0; i < loopCount; ++i)
        for (std::size_t j = 0; j < i; ++j)
            smallest = std::min(smallest, table[i][j]);
    RecordProperty("smallestDistance", std::to_string(smallest));
    EXPECT_GT(smallest, 0.3);
}

TEST(LoopFileTests, TheSamePieceWithOtherRandomnessWouldCountAsAlike)
{
    // What the measure of likeness is worth: another performance of a piece is near.
    std::vector<LoopFeatures> set = features();
    StereoLoop again = mixdown(compose(20), 20'020);
    master(again);
    set.push_back(LoopFeatures::of(again));
    EXPECT_LT(distances(set)[19].back(), 0.3);
}

TEST(LoopFileTests, TheyRangeFromSparseToDenseAndFromDarkToBright)
{
    std::vector<double> onsets;
    std::vector<double> centroids;
    for (const LoopFeatures &one : features()) {
        onsets.push_back(one.onsets);
        centroids.push_back(one.centroid);
    }
    std::sort(onsets.begin(), onsets.end());
    std::sort(centroids.begin(), centroids.end());
    // A tenth of them sparse, a tenth dense; the bright tenth begins an octave and a
    // half above where the dark tenth ends.
    EXPECT_LT(onsets[8], 2.0);
    EXPECT_GT(onsets[71], 7.5);
    EXPECT_GT(centroids[71], 2.83 * centroids[8]);
}

TEST(LoopFileTests, NoneIsSilenceNoiseOrAToneThatStands)
{
    for (std::size_t i = 0; i < loopCount; ++i) {
        const LoopFeatures &one = features()[i];
        // White noise has a flatness of 0.56 in such spectra, pink noise about 0.05.
        EXPECT_LT(one.flatness, 0.1) << i + 1;
        // Neither noise nor a tone changes: each band moves less than 4 dB. Music does more.
        double movement = 0.0;
        for (const double band : one.movement)
            movement += band / LoopFeatures::bandCount;
        EXPECT_GT(movement, 3.0) << i + 1;
        // Notes of more than a single pitch, except where drums play alone.
        const double largest = *std::max_element(one.chroma.begin(), one.chroma.end());
        EXPECT_LT(largest, 0.4) << i + 1;
        // No rest of half a second.
        const StereoLoop &audio = files()[i].audio;
        for (std::size_t start = 0; start + 24000 <= audio.frames(); start += 6000)
            EXPECT_GT(measuring::rms(audio.left, start, start + 24000) +
                          measuring::rms(audio.right, start, start + 24000),
                      0.002)
                << i + 1;
    }
}

TEST(LoopFileTests, RenderingAgainGivesTheSameBytes)
{
    const test::TemporaryFolder folder;
    const fs::path again = folder.path() / "again.m4a";
    for (const std::size_t number : {3U, 42U}) {
        const Score score = compose(number);
        StereoLoop loop = mixdown(score, number);
        master(loop);
        writeM4a(loop, score.title, again.string());
        EXPECT_TRUE(test::bytesOf(again) == test::bytesOf(pathOf(number))) << number;
    }
}

} // namespace
