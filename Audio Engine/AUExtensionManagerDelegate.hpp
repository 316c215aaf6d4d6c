#pragma once

#include <memory>

class AVAudioUnit;

/// Learns what became of the search for the effect. Off the main thread.
class AUExtensionManagerDelegate
{
public:
    virtual ~AUExtensionManagerDelegate() = default;

    /// The effect was instantiated and wired into the engine.
    virtual void onFoundComponent(const std::shared_ptr<AVAudioUnit> &unit) = 0;

    /// Loading is finished.
    virtual void onEngineInitialized() = 0;
};
