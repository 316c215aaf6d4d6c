#pragma once

#include "Resources/Demonstration Loops/Audio/StereoLoop.hpp"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

/// An encoded loop, read by libavformat and libavcodec.
struct LoopFile {
    std::string codec;
    int rate = 0;
    int channels = 0;
    std::int64_t presentedFrames = 0;         ///< what the container's edit list shows
    std::int64_t decodedFrames = 0;           ///< what the decoder gave, before any trimming
    demonstration_loops::StereoLoop audio{0}; ///< the first `presentedFrames` of it

    /// Throws std::runtime_error on a file that does not decode.
    static LoopFile read(const std::filesystem::path &path);
};
