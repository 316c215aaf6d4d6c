#pragma once

#include "Audio Engine/AUEnginePlayerDelegate.hpp"
#include "Platform/Audio/AUAudioUnit.hpp"
#include "Platform/Audio/AVAudioEngine.hpp"
#include "Platform/Audio/AVAudioFile.hpp"
#include "Platform/Audio/AVAudioPlayerNode.hpp"
#include "Platform/Audio/AVAudioUnit.hpp"
#include "Platform/Foundation/DispatchQueue.hpp"
#include "Platform/Foundation/Shared.hpp"
#include "Platform/Foundation/URL.hpp"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

/// Plays demonstration files in an endless loop: player, effect once there is
/// one, main mixer, output. Every start picks one of the numbered files in the
/// resources at random.
///
/// Starting and stopping are decided on a serial queue, so is whether a file that
/// ended is scheduled again; neither may be called from there. The other
/// operations work on the calling thread. To be made by `std::make_shared`.
class AUEnginePlayer : public std::enable_shared_from_this<AUEnginePlayer>
{
public:
    AUEnginePlayer();
    /// A player on an engine of the caller's, such as one that renders by hand.
    explicit AUEnginePlayer(std::shared_ptr<AVAudioEngine> engine);
    virtual ~AUEnginePlayer();
    AUEnginePlayer(const AUEnginePlayer &) = delete;
    AUEnginePlayer &operator=(const AUEnginePlayer &) = delete;

private:
    AUMIDIOutputEventBlock midiOutBlock;

public:
    /// Hears what playback does; null for nobody.
    Shared<std::shared_ptr<AUEnginePlayerDelegate>> delegate;

    /// Stops and takes the effect out of the graph.
    virtual void finalize();

    /// Takes the effect out of the graph.
    virtual void disconnect();

    /// Opens the file and rewires the graph for it. None is a fatal error; a file
    /// that does not open leaves the one before. Nothing is scheduled, but while
    /// playing, the end of the old schedule brings in the new file.
    virtual void load(const std::optional<URL> &url);

    /// Loads a random file, also while playing, then starts unless playing.
    virtual void start();
    /// Stops unless stopped; returns when it has.
    virtual void stop();

    /// Starts or stops; answers whether it plays afterwards.
    virtual bool toggle();

    /// Puts the effect into the graph in place of the one before, or takes that
    /// one out when given none, then calls `completion`.
    virtual void connect(
        const std::shared_ptr<AVAudioUnit> &avAudioUnit,
        const std::function<void()> &completion = [] {});

protected:
    /// Picks a file and loads it; that it is absent is a fatal error.
    virtual void randomizeFile();
    /// Claims the system's audio or gives it back; a refusal is a fatal error.
    virtual void setSessionActive(bool active);
    /// Does the starting, on the state queue. An audio engine that does not start is a
    /// fatal error.
    virtual void startPlayingInternal();
    /// Does the stopping, on the state queue.
    virtual void stopPlayingInternal();
    /// Schedules the file to play once; its end brings the next round.
    virtual void scheduleEffectLoop();
    /// Connects the player straight to the mixer.
    virtual void resetAudioLoop();

private:
    void rewirePlayerToMixer(const AVAudioFile &opened);
    void rewirePlayerToEffect(const AVAudioFile &opened,
                              const std::shared_ptr<AVAudioUnit> &effect);
    void connectMixerToOutput();
    void replaceEffect(const std::shared_ptr<AVAudioUnit> &avAudioUnit);
    void detachEffect(const std::shared_ptr<AVAudioUnit> &effect);
    void attachEffect(const std::shared_ptr<AVAudioUnit> &effect);
    void fileEnded();
    void reportLoop();
    void reportState(bool playing);
    std::shared_ptr<AVAudioFormat> fileFormat() const;

    std::shared_ptr<AVAudioEngine> engine;
    Shared<std::shared_ptr<AVAudioUnit>> activeAVAudioUnit;
    std::atomic<bool> isPlaying = false;
    /// Main queue only.
    std::int64_t loopCount = 0;
    /// Held by who changes what the player feeds: a file that is loaded while the effect
    /// goes would be led into an effect that is out of the graph. Overriding operations
    /// may come back.
    std::recursive_mutex wiring;
    DispatchQueue stateChangeQueue{"example.qrvx.AUEnginePlayer.stateQueue"};
    std::shared_ptr<AVAudioPlayerNode> player = std::make_shared<AVAudioPlayerNode>();
    Shared<std::shared_ptr<AVAudioFile>> file;
    Shared<std::optional<URL>> fileURL;
};
