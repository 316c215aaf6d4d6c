#include "Resources/Demonstration Loops/Composition/Catalogue.hpp"
#include "Resources/Demonstration Loops/Mastering/Loudness.hpp"
#include "Resources/Demonstration Loops/Mastering/Mixdown.hpp"
#include "Tests/Resources/Measuring.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <stdexcept>
#include <thread>

namespace
{

using namespace demonstration_loops;

TEST(CatalogueTests, EveryLoopHasATitleOfItsOwn)
{
    std::set<std::string> titles;
    for (std::size_t number = 1; number <= loopCount; ++number)
        titles.insert(compose(number).title);
    EXPECT_EQ(titles.size(), 80U);
}

TEST(CatalogueTests, LastsFourToTwelveSecondsAtItsTempo)
{
    for (std::size_t number = 1; number <= loopCount; ++number) {
        const Score score = compose(number);
        const double seconds = static_cast<double>(score.frames()) / sampleRate;
        EXPECT_GE(seconds, 4.0) << number;
        EXPECT_LE(seconds, 12.0) << number;
        EXPECT_EQ(score.frames() % 1024, 0U) << number;
        EXPECT_NEAR(seconds, score.beats * 60.0 / score.tempo, 0.003 * seconds) << number;
        EXPECT_GE(score.tempo, 60.0) << number;
        EXPECT_LE(score.tempo, 160.0) << number;
    }
}

TEST(CatalogueTests, ComposesTheSameEveryTime)
{
    const Score first = compose(7);
    const Score second = compose(7);
    ASSERT_EQ(first.parts.size(), second.parts.size());
    for (std::size_t part = 0; part < first.parts.size(); ++part) {
        const auto &a = first.parts[part].notes;
        const auto &b = second.parts[part].notes;
        ASSERT_EQ(a.size(), b.size());
        for (std::size_t i = 0; i < a.size(); ++i) {
            EXPECT_EQ(a[i].beat, b[i].beat);
            EXPECT_EQ(a[i].pitch, b[i].pitch);
            EXPECT_EQ(a[i].velocity, b[i].velocity);
        }
    }
}

TEST(CatalogueTests, EveryPartHasNotesWithinReach)
{
    for (std::size_t number = 1; number <= loopCount; ++number) {
        const Score score = compose(number);
        EXPECT_FALSE(score.parts.empty()) << number;
        for (const Part &part : score.parts) {
            EXPECT_FALSE(part.notes.empty()) << score.title;
            for (const Note &note : part.notes) {
                EXPECT_GT(note.length, 0.0) << score.title;
                EXPECT_GT(note.velocity, 0.0) << score.title;
                EXPECT_LE(note.velocity, 1.0) << score.title;
                EXPECT_GE(note.beat, -0.5) << score.title;
                EXPECT_LT(note.beat, score.beats + 0.5) << score.title;
                EXPECT_LE(note.pitch, 108.0) << score.title;
            }
        }
    }
}

TEST(CatalogueTests, KnowsNoOtherNumbers)
{
    EXPECT_THROW(compose(0), std::out_of_range);
    EXPECT_THROW(compose(81), std::out_of_range);
}

TEST(MixdownTests, ThreadsLeaveNoTraceInTheSamples)
{
    const StereoLoop alone = mixdown(compose(45), 45);
    StereoLoop first(0);
    StereoLoop second(0);
    std::thread one([&] { first = mixdown(compose(45), 45); });
    std::thread two([&] { second = mixdown(compose(45), 45); });
    one.join();
    two.join();
    EXPECT_TRUE(alone.left == first.left && alone.right == first.right);
    EXPECT_TRUE(alone.left == second.left && alone.right == second.right);
}

TEST(MixdownTests, PartsStandInTheirPlaceAtTheirLevel)
{
    struct Tick : Instrument {
        void play(const Tone &tone, StereoLoop &loop) const override
        {
            LoopWriter writer(loop, tone.start);
            for (int i = 0; i < 4800; ++i)
                writer.add(std::sin(0.13 * i), std::sin(0.13 * i));
        }
    };
    Score score{"Test", 120, 8};
    Part &part = score.parts.emplace_back(
        Part{std::make_unique<Tick>(), {{-0.1, 1, 60, 1}, {4, 1, 60, 1}}, -6.0});
    part.pan = 1.0;
    part.room = 0.0;
    const StereoLoop mix = mixdown(score, 1);
    EXPECT_EQ(measuring::rms(mix.left, 0, mix.frames()), 0.0);
    const double framesPerBeat = static_cast<double>(mix.frames()) / 8.0;
    const auto early = static_cast<std::size_t>(7.9 * framesPerBeat);
    EXPECT_EQ(measuring::rms(mix.right, early - 1000, early - 2), 0.0);
    EXPECT_GT(measuring::rms(mix.right, early + 2, early + 1000), 0.01);
    // Panned to one side the part loses the other channel's half of its power.
    EXPECT_NEAR(integratedLoudness(mix), -20.0 - 6.0 - 3.01, 0.3);
}

} // namespace
