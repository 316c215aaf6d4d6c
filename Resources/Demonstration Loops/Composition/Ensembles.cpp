#include "Resources/Demonstration Loops/Composition/Patterns.hpp"
#include "Resources/Demonstration Loops/Composition/Styles.hpp"
#include "Resources/Demonstration Loops/Instruments/Choir.hpp"
#include "Resources/Demonstration Loops/Instruments/Organ.hpp"
#include "Resources/Demonstration Loops/Instruments/Piano.hpp"
#include "Resources/Demonstration Loops/Instruments/PluckedString.hpp"
#include "Resources/Demonstration Loops/Instruments/StruckBody.hpp"
#include "Resources/Demonstration Loops/Instruments/Synthesizer.hpp"
#include "Resources/Demonstration Loops/Instruments/Wind.hpp"

#include <memory>
#include <utility>

namespace demonstration_loops
{

void stringEnsemble(Sketch &s)
{
    s.score.room = hall;
    s.feel.looseness = 8.0;
    const bool driving = s.variant() % 4 == 1 || s.variant() % 4 == 3;
    Part &section = s.add(
        std::make_unique<Synthesizer>(driving ? Synthesizer::shortStrings : Synthesizer::strings),
        comp(s, s.pick<const char *>({"x-------", "x-oox-oo", "x---x---", "xooxooxo"}),
             s.pick({2.0, 4.0, 2.0, 4.0}), {50, 79, 5}),
        -1);
    section.room = 0.35;
    section.effects = {tone(300, 0.8, 2), tone(2400, 0.8, -2)};
    Part &basses = s.add(
        std::make_unique<Synthesizer>(driving ? Synthesizer::shortStrings : Synthesizer::strings),
        bassLine(s, s.pick<const char *>({"1---5---", "1-11", "1-----3-", "1--1--8-"}),
                 s.pick({2.0, 4.0, 2.0, 4.0}), 36),
        -4);
    basses.room = 0.25;
    Part &line = s.add(std::make_unique<Wind>(Wind::violin),
                       melody(s,
                              s.pick<const char *>({"x-----x-x---x-x-", "x---x---x-x-x---",
                                                    "x-------x---x---", "x---..x-x---x-x-"}),
                              4, 72, 91),
                       -2, 0.15);
    line.room = 0.4;
    if (s.variant() % 4 == 2) {
        Part &pizzicato = s.add(std::make_unique<PluckedString>(PluckedString::pizzicato),
                                arpeggio(s, ".1.2.3.2", 2, {48, 67, 4}), -3, -0.3);
        pizzicato.room = 0.35;
    }
}

void choirPad(Sketch &s)
{
    s.score.room = cathedral;
    s.feel.looseness = 10.0;
    using V = Choir::Vowel;
    Part &women = s.add(
        std::make_unique<Choir>(s.pick({V::a, V::u, V::o, V::i}), s.pick({V::o, V::a, V::e, V::a})),
        comp(s, s.pick<const char *>({"x---", "x-x-", "x--x", "x-x-"}), 1, {57, 79, 4}), 0);
    women.room = 0.5;
    Part &men = s.add(
        std::make_unique<Choir>(s.pick({V::u, V::o, V::a, V::o}), s.pick({V::u, V::a, V::o, V::u})),
        bassLine(s, s.pick<const char *>({"1---", "1-5-", "1--5", "1-3-"}), 1, 43), -3);
    men.room = 0.4;
    if (s.variant() % 4 == 1) {
        Part &solo =
            s.add(std::make_unique<Choir>(V::a, V::a), melody(s, "x-x-x---", 2, 69, 83), 0, 0.1);
        solo.room = 0.5;
    }
    if (s.variant() % 4 >= 2) {
        Part &harp = s.add(std::make_unique<PluckedString>(PluckedString::harp),
                           arpeggio(s, "01234321", 2, {48, 72, 5}, 2.0), -4, 0.25);
        harp.room = 0.4;
    }
}

void minimalism(Sketch &s)
{
    s.score.room = plate;
    s.feel.looseness = 2.0;
    // Figures of different lengths shift against each other until the loop ends.
    std::unique_ptr<Instrument> second = std::make_unique<StruckBody>(StruckBody::marimba());
    if (s.variant() % 4 == 1)
        second = std::make_unique<StruckBody>(StruckBody::vibraphone());
    if (s.variant() % 4 == 2)
        second = std::make_unique<Piano>(1.2);
    if (s.variant() % 4 == 3)
        second = std::make_unique<PluckedString>(PluckedString::pizzicato);
    const double grid = s.pick({4.0, 4.0, 4.0, 3.0});
    Part &first =
        s.add(std::make_unique<StruckBody>(StruckBody::marimba()),
              arpeggio(s, s.pick<const char *>({"0213.213", "02.13.2.", "03120312", "021032"}),
                       grid, {55, 74, 4}),
              -1, -0.6);
    first.room = 0.2;
    Part &other = s.add(std::move(second),
                        arpeggio(s, s.pick<const char *>({"310.312.0", "3.1.2", "41230", "3.21"}),
                                 grid, {60, 79, 4}),
                        -1, 0.6);
    other.room = 0.2;
    Part &low = s.add(
        std::make_unique<StruckBody>(StruckBody::marimba()),
        bassLine(s, s.pick<const char *>({"1.1.5.1.", "1...1.5.", "1..1..8.", "1..5.."}), grid, 38),
        -4);
    low.room = 0.2;
    if (s.variant() % 2 == 1) {
        Part &held =
            s.add(std::make_unique<Wind>(Wind::clarinet), comp(s, "x---", 1, {60, 74, 2}), -6);
        held.room = 0.35;
    }
}

void soloLine(Sketch &s)
{
    s.score.room = s.pick({hall, plate, studio, cathedral, plate, hall});
    s.score.echoBeats = 0.75;
    s.feel = {s.pick({0.0, 0.2, 0.0, 0.0, 0.15, 0.0}), 0.5, 9.0};
    std::unique_ptr<Instrument> lead;
    switch (s.variant() % 6) {
    case 0:
        lead = std::make_unique<Wind>(Wind::flute);
        break;
    case 1:
        lead = std::make_unique<Wind>(Wind::saxophone);
        break;
    case 2:
        lead = std::make_unique<Synthesizer>(Synthesizer::hollowLead);
        break;
    case 3:
        lead = std::make_unique<Wind>(Wind::violin);
        break;
    case 4:
        lead = std::make_unique<Wind>(Wind::harmonica);
        break;
    default:
        lead = std::make_unique<Wind>(Wind::clarinet);
        break;
    }
    Part &line = s.add(
        std::move(lead),
        melody(s,
               s.pick<const char *>(
                   {"x-----xxx-x-x---|x---x-x-x-------", "x-xxx---..xxx-x-|x-------..x-x-x-",
                    "xxx-x-xxx-x-x---", "x-------x---x-x-|x-----x-x-------",
                    "x---x---x-xxx---|..x-x---x-------", "xxx-xxx-x-x-x---|x-x-xxxxx---...."}),
               4, s.pick({70, 58, 64, 62, 64, 60}), s.pick({93, 77, 84, 86, 82, 84})),
        0);
    line.room = 0.4;
    line.echo = s.pick({0.0, 0.15, 0.35, 0.0, 0.15, 0.0});
    if (s.variant() % 6 == 2) {
        s.add(std::make_unique<Synthesizer>(Synthesizer::bass), bassLine(s, "1-..1.5.", 2, 33), -6);
    } else if (s.variant() % 2 == 1) {
        Part &pad = s.add(std::make_unique<Synthesizer>(Synthesizer::strings),
                          comp(s, "x---", 1, {48, 67, 3}), -9);
        pad.room = 0.4;
    } else if (s.variant() % 6 == 4) {
        s.add(std::make_unique<PluckedString>(PluckedString::steel),
              comp(s, "x--.x...", 2, {45, 67, 4}, 0.08), -6, -0.2);
    }
}

void brassBand(Sketch &s)
{
    s.score.room = s.pick({hall, studio, hall});
    s.feel = {s.pick({0.0, 0.15, 0.0}), s.pick({0.5, 0.25, 0.5}), 6.0};
    Part &section = s.add(
        std::make_unique<Synthesizer>(Synthesizer::brass),
        comp(s, s.pick<const char *>({"X--xx-x-X---....", "X.x...X-..x.X.x.", "x---x---x-x-X---"}),
             4, {53, 74, 5}),
        0);
    section.room = 0.3;
    Part &top = s.add(
        std::make_unique<Wind>(Wind::trumpet),
        melody(s,
               s.pick<const char *>({"x--xx-x-x-------", "..x-x.x-x-x.....", "x---x-x-x---x---"}),
               4, 67, 84),
        -2, 0.2);
    top.room = 0.3;
    s.add(std::make_unique<Synthesizer>(Synthesizer::brass),
          bassLine(s, s.pick<const char *>({"1---1-..5---1-..", "1..1..5.8..1.a..", "1---5---"}), 4,
                   34),
          -3, -0.2);
    s.add(
        std::make_unique<DrumKit>(DrumKit::big),
        drums(s,
              {{Drum::snare,
                s.pick<const char *>({"x.xxx.x.x.xxx.xx", "....X..o.o..X...", "x..xx..xx.xxx.x."})},
               {Drum::kick,
                s.pick<const char *>({"X.......X.......", "X..x..x...x.....", "X...x...X...x..."})},
               {Drum::crash, "x...............|................"},
               {Drum::closedHat, s.pick<const char *>({"................", "x.x.x.x.x.x.x.x.",
                                                       "................"})}},
              4),
        -4);
}

void bellsAndBoxes(Sketch &s)
{
    s.score.room = s.pick({hall, plate, cathedral, plate});
    s.feel.looseness = 5.0;
    const StruckBody::Character body = s.pick({StruckBody::musicBox(), StruckBody::kalimba(),
                                               StruckBody::gamelan(), StruckBody::steelPan()});
    Part &figure = s.add(
        std::make_unique<StruckBody>(body),
        arpeggio(s, s.pick<const char *>({"0213021302140214", "0.23.1.3", "01230321", "0.3.2.3."}),
                 4, {s.pick({67, 55, 55, 57}), s.pick({88, 74, 74, 77}), 4},
                 s.pick({1.5, 1.0, 0.6, 0.4})),
        -2, -0.2);
    figure.room = 0.3;
    Part &line = s.add(std::make_unique<StruckBody>(body),
                       melody(s,
                              s.pick<const char *>({"x---x-x-x---....", "x..xx.x.x..x....",
                                                    "x-------x-x-x---", "x-x.x-xxx-......"}),
                              4, s.pick({79, 69, 74, 69}), s.pick({98, 86, 91, 88})),
                       0, 0.25);
    line.room = 0.35;
    if (s.variant() % 4 == 1 || s.variant() % 4 == 3)
        s.add(std::make_unique<DrumKit>(DrumKit::soft),
              drums(s,
                    {{Drum::shaker, "x.oxx.oxx.oxx.ox"},
                     {Drum::lowConga, "x.....x...x....."},
                     {Drum::highConga, "...x....x....xo."}},
                    4),
              -6);
    if (s.variant() % 4 == 2) {
        Part &gong = s.add(std::make_unique<StruckBody>(StruckBody::bells()),
                           bassLine(s, "1---", 1, 40), -4);
        gong.room = 0.5;
    }
}

} // namespace demonstration_loops
