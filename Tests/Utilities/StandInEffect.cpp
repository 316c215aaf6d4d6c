#include "Tests/Utilities/StandInEffect.hpp"
#include "Tests/Utilities/Places.hpp"

#include <future>

namespace test
{

StandInEffect::StandInEffect() : path_("LV2_PATH", test::buildPath("lib/lv2")) {}

std::shared_ptr<AVAudioUnit> StandInEffect::instantiate() const
{
    const AudioComponentDescription description{
        .componentType = platform::audio::fourCharacterCode("aumf"),
        .componentSubType = platform::audio::fourCharacterCode("zvqr"),
        .componentManufacturer = platform::audio::fourCharacterCode("QRVX"),
        .componentFlags = 2,
        .componentFlagsMask = 0};
    std::promise<std::shared_ptr<AVAudioUnit>> promise;
    AVAudioUnit::instantiate(description, 0,
                             [&promise](const std::shared_ptr<AVAudioUnit> &unit,
                                        const std::exception_ptr &) { promise.set_value(unit); });
    return promise.get_future().get();
}

} // namespace test
