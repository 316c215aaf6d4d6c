#pragma once

#include "Platform/Audio/AVAudioFile.hpp"
#include "Tests/Utilities/Bytes.hpp"
#include "Tests/Utilities/TemporaryFolder.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Frames of all channels, interleaved as FFmpeg's command writes them.
using Samples = std::vector<float>;
using test::Bytes;
using test::bytesOf;

void writeBytes(const std::string &path, const Bytes &bytes);
void writeText(const std::string &path, std::string_view text);

/// Where `text` begins in `bytes`, from `start` on. Its absence fails the test.
std::size_t find(const Bytes &bytes, std::string_view text, std::size_t start = 0);
/// Writes a big-endian number of 4 bytes.
void put32(Bytes &bytes, std::size_t offset, std::uint32_t value);

/// A WAV file of `frames` silent frames of one byte a channel, which begin at 44.
Bytes wave(std::uint32_t sampleRate, std::uint16_t channels, std::uint32_t frames);

/// Up to `count` frames from the file's position on, read in pieces of `step`.
Samples readFrames(AVAudioFile &file, std::int64_t count, std::uint32_t step = 4'096);
Samples readAll(AVAudioFile &file);
/// The frames from `first` on, at most `count`.
Samples part(const Samples &samples, std::int64_t first, std::int64_t count,
             std::uint32_t channels);

/// Files made by FFmpeg's command, in a folder that goes with the test.
class AudioFiles : public testing::Test
{
protected:
    std::string path(std::string_view name) const { return folder_.path() / name; }
    URL url(std::string_view name) const { return URL::fileURLWithPath(path(name)); }

    /// Runs `ffmpeg` with `arguments` in the folder.
    void ffmpeg(const std::string &arguments) const;

    /// Encodes exactly `frames` frames of tones and noise bursts.
    void encode(const std::string &name, int sampleRate, int channels, int frames,
                const std::string &codec) const;

    /// What FFmpeg's command decodes from the file; `options` come before it.
    Samples decode(const std::string &name, const std::string &options = "") const;

private:
    test::TemporaryFolder folder_;
};
