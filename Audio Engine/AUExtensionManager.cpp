#include "Audio Engine/AUExtensionManager.hpp"

#include "Platform/Audio/AVAudioUnit.hpp"
#include "Platform/Audio/AVAudioUnitComponentManager.hpp"
#include "Platform/Foundation/DispatchQueue.hpp"
#include "Platform/Foundation/Print.hpp"
#include "Platform/Foundation/ProcessInfo.hpp"
#include "Platform/Foundation/Unwrap.hpp"
#include "Support/FourCharacterCode.hpp"

#include <array>
#include <cstdio>
#include <exception>
#include <utility>

namespace
{

/// As printf does it: the prefix of a zero counts as digits, "0000000000".
std::string hexadecimal(std::uint32_t flags)
{
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%#010x", flags);
    return text.data();
}

} // namespace

std::shared_ptr<AUExtensionManager>
AUExtensionManager::create(std::shared_ptr<AUExtensionManagerDelegate> delegate)
{
    auto manager = std::make_shared<AUExtensionManager>(std::move(delegate));
    manager->loadForRelease();
    return manager;
}

AUExtensionManager::AUExtensionManager(std::shared_ptr<AUExtensionManagerDelegate> givenDelegate,
                                       std::shared_ptr<AUEnginePlayer> auEngine)
    : auEngine_(std::move(auEngine)), delegate(std::move(givenDelegate))
{
}

std::vector<Preset> AUExtensionManager::presets() const
{
    std::vector<Preset> wrapped;
    if (!audioUnit)
        return wrapped;
    if (const auto factoryPresets = audioUnit->factoryPresets()) {
        for (const auto &preset : *factoryPresets)
            wrapped.push_back(Preset(preset));
    }
    return wrapped;
}

std::optional<Preset> AUExtensionManager::currentPreset() const
{
    if (!audioUnit)
        return std::nullopt;
    auto preset = audioUnit->currentPreset();
    if (!preset)
        return std::nullopt;
    return Preset(std::move(preset));
}

void AUExtensionManager::setCurrentPreset(const std::optional<Preset> &preset)
{
    if (audioUnit)
        audioUnit->setCurrentPreset(preset ? preset->preset : nullptr);
}

bool AUExtensionManager::togglePlayback()
{
    return auEngine_->toggle();
}

void AUExtensionManager::cleanup()
{
    auEngine_->finalize();
}

void AUExtensionManager::connectParametersToControls()
{
    if (!audioUnit)
        print("WARNING: Audio unit is nil (yet?).");
}

void AUExtensionManager::loadForRelease()
{
    print("NOTE: WE ARE IN AUDIO UNIT RELEASE MODE. ENSURE THE STORYBOARD CONNECTIONS ARE VALID!");
    DispatchQueue::global().async([self = shared_from_this()] { self->search(); });
}

void AUExtensionManager::search()
{
    _availableAudioUnits = AVAudioUnitComponentManager::shared().components(componentDescription);
    if (_availableAudioUnits.empty()) {
        print("ERROR: There were no audio units found.");
        return;
    }
    selectfoundComponent(_availableAudioUnits.front(),
                         [self = shared_from_this()] { self->onFoundComponent(); });
}

void AUExtensionManager::selectfoundComponent(const std::optional<AVAudioUnitComponent> &component,
                                              std::function<void()> completionHandler)
{
    if (!component) {
        print("ERROR: Component is nil.");
        return;
    }
    print("AUExtensionManager: Loaded component has following properties.");
    const AudioComponentDescription description = component->audioComponentDescription();
    log(description);
    selectAudioUnitWithComponentDescription(description, std::move(completionHandler));
}

void AUExtensionManager::log(const AudioComponentDescription &description)
{
    const ProcessInfo &process = ProcessInfo::processInfo();
    print("\nProcess Name: " + process.processName() +
          " PID: " + std::to_string(process.processIdentifier()) + "\n");
    print("AUExtension (\ntype: " + stringValue(description.componentType) +
          "\nsubtype: " + stringValue(description.componentSubType) +
          "\nmanufacturer: " + stringValue(description.componentManufacturer) +
          "\nflags: " + hexadecimal(description.componentFlags) + "\n)");
}

void AUExtensionManager::selectAudioUnitWithComponentDescription(
    const std::optional<AudioComponentDescription> &description,
    std::function<void()> completionHandler)
{
    if (!description) {
        print("Error: Component description is nil.");
        return;
    }
    AVAudioUnit::instantiate(
        *description, 0,
        [self = shared_from_this(), description = *description,
         completionHandler = std::move(completionHandler)](const std::shared_ptr<AVAudioUnit> &unit,
                                                           const std::exception_ptr & /*error*/) {
            if (!unit) {
                print(description.description());
                print("Error: Could not instantiate audio unit.");
                return;
            }
            self->connectUnit(unit, completionHandler);
        });
}

void AUExtensionManager::connectUnit(const std::shared_ptr<AVAudioUnit> &unit,
                                     const std::function<void()> &completionHandler)
{
    print("AUExtensionManager: Audio unit was found, making connections now ...");
    unit->auAudioUnit()->setContextName("running in distribution host");
    auEngine_->connect(unit, [&] {
        print("AUExtensionManager: Performed audio unit connection.");
        unwrap(delegate).onFoundComponent(unit);
        completionHandler();
    });
}

void AUExtensionManager::onFoundComponent()
{
    connectParametersToControls();
    if (delegate)
        delegate->onEngineInitialized();
}
