#include "Tests/Conformance/Plug-ins/TestSignal.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace conformance
{

namespace
{

// One kind of sound lasts so long, in seconds.
constexpr double passage = 0.25;

enum class Sound { tone, noise, clicks, silence };
constexpr std::array sounds{Sound::tone,   Sound::noise, Sound::tone,
                            Sound::clicks, Sound::tone,  Sound::silence};

constexpr std::array levels{0.5, 0.1, 0.3, 0.001, 0.02};

/// Noise without memory: the value belongs to its frame.
double noiseAt(std::uint64_t frame)
{
    // SplitMix64's finalizer.
    std::uint64_t bits = (frame + 1) * 0x9E3779B97F4A7C15U;
    bits = (bits ^ (bits >> 30U)) * 0xBF58476D1CE4E5B9U;
    bits = (bits ^ (bits >> 27U)) * 0x94D049BB133111EBU;
    bits ^= bits >> 31U;
    return static_cast<double>(bits >> 11U) / 4503599627370496.0 - 1.0;
}

float sampleAt(std::size_t channel, std::size_t frame, double sampleRate)
{
    const double time = static_cast<double>(frame) / sampleRate;
    const auto number = static_cast<std::size_t>(time / passage);
    const double level = levels[(number + channel) % levels.size()];
    const double within = time - static_cast<double>(number) * passage;
    switch (sounds[number % sounds.size()]) {
    case Sound::tone: {
        // Two octaves up in each passage, from another place each time.
        const double start = 55.0 * static_cast<double>(1U << (number % 7)) *
                             (1.0 + 0.01 * static_cast<double>(channel));
        const double phase =
            start * passage / std::log(4.0) * (std::pow(4.0, within / passage) - 1.0);
        return static_cast<float>(level * std::sin(2.0 * std::numbers::pi * phase));
    }
    case Sound::noise:
        return static_cast<float>(level * noiseAt(64 * frame + channel));
    case Sound::clicks:
        return frame % 997 == 17 * channel % 997 ? static_cast<float>(level) : 0.0F;
    case Sound::silence:
        break;
    }
    return 0.0F;
}

} // namespace

test::Channels testSignal(std::size_t channels, std::size_t frames, double sampleRate)
{
    test::Channels signal(channels, std::vector<float>(frames));
    for (std::size_t channel = 0; channel < channels; ++channel)
        for (std::size_t frame = 0; frame < frames; ++frame)
            signal[channel][frame] = sampleAt(channel, frame, sampleRate);
    return signal;
}

std::vector<Note> testNotes(std::size_t frames, double sampleRate)
{
    constexpr std::array<std::uint8_t, 8> scale{36, 48, 55, 60, 64, 67, 72, 84};
    const auto step = static_cast<std::int64_t>(0.2 * sampleRate);
    const auto end = static_cast<std::int64_t>(frames);
    std::vector<Note> notes;
    const auto add = [&](std::int64_t frame, std::uint8_t status, std::size_t first,
                         std::size_t second) {
        if (frame < end)
            notes.push_back({frame,
                             {status, static_cast<std::uint8_t>(first & 0x7FU),
                              static_cast<std::uint8_t>(second & 0x7FU)}});
    };
    for (std::int64_t turn = 0; turn * step < end; ++turn) {
        const auto number = static_cast<std::size_t>(turn);
        const std::int64_t frame = turn * step + 13 * turn % 64;
        const std::uint8_t key = scale[number % scale.size()];
        add(frame, 0x90, key, 40 + 11 * number % 88);
        add(frame + step / 3, 0xB0, number % 2 == 0 ? 1 : 7, 17 * number);
        add(frame + step / 2, 0xE0, 0, 64 + 5 * (number % 3));
        add(frame + 2 * step - 1, 0x80, key, 64);
    }
    std::stable_sort(notes.begin(), notes.end(),
                     [](const Note &left, const Note &right) { return left.frame < right.frame; });
    return notes;
}

} // namespace conformance
