#include "Resources/Demonstration Loops/Composition/Harmony.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>

namespace demonstration_loops
{

namespace
{

struct Named {
    std::string_view name;
    std::vector<int> steps;
};

const std::vector<Named> &qualities()
{
    static const std::vector<Named> table = {
        {"", {0, 4, 7}},
        {"m", {0, 3, 7}},
        {"5", {0, 7}},
        {"6", {0, 4, 7, 9}},
        {"69", {0, 4, 7, 9, 2}},
        {"m6", {0, 3, 7, 9}},
        {"7", {0, 4, 7, 10}},
        {"m7", {0, 3, 7, 10}},
        {"maj7", {0, 4, 7, 11}},
        {"mmaj7", {0, 3, 7, 11}},
        {"9", {0, 4, 10, 2, 7}},
        {"m9", {0, 3, 10, 2, 7}},
        {"maj9", {0, 4, 11, 2, 7}},
        {"m11", {0, 3, 10, 5, 7}},
        {"13", {0, 4, 10, 9, 2}},
        {"7b9", {0, 4, 10, 1, 7}},
        {"7#9", {0, 4, 10, 3, 7}},
        {"7sus4", {0, 5, 7, 10}},
        {"9sus4", {0, 5, 10, 2, 7}},
        {"sus4", {0, 5, 7}},
        {"sus2", {0, 2, 7}},
        {"add9", {0, 4, 7, 2}},
        {"madd9", {0, 3, 7, 2}},
        {"dim", {0, 3, 6}},
        {"dim7", {0, 3, 6, 9}},
        {"m7b5", {0, 3, 6, 10}},
        {"aug", {0, 4, 8}},
        {"maj7#11", {0, 4, 11, 6, 7}},
    };
    return table;
}

const std::vector<Named> &modes()
{
    static const std::vector<Named> table = {
        {"major", {0, 2, 4, 5, 7, 9, 11}},     {"minor", {0, 2, 3, 5, 7, 8, 10}},
        {"dorian", {0, 2, 3, 5, 7, 9, 10}},    {"mixolydian", {0, 2, 4, 5, 7, 9, 10}},
        {"lydian", {0, 2, 4, 6, 7, 9, 11}},    {"phrygian", {0, 1, 3, 5, 7, 8, 10}},
        {"harmonic", {0, 2, 3, 5, 7, 8, 11}},  {"pentatonic", {0, 2, 4, 7, 9}},
        {"minorpentatonic", {0, 3, 5, 7, 10}}, {"blues", {0, 3, 5, 6, 7, 10}},
        {"hirajoshi", {0, 2, 3, 7, 8}},
    };
    return table;
}

const std::vector<int> &find(const std::vector<Named> &table, std::string_view name)
{
    const auto entry = std::find_if(table.begin(), table.end(),
                                    [&](const Named &named) { return named.name == name; });
    if (entry == table.end())
        throw std::invalid_argument("unknown chord or scale: " + std::string(name));
    return entry->steps;
}

/// Takes a note's name off the front of `text` and gives its pitch class.
int takeNote(std::string_view &text)
{
    constexpr std::array<int, 7> letters = {9, 11, 0, 2, 4, 5, 7};
    if (text.empty() || text.front() < 'A' || text.front() > 'G')
        throw std::invalid_argument("no note name: " + std::string(text));
    int result = letters[static_cast<std::size_t>(text.front() - 'A')];
    text.remove_prefix(1);
    if (!text.empty() && (text.front() == '#' || text.front() == 'b')) {
        result += text.front() == '#' ? 1 : 11;
        text.remove_prefix(1);
    }
    return result % 12;
}

int classOf(int key)
{
    return ((key % 12) + 12) % 12;
}

std::vector<std::string_view> split(std::string_view text, char separator)
{
    std::vector<std::string_view> result;
    while (!text.empty()) {
        const auto end = std::min(text.find(separator), text.size());
        if (end > 0)
            result.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return result;
}

/// What is awkward about a voicing by itself.
double awkwardness(const std::vector<int> &keys, const Chord &chord)
{
    double cost = 0.0;
    for (std::size_t i = 1; i < keys.size(); ++i) {
        const int gap = keys[i] - keys[i - 1];
        if (gap < 2)
            cost += 9.0;
        if (gap < 4 && keys[i] < 55)
            cost += 5.0;
        if (gap > 11)
            cost += 0.8 * (gap - 11);
    }
    // The earlier a tone stands in its chord's list, the more it is missed.
    for (std::size_t i = 0; i < chord.classes.size(); ++i) {
        const bool present = std::any_of(keys.begin(), keys.end(),
                                         [&](int key) { return classOf(key) == chord.classes[i]; });
        if (!present)
            cost += i == 0 ? 5.0 : 9.0 - static_cast<double>(i);
    }
    return cost;
}

double distance(const std::vector<int> &from, const std::vector<int> &to)
{
    double sum = 0.0;
    for (std::size_t i = 0; i < std::min(from.size(), to.size()); ++i)
        sum += std::abs(from[i] - to[i]);
    return sum;
}

/// Tries all sets of `count` candidates in order and keeps the cheapest.
class VoicingSearch
{
public:
    VoicingSearch(const Chord &chord, const Register &where, const std::vector<int> &before)
        : chord_(chord), before_(before), count_(static_cast<std::size_t>(where.voices)),
          middle_(0.5 * (where.low + where.high))
    {
        for (int key = where.low; key <= where.high; ++key)
            if (chord.contains(key))
                candidates_.push_back(key);
        count_ = std::min(count_, candidates_.size());
    }

    std::vector<int> best()
    {
        extend(0);
        return best_;
    }

private:
    void extend(std::size_t from)
    {
        if (current_.size() == count_) {
            judge();
            return;
        }
        for (std::size_t i = from; i < candidates_.size(); ++i) {
            current_.push_back(candidates_[i]);
            extend(i + 1);
            current_.pop_back();
        }
    }

    void judge()
    {
        double mean = 0.0;
        for (const int key : current_)
            mean += key / static_cast<double>(count_);
        const double cost = awkwardness(current_, chord_) + distance(before_, current_) +
                            0.35 * std::abs(mean - middle_);
        if (cost < cost_) {
            cost_ = cost;
            best_ = current_;
        }
    }

    const Chord &chord_;
    const std::vector<int> &before_;
    std::size_t count_;
    double middle_;
    std::vector<int> candidates_;
    std::vector<int> current_;
    std::vector<int> best_;
    double cost_ = std::numeric_limits<double>::max();
};

} // namespace

Chord Chord::parse(std::string_view symbol)
{
    Chord chord;
    chord.root = takeNote(symbol);
    chord.bass = chord.root;
    const auto slash = symbol.find('/');
    std::string_view quality = symbol.substr(0, slash);
    if (slash != std::string_view::npos) {
        std::string_view bass = symbol.substr(slash + 1);
        chord.bass = takeNote(bass);
    }
    for (const int step : find(qualities(), quality))
        chord.classes.push_back((chord.root + step) % 12);
    return chord;
}

bool Chord::contains(int key) const
{
    return std::find(classes.begin(), classes.end(), classOf(key)) != classes.end();
}

Progression::Progression(std::string_view text, int beatsPerBar)
{
    for (const std::string_view bar : split(text, '|')) {
        const auto symbols = split(bar, ' ');
        const double length = beatsPerBar / static_cast<double>(symbols.size());
        for (const std::string_view symbol : symbols) {
            spans_.push_back({beats_, length, Chord::parse(symbol)});
            beats_ += length;
        }
    }
}

std::size_t Progression::indexAt(double beat) const
{
    const double wrapped = beat - beats_ * std::floor(beat / beats_);
    std::size_t index = spans_.size() - 1;
    while (index > 0 && spans_[index].beat > wrapped + 1.0e-6)
        --index;
    return index;
}

Scale::Scale(std::string_view name)
{
    const int tonic = takeNote(name);
    if (!name.empty())
        name.remove_prefix(1);
    for (const int step : find(modes(), name))
        classes_.push_back((tonic + step) % 12);
}

bool Scale::contains(int key) const
{
    return std::find(classes_.begin(), classes_.end(), classOf(key)) != classes_.end();
}

int Scale::step(int key, int steps) const
{
    const int direction = steps < 0 ? -1 : 1;
    for (int left = std::abs(steps); left > 0; --left) {
        do
            key += direction;
        while (!contains(key));
    }
    return key;
}

std::vector<std::vector<int>> voice(const Progression &progression, const Register &where)
{
    std::vector<std::vector<int>> result(progression.spans().size());
    std::vector<int> before;
    // The second round starts from where the first one ended.
    for (int round = 0; round < 2; ++round) {
        for (std::size_t i = 0; i < result.size(); ++i) {
            result[i] = VoicingSearch(progression.spans()[i].chord, where, before).best();
            before = result[i];
        }
    }
    return result;
}

} // namespace demonstration_loops
