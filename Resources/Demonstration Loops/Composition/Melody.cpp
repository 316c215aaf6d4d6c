#include "Resources/Demonstration Loops/Composition/Patterns.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <map>
#include <string_view>
#include <utility>

namespace demonstration_loops
{

namespace
{

/// Moves in scale steps, as often as they stand here: lines that sing go by step.
constexpr std::array<int, 16> moves = {1, -1, 1, -1, 1, -1, 2, -2, 2, -2, 1, -1, 3, -3, 4, 0};

/// Which motif each bar of a phrase takes.
constexpr std::array<std::string_view, 5> forms = {"ABAC", "AABC", "AABA", "ABCA", "ABAB"};

int nearestChordTone(const Chord &chord, int key)
{
    for (int offset = 0; offset < 7; ++offset) {
        if (chord.contains(key + offset))
            return key + offset;
        if (chord.contains(key - offset))
            return key - offset;
    }
    return key;
}

class Line
{
public:
    Line(Sketch &sketch, int low, int high)
        : sketch_(sketch), low_(low), high_(high), form_(forms[sketch.random.below(forms.size())]),
          key_(nearestChordTone(sketch.harmony.at(0.0), (low + high) / 2))
    {
    }

    Note write(const Step &step, std::size_t indexInBar, std::size_t bar)
    {
        const char motif = form_[bar % form_.size()];
        int move = motifMove(motif, indexInBar);
        if (std::abs(lastMove_) > 2 && move * lastMove_ > 0)
            move = lastMove_ > 0 ? -1 : 1;
        int key = sketch_.scale.step(key_, move);
        if (key > high_ || key < low_)
            key = sketch_.scale.step(key_, -move);
        if (strong(step))
            key = nearestChordTone(sketch_.harmony.at(step.beat), key);
        // A third unison in a row would be a stammer.
        if (key == key_ && key_ == before_)
            key = sketch_.scale.step(key, key > (low_ + high_) / 2 ? -1 : 1);
        lastMove_ = key > key_ ? std::abs(move) : -std::abs(move);
        before_ = std::exchange(key_, key);
        const double rise = key > before_ ? 1.06 : 0.97;
        return {step.beat, step.length * 0.94, static_cast<double>(key),
                velocityOf(step.mark) * rise};
    }

private:
    [[nodiscard]] static bool strong(const Step &step)
    {
        return std::fmod(step.beat + 1.0e-6, 1.0) < 0.01 || step.length > 0.9;
    }

    int motifMove(char motif, std::size_t index)
    {
        const auto key = std::make_pair(motif, index);
        const auto known = motifs_.find(key);
        if (known != motifs_.end())
            return known->second;
        return motifs_[key] = moves[sketch_.random.below(moves.size())];
    }

    Sketch &sketch_;
    int low_;
    int high_;
    std::string_view form_;
    int key_;
    int before_ = 0;
    int lastMove_ = 0;
    std::map<std::pair<char, std::size_t>, int> motifs_;
};

} // namespace

std::vector<Note> melody(Sketch &sketch, std::string_view pattern, double stepsPerBeat, int low,
                         int high)
{
    Line line(sketch, low, high);
    std::vector<Note> notes;
    std::size_t lastBar = 0;
    std::size_t index = 0;
    for (const Step &step : readSteps(pattern, stepsPerBeat, sketch.score.beats)) {
        const auto bar = static_cast<std::size_t>((step.beat + 1.0e-6) / sketch.beatsPerBar);
        index = bar == lastBar ? index + 1 : 0;
        lastBar = bar;
        notes.push_back(line.write(step, index, bar));
    }
    return notes;
}

} // namespace demonstration_loops
