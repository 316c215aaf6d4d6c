#include "Resources/Demonstration Loops/Composition/Patterns.hpp"
#include "Resources/Demonstration Loops/Composition/Styles.hpp"
#include "Resources/Demonstration Loops/Instruments/Choir.hpp"
#include "Resources/Demonstration Loops/Instruments/ElectricPiano.hpp"
#include "Resources/Demonstration Loops/Instruments/PluckedString.hpp"
#include "Resources/Demonstration Loops/Instruments/StruckBody.hpp"
#include "Resources/Demonstration Loops/Instruments/Synthesizer.hpp"

#include <memory>
#include <utility>

namespace demonstration_loops
{

void synthArpeggio(Sketch &s)
{
    s.score.room = hall;
    s.score.echoBeats = s.pick({0.75, 0.5, 0.75, 1.5});
    Part &arp =
        s.add(std::make_unique<Synthesizer>(s.pick({Synthesizer::pluck, Synthesizer::squarePluck,
                                                    Synthesizer::pluck, Synthesizer::squarePluck})),
              arpeggio(s,
                       s.pick<const char *>(
                           {"0123456543210246", "0.2.4.3.5.4.2.1.", "0213243546352413", "042517"}),
                       4, {s.pick({48, 57, 43, 52}), s.pick({69, 76, 64, 72}), 4}),
              0, 0.0);
    arp.echo = 0.35;
    arp.room = 0.2;
    arp.effects = {filterSweep(s.pick({900.0, 1600.0, 600.0, 1200.0}), 9000, s.pick({1, 2, 1, 1}))};
    if (s.variant() % 4 != 1) {
        Part &pad = s.add(std::make_unique<Synthesizer>(Synthesizer::pad),
                          comp(s, "x---", 1, {52, 72, 4}), -6);
        pad.room = 0.4;
    }
    s.add(std::make_unique<Synthesizer>(Synthesizer::bass),
          bassLine(s, s.pick<const char *>({"1---", "1.1.", "1-8-", "1--5"}), 1, 33), -4);
    if (s.variant() % 4 >= 2)
        s.add(std::make_unique<DrumKit>(DrumKit::electronic),
              drums(s,
                    {{Drum::kick, "X...X...X...X..."},
                     {Drum::closedHat, "..x...x...x...xo"},
                     {Drum::clap, "....x.......x..."}},
                    4),
              -3);
}

void house(Sketch &s)
{
    s.score.room = plate;
    s.score.echoBeats = 0.75;
    s.feel = {s.pick({0.0, 0.12, 0.0, 0.06}), 0.25, 2.0};
    s.add(std::make_unique<DrumKit>(DrumKit::electronic),
          drums(s,
                {{Drum::kick, "X...X...X...X..."},
                 {Drum::clap, s.pick<const char *>({"....X.......X...", "....X.......X..x",
                                                    "................", "....x..x....x..."})},
                 {Drum::openHat, "..x...x...x...x."},
                 {Drum::closedHat, s.pick<const char *>({"xx.xxx.xxx.xxx.x", "o.oxo.oxo.oxo.ox",
                                                         "xxxxxxxxxxxxxxxx", "x..xx..xx..xx..x"})}},
                4),
          0);
    if (s.variant() % 4 == 2) {
        Part &acid = s.add(std::make_unique<Synthesizer>(Synthesizer::acidBass),
                           bassLine(s, "11.18.1a1.781.5.", 4, 33), -2);
        acid.effects = {filterSweep(500, 5000, 1), drive(2.0, 8000)};
        acid.echo = 0.1;
    } else {
        s.add(std::make_unique<Synthesizer>(Synthesizer::bass),
              bassLine(s,
                       s.pick<const char *>(
                           {"..1-..1-..1-..8-", "1..1..1.8..1..a.", "1", ".11-.11-.11-.85-"}),
                       4, 33),
              -5);
    }
    std::unique_ptr<Instrument> chords = std::make_unique<Synthesizer>(Synthesizer::stab);
    if (s.variant() % 4 == 1)
        chords = std::make_unique<ElectricPiano>(1.5);
    Part &stabs = s.add(std::move(chords),
                        comp(s,
                             s.pick<const char *>({"x..x..x...x.....", "x-.x-..x-..x-.x.",
                                                   "......x.........", "X..x..x..x..x.x."}),
                             4, {55, 77, 4}),
                        -3);
    stabs.echo = 0.25;
    stabs.room = 0.25;
}

void breakbeat(Sketch &s)
{
    s.score.room = plate;
    s.score.echoBeats = 1.5;
    s.feel.looseness = 2.0;
    s.add(std::make_unique<DrumKit>(s.pick({DrumKit::dry, DrumKit::electronic, DrumKit::dry})),
          drums(s,
                {{Drum::kick, s.pick<const char *>({"X.x.......x.....|X.x.......x..x..",
                                                    "X.........x.....|X..x......x.....",
                                                    "X.x...x...x.....|X.....x...x....."})},
                 {Drum::snare, s.pick<const char *>({"....X..o.o..X..o|....X..o.o....X.",
                                                     "....X.......X...|....X.......X.oo",
                                                     "....X..o....X.o.|....X.o.o.X....."})},
                 {Drum::closedHat, "x.x.x.x.x.x.x.x."},
                 {Drum::ride, s.pick<const char *>(
                                  {"................", "x.x.x.x.x.x.x.x.", "x...x...x...x..."})},
                 {Drum::shaker, "oxoxoxoxoxoxoxox"}},
                4),
          0);
    Part &bass = s.add(std::make_unique<Synthesizer>(
                           s.pick({Synthesizer::subBass, Synthesizer::bass, Synthesizer::subBass})),
                       bassLine(s,
                                s.pick<const char *>({"1---..1-..5---8-|1-----..7---5-..",
                                                      "1-.1-.1-8-.1-.5-", "1-------....8-7-"}),
                                4, 28),
                       -3);
    bass.effects = {drive(2.2, 2500)};
    Part &pad = s.add(
        std::make_unique<Synthesizer>(
            s.pick({Synthesizer::pad, Synthesizer::stab, Synthesizer::pad})),
        comp(s, s.pick<const char *>({"x---------------", "x..x..x.........", "x-------x-------"}),
             4, {55, 76, 4}),
        -5);
    pad.room = 0.4;
    pad.echo = 0.2;
    if (s.variant() % 3 == 2) {
        Part &bell = s.add(std::make_unique<ElectricPiano>(1.4),
                           melody(s, "x.x...x...x.....|..x...x.x.......", 4, 72, 91), -4, 0.3);
        bell.echo = 0.4;
    }
}

void synthwave(Sketch &s)
{
    s.score.room = hall;
    s.score.echoBeats = 0.75;
    s.feel.looseness = 1.5;
    s.add(std::make_unique<Synthesizer>(Synthesizer::bass),
          bassLine(
              s, s.pick<const char *>({"1.11.11.1.11.18.", "1818181818181818", "1.8.1.8.1.8.1.a."}),
              4, 33),
          -3);
    Part &pad =
        s.add(std::make_unique<Synthesizer>(Synthesizer::pad), comp(s, "x---", 1, {55, 74, 4}), -5);
    pad.effects = {chorus(2.5, 0.5)};
    pad.room = 0.35;
    Part &lead = s.add(
        std::make_unique<Synthesizer>(
            s.pick({Synthesizer::lead, Synthesizer::hollowLead, Synthesizer::lead})),
        melody(s,
               s.pick<const char *>({"x-----x-x---x---", "x---x-x-x-------", "x-x-x---..x-x-x-"}),
               4, 69, 86),
        -1);
    lead.echo = 0.35;
    lead.room = 0.25;
    Part &kit = s.add(
        std::make_unique<DrumKit>(DrumKit::big),
        drums(
            s,
            {{Drum::kick, "X...X...X...X..."},
             {Drum::snare, "....X.......X..."},
             {Drum::closedHat, "x.x.x.x.x.x.x.x."},
             {Drum::highTom, "................|................|................|........x.x....."},
             {Drum::lowTom, "................|................|................|............x.x."}},
            4),
        -1);
    kit.room = 0.3;
}

void ambient(Sketch &s)
{
    s.score.room = cathedral;
    s.score.echoBeats = 1.5;
    s.score.echoFeedback = 0.6;
    s.feel.looseness = 12.0;
    Part &pad =
        s.add(std::make_unique<Synthesizer>(s.pick(
                  {Synthesizer::pad, Synthesizer::strings, Synthesizer::pad, Synthesizer::pad})),
              comp(s, "x---", 1, {s.pick({48, 55, 52, 45}), s.pick({72, 79, 76, 67}), 5}), -1);
    pad.room = 0.5;
    pad.effects = {filterSweep(700, s.pick({4000.0, 7000.0, 2500.0, 5000.0}), s.pick({1, 1, 2, 1})),
                   chorus(3.0, 0.5)};
    std::unique_ptr<Instrument> drops = std::make_unique<StruckBody>(StruckBody::glockenspiel());
    if (s.variant() % 4 == 1)
        drops = std::make_unique<ElectricPiano>(0.6);
    if (s.variant() % 4 == 2)
        drops = std::make_unique<PluckedString>(PluckedString::harp);
    if (s.variant() % 4 == 3)
        drops = std::make_unique<StruckBody>(StruckBody::bells());
    Part &bells = s.add(std::move(drops),
                        melody(s,
                               s.pick<const char *>({"..x...x-..x.....", "x-..x-..x---....",
                                                     "x.x...x.....x...", "x-------x-------"}),
                               s.pick({2.0, 2.0, 4.0, 2.0}), s.pick({76, 67, 70, 60}),
                               s.pick({96, 86, 90, 79})),
                        -3, 0.2);
    bells.echo = 0.5;
    bells.room = 0.6;
    s.add(std::make_unique<Synthesizer>(Synthesizer::subBass), bassLine(s, "1---", 1, 31), -5);
    if (s.variant() % 4 == 0) {
        Part &voices = s.add(std::make_unique<Choir>(Choir::Vowel::u, Choir::Vowel::o),
                             comp(s, "x---", 1, {57, 74, 3}), -5);
        voices.room = 0.6;
    }
}

} // namespace demonstration_loops
