#pragma once

#include <string_view>
#include <vector>

namespace demonstration_loops
{

/// A chord by its pitch classes (0 = c), root first, and the one in the bass.
struct Chord {
    std::vector<int> classes;
    int root;
    int bass;

    /// Reads a symbol such as "Am7", "F#maj9" or "C/E"; throws
    /// std::invalid_argument on one it does not know.
    static Chord parse(std::string_view symbol);

    /// Whether the key belongs to the chord.
    [[nodiscard]] bool contains(int key) const;
};

/// A chord and where it sounds.
struct ChordSpan {
    double beat;
    double length;
    Chord chord;
};

/// The chords of a piece, one after another, without gaps.
class Progression
{
public:
    /// Bars are parted by "|"; the chords of a bar share it evenly.
    Progression(std::string_view text, int beatsPerBar);

    [[nodiscard]] const std::vector<ChordSpan> &spans() const { return spans_; }
    [[nodiscard]] double beats() const { return beats_; }

    /// Index of the span that sounds at a beat, counted round the loop.
    [[nodiscard]] std::size_t indexAt(double beat) const;
    /// The chord that sounds at a beat, counted round the loop.
    [[nodiscard]] const Chord &at(double beat) const { return spans_[indexAt(beat)].chord; }

private:
    std::vector<ChordSpan> spans_;
    double beats_ = 0.0;
};

/// A scale by its pitch classes, tonic first.
class Scale
{
public:
    /// Reads "C major", "F# dorian", "A blues" and the like.
    explicit Scale(std::string_view name);

    [[nodiscard]] int tonic() const { return classes_.front(); }
    [[nodiscard]] bool contains(int key) const;
    /// The key `steps` scale steps from `key`, which need not be in the scale.
    [[nodiscard]] int step(int key, int steps) const;

private:
    std::vector<int> classes_;
};

/// Where and in how many parts a chord is set.
struct Register {
    int low;  ///< lowest MIDI key
    int high; ///< highest MIDI key
    int voices;
};

/// One ascending list of keys a span. Each voicing lies as near the one before
/// as its notes allow, and the first as near the last, since the piece repeats.
std::vector<std::vector<int>> voice(const Progression &progression, const Register &where);

} // namespace demonstration_loops
