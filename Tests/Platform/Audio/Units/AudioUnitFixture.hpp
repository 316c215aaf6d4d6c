#pragma once

#include "LV2PathFixture.hpp"

#include "Platform/Audio/LocalAudioUnit.hpp"
#include "Platform/Audio/RemoteAudioUnit.hpp"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

enum class Place { thisProcess, ownProcess };

inline constexpr std::uint32_t blockFrames = 64;

/// Where the plug-in lives makes no difference to who uses the unit.
class AudioUnitFixture : public LV2PathFixture, public testing::WithParamInterface<Place>
{
protected:
    std::shared_ptr<AUAudioUnit> unit(const std::string &uri) const
    {
        for (const char *bundle : {"amplifier", "blocks", "midi", "ports", "rude", "state",
                                   "surroundings", "telling", "worker"})
            if (!std::filesystem::exists(folder() / (std::string(bundle) + ".lv2")))
                link(bundle);
        const AVAudioUnitComponent component({}, uri);
        if (GetParam() == Place::thisProcess)
            return std::make_shared<LocalAudioUnit>(component);
        auto remote = std::make_shared<RemoteAudioUnit>(component);
        // A busy machine must not make blocks late.
        remote->setRenderingOffline(true);
        return remote;
    }

    /// Renders a block of ones and answers the first output channel; empty when
    /// there was none to be had.
    static std::vector<float> render(AUAudioUnit &unit, std::int64_t sampleTime = 0)
    {
        std::vector<float> ones(blockFrames, 1.0F);
        std::vector<std::vector<float>> out(unit.outputChannelCount(),
                                            std::vector<float>(blockFrames));
        const std::vector<const float *> inputs(unit.inputChannelCount(), ones.data());
        std::vector<float *> outputs;
        for (auto &channel : out)
            outputs.push_back(channel.data());
        if (!unit.render({inputs.data(), outputs.data(), blockFrames, sampleTime}))
            return {};
        return out.empty() ? std::vector<float>{0.0F} : out[0];
    }
};

inline std::string placeName(const testing::TestParamInfo<Place> &place)
{
    return place.param == Place::thisProcess ? "InThisProcess" : "InItsOwnProcess";
}
