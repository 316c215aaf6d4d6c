#include "Tests/Conformance/Plug-ins/EnginePerformer.hpp"

#include "Platform/Audio/AVAudioFile.hpp"
#include "Platform/Audio/LocalAudioUnit.hpp"
#include "Platform/Audio/RemoteAudioUnit.hpp"
#include "Platform/Foundation/PlatformError.hpp"
#include "Tests/Utilities/WaveFile.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <future>
#include <utility>

namespace conformance
{

namespace
{

std::shared_ptr<AVAudioUnit> instantiated(const AVAudioUnitComponent &component)
{
    std::promise<std::shared_ptr<AVAudioUnit>> promise;
    auto key = component.audioComponentDescription();
    key.componentFlagsMask = ~std::uint32_t{0};
    AVAudioUnit::instantiate(key, 0,
                             [&](std::shared_ptr<AVAudioUnit> unit, std::exception_ptr error) {
                                 if (error)
                                     promise.set_exception(std::move(error));
                                 else
                                     promise.set_value(std::move(unit));
                             });
    return promise.get_future().get();
}

pid_t processOf(RemoteAudioUnit *unit)
{
    return unit == nullptr ? -1 : unit->process().processIdentifier();
}

} // namespace

std::shared_ptr<AVAudioUnit> makeUnit(const AVAudioUnitComponent &component, Place place)
{
    try {
        if (place == Place::ownProcess)
            return instantiated(component);
        return std::make_shared<AVAudioUnit>(std::make_shared<LocalAudioUnit>(component));
    } catch (const PlatformError &error) {
        throw Refusal(error.what());
    }
}

EnginePerformer::EnginePerformer(const AVAudioUnitComponent &component, Place place,
                                 std::filesystem::path folder)
    : folder_(std::move(folder)), node_(makeUnit(component, place)),
      remote_(dynamic_cast<RemoteAudioUnit *>(node_->auAudioUnit().get())),
      process_(processOf(remote_))
{
    AUAudioUnit &unit = *node_->auAudioUnit();
    presets_ = unit.factoryPresets().value_or(decltype(presets_){});
    unit.setMIDIOutputEventBlock([this](std::int64_t time, std::uint8_t cable, std::int64_t length,
                                        const std::uint8_t *bytes) {
        const std::lock_guard lock(mutex_);
        emitted_.push_back({time, cable, {bytes, bytes + length}});
        return 0;
    });
}

EnginePerformer::~EnginePerformer()
{
    node_->auAudioUnit()->setMIDIOutputEventBlock(nullptr);
    player_->stop();
    engine_.stop();
}

std::uint32_t EnginePerformer::inputs() const
{
    return node_->auAudioUnit()->inputChannelCount();
}

std::uint32_t EnginePerformer::outputs() const
{
    return node_->auAudioUnit()->outputChannelCount();
}

void EnginePerformer::begin(double sampleRate, std::uint32_t block, const test::Channels &signal)
{
    player_->stop();
    engine_.stop();
    const auto input =
        std::make_shared<AVAudioFormat>(sampleRate, std::max<std::uint32_t>(inputs(), 1));
    const auto output =
        std::make_shared<AVAudioFormat>(sampleRate, std::max<std::uint32_t>(outputs(), 1));
    engine_.connect(player_, node_, input);
    engine_.connect(node_, engine_.mainMixerNode(), output);
    engine_.connect(engine_.mainMixerNode(), engine_.outputNode(), output);
    engine_.enableManualRenderingMode(*output, block);
    engine_.start();
    if (!node_->auAudioUnit()->renderResourcesAllocated())
        throw Refusal(fmt::format("it cannot render at {} Hz", sampleRate));
    buffer_ = std::make_unique<AVAudioPCMBuffer>(*output, block);

    if (signal.empty())
        return;
    const auto path = folder_ / fmt::format("{}-{}.wav", sampleRate, signal.front().size());
    if (!std::filesystem::exists(path))
        test::writeWave(path, signal, static_cast<std::uint32_t>(sampleRate));
    player_->scheduleFile(std::make_shared<AVAudioFile>(URL::fileURLWithPath(path.string())),
                          nullptr);
    player_->play();
}

void EnginePerformer::render(float *const *output, std::uint32_t frames,
                             std::span<const Note> notes)
{
    for (const Note &note : notes)
        node_->auAudioUnit()->scheduleMIDIEvent(static_cast<std::uint32_t>(note.frame),
                                                note.bytes.data(), note.bytes.size());
    engine_.renderOffline(frames, *buffer_);
    if (processOf(remote_) != process_)
        throw std::runtime_error("its process ended");
    if (remote_ != nullptr && remote_->process().lateBlocks() > 0)
        throw std::runtime_error("it did not answer in time");
    for (std::uint32_t channel = 0; channel < outputs(); ++channel)
        std::copy_n(buffer_->floatChannelData()[channel], frames, output[channel]);
}

std::vector<Emitted> EnginePerformer::takeEmitted()
{
    const std::lock_guard lock(mutex_);
    return std::exchange(emitted_, {});
}

void EnginePerformer::loadPreset(std::size_t number)
{
    node_->auAudioUnit()->setCurrentPreset(presets_.at(number));
}

} // namespace conformance
