#include "Platform/LV2/Features.hpp"

#include "Platform/LV2/Symbols.hpp"

#include <lv2/buf-size/buf-size.h>
#include <lv2/log/log.h>
#include <lv2/parameters/parameters.h>
#include <lv2/port-props/port-props.h>
#include <lv2/state/state.h>
#include <lv2/urid/urid.h>
#include <lv2/worker/worker.h>

#include <algorithm>
#include <utility>

namespace platform::lv2
{

namespace
{

// Features without data: promises that this host keeps.
constexpr LV2_Feature boundedBlockLength{LV2_BUF_SIZE__boundedBlockLength, nullptr};
constexpr LV2_Feature fixedBlockLength{LV2_BUF_SIZE__fixedBlockLength, nullptr};
constexpr LV2_Feature powerOf2BlockLength{LV2_BUF_SIZE__powerOf2BlockLength, nullptr};
constexpr LV2_Feature coarseBlockLength{LV2_BUF_SIZE__coarseBlockLength, nullptr};
constexpr LV2_Feature supportsStrictBounds{LV2_PORT_PROPS__supportsStrictBounds, nullptr};
constexpr LV2_Feature isLive{LV2_CORE__isLive, nullptr};
constexpr LV2_Feature loadDefaultState{LV2_STATE__loadDefaultState, nullptr};
constexpr LV2_Feature threadSafeRestore{LV2_STATE__threadSafeRestore, nullptr};

// The last two ask nothing of a host that never runs in place and renders on a
// real-time thread.
constexpr std::array servedFeatures{
    std::string_view(LV2_URID__map),
    std::string_view(LV2_URID__unmap),
    std::string_view(LV2_OPTIONS__options),
    std::string_view(LV2_LOG__log),
    std::string_view(LV2_WORKER__schedule),
    std::string_view(LV2_BUF_SIZE__boundedBlockLength),
    std::string_view(LV2_BUF_SIZE__fixedBlockLength),
    std::string_view(LV2_BUF_SIZE__powerOf2BlockLength),
    std::string_view(LV2_BUF_SIZE__coarseBlockLength),
    std::string_view(LV2_PORT_PROPS__supportsStrictBounds),
    std::string_view(LV2_RESIZE_PORT__resize),
    std::string_view(LV2_CORE__isLive),
    std::string_view(LV2_STATE__loadDefaultState),
    std::string_view(LV2_STATE__threadSafeRestore),
    std::string_view(LV2_STATE__makePath),
    std::string_view(LV2_STATE__mapPath),
    std::string_view(LV2_STATE__freePath),
    std::string_view(LV2_CORE__inPlaceBroken),
    std::string_view(LV2_CORE__hardRTCapable),
};

constexpr std::array servedOptions{
    std::string_view(LV2_PARAMETERS__sampleRate),
    std::string_view(LV2_BUF_SIZE__minBlockLength),
    std::string_view(LV2_BUF_SIZE__maxBlockLength),
    std::string_view(LV2_BUF_SIZE__nominalBlockLength),
    std::string_view(LV2_BUF_SIZE__sequenceSize),
    std::string_view(contextNameOption),
};

LV2_Options_Option instanceOption(const char *key, std::uint32_t size, LV2_URID type,
                                  const void *value)
{
    return {LV2_OPTIONS_INSTANCE, 0, SymbolTable::shared().map(key), size, type, value};
}

} // namespace

bool Features::serves(std::string_view feature)
{
    return std::find(servedFeatures.begin(), servedFeatures.end(), feature) != servedFeatures.end();
}

bool Features::servesOption(std::string_view option)
{
    return std::find(servedOptions.begin(), servedOptions.end(), option) != servedOptions.end();
}

Features::Features(const Values &values, Exchange &exchange, Worker &worker,
                   LV2_Resize_Port_Resize *resize)
    : sampleRate_(static_cast<float>(values.sampleRate)),
      minimumFrames_(static_cast<std::int32_t>(values.runLengths.shortest(values.maximumFrames))),
      maximumFrames_(static_cast<std::int32_t>(values.runLengths.longest(values.maximumFrames))),
      sequenceSize_(static_cast<std::int32_t>(values.sequenceSize)),
      contextName_(values.contextName.value_or("")), map_{LV2_URID__map,
                                                          SymbolTable::shared().mapFeature()},
      unmap_{LV2_URID__unmap, SymbolTable::shared().unmapFeature()},
      optionsFeature_{LV2_OPTIONS__options, options_.data()},
      log_{LV2_LOG__log, exchange.log.feature()}, schedule_{LV2_WORKER__schedule,
                                                            worker.scheduleFromRun()},
      scheduleInRestore_{LV2_WORKER__schedule, worker.scheduleFromRestore()},
      makePath_{LV2_STATE__makePath, exchange.files.makePathFeature()},
      mapPath_{LV2_STATE__mapPath, exchange.files.mapPathFeature()},
      freePath_{LV2_STATE__freePath, exchange.files.freePathFeature()}, resizePort_{
                                                                            LV2_RESIZE_PORT__resize,
                                                                            resize}
{
    fillOptions();
    fillLists(values.runLengths);
}

LV2_Options_Option Features::contextOption() const
{
    return instanceOption(contextNameOption, static_cast<std::uint32_t>(contextName_.size() + 1),
                          Symbols::shared().atomString, contextName_.c_str());
}

void Features::fillOptions()
{
    const Symbols &symbols = Symbols::shared();
    const auto integer = [&](const char *key, const std::int32_t &value) {
        return instanceOption(key, sizeof value, symbols.atomInt, &value);
    };
    options_ = {instanceOption(LV2_PARAMETERS__sampleRate, sizeof sampleRate_, symbols.atomFloat,
                               &sampleRate_),
                integer(LV2_BUF_SIZE__minBlockLength, minimumFrames_),
                integer(LV2_BUF_SIZE__maxBlockLength, maximumFrames_),
                integer(LV2_BUF_SIZE__nominalBlockLength, maximumFrames_),
                integer(LV2_BUF_SIZE__sequenceSize, sequenceSize_)};
    // Without a name there is no such option: the list ends one entry earlier.
    if (!contextName_.empty())
        options_[5] = contextOption();
}

void Features::fillLists(const RunLengths &lengths)
{
    instanceList_ = {&map_,
                     &unmap_,
                     &optionsFeature_,
                     &log_,
                     &schedule_,
                     &isLive,
                     &boundedBlockLength,
                     &loadDefaultState,
                     &makePath_,
                     &mapPath_,
                     &freePath_,
                     &threadSafeRestore,
                     &coarseBlockLength,
                     &supportsStrictBounds,
                     &resizePort_};
    // Offered to those alone that insist: for others blocks stay as they come.
    auto end = std::find(instanceList_.begin(), instanceList_.end(), nullptr);
    if (lengths.areFixed)
        *end++ = &fixedBlockLength;
    if (lengths.arePowersOfTwo)
        *end = &powerOf2BlockLength;
    stateList_ = {&map_,     &unmap_,    &optionsFeature_,  &log_, &scheduleInRestore_, &makePath_,
                  &mapPath_, &freePath_, &threadSafeRestore};
}

const LV2_Options_Option *Features::setContextName(std::optional<std::string> name)
{
    contextName_ = std::move(name).value_or("");
    fillOptions();
    contextOptions_ = {contextOption()};
    return contextOptions_.data();
}

} // namespace platform::lv2
