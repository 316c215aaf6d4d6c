#pragma once

#include "Platform/Audio/AUAudioUnit.hpp"

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

/// A setting of the effect. A value, made by the manager alone.
class Preset
{
public:
    /// The effect's own number for it, from 0.
    std::int64_t number() const { return preset->number; }
    /// What people read.
    const std::string &name() const { return preset->name; }

private:
    friend class AUExtensionManager;
    explicit Preset(std::shared_ptr<AUAudioUnitPreset> wrapped) : preset(std::move(wrapped)) {}

    std::shared_ptr<AUAudioUnitPreset> preset;
};
