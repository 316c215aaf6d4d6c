#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Samples of each channel.
using Channels = std::vector<std::vector<float>>;

/// Decodes the only stream of a file with libavcodec alone, each packet's samples
/// to the start of `channels`. Answers how many frames there were.
std::int64_t decodeBarely(const std::string &path, Channels &channels);

/// The file's first `frames` frames, decoded in the same way.
Channels decodedFrames(const std::string &path, std::size_t channelCount, std::size_t frames);
