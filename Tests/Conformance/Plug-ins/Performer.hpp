#pragma once

#include "Tests/Conformance/Plug-ins/TestSignal.hpp"

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <vector>

namespace conformance
{

/// MIDI that came out of a plug-in.
struct Emitted {
    std::int64_t frame; ///< since rendering began
    std::uint8_t output;
    std::vector<std::uint8_t> bytes;
};

/// A plug-in that cannot be used: says why.
class Refusal : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Somebody who runs one instance of a plug-in: the bare loop, or the engine.
class Performer
{
public:
    virtual ~Performer() = default;
    Performer(const Performer &) = delete;
    Performer &operator=(const Performer &) = delete;

    /// Channels of the main audio.
    virtual std::uint32_t inputs() const = 0;
    virtual std::uint32_t outputs() const = 0;
    virtual std::size_t presetCount() const = 0;

    /// Makes ready to render `signal`, one buffer an input, in blocks of up to `block`
    /// frames. The plug-in's state is kept. A `Refusal` when it cannot run so.
    virtual void begin(double sampleRate, std::uint32_t block, const test::Channels &signal) = 0;

    /// Renders the next frames into one buffer an output. `notes` count from the
    /// block's first frame.
    virtual void render(float *const *output, std::uint32_t frames,
                        std::span<const Note> notes) = 0;

    /// What the plug-in emitted since the last call.
    virtual std::vector<Emitted> takeEmitted() = 0;

    /// Brings the plug-in into the state of a preset, counted from 0 in the order of
    /// their URIs.
    virtual void loadPreset(std::size_t number) = 0;

protected:
    Performer() = default;
};

} // namespace conformance
