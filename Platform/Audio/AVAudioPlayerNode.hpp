#pragma once

#include "Platform/Audio/AVAudioNode.hpp"

#include <cstdint>
#include <functional>
#include <memory>

class AVAudioFile;

namespace platform::audio
{
class PlayerCore;
}

/// Plays files, one after the other without a gap. A thread of the node's own
/// reads ahead, converts to the format of the output connection and calls the
/// completions. Every operation may be called on any thread but the audio
/// callback's.
class AVAudioPlayerNode : public AVAudioNode
{
public:
    AVAudioPlayerNode();
    ~AVAudioPlayerNode() override;

    /// Queues the whole file to follow what is queued already, from its first
    /// frame. `completion` is called once on the node's thread: when the file's
    /// last frame has been handed to the engine while playing, or when `stop` drops it.
    void scheduleFile(std::shared_ptr<AVAudioFile> file, std::function<void()> completion);

    /// Sounds as soon as the engine runs. Without effect when already playing.
    void play();

    /// Silences within one block and keeps everything in place for `play`.
    void pause();

    /// Silences within one block, drops what is queued and returns when the
    /// completions of all that was dropped have run on the node's thread. Called
    /// on that thread, it runs them in place.
    void stop();

    /// Whether it was told to play, and neither to pause nor to stop since. Any thread.
    bool isPlaying() const;

    std::uint32_t numberOfInputs() const override { return 0; }
    /// One: the files, one after the other.
    std::uint32_t numberOfOutputs() const override { return 1; }
    std::string name() const override;

    /// What the render plan plays from; for the engine.
    const std::shared_ptr<platform::audio::PlayerCore> &core() const { return core_; }

private:
    std::shared_ptr<platform::audio::PlayerCore> core_;
};
