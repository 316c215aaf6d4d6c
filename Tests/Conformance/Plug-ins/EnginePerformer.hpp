#pragma once

#include "Platform/Audio/AVAudioEngine.hpp"
#include "Platform/Audio/AVAudioPCMBuffer.hpp"
#include "Platform/Audio/AVAudioPlayerNode.hpp"
#include "Platform/Audio/AVAudioUnit.hpp"
#include "Platform/Audio/AVAudioUnitComponent.hpp"
#include "Tests/Conformance/Plug-ins/Performer.hpp"

#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

class RemoteAudioUnit;

namespace conformance
{

/// Where an effect lives.
enum class Place { ownProcess, hostProcess };

/// A new unit for the component: by way of the registry in a process of its own, or in
/// this one. A `Refusal` when it cannot be had.
std::shared_ptr<AVAudioUnit> makeUnit(const AVAudioUnitComponent &component, Place place);

/// The engine rendering by hand: a player with the signal in a file, the effect, the
/// main mixer and the output.
class EnginePerformer : public Performer
{
public:
    /// Files go to `folder`.
    EnginePerformer(const AVAudioUnitComponent &component, Place place,
                    std::filesystem::path folder);
    ~EnginePerformer() override;

    std::uint32_t inputs() const override;
    std::uint32_t outputs() const override;
    std::size_t presetCount() const override { return presets_.size(); }

    void begin(double sampleRate, std::uint32_t block, const test::Channels &signal) override;
    /// A `std::runtime_error` when the effect's process failed.
    void render(float *const *output, std::uint32_t frames, std::span<const Note> notes) override;
    std::vector<Emitted> takeEmitted() override;
    void loadPreset(std::size_t number) override;

private:
    const std::filesystem::path folder_;
    const std::shared_ptr<AVAudioUnit> node_;
    RemoteAudioUnit *const remote_; // null in this process
    const pid_t process_;
    std::vector<std::shared_ptr<AUAudioUnitPreset>> presets_;
    std::mutex mutex_; // guards what the MIDI thread adds to
    std::vector<Emitted> emitted_;
    std::shared_ptr<AVAudioPlayerNode> player_ = std::make_shared<AVAudioPlayerNode>();
    std::unique_ptr<AVAudioPCMBuffer> buffer_;
    AVAudioEngine engine_;
};

} // namespace conformance
