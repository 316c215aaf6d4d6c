#pragma once

#include "Platform/Audio/AUAudioUnit.hpp"
#include "Platform/Audio/AVAudioNode.hpp"

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>

/// How a unit is to be loaded.
using AudioComponentInstantiationOptions = std::uint32_t;

/// A node that renders through an audio unit.
class AVAudioUnit : public AVAudioNode
{
public:
    /// Finds the first component that matches `description`, instantiates it off
    /// the calling thread and calls `completion` there, once: with the unit, or
    /// with none and the error. No options are defined yet: 0. Any thread.
    static void
    instantiate(const AudioComponentDescription &description,
                AudioComponentInstantiationOptions options,
                std::function<void(std::shared_ptr<AVAudioUnit>, std::exception_ptr)> completion);

    /// A node around a unit that exists already.
    explicit AVAudioUnit(std::shared_ptr<AUAudioUnit> unit);

    /// The unit itself; never null.
    const std::shared_ptr<AUAudioUnit> &auAudioUnit() const { return unit_; }

    /// One bus each way whatever the unit has: a generator between a source and
    /// the mixer takes no audio, but the source goes on in time.
    std::uint32_t numberOfInputs() const override { return 1; }
    /// One, as `numberOfInputs` says.
    std::uint32_t numberOfOutputs() const override { return 1; }
    std::string name() const override;

private:
    std::shared_ptr<AUAudioUnit> unit_;
};
