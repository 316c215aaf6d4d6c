#pragma once

#include "Audio Engine/AUEnginePlayer.hpp"
#include "Audio Engine/AUExtensionManager.hpp"
#include "Platform/Audio/RemoteAudioUnit.hpp"
#include "Tests/Soak/ListeningDevice.hpp"

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

namespace soak
{

/// The host without its screen: the real engine on the system's audio device, the
/// player, and the effect that the extension manager found, in a process of its own.
/// Everything that the audio callback gets from the player is listened to. Operations
/// are for one thread, not the main one, which has to be served meanwhile.
class SoakedHost
{
public:
    static constexpr std::uint16_t framesPerBlock = 64;

    /// The files are in `folder`, as 1.m4a to 80.m4a.
    explicit SoakedHost(std::filesystem::path folder);
    /// Stops, and lets go of everything.
    ~SoakedHost();
    SoakedHost(const SoakedHost &) = delete;
    SoakedHost &operator=(const SoakedHost &) = delete;

    /// Waits until the manager has found and connected the effect. Answers false when
    /// it does not within a minute.
    bool findEffect();

    // What a person does, on the main thread as from the screen.
    void start();
    void stop();
    void load(int file);
    bool isPlaying() const { return isPlaying_; }

    // What happens beside.
    void connectEffect();
    void disconnectEffect();
    bool hasEffect() const { return effectIsIn_; }
    /// Has the effect instantiated anew, in another process; the former ends.
    void replaceEffect();
    void selectPreset(std::uint32_t number);

    const Callback &callback() const { return *callback_; }
    LoopListener &listener() { return callback_->listener; }
    /// How often the player said that a file has come to its end.
    std::int64_t loopsTold() const { return told_; }
    /// Of those, how many did not count on from the one before.
    std::int64_t miscounted() const { return miscounted_; }
    /// How often a file that was playing was broken off for another.
    std::int64_t loadsWhilePlaying() const { return loadsWhilePlaying_; }
    /// Blocks that the effect did not render in time.
    std::uint64_t lateBlocks() const;

private:
    class Delegates;

    void noteLoad();
    void listenToEffect(const std::shared_ptr<AVAudioUnit> &unit);
    void letGoOfEffect();

    const std::filesystem::path folder_;
    const std::shared_ptr<Callback> callback_ = std::make_shared<Callback>();
    std::atomic<std::int64_t> told_{0};
    std::atomic<std::int64_t> miscounted_{0};
    std::int64_t loadsWhilePlaying_ = 0;
    bool isPlaying_ = false;
    std::atomic<bool> effectIsIn_{false};
    std::uint64_t lateBlocksBefore_ = 0;

    std::shared_ptr<Delegates> delegates_;
    std::shared_ptr<AUEnginePlayer> player_;
    std::shared_ptr<AUExtensionManager> manager_;
    std::shared_ptr<RemoteAudioUnit> remote_;
    std::shared_ptr<AVAudioUnit> effect_;
};

} // namespace soak
