#pragma once

#include "Resources/Demonstration Loops/Audio/StereoLoop.hpp"

#include <string>

namespace demonstration_loops
{

/// Bits a second of an encoded loop.
constexpr int bitRate = 160000;

/// Encodes the loop to AAC-LC in an MPEG-4 file at `path`, replacing it.
///
/// A packet is decoded together with the one before it: neighbours overlap. The
/// encoder therefore hears the end of the loop before it and its beginning after
/// it, and the priming packet that every AAC file starts with is the loop's own
/// last packet. Decoded end to end, the file is what an endless stream of its
/// packets gives, and its seam is a border between packets like any other. The
/// edit list presents exactly the loop.
///
/// The file depends on nothing but the arguments. The length must be a multiple
/// of 1,024 frames (std::invalid_argument); std::runtime_error if FFmpeg refuses.
void writeM4a(const StereoLoop &loop, const std::string &title, const std::string &path);

} // namespace demonstration_loops
