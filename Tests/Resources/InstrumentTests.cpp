#include "Resources/Demonstration Loops/Instruments/Choir.hpp"
#include "Resources/Demonstration Loops/Instruments/DrumKit.hpp"
#include "Resources/Demonstration Loops/Instruments/ElectricPiano.hpp"
#include "Resources/Demonstration Loops/Instruments/Organ.hpp"
#include "Resources/Demonstration Loops/Instruments/Piano.hpp"
#include "Resources/Demonstration Loops/Instruments/PluckedString.hpp"
#include "Resources/Demonstration Loops/Instruments/StruckBody.hpp"
#include "Resources/Demonstration Loops/Instruments/Synthesizer.hpp"
#include "Resources/Demonstration Loops/Instruments/Wind.hpp"
#include "Tests/Resources/Measuring.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace
{

using namespace demonstration_loops;
using Maker = std::function<std::unique_ptr<Instrument>()>;

struct Case {
    const char *name;
    Maker make;
    double pitch;
    double cents = 0.0; ///< how far off its pitch may be
};

std::ostream &operator<<(std::ostream &out, const Case &value)
{
    return out << value.name;
}

template <typename T, typename Character>
Maker with(Character character)
{
    return [=] { return std::make_unique<T>(character); };
}

/// What has one pitch.
std::vector<Case> tuned()
{
    using S = Synthesizer;
    using P = PluckedString;
    const Organ::Registration eightFoot = {0, 0, 8, 0, 0, 0, 0, 0, 0};
    S::Character mono = S::lead;
    mono.voices = 1;
    mono.vibrato = 0;
    Wind::Character steadyFlute = Wind::flute;
    steadyFlute.vibrato = 0;
    std::vector<Case> result = {
        {"ElectricPiano", with<ElectricPiano>(1.0), 64, 1},
        {"Organ", with<Organ>(eightFoot), 60, 1},
        // Stiff strings are sharp by nature.
        {"Piano", with<Piano>(1.0), 57, 3},
        {"Marimba", with<StruckBody>(StruckBody::marimba()), 60, 1},
        {"Vibraphone", with<StruckBody>(StruckBody::vibraphone()), 69, 1},
        {"Synthesizer", with<S>(mono), 62, 1},
        // Breath wavers.
        {"Flute", with<Wind>(steadyFlute), 74, 8},
        {"FingerBass", with<P>(P::fingerBass), 33, 2},
        {"UprightBass", with<P>(P::uprightBass), 38, 2},
    };
    for (const double pitch : {31.0, 40.0, 52.0, 64.0, 76.0, 86.0}) {
        result.push_back({"Nylon", with<P>(P::nylon), pitch, 2});
        result.push_back({"Steel", with<P>(P::steel), pitch, 2});
        result.push_back({"Harp", with<P>(P::harp), pitch, 2});
    }
    return result;
}

/// One of each kind, and every drum.
std::vector<Case> all()
{
    using S = Synthesizer;
    using P = PluckedString;
    std::vector<Case> result = {
        {"ElectricPiano", with<ElectricPiano>(1.0), 64},
        {"Organ", with<Organ>(Organ::Registration{8, 8, 8, 8, 8, 8, 8, 8, 8}), 60},
        {"Piano", with<Piano>(1.0), 57},
        {"Vibraphone", with<StruckBody>(StruckBody::vibraphone()), 69},
        {"Bells", with<StruckBody>(StruckBody::bells()), 60},
        {"Choir", [] { return std::make_unique<Choir>(Choir::Vowel::a, Choir::Vowel::o); }, 60},
        {"Pad", with<S>(S::pad), 60},
        {"Lead", with<S>(S::hollowLead), 72},
        {"Accordion", with<Wind>(Wind::accordion), 67},
        {"Nylon", with<P>(P::nylon), 52},
        {"Clavinet", with<P>(P::clavinet), 64},
        {"UprightBass", with<P>(P::uprightBass), 33},
    };
    for (int drum = 0; drum <= static_cast<int>(Drum::brush); ++drum)
        result.push_back({"Drum", with<DrumKit>(DrumKit::acoustic), static_cast<double>(drum)});
    return result;
}

class InstrumentTests : public testing::TestWithParam<Case>
{
protected:
    [[nodiscard]] StereoLoop play(std::size_t start, double held, std::size_t frames,
                                  double velocity = 0.7) const
    {
        StereoLoop loop(frames);
        GetParam().make()->play({start, held, GetParam().pitch, velocity, 11}, loop);
        return loop;
    }
};

class TunedInstrumentTests : public InstrumentTests
{
};

TEST_P(TunedInstrumentTests, IsInTune)
{
    const StereoLoop loop = play(0, 1.5, 96000);
    EXPECT_LT(std::abs(measuring::centsOff(loop.left, 4800, frequencyOf(GetParam().pitch))),
              GetParam().cents);
}

TEST_P(InstrumentTests, SoundsTheSameWhereverItStartsInTheLoop)
{
    const StereoLoop atStart = play(0, 0.5, 30000);
    const StereoLoop nearEnd = play(29500, 0.5, 30000);
    EXPECT_LT(measuring::largestDifference(measuring::rotated(atStart, 29500), nearEnd), 1.0e-12);
}

TEST_P(InstrumentTests, ATailLongerThanTheLoopIsHeardOnTopOfIt)
{
    const StereoLoop whole = play(0, 1.0, 480000);
    const StereoLoop wrapped = play(0, 1.0, 16000);
    double largest = 0.0;
    for (std::size_t i = 0; i < wrapped.frames(); ++i) {
        double sum = 0.0;
        for (std::size_t k = i; k < whole.frames(); k += wrapped.frames())
            sum += whole.left[k];
        largest = std::max(largest, std::abs(sum - wrapped.left[i]));
    }
    EXPECT_LT(largest, 1.0e-9);
}

TEST_P(InstrumentTests, IsAudibleFiniteAndEnds)
{
    const StereoLoop loop = play(0, 0.5, 960000);
    EXPECT_TRUE(std::isfinite(loop.peak()));
    EXPECT_GT(loop.peak(), 0.005);
    EXPECT_LT(loop.peak(), 2.0);
    EXPECT_EQ(measuring::rms(loop.left, 900000, 960000), 0.0);
}

TEST_P(InstrumentTests, EndsWithoutAClick)
{
    const StereoLoop loop = play(0, 0.5, 960000);
    std::size_t last = loop.frames() - 1;
    while (loop.left[last] == 0.0)
        --last;
    EXPECT_LT(std::abs(loop.left[last]), 2.0e-3 * loop.peak());
}

TEST_P(InstrumentTests, HarderStrokesAreLouder)
{
    EXPECT_GT(play(0, 0.5, 96000, 0.9).peak(), play(0, 0.5, 96000, 0.4).peak());
}

std::string nameOf(const testing::TestParamInfo<Case> &instance)
{
    return instance.param.name + std::to_string(instance.index);
}

INSTANTIATE_TEST_SUITE_P(All, InstrumentTests, testing::ValuesIn(all()), nameOf);
INSTANTIATE_TEST_SUITE_P(Tuned, TunedInstrumentTests, testing::ValuesIn(tuned()), nameOf);

} // namespace
