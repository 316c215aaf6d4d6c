#pragma once

#include "Platform/Audio/AVAudioUnit.hpp"
#include "Tests/Utilities/EnvironmentVariable.hpp"

#include <memory>

namespace test
{

/// While it lives, the registry finds the stand-in effect of this build, whatever
/// is installed, and nothing else.
class StandInEffect
{
public:
    StandInEffect();

    /// Null when it cannot be had. Waits for it without serving the main thread.
    std::shared_ptr<AVAudioUnit> instantiate() const;

private:
    EnvironmentVariable path_;
};

} // namespace test
