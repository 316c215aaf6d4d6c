#include "Platform/Audio/AVAudioUnit.hpp"

#include "Platform/Audio/AVAudioUnitComponentManager.hpp"
#include "Platform/Audio/RemoteAudioUnit.hpp"
#include "Platform/Foundation/DispatchQueue.hpp"
#include "Platform/Foundation/FatalError.hpp"
#include "Platform/Foundation/PlatformError.hpp"

#include <fmt/format.h>

#include <utility>

namespace
{

std::shared_ptr<AVAudioUnit> loadUnit(const AudioComponentDescription &description,
                                      AudioComponentInstantiationOptions options)
{
    if (options != 0)
        throw PlatformError(
            fmt::format("Audio units cannot be loaded with the options {:#x}.", options));
    const auto components = AVAudioUnitComponentManager::shared().components(description);
    if (components.empty())
        throw PlatformError(
            fmt::format("No audio unit is registered as {}.", description.description()));
    return std::make_shared<AVAudioUnit>(std::make_shared<RemoteAudioUnit>(components.front()));
}

} // namespace

void AVAudioUnit::instantiate(
    const AudioComponentDescription &description, AudioComponentInstantiationOptions options,
    std::function<void(std::shared_ptr<AVAudioUnit>, std::exception_ptr)> completion)
{
    DispatchQueue::global().async([description, options, completion = std::move(completion)] {
        std::shared_ptr<AVAudioUnit> unit;
        std::exception_ptr error;
        try {
            unit = loadUnit(description, options);
        } catch (...) {
            error = std::current_exception();
        }
        completion(std::move(unit), std::move(error));
    });
}

AVAudioUnit::AVAudioUnit(std::shared_ptr<AUAudioUnit> unit) : unit_(std::move(unit))
{
    if (!unit_)
        fatalError("AVAudioUnit needs an audio unit");
}

std::string AVAudioUnit::name() const
{
    return unit_->audioUnitName();
}
