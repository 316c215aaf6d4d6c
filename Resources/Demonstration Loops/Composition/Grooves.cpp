#include "Resources/Demonstration Loops/Composition/Patterns.hpp"
#include "Resources/Demonstration Loops/Composition/Styles.hpp"
#include "Resources/Demonstration Loops/Instruments/ElectricPiano.hpp"
#include "Resources/Demonstration Loops/Instruments/Organ.hpp"
#include "Resources/Demonstration Loops/Instruments/Piano.hpp"
#include "Resources/Demonstration Loops/Instruments/PluckedString.hpp"
#include "Resources/Demonstration Loops/Instruments/StruckBody.hpp"
#include "Resources/Demonstration Loops/Instruments/Synthesizer.hpp"
#include "Resources/Demonstration Loops/Instruments/Wind.hpp"

#include <memory>
#include <utility>
#include <vector>

namespace demonstration_loops
{

void funk(Sketch &s)
{
    s.score.room = studio;
    s.feel = {s.pick({0.08, 0.0, 0.14, 0.05}), 0.25, 4.0};
    Part &clav = s.add(std::make_unique<PluckedString>(PluckedString::clavinet),
                       comp(s,
                            s.pick<const char *>({"x.oxo.x..ox.o.xo", "..x.x.oxo.x.x.o.",
                                                  "xo.x.ox.xo.x.oxo", "x...x.o.x.ox..x."}),
                            4, {57, 74, 3}, 0.01),
                       -1, -0.5);
    clav.effects = {s.variant() % 2 == 0 ? autoWah(450, 2400) : tone(1400, 0.9, 4),
                    tone(3500, 0.7, 4), drive(1.4, 9000)};
    Part &bass = s.add(std::make_unique<PluckedString>(PluckedString::slapBass),
                       bassLine(s,
                                s.pick<const char *>({"1-..8..1..7.5.a.", "1..18.1..1.5.78.",
                                                      "1.1..1.85..1..a.", "1---..11..5.7.8."}),
                                4, 28),
                       -1);
    bass.effects = {tone(90, 1.0, 2), tone(2500, 1.0, 3)};
    s.add(std::make_unique<DrumKit>(DrumKit::dry),
          drums(s,
                {{Drum::kick, s.pick<const char *>({"X..x..x...x..x..", "X.x.......xx....",
                                                    "X.....xx..x.....", "X..x....x.x....."})},
                 {Drum::snare, s.pick<const char *>({"....X..o.o..X..o", "....X.o.o...X...",
                                                     "....X..o....X.oo", "....X....o.oX..."})},
                 {Drum::closedHat, "x.xoxox.x.xoxox."},
                 {Drum::openHat, "......x.........|..............x."}},
                4),
          0);
    if (s.variant() % 4 == 1)
        s.add(std::make_unique<ElectricPiano>(1.4), comp(s, "x.....x---....x-", 4, {52, 72, 4}), -4,
              0.25);
    if (s.variant() % 4 == 2) {
        Part &horns = s.add(std::make_unique<Synthesizer>(Synthesizer::brass),
                            comp(s, "X..x..X---....X.|..X---..X.......", 4, {58, 77, 4}), 0, 0.25);
        horns.room = 0.3;
        s.add(std::make_unique<Wind>(Wind::saxophone), melody(s, "....x.xxx-......", 4, 65, 82), -1,
              -0.1)
            .room = 0.3;
    }
}

void dub(Sketch &s)
{
    s.score.room = cellar;
    s.score.echoBeats = s.pick({0.75, 1.5, 0.75});
    s.score.echoFeedback = 0.58;
    s.feel = {s.pick({0.15, 0.0, 0.25}), 0.5, 5.0};
    Part &skank =
        s.add(std::make_unique<Organ>(Organ::Registration{0, 0, 8, 6, 4, 0, 0, 0, 0}),
              comp(s, s.pick<const char *>({".x.x.x.x", "..x...x.", ".xo..xo."}), 2, {57, 74, 3}),
              -4, 0.5);
    skank.echo = 0.3;
    Part &guitar = s.add(std::make_unique<PluckedString>(PluckedString::muted),
                         comp(s, "..X...X.", 2, {57, 76, 4}, 0.02), -4, -0.35);
    guitar.echo = 0.2;
    s.add(std::make_unique<Synthesizer>(Synthesizer::subBass),
          bassLine(
              s,
              s.pick<const char *>({"1-.15-8-|..1-7-5-", "1--1--5-|1-..8-7-", "..1-1-3-|5-..3-1-"}),
              2, 28),
          -3);
    Part &kit =
        s.add(std::make_unique<DrumKit>(DrumKit::deep),
              drums(s,
                    {{Drum::kick, s.pick<const char *>({"....X...", "....X...", "X...X..."})},
                     {Drum::rim, s.pick<const char *>({"....x..o", "....x...", "...o..x."})},
                     {Drum::closedHat, "x.xox.xo"},
                     {Drum::snare, "........|......x."}},
                    2),
              -2);
    kit.echo = 0.12;
    if (s.variant() % 3 != 0) {
        Part &lead =
            s.add(std::make_unique<Wind>(s.pick({Wind::harmonica, Wind::harmonica, Wind::trumpet})),
                  melody(s, "x---x-x-........|................", 4, 69, 84), -3);
        lead.echo = 0.45;
        lead.room = 0.3;
    }
}

void blues(Sketch &s)
{
    s.score.room = studio;
    s.feel = {0.33, 0.5, 6.0};
    const bool guitarLed = s.variant() % 2 == 0;
    std::unique_ptr<Instrument> lead = std::make_unique<PluckedString>(PluckedString::electric);
    if (!guitarLed)
        lead = std::make_unique<Wind>(
            s.pick({Wind::saxophone, Wind::harmonica, Wind::saxophone, Wind::saxophone}));
    Part &line = s.add(std::move(lead),
                       melody(s,
                              s.pick<const char *>({"x.xxx---|..x-xx..", "xxx-..x-|x---....",
                                                    "..xxx-xx|x-......", "x-x-xxx-|....x-x-"}),
                              2, 64, 84),
                       0, 0.25);
    if (guitarLed)
        line.effects = {drive(5, 4500)};
    line.room = 0.25;
    if (s.variant() % 4 < 2) {
        Part &organ = s.add(std::make_unique<Organ>(Organ::Registration{8, 8, 8, 4, 0, 0, 0, 2, 4}),
                            comp(s, "x--x----", 2, {55, 74, 4}), -5, -0.2);
        organ.effects = {drive(1.4, 5500)};
    } else {
        s.add(std::make_unique<Piano>(1.3), comp(s, ".x.x.xx.", 2, {55, 76, 4}, 0.02), -4, -0.25);
    }
    s.add(
        std::make_unique<PluckedString>(PluckedString::fingerBass),
        bassLine(s, s.pick<const char *>({"1-3-5-6-", "1-1-5-7-", "1-.15-.a", "1-5-6-7-"}), 2, 28),
        -2);
    s.add(std::make_unique<DrumKit>(DrumKit::acoustic),
          drums(s,
                {{Drum::kick, "X..xX..."},
                 {Drum::snare, "..X...Xo"},
                 {Drum::ride, "x.xxx.xx"},
                 {Drum::closedHat, "..x...x."}},
                2),
          -2);
}

void swing(Sketch &s)
{
    s.score.room = s.pick({plate, studio, plate});
    s.feel = {0.3, 0.5, 6.0};
    if (s.variant() % 3 == 0) {
        Part &vibes = s.add(std::make_unique<StruckBody>(StruckBody::vibraphone()),
                            melody(s, "x-xxx.x-|.xx-x---|xxx.xxx.|x---....", 2, 65, 86), 0, 0.15);
        vibes.room = 0.3;
    } else {
        Part &horn =
            s.add(std::make_unique<Wind>(s.pick({Wind::trumpet, Wind::saxophone, Wind::trumpet})),
                  melody(s, "xxx-x.x-|x--x..xx|xx.xx-x-|x---..x.", 2, 62, 82), 0, 0.1);
        horn.room = 0.25;
    }
    s.add(
        std::make_unique<Piano>(1.0),
        comp(s,
             s.pick<const char *>({"x..x....|.x...x..", "...x..x.|x..x....", "x--.....|...x-..x"}),
             2, {53, 74, 4}, 0.01),
        -5, -0.3);
    s.add(std::make_unique<PluckedString>(PluckedString::uprightBass),
          bassLine(s, s.pick<const char *>({"1-3-5-a-", "1-5-8-A-", "1-5-3-a-"}), 2, 28), -2);
    s.add(std::make_unique<DrumKit>(DrumKit::soft),
          drums(s,
                {{Drum::ride, "X.xxX.xx"},
                 {Drum::closedHat, "..x...x."},
                 {Drum::kick, "o...o..o"},
                 {Drum::snare, "...o....|.....o.o"}},
                2),
          -4);
}

void bossa(Sketch &s)
{
    s.score.room = plate;
    s.feel.looseness = 6.0;
    Part &guitar = s.add(
        std::make_unique<PluckedString>(PluckedString::nylon),
        comp(s, s.pick<const char *>({"x-.x-.x-..x-.x-.", "x--x--x---x--x--", ".x-x..x-.x-x..x-"}),
             4, {52, 71, 4}, 0.01),
        -2, -0.2);
    guitar.effects = {tone(120, 1.0, 3)};
    s.add(std::make_unique<PluckedString>(PluckedString::uprightBass),
          bassLine(s, "1-----1-5-----5-", 4, 31), -3);
    Part &lead = s.add(
        std::make_unique<Wind>(s.pick({Wind::flute, Wind::saxophone, Wind::ocarina})),
        melody(s,
               s.pick<const char *>({"x---x-x-..x-x---", "..x-x-xxx-------", "x-x-..x-x---..xx"}),
               4, 69, 88),
        0, 0.15);
    lead.room = 0.35;
    s.add(std::make_unique<DrumKit>(DrumKit::soft),
          drums(s,
                {{Drum::rim, "x..x..x...x..x.."},
                 {Drum::shaker, "xoxoxoxoxoxoxoxo"},
                 {Drum::kick, "x..ox..ox..ox..o"}},
                4),
          -5);
}

void latin(Sketch &s)
{
    s.score.room = studio;
    s.feel.looseness = 4.0;
    Part &piano = s.add(
        std::make_unique<Piano>(1.5),
        arpeggio(s, s.pick<const char *>({"3.02.301.3024.20", "03.2.03.02.3.021", "30.30.30"}), 4,
                 {55, 76, 4}, 0.3),
        -1, -0.2);
    piano.room = 0.15;
    s.add(std::make_unique<PluckedString>(PluckedString::uprightBass),
          bassLine(
              s, s.pick<const char *>({"...5-.8-....a-..", "1-.5-.8-..5-.a-.", "1-....5-1-..8-a-"}),
              4, 31),
          -4);
    s.add(std::make_unique<DrumKit>(DrumKit::acoustic),
          drums(s,
                {{Drum::clave, "x..x..x...x.x..."},
                 {Drum::highConga, "o.x.o..xo.x.o..."},
                 {Drum::lowConga, "......xx......xx"},
                 {Drum::cowbell, "x...x.x.x...x.x."},
                 {Drum::shaker, "oooooooooooooooo"}},
                4),
          -2);
    if (s.variant() % 3 != 0) {
        Part &lead = s.add(std::make_unique<Synthesizer>(Synthesizer::brass),
                           melody(s, "X.x-..x-x-..x.x-|x---............", 4, 65, 82), -1, 0.2);
        lead.room = 0.25;
    } else {
        Part &pan = s.add(std::make_unique<StruckBody>(StruckBody::steelPan()),
                          melody(s, "x.x.x-xx.xx-x...", 4, 67, 86), -1, 0.2);
        pan.room = 0.25;
    }
}

void slowBeats(Sketch &s)
{
    s.score.room = cellar;
    s.feel = {s.pick({0.22, 0.12, 0.28}), 0.25, 7.0};
    std::unique_ptr<Instrument> keys = std::make_unique<ElectricPiano>(0.7);
    if (s.variant() % 3 == 1)
        keys = std::make_unique<Piano>(0.5);
    Part &chords = s.add(
        std::move(keys),
        comp(s, s.pick<const char *>({"x-----x-..x-....", "x--x----..x-x---", "x-------..x---x-"}),
             4, {50, 72, 4}, 0.04),
        -1, -0.1);
    chords.effects = {drive(1.3, s.pick({2600.0, 3400.0, 2000.0})), chorus(1.2, 0.3)};
    s.add(std::make_unique<Synthesizer>(Synthesizer::subBass),
          bassLine(
              s, s.pick<const char *>({"1--..1..5-....a.", "1-----.1..8-..5-", "1-...1-...1-7-5-"}),
              4, 28),
          -1);
    s.add(std::make_unique<DrumKit>(DrumKit::dry),
          drums(s,
                {{Drum::kick, s.pick<const char *>(
                                  {"X..x..x...X.....", "X......xX.x.....", "X.x.....x.x..x.."})},
                 {Drum::snare, "....X.......X..o"},
                 {Drum::closedHat, s.pick<const char *>({"x.xxx.x.x.xxx.xo", "xoxoxoxoxoxoxoxo",
                                                         "x..xx..xx..xx..x"})}},
                4),
          -1);
    std::unique_ptr<Instrument> top = std::make_unique<StruckBody>(StruckBody::vibraphone());
    if (s.variant() % 3 == 2)
        top = std::make_unique<Wind>(Wind::trumpet);
    Part &lead =
        s.add(std::move(top), melody(s, "..x-x-x---......|x---..x-........", 4, 67, 84), -4, 0.25);
    lead.echo = 0.3;
    lead.room = 0.3;
}

void drumSolo(Sketch &s)
{
    s.score.room = s.pick({studio, hall, plate, cellar});
    s.feel = {s.pick({0.0, 0.25, 0.0, 0.1}), 0.25, 3.0};
    const DrumKit::Character kit =
        s.pick({DrumKit::big, DrumKit::dry, DrumKit::electronic, DrumKit::acoustic});
    std::vector<Note> notes;
    switch (s.variant() % 4) {
    case 0:
        notes = drums(s,
                      {{Drum::kick, "X..X..X.X..X..X.|X.x.X.x.X.x.XXXX"},
                       {Drum::snare, "oxoXooxoXoxoXooo|....X.......X..."},
                       {Drum::highTom, "................|x.x.....x......."},
                       {Drum::midTom, "................|...x.x...xx....."},
                       {Drum::lowTom, "................|......xx...x.x.."},
                       {Drum::crash, "X...............|................"}},
                      4);
        break;
    case 1:
        notes = drums(s,
                      {{Drum::highConga, "x.o.x.oxx.o.x.o.|x.oxx.o.xx.ox.o."},
                       {Drum::lowConga, "..x...x...x...xx|.x....xx...x..xx"},
                       {Drum::shaker, "xoooxoooxoooxooo"},
                       {Drum::clave, "x..x..x...x.x..."},
                       {Drum::kick, "x.......x......."}},
                      4);
        break;
    case 2:
        notes = drums(s,
                      {{Drum::kick, "X.....x...X..x..|X..x......X....."},
                       {Drum::clap, "....X.......X..."},
                       {Drum::closedHat, "xxoxxxoxxxoxxxxx|xxoxxoxxoxxoxxxx"},
                       {Drum::openHat, "..........x.....|..............x."},
                       {Drum::cowbell, "..x..x....x..x..|..x..x..x..x...."},
                       {Drum::lowTom, "................|............x.xx"}},
                      4);
        break;
    default:
        notes = drums(s,
                      {{Drum::lowTom, "X..xX..xX.x.X..x|X..xX..xX.xxX.xx"},
                       {Drum::midTom, "..x...x...x...x.|..x...x...x...x."},
                       {Drum::highTom, "................|.x...x...x......"},
                       {Drum::tambourine, "x.x.x.x.x.x.x.x."},
                       {Drum::kick, "X.......X......."}},
                      4);
        break;
    }
    Part &part = s.add(std::make_unique<DrumKit>(kit), std::move(notes), 0);
    part.room = s.pick({0.2, 0.15, 0.12, 0.3});
    part.effects = {drive(0.9, 16000)};
}

} // namespace demonstration_loops
