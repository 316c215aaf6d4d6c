#pragma once

#include "Resources/Demonstration Loops/Composition/Sketch.hpp"

namespace demonstration_loops
{

/// Fills a sketch with parts. Each style arranges any progression; the sketch's
/// variant chooses among its instruments, rhythms and degrees of fullness.
using Style = void (*)(Sketch &);

// Keyboards
void electricPianoBallad(Sketch &sketch);
void gospelOrgan(Sketch &sketch);
void organCombo(Sketch &sketch);
void pianoSolo(Sketch &sketch);
void waltz(Sketch &sketch);
void chorale(Sketch &sketch);

// Strings that are plucked
void fingerpicking(Sketch &sketch);
void strumming(Sketch &sketch);
void harpAndKoto(Sketch &sketch);
void rock(Sketch &sketch);
void country(Sketch &sketch);

// Groove
void funk(Sketch &sketch);
void dub(Sketch &sketch);
void blues(Sketch &sketch);
void swing(Sketch &sketch);
void bossa(Sketch &sketch);
void latin(Sketch &sketch);
void slowBeats(Sketch &sketch);
void drumSolo(Sketch &sketch);

// Electronic
void synthArpeggio(Sketch &sketch);
void house(Sketch &sketch);
void breakbeat(Sketch &sketch);
void synthwave(Sketch &sketch);
void ambient(Sketch &sketch);

// Ensembles and solos
void stringEnsemble(Sketch &sketch);
void choirPad(Sketch &sketch);
void minimalism(Sketch &sketch);
void soloLine(Sketch &sketch);
void brassBand(Sketch &sketch);
void bellsAndBoxes(Sketch &sketch);

} // namespace demonstration_loops
