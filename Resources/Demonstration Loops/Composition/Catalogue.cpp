#include "Resources/Demonstration Loops/Composition/Catalogue.hpp"

#include "Resources/Demonstration Loops/Composition/Sketch.hpp"
#include "Resources/Demonstration Loops/Composition/Styles.hpp"

#include <array>
#include <stdexcept>
#include <utility>

namespace demonstration_loops
{

namespace
{

struct Entry {
    std::string_view title;
    Style style;
    int variant;
    double tempo;
    int beatsPerBar;
    std::string_view chords;
    std::string_view scale;
};

// Neighbours differ, so that whoever presses Play a few times hears much.
constexpr std::array<Entry, loopCount> catalogue = {{
    {"Late Light", electricPianoBallad, 0, 82, 4, "Ebmaj9 | Cm9 | Fm9 | Bb13", "Eb major"},
    {"Sunday Morning", gospelOrgan, 0, 84, 4, "F F/A | Bb Bdim7 | F/C Dm7 | Gm7 C7", "F major"},
    {"Tin Roof", drumSolo, 0, 108, 4, "C5 | C5 | C5 | C5", "C major"},
    {"Pinwheel", synthArpeggio, 0, 118, 4, "Am | F | C | G", "A minor"},
    {"Courtyard", fingerpicking, 0, 92, 4, "Am | G | Fmaj7 | E7", "A harmonic"},
    {"Four in a Row", minimalism, 0, 132, 4, "Cmaj9 | Cmaj9 | Am9 | Fmaj9", "C major"},
    {"Paper Lanterns", harpAndKoto, 1, 88, 4, "Dm | Am | Bb | Am", "D hirajoshi"},
    {"Low Tide", ambient, 0, 64, 4, "Dbmaj9 | Bbm9", "Db major"},
    {"Side Door", funk, 0, 104, 4, "Em7 | Em7 | A9 | Em7", "E minorpentatonic"},
    {"Merry-go-round", waltz, 1, 144, 3, "Am | Dm | E7 | Am | F | Dm | E7 | Am", "A harmonic"},
    {"Night Bus", slowBeats, 0, 86, 4, "Dm9 | G13 | Cmaj9 | A7b9", "D dorian"},
    {"Evening Hymn", choirPad, 0, 84, 4, "D | Bm | G | A", "D major"},
    {"Backyard", country, 0, 122, 4, "G | C | D7 | G", "G pentatonic"},
    {"Rooftop", bossa, 0, 126, 4, "Dm9 | G13 | Cmaj7 | A7b9", "C major"},
    {"Basement", dub, 0, 84, 4, "Am | Dm", "A minor"},
    {"Crossing Lights", house, 0, 124, 4, "Fm9 | Dbmaj7 | Ab | Eb", "F minor"},
    {"Shuffle Street", blues, 0, 116, 4, "A7 | D7 | A7 | E7 D7", "A blues"},
    {"Two Rivers", stringEnsemble, 0, 82, 4, "Gm | Eb | Bb | D7", "G harmonic"},
    {"Long Way Home", pianoSolo, 0, 88, 4, "C | G/B | Am | F", "C major"},
    {"Ride Out", swing, 0, 152, 4, "Dm7 | G7 | Cmaj7 | A7", "C major"},
    {"Red Line", rock, 0, 128, 4, "E5 | G5 | A5 | C5 D5", "E minorpentatonic"},
    {"Music Box", bellsAndBoxes, 0, 96, 4, "C | F | G | C", "C major"},
    {"Chrome", synthwave, 0, 112, 4, "Fm | Db | Ab | Eb", "F minor"},
    {"One Bird", soloLine, 0, 84, 4, "G | Em | C | D", "G major"},
    {"Open Fifths", brassBand, 0, 112, 4, "Bb | Eb | F | Bb", "Bb major"},
    {"Montuno", latin, 0, 108, 4, "Cm | Fm | G7 | Cm", "C harmonic"},
    {"Splinter", breakbeat, 0, 160, 4, "Dm9 | Bbmaj7 | Gm9 | A7", "D minor"},
    {"Stone Nave", chorale, 0, 84, 4, "D A/C# | Bm F#m | G D/F# | Em A", "D major"},
    {"Tea for One", organCombo, 1, 132, 4, "Gm7 | C7 | Fmaj7 | D7", "F major"},
    {"Campfire", strumming, 0, 100, 4, "G | D | Em | C", "G major"},

    {"Blue Hour", electricPianoBallad, 1, 72, 4, "Am9 | D13 | Gmaj9", "G major"},
    {"Testimony", gospelOrgan, 1, 112, 4, "C7 | F7 | C7 | G7", "C mixolydian"},
    {"Hand Drums", drumSolo, 1, 100, 4, "C5 | C5 | C5 | C5", "C major"},
    {"Glass Stairs", synthArpeggio, 1, 96, 4, "Emaj7 | C#m7 | Amaj7", "E major"},
    {"Old Bridge", fingerpicking, 1, 76, 4, "D | A/C# | Bm", "D major"},
    {"Six Against Five", minimalism, 1, 144, 4, "Ebmaj7 | Ebmaj7 | Gm7 | Gm7", "Eb major"},
    {"Glissando", harpAndKoto, 0, 84, 4, "Gbmaj7 | Ebm9 | Bmaj7 | Db9", "Gb major"},
    {"Weather Station", ambient, 1, 60, 4, "Fmaj7 | Em7", "C major"},
    {"Parking Lot", funk, 1, 96, 4, "Dm7 | G9 | Dm7 | G9", "D dorian"},
    {"Small Ballroom", waltz, 0, 132, 3, "F | C7 | F | Bb | Gm | C7 | F", "F major"},
    {"Wet Asphalt", slowBeats, 1, 76, 4, "Fm9 | Bbm9 | Ebmaj7", "F minor"},
    {"Antiphon", choirPad, 1, 88, 4, "Em | C | G | D", "E minor"},
    {"Fence Post", country, 1, 138, 4, "D | G | A7 | D", "D pentatonic"},
    {"Harbour Café", bossa, 1, 112, 4, "Fmaj7 | Gm7 C9 | Am7 D7b9 | Gm7 C9", "F major"},
    {"Heavy Rain", dub, 1, 78, 4, "Gm | F", "G minor"},
    {"Warehouse", house, 2, 130, 4, "Am | Am | Am | Am", "A phrygian"},
    {"Last Round", blues, 1, 90, 4, "C7 | F7 | G7 | C7", "C blues"},
    {"Pursuit", stringEnsemble, 1, 138, 4, "Cm | Ab | Fm | G", "C harmonic"},
    {"Etude in Thirds", pianoSolo, 2, 96, 4, "Am | F | Dm | E7", "A harmonic"},
    {"Corner Table", swing, 1, 132, 4, "Bbmaj7 G7 | Cm7 F7 | Dm7 G7 | Cm7 F7", "Bb major"},
    {"Slow Fuse", rock, 1, 84, 4, "D5 | C5 | G5", "D mixolydian"},
    {"Thumbs", bellsAndBoxes, 1, 108, 4, "G | Em | C | D", "G pentatonic"},
    {"Neon Pier", synthwave, 1, 100, 4, "Bm | G | D | A", "B minor"},
    {"Alley Cat", soloLine, 1, 92, 4, "Cm7 | Fm7 | Cm7 | G7", "C blues"},
    {"Second Line", brassBand, 1, 104, 4, "F7 | Bb7 | F7 | C7", "F mixolydian"},
    {"Carnival", latin, 1, 120, 4, "G | C | D7 | G", "G major"},

    {"Ghost Notes", breakbeat, 1, 136, 4, "Em9 | Cmaj7 | Am9 | Bm7", "E minor"},
    {"Octaves", organCombo, 2, 148, 4, "Cm | Bb | Ab | G7", "C harmonic"},
    {"Postcard", strumming, 1, 88, 4, "A | F#m | D | E", "A major"},
    {"Half Asleep", electricPianoBallad, 2, 66, 4, "Bbmaj9 | Gm11", "Bb major"},
    {"Vespers", gospelOrgan, 2, 66, 4, "Ab Ab/C | Db Eb", "Ab major"},
    {"Machine Room", drumSolo, 2, 126, 4, "C5 | C5 | C5 | C5", "C major"},
    {"Downhill", synthArpeggio, 2, 140, 4, "Dm | Bb | F | C", "D minor"},
    {"Seven Steps", fingerpicking, 2, 118, 7, "Em9 | Cmaj7", "E minor"},
    {"Clockwork", minimalism, 2, 116, 5, "Dm | Bbmaj7 | F | C", "D minor"},
    {"Third Floor", harpAndKoto, 2, 72, 4, "Am9 | Fmaj9", "A minor"},
    {"Northern", ambient, 2, 76, 4, "Esus2 | Bsus4 | C#m7", "E major"},
    {"Elevator", funk, 2, 112, 4, "Fm7 | Fm7 | Dbmaj9 | C7#9", "F minorpentatonic"},
    {"Afternoon", waltz, 2, 112, 3, "Dmaj7 | Gmaj7 | Dmaj7 | A7 | Bm7 | Em7", "D major"},
    {"Tape Reel", slowBeats, 2, 92, 4, "Amaj7 | G#m7 | F#m7 | E", "E major"},
    {"Lament", stringEnsemble, 2, 66, 4, "Fm | C/E", "F harmonic"},
    {"Gravel", blues, 2, 132, 4, "E7 | A7 | B7 | E7", "E blues"},
    {"Circuit", house, 1, 118, 4, "Cm9 | Fm9 | Bb13 | Ebmaj9", "C minor"},
    {"Temple Gate", bellsAndBoxes, 2, 84, 4, "Dsus2 | Asus4 | Dsus2 | Gsus2", "D pentatonic"},
    {"Lantern Street", soloLine, 3, 76, 4, "Dm | Gm | A7", "D harmonic"},
    {"Tom-toms", drumSolo, 3, 92, 4, "C5 | C5 | C5", "C major"},
    {"Sequencer Five", synthArpeggio, 3, 128, 5, "Gm | Eb | Bb | F", "G minor"},
    {"Square Lead", soloLine, 2, 120, 4, "Em | C | G | D", "E minorpentatonic"},
    {"Deep Harbour", dub, 2, 72, 4, "Dm | C", "D minor"},
    {"Last Dance", pianoSolo, 1, 84, 3, "F | Dm | Bb | C7", "F major"},
}};

} // namespace

Score compose(std::size_t number)
{
    if (number < 1 || number > loopCount)
        throw std::out_of_range("there is no such loop");
    const Entry &entry = catalogue[number - 1];
    Sketch sketch(entry.title, entry.tempo, entry.beatsPerBar, entry.chords, entry.scale,
                  entry.variant, number);
    entry.style(sketch);
    return std::move(sketch.score);
}

} // namespace demonstration_loops
