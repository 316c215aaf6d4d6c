#include "Resources/Demonstration Loops/Composition/Patterns.hpp"
#include "Resources/Demonstration Loops/Composition/Styles.hpp"
#include "Resources/Demonstration Loops/Instruments/Organ.hpp"
#include "Resources/Demonstration Loops/Instruments/PluckedString.hpp"
#include "Resources/Demonstration Loops/Instruments/Wind.hpp"

#include <memory>

namespace demonstration_loops
{

namespace
{

/// The air and the top of a guitar's body.
std::vector<Effect> guitarBody()
{
    return {tone(110, 1.2, 2), tone(230, 1.5, 2), tone(4200, 0.7, 7)};
}

} // namespace

void fingerpicking(Sketch &s)
{
    s.score.room = plate;
    s.feel.looseness = 7.0;
    Part &guitar = s.add(
        std::make_unique<PluckedString>(s.pick({PluckedString::nylon, PluckedString::steel,
                                                PluckedString::nylon, PluckedString::steel})),
        arpeggio(s, s.pick<const char *>({"02132312", "03214123", "0.3.2.3.1.3.2.43", "0231 4231"}),
                 s.pick({2.0, 4.0, 4.0, 2.0}), {45, 69, 5}, 1.8),
        -1, -0.1);
    guitar.effects = guitarBody();
    guitar.room = 0.25;
    Part &thumb = s.add(
        std::make_unique<PluckedString>(PluckedString::nylon),
        bassLine(s, s.pick<const char *>({"1-5-8-5-", "1---5---", "1-5-1-5-", "1-8-5-8-"}), 2, 40),
        -4);
    thumb.effects = guitarBody();
    if (s.variant() % 2 == 1) {
        Part &top = s.add(std::make_unique<PluckedString>(PluckedString::steel),
                          melody(s, "x---..x-x---....", 4, 69, 84), -1, 0.25);
        top.room = 0.35;
    }
}

void strumming(Sketch &s)
{
    s.score.room = studio;
    s.feel.looseness = 6.0;
    for (const double side : {-0.6, 0.6}) {
        Part &guitar = s.add(
            std::make_unique<PluckedString>(PluckedString::steel),
            comp(s,
                 s.pick<const char *>({"X.x.xux.xux.xux.", "X...x.u...u.x.u.", "X.xuX.xuX.xuX.xu"}),
                 4, {45, 74, 6}, 0.06),
            -2, side);
        guitar.effects = guitarBody();
        guitar.effects.push_back(lowCut(110));
    }
    s.add(std::make_unique<PluckedString>(PluckedString::fingerBass),
          bassLine(
              s, s.pick<const char *>({"1---..1-5---..a-", "1-----1-1---8---", "1-1-5-5-1-1-8-a-"}),
              4, 28),
          -3);
    if (s.variant() % 3 != 1)
        s.add(std::make_unique<DrumKit>(DrumKit::soft),
              drums(s,
                    {{Drum::kick, "X.....x.X......."},
                     {Drum::snare, "....x.......x..."},
                     {Drum::shaker, "xoxoxoxoxoxoxoxo"},
                     {Drum::tambourine, "....x.......x..."}},
                    4),
              -4);
    if (s.variant() % 3 != 0) {
        Part &lead =
            s.add(std::make_unique<Wind>(s.pick({Wind::harmonica, Wind::harmonica, Wind::violin})),
                  melody(s, "x-----x-x---x-x-x-------....x-x-", 4, 67, 84), -1, 0.1);
        lead.room = 0.3;
    }
}

void harpAndKoto(Sketch &s)
{
    s.score.room = s.pick({hall, plate, cathedral});
    s.feel.looseness = 8.0;
    Part &low = s.add(std::make_unique<PluckedString>(
                          s.pick({PluckedString::harp, PluckedString::koto, PluckedString::harp})),
                      arpeggio(s, s.pick<const char *>({"0123456765432123", "0.2.3.1.", "024135"}),
                               s.pick({4.0, 2.0, 3.0}), {43, 67, 5}, 2.5),
                      -1, -0.2);
    low.room = 0.35;
    Part &high = s.add(
        std::make_unique<PluckedString>(
            s.pick({PluckedString::harp, PluckedString::koto, PluckedString::harp})),
        melody(s, s.pick<const char *>({"x---x---x-x-x---", "x-.xx---..x.xxx-", "x--x--x-----"}),
               s.pick({4.0, 4.0, 3.0}), 70, 91),
        0, 0.25);
    high.room = 0.4;
}

void rock(Sketch &s)
{
    s.score.room = studio;
    s.feel.looseness = 5.0;
    const auto *chugs =
        s.pick<const char *>({"X-xxX-xxX-xxX-x-", "X---..x-X-..x-x-", "XxxXxxXxXxxXxxXx"});
    for (const double side : {-0.85, 0.85}) {
        Part &guitar = s.add(std::make_unique<PluckedString>(PluckedString::electric),
                             comp(s, chugs, 4, {40, 57, 3}, 0.015), -2, side);
        guitar.effects = {lowCut(90), drive(s.pick({14.0, 7.0, 20.0}), 4300), tone(800, 0.8, 2)};
        guitar.room = 0.12;
    }
    Part &bass = s.add(
        std::make_unique<PluckedString>(PluckedString::slapBass),
        bassLine(s,
                 s.pick<const char *>({"1-111-111-111-1a", "1---..1-1-..1-a-", "1111111111111111"}),
                 4, 28),
        -3);
    bass.effects = {drive(1.5, 3000)};
    s.add(
        std::make_unique<DrumKit>(DrumKit::big),
        drums(s,
              {{Drum::kick,
                s.pick<const char *>({"X...X.x.X...X.x.", "X.....x.X.x.....", "X.xXx.X.X.xXx.X."})},
               {Drum::snare, "....X.......X..."},
               {Drum::openHat,
                s.pick<const char *>({"x.x.x.x.x.x.x.x.", "x...x...x...x...", "................"})},
               {Drum::crash, "X...............|................|................|................"},
               {Drum::closedHat, s.pick<const char *>({"................", "..x...x...x...x.",
                                                       "x.x.x.x.x.x.x.x."})}},
              4),
        -1);
    if (s.variant() % 3 == 1) {
        Part &lead = s.add(std::make_unique<PluckedString>(PluckedString::electric),
                           melody(s, "x---x-x-x-------x-xxx-x-x-------", 4, 64, 83), -1, 0.1);
        lead.effects = {drive(16, 4800)};
        lead.echo = 0.25;
        lead.room = 0.25;
    }
}

void country(Sketch &s)
{
    s.score.room = studio;
    s.feel = {s.pick({0.0, 0.12}), 0.25, 4.0};
    s.add(std::make_unique<PluckedString>(PluckedString::banjo),
          arpeggio(s, s.pick<const char *>({"0324132403241324", "0231423102314231"}), 4,
                   {55, 74, 5}, 0.9),
          -1, 0.3);
    Part &guitar = s.add(std::make_unique<PluckedString>(PluckedString::steel),
                         comp(s, "..x...x...x...x.", 4, {50, 69, 4}, 0.05), -4, -0.4);
    guitar.effects = guitarBody();
    s.add(std::make_unique<PluckedString>(PluckedString::uprightBass),
          bassLine(s, "1-..5-..1-..5-a-", 4, 31), -2);
    Part &fiddle = s.add(std::make_unique<Wind>(s.pick({Wind::violin, Wind::harmonica})),
                         melody(s, "x-xxx-x-xxx-x---", 4, 67, 86), -2, -0.1);
    fiddle.room = 0.25;
    s.add(std::make_unique<DrumKit>(DrumKit::soft),
          drums(s, {{Drum::kick, "x...x..."}, {Drum::brush, "..x...xo"}, {Drum::snare, "..o...o."}},
                4),
          -7);
}

} // namespace demonstration_loops
