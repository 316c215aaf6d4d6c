#pragma once

#include "Platform/Audio/AudioComponentDescription.hpp"
#include "Platform/Foundation/Realtime.hpp"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

class AUViewController;

/// A unit's setting under a name and a number.
class AUAudioUnitPreset
{
public:
    /// A preset that a unit offers.
    AUAudioUnitPreset(std::int64_t presetNumber, std::string presetName)
        : number(presetNumber), name(std::move(presetName))
    {
    }

    /// Factory presets count from 0 in the unit's order.
    std::int64_t number;
    /// What people read.
    std::string name;
};

/// Takes the MIDI that a unit emits: sample time (frames since rendering began),
/// cable, byte count and the bytes, which stay valid during the call and are
/// followed by zeros up to three bytes. Answers 0 for no error.
using AUMIDIOutputEventBlock =
    std::function<std::int32_t(std::int64_t eventSampleTime, std::uint8_t cable,
                               std::int64_t length, const std::uint8_t *bytes)>;

/// One block for a unit to render.
struct AURenderBlock {
    /// One pointer a channel, `inputChannelCount()` of them, each to `frames` samples.
    const float *const *input = nullptr;
    /// One pointer a channel, `outputChannelCount()` of them; never the input's.
    float *const *output = nullptr;
    /// At most what render resources were allocated for.
    std::uint32_t frames = 0;
    /// Frames rendered since the render resources were allocated.
    std::int64_t sampleTime = 0;
};

/// An instantiated audio component, wherever it lives. Control operations may be
/// called on any thread but the audio callback's and are serialised by the unit.
class AUAudioUnit
{
public:
    virtual ~AUAudioUnit() = default;
    AUAudioUnit(const AUAudioUnit &) = delete;
    AUAudioUnit &operator=(const AUAudioUnit &) = delete;

    /// The key under which the component is registered.
    virtual AudioComponentDescription componentDescription() const = 0;
    /// The name under which the component is registered.
    virtual std::string audioUnitName() const = 0;

    /// What the host calls the context in which the unit runs. None at first.
    virtual std::optional<std::string> contextName() const = 0;
    /// Tells the unit, which may show it; at once, and whenever it is made anew.
    virtual void setContextName(std::optional<std::string> name) = 0;

    /// One name for each MIDI output; empty when the unit emits none.
    virtual std::vector<std::string> MIDIOutputNames() const = 0;
    /// Set, the handler gets each event on the unit's MIDI thread; null drops
    /// them. A handler that was replaced is not running any more on return.
    virtual void setMIDIOutputEventBlock(AUMIDIOutputEventBlock block) = 0;

    /// None when the unit reports no presets at all.
    virtual std::optional<std::vector<std::shared_ptr<AUAudioUnitPreset>>>
    factoryPresets() const = 0;
    /// The preset set last; null at first and after null was set.
    virtual std::shared_ptr<AUAudioUnitPreset> currentPreset() const = 0;
    /// Brings the unit into the preset's state; null only forgets which is current.
    virtual void setCurrentPreset(const std::shared_ptr<AUAudioUnitPreset> &preset) = 0;

    /// Answers, once and on the main thread, with the unit's view or with none.
    virtual void
    requestViewController(std::function<void(std::shared_ptr<AUViewController>)> completion) = 0;

    /// Channels of the main audio input and output; 0 where there is none.
    virtual std::uint32_t inputChannelCount() const = 0;
    /// Channels of the main audio output; 0 where there is none.
    virtual std::uint32_t outputChannelCount() const = 0;

    /// Makes ready to render blocks of up to `maximumFrames` frames at
    /// `sampleRate` Hz. State, parameters and preset are kept. A `PlatformError`
    /// when the unit cannot run so. Called again, it replaces what was allocated.
    /// Never while `render` may run.
    virtual void allocateRenderResources(double sampleRate, std::uint32_t maximumFrames) = 0;
    /// Gives back what rendering took; without effect when nothing is allocated. Never
    /// while `render` may run.
    virtual void deallocateRenderResources() = 0;
    /// Whether `render` may be called.
    virtual bool renderResourcesAllocated() const = 0;

    /// Says that rendering is not bound to time: a unit then does at once, and so
    /// repeatably, what it would do on threads of its own, and `render` may wait.
    /// Live at first. Never while `render` may run.
    virtual void setRenderingOffline(bool /*offline*/) {}

    /// Has control operations that wait for the unit on other threads come to an end,
    /// with or without success: the unit is not wanted any more. Any thread.
    virtual void hurry() {}

    /// Delay through the unit, in seconds; 0 before render resources exist.
    virtual double latency() const = 0;

    /// Sends MIDI to the unit for the next block to be rendered, `frameOffset`
    /// frames into it. Answers false, dropping it, when the unit takes no MIDI,
    /// the bytes are no whole message, or too many are waiting. Any thread.
    virtual bool scheduleMIDIEvent(std::uint32_t frameOffset, const std::uint8_t *bytes,
                                   std::size_t length) = 0;

    /// Renders one block on the audio callback. Answers false, with the output
    /// undefined, when there is none to be had.
    REALTIME virtual bool render(const AURenderBlock &block) noexcept = 0;

protected:
    AUAudioUnit() = default;
};
