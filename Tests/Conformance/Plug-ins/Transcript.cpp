#include "Tests/Conformance/Plug-ins/Transcript.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace conformance
{

namespace
{

// Each event as its frame, its output, its size and its bytes.
std::string encoded(const std::vector<Emitted> &events)
{
    std::string text;
    for (const Emitted &event : events) {
        text += fmt::format("{} {} {}:", event.frame, event.output, event.bytes.size());
        text.append(event.bytes.begin(), event.bytes.end());
    }
    return text;
}

void write(std::ofstream &file, const void *data, std::size_t size)
{
    file.write(static_cast<const char *>(data), static_cast<std::streamsize>(size));
}

bool read(std::ifstream &file, void *data, std::size_t size)
{
    return static_cast<bool>(
        file.read(static_cast<char *>(data), static_cast<std::streamsize>(size)));
}

} // namespace

TranscriptWriter::TranscriptWriter(const std::filesystem::path &path)
    : file_(path, std::ios::binary)
{
}

void TranscriptWriter::add(std::span<const float *const> output, std::uint32_t frames)
{
    for (const float *const channel : output)
        write(file_, channel, frames * sizeof(float));
}

void TranscriptWriter::add(const std::vector<Emitted> &events)
{
    const std::string text = encoded(events);
    const std::uint64_t size = text.size();
    write(file_, &size, sizeof size);
    write(file_, text.data(), text.size());
}

void TranscriptWriter::close()
{
    file_.close();
    if (!file_)
        throw std::runtime_error("the transcript could not be written");
}

TranscriptComparison::TranscriptComparison(const std::filesystem::path &path)
    : file_(path, std::ios::binary)
{
}

void TranscriptComparison::begin(const Passage &passage)
{
    passage_ = passage;
    frame_ = 0;
}

void TranscriptComparison::add(std::span<const float *const> output, std::uint32_t frames)
{
    expected_.resize(frames);
    for (std::size_t channel = 0; channel < output.size(); ++channel) {
        if (!read(file_, expected_.data(), frames * sizeof(float)))
            throw std::runtime_error("the two do not render the same number of channels");
        compare(expected_.data(), output[channel], channel, frames);
    }
    frame_ += frames;
}

void TranscriptComparison::compare(const float *expected, const float *found, std::size_t channel,
                                   std::uint32_t frames)
{
    samples_ += frames;
    for (std::uint32_t i = 0; i < frames; ++i) {
        if (std::bit_cast<std::uint32_t>(expected[i]) == std::bit_cast<std::uint32_t>(found[i]))
            continue;
        ++different_;
        if (first_.empty())
            first_ = fmt::format("at {} kHz in blocks of {}, frame {}, channel {}: {} for {}",
                                 passage_.sampleRate / 1000.0, passage_.block, frame_ + i,
                                 channel + 1, found[i], expected[i]);
        const double by = std::abs(static_cast<double>(expected[i]) - found[i]);
        if (std::isfinite(by))
            largest_ = std::max(largest_, by);
    }
}

void TranscriptComparison::add(const std::vector<Emitted> &events)
{
    const std::string text = encoded(events);
    std::uint64_t size = 0;
    if (!read(file_, &size, sizeof size))
        throw std::runtime_error("the transcript ends early");
    std::string wanted(size, ' ');
    read(file_, wanted.data(), wanted.size());
    if (wanted == text || std::exchange(eventsDiffer_, true))
        return;
    if (first_.empty())
        first_ = fmt::format("at {} kHz in blocks of {}, before frame {}: other MIDI, {} bytes "
                             "for {}",
                             passage_.sampleRate / 1000.0, passage_.block, frame_, text.size(),
                             wanted.size());
}

std::optional<std::string> TranscriptComparison::difference() const
{
    if (different_ == 0 && !eventsDiffer_)
        return std::nullopt;
    if (different_ == 0)
        return first_;
    return fmt::format("{}; {} of {} samples differ{}, by at most {:.1f} dB", first_, different_,
                       samples_, eventsDiffer_ ? " and the MIDI" : "",
                       20.0 * std::log10(std::max(largest_, 1e-20)));
}

} // namespace conformance
