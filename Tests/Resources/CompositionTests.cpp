#include "Resources/Demonstration Loops/Composition/Patterns.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <set>
#include <stdexcept>

namespace
{

using namespace demonstration_loops;

Sketch makeSketch(std::string_view chords = "Am7 | D7 | Gmaj7 | C", int variant = 0)
{
    return Sketch("Test", 120, 4, chords, "G major", variant, 5);
}

TEST(ChordTests, ReadsSymbols)
{
    EXPECT_EQ(Chord::parse("C").classes, (std::vector<int>{0, 4, 7}));
    EXPECT_EQ(Chord::parse("F#m7").classes, (std::vector<int>{6, 9, 1, 4}));
    EXPECT_EQ(Chord::parse("Bb7").root, 10);
    const Chord slash = Chord::parse("D/F#");
    EXPECT_EQ(slash.root, 2);
    EXPECT_EQ(slash.bass, 6);
    EXPECT_TRUE(slash.contains(69));
    EXPECT_FALSE(slash.contains(70));
}

TEST(ChordTests, RefusesWhatIsNoChord)
{
    for (const auto *symbol : {"", "H", "Cfoo", "C/", "m7", "C/X"})
        EXPECT_THROW(Chord::parse(symbol), std::invalid_argument) << symbol;
    EXPECT_THROW(Scale("C wrong"), std::invalid_argument);
    EXPECT_THROW(Scale(""), std::invalid_argument);
}

TEST(ProgressionTests, ChordsShareTheirBarEvenly)
{
    const Progression progression("Am | F G | C", 4);
    ASSERT_EQ(progression.spans().size(), 4U);
    EXPECT_EQ(progression.beats(), 12.0);
    EXPECT_EQ(progression.spans()[2].beat, 6.0);
    EXPECT_EQ(progression.at(5.9).root, 5);
    EXPECT_EQ(progression.at(6.0).root, 7);
    // A note ahead of the first beat belongs to the last chord.
    EXPECT_EQ(progression.at(-0.1).root, 0);
    EXPECT_EQ(progression.at(12.0).root, 9);
}

TEST(ScaleTests, StepsStayInTheScale)
{
    const Scale scale("G major");
    EXPECT_EQ(scale.step(67, 1), 69);
    EXPECT_EQ(scale.step(67, -1), 66);
    EXPECT_EQ(scale.step(67, 7), 79);
    EXPECT_EQ(scale.step(68, 1), 69);
    EXPECT_EQ(scale.step(68, 0), 68);
}

TEST(VoiceLeadingTests, VoicesMoveLittleAndHoldTheChord)
{
    const Progression progression("Dm9 | G13 | Cmaj9 | A7b9 | F#m7b5 | B7", 4);
    const Register where = {52, 74, 4};
    const auto voicings = voice(progression, where);
    for (std::size_t i = 0; i < voicings.size(); ++i) {
        ASSERT_EQ(voicings[i].size(), 4U);
        const Chord &chord = progression.spans()[i].chord;
        std::set<int> classes;
        for (const int key : voicings[i]) {
            EXPECT_GE(key, where.low);
            EXPECT_LE(key, where.high);
            EXPECT_TRUE(chord.contains(key));
            classes.insert(key % 12);
        }
        EXPECT_EQ(classes.size(), 4U) << "a four-part voicing doubles nothing here";
        const auto &next = voicings[(i + 1) % voicings.size()];
        for (std::size_t k = 0; k < 4; ++k)
            EXPECT_LE(std::abs(next[k] - voicings[i][k]), 5) << "from chord " << i;
    }
}

TEST(PatternTests, ReadsEntriesRestsAndTies)
{
    const auto steps = readSteps("x-.o|X...", 4, 4);
    ASSERT_EQ(steps.size(), 6U);
    EXPECT_EQ(steps[0].length, 0.5);
    EXPECT_EQ(steps[1].beat, 0.75);
    EXPECT_EQ(steps[1].mark, 'o');
    EXPECT_EQ(steps[2].beat, 1.0);
    EXPECT_EQ(steps[3].beat, 2.0);
    EXPECT_TRUE(readSteps("", 4, 4).empty());
    EXPECT_TRUE(readSteps("--..", 4, 4).empty());
}

TEST(PatternTests, ABassLineFollowsTheChords)
{
    Sketch sketch = makeSketch();
    const auto notes = bassLine(sketch, "1 3 8 a", 1, 28);
    ASSERT_EQ(notes.size(), 16U);
    EXPECT_EQ(notes[0].pitch, 33);
    EXPECT_EQ(notes[1].pitch, 36) << "the minor third";
    EXPECT_EQ(notes[2].pitch, 45);
    EXPECT_EQ(notes[3].pitch, 37) << "a semitone under the next root";
    EXPECT_EQ(notes[4].pitch, 38);
    EXPECT_EQ(notes[5].pitch, 42) << "the major third";
    EXPECT_EQ(notes[15].pitch, 32) << "leads round to the beginning";
}

TEST(PatternTests, ChordsSoundTogetherOrAreStrummed)
{
    Sketch sketch = makeSketch();
    const auto plain = comp(sketch, "x---", 1, {52, 72, 4});
    EXPECT_EQ(plain.size(), 16U);
    EXPECT_EQ(plain[0].beat, plain[3].beat);
    const auto strummed = comp(sketch, "x.u.", 1, {52, 72, 4}, 0.06);
    EXPECT_LT(strummed[0].beat, strummed[3].beat);
    EXPECT_GT(strummed[4].beat, strummed[7].beat) << "up strokes start from the top";
}

TEST(PatternTests, ArpeggiosClimbPastTheChordByOctaves)
{
    Sketch sketch = makeSketch("Am");
    const auto notes = arpeggio(sketch, "0123", 1, {57, 70, 3});
    ASSERT_EQ(notes.size(), 4U);
    EXPECT_EQ(notes[3].pitch, notes[0].pitch + 12);
}

TEST(MelodyTests, StandsOnTheChordsAndMovesWithinTheScale)
{
    for (int seed = 0; seed < 20; ++seed) {
        Sketch sketch("Test", 120, 4, "Am7 | D7 | Gmaj7 | C", "G major", 0,
                      static_cast<std::uint64_t>(seed));
        const auto notes = melody(sketch, "x-x-x-xxx---..x-", 4, 64, 84);
        ASSERT_EQ(notes.size(), 28U);
        for (const Note &note : notes) {
            const int key = static_cast<int>(note.pitch);
            EXPECT_GE(key, 64 - 7);
            EXPECT_LE(key, 84 + 7);
            if (note.beat == std::floor(note.beat))
                EXPECT_TRUE(sketch.harmony.at(note.beat).contains(key) ||
                            sketch.scale.contains(key));
            else
                EXPECT_TRUE(sketch.scale.contains(key));
        }
    }
}

TEST(MelodyTests, MovesMostlyByStep)
{
    int steps = 0;
    int moves = 0;
    for (int seed = 0; seed < 20; ++seed) {
        Sketch sketch("Test", 120, 4, "Am7 | D7 | Gmaj7 | C", "G major", 0,
                      static_cast<std::uint64_t>(seed));
        const auto notes = melody(sketch, "x-x-x-xxx-x-..x-", 4, 64, 84);
        for (std::size_t i = 1; i < notes.size(); ++i) {
            const double move = std::abs(notes[i].pitch - notes[i - 1].pitch);
            steps += move <= 4 ? 1 : 0;
            moves += 1;
            EXPECT_LE(move, 14);
        }
    }
    EXPECT_GT(steps, moves * 7 / 10);
}

TEST(SketchTests, SwingDelaysTheOffBeatsAlone)
{
    Sketch sketch = makeSketch();
    sketch.feel = {0.33, 0.5, 0.0};
    const Part &part =
        sketch.add(nullptr, {{0.0, 1, 60, 0.5}, {0.5, 1, 60, 0.5}, {1.0, 1, 60, 0.5}}, 0);
    EXPECT_NEAR(part.notes[0].beat, 0.0, 1.0e-6);
    EXPECT_NEAR(part.notes[1].beat, 0.665, 1.0e-6);
    EXPECT_NEAR(part.notes[2].beat, 1.0, 1.0e-6);
}

TEST(SketchTests, PlayersAreLooseWithinTheirFeel)
{
    Sketch sketch = makeSketch();
    sketch.feel = {0.0, 0.5, 10.0};
    std::vector<Note> notes;
    for (int i = 0; i < 100; ++i)
        notes.push_back({static_cast<double>(i), 1, 60, 0.5});
    const Part &part = sketch.add(nullptr, notes, 0);
    double furthest = 0.0;
    for (int i = 0; i < 100; ++i)
        furthest = std::max(furthest, std::abs(part.notes[static_cast<std::size_t>(i)].beat - i));
    EXPECT_GT(furthest, 0.01);
    EXPECT_LE(furthest, 0.02) << "10 ms at 120 beats a minute";
}

} // namespace
