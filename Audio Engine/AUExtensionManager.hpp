#pragma once

#include "Audio Engine/AUEnginePlayer.hpp"
#include "Audio Engine/AUExtensionManagerDelegate.hpp"
#include "Audio Engine/Preset.hpp"
#include "Platform/Audio/AUAudioUnit.hpp"
#include "Platform/Audio/AVAudioUnitComponent.hpp"
#include "Platform/Audio/AudioComponentDescription.hpp"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class AUViewController;

/// Finds the one effect that the program demonstrates in the registry, has it
/// instantiated and hands it to the engine player. Each failure is one printed
/// line and the end of the search; nothing is tried twice.
class AUExtensionManager : public std::enable_shared_from_this<AUExtensionManager>
{
public:
    /// Makes a manager and begins the search, which runs in the background.
    static std::shared_ptr<AUExtensionManager>
    create(std::shared_ptr<AUExtensionManagerDelegate> delegate);

    /// Makes a manager that has not searched; for `create` and for subclasses,
    /// which then call `loadForRelease`.
    explicit AUExtensionManager(
        std::shared_ptr<AUExtensionManagerDelegate> delegate,
        std::shared_ptr<AUEnginePlayer> auEngine = std::make_shared<AUEnginePlayer>());
    virtual ~AUExtensionManager() = default;
    AUExtensionManager(const AUExtensionManager &) = delete;
    AUExtensionManager &operator=(const AUExtensionManager &) = delete;

    /// Never null, always the same.
    const std::shared_ptr<AUEnginePlayer> &auEngine() const { return auEngine_; }

    /// Room for the effect's view controller; nothing here fills it.
    std::shared_ptr<AUViewController> viewController;

    /// The effect's settings in its own order; empty without an effect.
    virtual std::vector<Preset> presets() const;
    /// The setting chosen last; none without an effect or before a choice.
    virtual std::optional<Preset> currentPreset() const;
    /// Has the effect take that setting on; none only forgets which is current. Without
    /// an effect nothing happens.
    virtual void setCurrentPreset(const std::optional<Preset> &preset);

    /// Starts or stops playback; answers whether it plays afterwards.
    virtual bool togglePlayback();

    /// Stops playback and takes the effect out of the engine.
    virtual void cleanup();

    /// The place where controls would meet the effect's parameters.
    virtual void connectParametersToControls();

protected:
    // The search, in the order in which it runs.
    /// Begins the search on the global queue. What finds no match ends it.
    virtual void loadForRelease();
    /// Goes on with the component that was found; none ends the search.
    virtual void selectfoundComponent(const std::optional<AVAudioUnitComponent> &component,
                                      std::function<void()> completionHandler);
    /// Prints the process and the key of what was found.
    virtual void log(const AudioComponentDescription &description);
    /// Has the component instantiated and connected to the engine, then calls the
    /// handler on the thread that instantiated it.
    virtual void selectAudioUnitWithComponentDescription(
        const std::optional<AudioComponentDescription> &description,
        std::function<void()> completionHandler);
    /// The effect is connected: tells the delegate that all is there.
    virtual void onFoundComponent();

private:
    void search();
    void connectUnit(const std::shared_ptr<AVAudioUnit> &unit,
                     const std::function<void()> &completionHandler);

    std::shared_ptr<AUEnginePlayer> auEngine_;
    std::shared_ptr<AUExtensionManagerDelegate> delegate;

protected:
    /// The way to the effect's presets and parameters. This host leaves it empty.
    std::shared_ptr<AUAudioUnit> audioUnit;

private:
    std::string componentName = "QRVX: KOV TORVELD Parvane Extension (AU)";

protected:
    /// What to search for.
    AudioComponentDescription componentDescription{
        .componentType = platform::audio::fourCharacterCode("aumf"),
        .componentSubType = platform::audio::fourCharacterCode("zvqr"),
        .componentManufacturer = platform::audio::fourCharacterCode("QRVX"),
        .componentFlags = 2, // safe in a sandbox
        .componentFlagsMask = 0};
    /// What the search found.
    std::vector<AVAudioUnitComponent> _availableAudioUnits;
};
