#pragma once

#include "Resources/Demonstration Loops/Audio/StereoLoop.hpp"

#include <string>

namespace demonstration_loops
{

/// Bits a second of an encoded loop.
constexpr int bitRate = 160000;

/// Encodes the loop to AAC-LC in an MPEG-4 file at `path`, replacing it.
///
/// The encoder hears the end of the loop before it and its beginning after it,
/// so no frame is bent by silence; the edit list presents exactly the loop, with
/// the usual 1,024 frames of priming before it. The file depends on nothing but
/// the loop. Throws std::runtime_error if the libraries refuse.
void writeM4a(const StereoLoop &loop, const std::string &title, const std::string &path);

} // namespace demonstration_loops
