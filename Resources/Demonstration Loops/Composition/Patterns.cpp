#include "Resources/Demonstration Loops/Composition/Patterns.hpp"

#include <algorithm>
#include <cmath>
#include <string>

namespace demonstration_loops
{

namespace
{

/// A lift for the first beat of a bar and a slighter one for the others.
double metricAccent(const Sketch &sketch, double beat)
{
    const double within = std::fmod(beat + 1.0e-6, sketch.beatsPerBar);
    if (within < 0.01)
        return 1.06;
    return std::fmod(within, 1.0) < 0.01 ? 1.0 : 0.92;
}

int keyAtOrAbove(int pitchClass, int low)
{
    return low + (((pitchClass - low) % 12) + 12) % 12;
}

/// The chord tone next to a degree of the scale counted in thirds.
int degreeClass(const Chord &chord, char mark)
{
    const auto nearest = [&](int interval) {
        for (const int offset : {0, -1, 1})
            if (chord.contains(chord.root + interval + offset))
                return (chord.root + interval + offset + 12) % 12;
        return chord.root;
    };
    switch (mark) {
    case '3':
        return nearest(4);
    case '5':
        return nearest(7);
    case '6':
        return (chord.root + 9) % 12;
    case '7':
        return (chord.root + 10) % 12;
    default:
        return chord.bass;
    }
}

} // namespace

std::vector<Step> readSteps(std::string_view pattern, double stepsPerBeat, double beats)
{
    std::string marks;
    for (const char mark : pattern)
        if (mark != ' ' && mark != '|')
            marks += mark;
    std::vector<Step> result;
    if (marks.empty())
        return result;
    const auto count = static_cast<std::size_t>(std::lround(beats * stepsPerBeat));
    bool sounding = false;
    for (std::size_t i = 0; i < count; ++i) {
        const char mark = marks[i % marks.size()];
        if (mark == '-') {
            if (sounding)
                result.back().length += 1.0 / stepsPerBeat;
            continue;
        }
        sounding = mark != '.';
        if (sounding)
            result.push_back({static_cast<double>(i) / stepsPerBeat, 1.0 / stepsPerBeat, mark});
    }
    return result;
}

double velocityOf(char mark)
{
    if (mark == 'X')
        return 0.95;
    return mark == 'o' ? 0.45 : 0.72;
}

std::vector<Note> comp(Sketch &sketch, std::string_view pattern, double stepsPerBeat,
                       const Register &where, double strum)
{
    const auto voicings = voice(sketch.harmony, where);
    std::vector<Note> notes;
    for (const Step &step : readSteps(pattern, stepsPerBeat, sketch.score.beats)) {
        const std::vector<int> &keys = voicings[sketch.harmony.indexAt(step.beat)];
        const double velocity = velocityOf(step.mark) * metricAccent(sketch, step.beat);
        for (std::size_t i = 0; i < keys.size(); ++i) {
            const std::size_t order = step.mark == 'u' ? keys.size() - 1 - i : i;
            const double delay = strum * static_cast<double>(order) /
                                 std::max<double>(1.0, static_cast<double>(keys.size()) - 1.0);
            const bool top = i + 1 == keys.size();
            notes.push_back({step.beat + delay, step.length * 0.97, static_cast<double>(keys[i]),
                             velocity * (top ? 1.0 : 0.85)});
        }
    }
    return notes;
}

std::vector<Note> arpeggio(Sketch &sketch, std::string_view pattern, double stepsPerBeat,
                           const Register &where, double ring)
{
    const auto voicings = voice(sketch.harmony, where);
    std::vector<Note> notes;
    for (const Step &step : readSteps(pattern, stepsPerBeat, sketch.score.beats)) {
        const std::vector<int> &keys = voicings[sketch.harmony.indexAt(step.beat)];
        const auto index = static_cast<std::size_t>(std::clamp(step.mark - '0', 0, 9));
        const int octaves = static_cast<int>(index / keys.size());
        const int key = keys[index % keys.size()] + 12 * octaves;
        notes.push_back({step.beat, ring > 0.0 ? ring : step.length * 0.95,
                         static_cast<double>(key), 0.72 * metricAccent(sketch, step.beat)});
    }
    return notes;
}

std::vector<Note> bassLine(Sketch &sketch, std::string_view pattern, double stepsPerBeat, int low)
{
    std::vector<Note> notes;
    for (const Step &step : readSteps(pattern, stepsPerBeat, sketch.score.beats)) {
        const std::size_t index = sketch.harmony.indexAt(step.beat);
        const auto &spans = sketch.harmony.spans();
        const Chord &chord = spans[index].chord;
        const Chord &next = spans[(index + 1) % spans.size()].chord;
        const int root = keyAtOrAbove(chord.bass, low);
        int key = root;
        if (step.mark == '8')
            key = root + 12;
        else if (step.mark == 'a' || step.mark == 'A')
            key = keyAtOrAbove(next.bass, low) + (step.mark == 'a' ? -1 : 1);
        else if (step.mark != '1')
            key = keyAtOrAbove(degreeClass(chord, step.mark), root);
        notes.push_back({step.beat, step.length * 0.92, static_cast<double>(key),
                         0.8 * metricAccent(sketch, step.beat)});
    }
    return notes;
}

std::vector<Note> drums(Sketch &sketch, std::initializer_list<DrumLine> lines, double stepsPerBeat)
{
    std::vector<Note> notes;
    for (const DrumLine &line : lines)
        for (const Step &step : readSteps(line.pattern, stepsPerBeat, sketch.score.beats))
            notes.push_back({step.beat, step.length, static_cast<double>(line.drum),
                             velocityOf(step.mark) * metricAccent(sketch, step.beat)});
    return notes;
}

} // namespace demonstration_loops
