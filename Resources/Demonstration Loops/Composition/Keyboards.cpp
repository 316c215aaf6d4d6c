#include "Resources/Demonstration Loops/Composition/Patterns.hpp"
#include "Resources/Demonstration Loops/Composition/Styles.hpp"
#include "Resources/Demonstration Loops/Instruments/ElectricPiano.hpp"
#include "Resources/Demonstration Loops/Instruments/Organ.hpp"
#include "Resources/Demonstration Loops/Instruments/Piano.hpp"
#include "Resources/Demonstration Loops/Instruments/PluckedString.hpp"
#include "Resources/Demonstration Loops/Instruments/Synthesizer.hpp"
#include "Resources/Demonstration Loops/Instruments/Wind.hpp"

#include <memory>
#include <utility>

namespace demonstration_loops
{

void electricPianoBallad(Sketch &s)
{
    s.score.room = plate;
    s.feel.looseness = 9.0;
    const auto *chords =
        s.pick<const char *>({"x---.-x-x---..x-", "x-----x---x-x---", "x---x-x-..x-x---"});
    Part &keys = s.add(std::make_unique<ElectricPiano>(s.pick({0.8, 1.2, 0.6})),
                       comp(s, chords, 4, {52, 72, 4}, 0.03), -1);
    keys.effects = {chorus(1.6, 0.35)};
    keys.room = 0.2;
    Part &lead = s.add(
        std::make_unique<ElectricPiano>(1.1),
        melody(s,
               s.pick<const char *>({"..x-x-x---x-....", "x---..x-x-x-----", "....x-xxx---x-x-"}),
               4, 70, 88),
        -2, 0.15);
    lead.room = 0.35;
    s.add(std::make_unique<PluckedString>(PluckedString::fingerBass),
          bassLine(
              s, s.pick<const char *>({"1-----5-1---..a-", "1---------5-8-a-", "1---..1-5---1---"}),
              4, 31),
          -3);
    if (s.variant() % 3 != 2) {
        s.add(std::make_unique<DrumKit>(DrumKit::soft),
              drums(s,
                    {{Drum::kick, "x.........x....."},
                     {Drum::rim, "....x.......x..."},
                     {Drum::brush, "o.o.o.o.o.o.o.oo"},
                     {Drum::closedHat, "x.o.x.o.x.o.x.o."}},
                    4),
              -6);
    }
}

void gospelOrgan(Sketch &s)
{
    s.score.room = hall;
    s.feel = {s.pick({0.0, 0.3, 0.0, 0.26}), 0.5, 7.0};
    const Organ::Registration full = s.pick<Organ::Registration>({{8, 8, 8, 6, 0, 0, 0, 0, 6},
                                                                  {8, 8, 8, 8, 6, 4, 4, 4, 6},
                                                                  {8, 0, 8, 4, 0, 2, 0, 0, 0},
                                                                  {8, 6, 8, 8, 0, 0, 0, 5, 8}});
    Part &right = s.add(std::make_unique<Organ>(full),
                        comp(s,
                             s.pick<const char *>({"x---x-x---x-x-x-", "x-xx-xx-",
                                                   "x-------x---x-x-", "x--x--x-x--x-xx-"}),
                             s.pick({4.0, 2.0, 4.0, 4.0}), {55, 79, 5}),
                        0);
    right.effects = {drive(1.2, 6500)};
    right.room = 0.25;
    s.add(
        std::make_unique<Organ>(Organ::Registration{8, 0, 8, 0, 0, 0, 0, 0, 0}),
        bassLine(s, s.pick<const char *>({"1-5-8-a-", "1-3-5-a-", "1---5---", "1-1-5-A-"}), 2, 31),
        -3);
    if (s.variant() % 4 == 1 || s.variant() % 4 == 3) {
        s.add(std::make_unique<DrumKit>(DrumKit::acoustic),
              drums(s,
                    {{Drum::kick, "X..xX.x."},
                     {Drum::snare, "..X...X."},
                     {Drum::tambourine, "o.x.o.x."},
                     {Drum::closedHat, "xoxoxoxo"}},
                    2),
              -3);
    }
    if (s.variant() % 4 != 0)
        s.add(std::make_unique<Organ>(Organ::Registration{0, 0, 8, 8, 4, 0, 0, 0, 0}, 1.2, 3),
              melody(s, "..x-x-xxx---....", 4, 72, 88), -3, 0.1);
}

void organCombo(Sketch &s)
{
    s.score.room = studio;
    s.feel = {s.pick({0.0, 0.28, 0.0}), 0.5, 5.0};
    Part &riff = s.add(
        std::make_unique<Organ>(Organ::Registration{8, 8, 8, 0, 0, 0, 0, 0, 0}, 1.6,
                                s.pick({3, 2, 3})),
        melody(s,
               s.pick<const char *>({"x.xx.xx.x-x.x.x.", "x-x.x-xxx---....", "xxx.xxx.x.x.xxx-"}),
               4, 60, 80),
        0, -0.25);
    riff.effects = {drive(s.pick({1.5, 2.5, 4.0}), 5200)};
    std::unique_ptr<Instrument> answer =
        std::make_unique<Organ>(Organ::Registration{6, 4, 8, 6, 3, 2, 0, 0, 4});
    if (s.variant() % 3 == 2)
        answer = std::make_unique<Synthesizer>(Synthesizer::brass);
    Part &pads = s.add(
        std::move(answer),
        comp(s, s.pick<const char *>({"..x...x...x...x.", "....x--.....x--.", "x--x--x---......"}),
             4, {53, 72, 4}),
        s.pick({-5, -5, -2}), 0.45);
    pads.room = 0.2;
    s.add(std::make_unique<PluckedString>(PluckedString::fingerBass),
          bassLine(
              s, s.pick<const char *>({"1-.11-5-8-.85-a-", "1-3-5-a-1-3-5-A-", "1.118.111.11587a"}),
              4, 28),
          -2);
    s.add(std::make_unique<DrumKit>(s.pick({DrumKit::acoustic, DrumKit::soft, DrumKit::dry})),
          drums(s,
                {{Drum::kick, s.pick<const char *>(
                                  {"X..x..x.X.x.....", "X.......x.x.....", "X.x...x.X.x...x."})},
                 {Drum::snare, "....X..o....X..o"},
                 {Drum::closedHat, "x.o.x.o.x.o.x.o."}},
                4),
          -2);
}

void pianoSolo(Sketch &s)
{
    s.score.room = hall;
    s.feel.looseness = 10.0;
    Part &left = s.add(
        std::make_unique<Piano>(s.pick({0.8, 1.1, 0.6, 1.4})),
        arpeggio(s, s.pick<const char *>({"02123121", "0-2-3-2-", "012345654321", "0.2.1.2."}),
                 s.pick({2.0, 2.0, 3.0, 4.0}), {40, 62, 4}, s.pick({1.6, 2.0, 1.4, 0.4})),
        -3, -0.1);
    left.room = 0.25;
    Part &right = s.add(std::make_unique<Piano>(s.pick({1.0, 0.9, 0.8, 1.5})),
                        melody(s,
                               s.pick<const char *>({"x---x-x-x-------", "x-----x-x---x-xx",
                                                     "x---..x-x-x-x---", "x-xxx-x-xxx-x-x-"}),
                               4, 69, 89),
                        0, 0.1);
    right.room = 0.3;
}

void waltz(Sketch &s)
{
    s.score.room = s.pick({hall, studio, plate});
    s.feel.looseness = 8.0;
    std::unique_ptr<Instrument> keys = std::make_unique<Piano>(0.8);
    if (s.variant() % 3 == 1)
        keys = std::make_unique<Wind>(Wind::accordion);
    s.add(std::move(keys), comp(s, ".-x.x.", 2, {55, 74, 3}, 0.02), -3, -0.15);
    std::unique_ptr<Instrument> lead = std::make_unique<Wind>(Wind::violin);
    if (s.variant() % 3 == 1)
        lead = std::make_unique<Wind>(Wind::accordion);
    if (s.variant() % 3 == 2)
        lead = std::make_unique<Wind>(Wind::clarinet);
    Part &line =
        s.add(std::move(lead),
              melody(s, s.pick<const char *>({"x---x-x-x-x-", "x-xxx-x---x-", "x---..x-----"}), 2,
                     67, 86),
              0, 0.15);
    line.room = 0.3;
    s.add(std::make_unique<PluckedString>(PluckedString::uprightBass),
          bassLine(s, "1--...5--...", 2, 31), -2);
    if (s.variant() % 3 == 1)
        s.add(std::make_unique<DrumKit>(DrumKit::soft),
              drums(s, {{Drum::kick, "x....."}, {Drum::brush, "..x.x."}}, 2), -7);
}

void chorale(Sketch &s)
{
    s.score.room = s.pick({cathedral, hall});
    const Organ::Registration flutes =
        s.pick<Organ::Registration>({{6, 0, 8, 6, 0, 4, 0, 0, 3}, {8, 0, 8, 0, 0, 8, 0, 0, 8}});
    Part &hands = s.add(std::make_unique<Organ>(flutes),
                        comp(s, s.pick<const char *>({"x-x-x---", "x---x-x-"}), 2, {53, 79, 4}), 0);
    hands.room = 0.5;
    Part &pedal = s.add(std::make_unique<Organ>(Organ::Registration{8, 0, 6, 0, 0, 0, 0, 0, 0}),
                        bassLine(s, "1---5---", 2, 29), -3);
    pedal.room = 0.4;
    Part &line = s.add(std::make_unique<Organ>(Organ::Registration{0, 0, 8, 4, 6, 2, 3, 0, 0}),
                       melody(s, "x-x-x-x-xxx-x---", 4, 69, 86), -3, 0.15);
    line.room = 0.5;
}

} // namespace demonstration_loops
