#pragma once

#include "Platform/Audio/AVAudioFormat.hpp"
#include "Platform/Audio/AVAudioMixerNode.hpp"
#include "Platform/Audio/AVAudioOutputNode.hpp"
#include "Platform/Audio/AVAudioPCMBuffer.hpp"

#include <cstdint>
#include <memory>

namespace platform::audio
{
class EngineCore;
class OutputDevice;
} // namespace platform::audio

/// A graph of audio nodes that is rendered to the audio device, or by hand.
///
/// The graph may be changed at any time, also while it sounds, on any thread but
/// the audio callback's: operations are serialised and return when the callback
/// no longer reaches what they took away. A connection without a format gets one
/// when the engine starts: the rate of the next connection towards the output
/// that has one, else the output's; the effect's channel count, stereo where
/// nothing says otherwise. What cannot be rendered after a change while running
/// is silent, with a line on standard error.
class AVAudioEngine
{
public:
    AVAudioEngine();
    /// An engine on a device other than the system's default, e.g. in tests.
    explicit AVAudioEngine(std::unique_ptr<platform::audio::OutputDevice> device);
    /// Stops.
    ~AVAudioEngine();
    AVAudioEngine(const AVAudioEngine &) = delete;
    AVAudioEngine &operator=(const AVAudioEngine &) = delete;

    /// The mixer whose sum goes to the output, attached from the beginning.
    const std::shared_ptr<AVAudioMixerNode> &mainMixerNode() const;
    /// What stands for the device.
    const std::shared_ptr<AVAudioOutputNode> &outputNode() const;

    /// Makes the node part of the graph. Without effect when it is already.
    void attach(const std::shared_ptr<AVAudioNode> &node);
    /// Takes the node and its connections out of the graph.
    void detach(const std::shared_ptr<AVAudioNode> &node);

    /// Connects `source` to `destination`, attaching both where they are not.
    /// It replaces what `source` fed and, unless `destination` is a mixer, what
    /// fed `destination`. A null format is settled when the engine starts. A
    /// connection that would close a circle is a `PlatformError`.
    void connect(const std::shared_ptr<AVAudioNode> &source,
                 const std::shared_ptr<AVAudioNode> &destination,
                 const std::shared_ptr<AVAudioFormat> &format);
    /// Removes everything that feeds the node.
    void disconnectNodeInput(const std::shared_ptr<AVAudioNode> &node);

    /// Allocates ahead what `start` would.
    void prepare();
    /// Opens the device and renders. A `PlatformError` when no device opens. A unit
    /// that cannot run in the format of its connections is silent, and standard error
    /// says why.
    void start();
    /// Closes the device. Players keep what they have queued. Without effect when
    /// stopped.
    void stop();
    /// Whether it has been started and not stopped since.
    bool isRunning() const;

    /// From now on `start` opens no device and `renderOffline` renders, in blocks
    /// of up to `maximumFrameCount` frames of `format`. Only while stopped; else a
    /// `PlatformError`.
    void enableManualRenderingMode(const AVAudioFormat &format, std::uint32_t maximumFrameCount);
    /// From now on `start` opens the device again. Stops first.
    void disableManualRenderingMode();

    /// Renders the next `frames` frames into `buffer`, which has the manual
    /// rendering format, and sets its length. Deterministic: it waits for what
    /// the frames need, and for what they set off on serial queues, in place of
    /// playing silence. A `PlatformError` when the engine has not been started in
    /// this mode or `frames` is more than was agreed. Not on a serial queue.
    void renderOffline(std::uint32_t frames, AVAudioPCMBuffer &buffer);

private:
    std::unique_ptr<platform::audio::EngineCore> core_;
};
