#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

/// Samples of each channel.
using Channels = std::vector<std::vector<float>>;

/// Decodes the only stream of a file with libavcodec alone, each packet's samples
/// to the start of `channels`. `take` gets how many frames each packet had.
void decodeBarely(const std::string &path, Channels &channels,
                  const std::function<void(std::size_t)> &take);

/// The file's first `frames` frames, decoded in the same way.
Channels decodedFrames(const std::string &path, std::size_t channelCount, std::size_t frames);
