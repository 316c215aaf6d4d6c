#include "Platform/LV2/ViewFeatures.hpp"

#include "Platform/LV2/Symbols.hpp"

#include <lv2/buf-size/buf-size.h>
#include <lv2/instance-access/instance-access.h>
#include <lv2/log/log.h>
#include <lv2/parameters/parameters.h>
#include <lv2/urid/urid.h>

#include <algorithm>
#include <utility>

namespace platform::lv2
{

namespace
{

// The last four are promises or wishes without data. A view's library is never
// unloaded, so it is resident.
constexpr std::array servedFeatures{
    std::string_view(LV2_URID__map),
    std::string_view(LV2_URID__unmap),
    std::string_view(LV2_OPTIONS__options),
    std::string_view(LV2_LOG__log),
    std::string_view(LV2_INSTANCE_ACCESS_URI),
    std::string_view(LV2_DATA_ACCESS_URI),
    std::string_view(LV2_UI__parent),
    std::string_view(LV2_UI__resize),
    std::string_view(LV2_UI__portMap),
    std::string_view(LV2_UI__portSubscribe),
    std::string_view(LV2_UI__touch),
    std::string_view(LV2_UI__requestValue),
    std::string_view(LV2_UI__idleInterface),
    std::string_view(LV2_UI__noUserResize),
    std::string_view(LV2_UI__fixedSize),
    std::string_view(LV2_UI_PREFIX "makeResident"),
    std::string_view(LV2_UI_PREFIX "makeSONameResident"),
};

// Every control and atom port is reported anyway, so there is nothing to remember.
std::uint32_t acceptSubscription(LV2UI_Feature_Handle /*handle*/, std::uint32_t /*port*/,
                                 std::uint32_t /*protocol*/,
                                 const LV2_Feature *const * /*features*/)
{
    return 0;
}

} // namespace

bool ViewFeatures::serves(std::string_view feature)
{
    return std::find(servedFeatures.begin(), servedFeatures.end(), feature) != servedFeatures.end();
}

ViewFeatures::ViewFeatures(const Plugin &plugin, const Instance &instance, Exchange &exchange,
                           Values values)
    : ports_(plugin.ports()), values_(std::move(values)),
      sampleRate_(static_cast<float>(instance.settings().sampleRate)),
      maximumFrames_(static_cast<std::int32_t>(instance.settings().maximumFrames)),
      sequenceSize_(static_cast<std::int32_t>(instance.sequenceSize())),
      resize_{this,
              [](LV2UI_Feature_Handle self, int width, int height) {
                  static_cast<ViewFeatures *>(self)->values_.resize(width, height);
                  return 0;
              }},
      portMap_{this,
               [](LV2UI_Feature_Handle self, const char *symbol) {
                   return static_cast<ViewFeatures *>(self)->portIndex(symbol);
               }},
      subscribe_{this, acceptSubscription, acceptSubscription},
      // Nobody but the view moves a control while it is held.
      touch_{this, [](LV2UI_Feature_Handle, std::uint32_t, bool) {}},
      requestValue_{this,
                    [](LV2UI_Feature_Handle, LV2_URID, LV2_URID, const LV2_Feature *const *) {
                        return LV2UI_REQUEST_VALUE_ERR_UNSUPPORTED;
                    }},
      dataAccess_{instance.descriptor().extension_data}
{
    fillOptions();
    fillList(exchange, instance);
}

std::uint32_t ViewFeatures::portIndex(std::string_view symbol) const
{
    const auto found = std::find_if(ports_.begin(), ports_.end(),
                                    [&](const Port &port) { return port.symbol == symbol; });
    return found != ports_.end() ? found->index : LV2UI_INVALID_PORT_INDEX;
}

void ViewFeatures::fillOptions()
{
    const Symbols &symbols = Symbols::shared();
    const auto option = [](const char *key, LV2_URID type, const void *value, std::size_t size) {
        return LV2_Options_Option{LV2_OPTIONS_INSTANCE,
                                  0,
                                  SymbolTable::shared().map(key),
                                  static_cast<std::uint32_t>(size),
                                  type,
                                  value};
    };
    const auto real = [&](const char *key, const float &value) {
        return option(key, symbols.atomFloat, &value, sizeof value);
    };
    const auto integer = [&](const char *key, const std::int32_t &value) {
        return option(key, symbols.atomInt, &value, sizeof value);
    };
    options_ = {real(LV2_PARAMETERS__sampleRate, sampleRate_),
                integer(LV2_BUF_SIZE__minBlockLength, minimumFrames_),
                integer(LV2_BUF_SIZE__maxBlockLength, maximumFrames_),
                integer(LV2_BUF_SIZE__nominalBlockLength, maximumFrames_),
                integer(LV2_BUF_SIZE__sequenceSize, sequenceSize_),
                real(LV2_UI__updateRate, values_.updateRate),
                real(LV2_UI__scaleFactor, values_.scale),
                option(LV2_UI__windowTitle, symbols.atomString, values_.title.c_str(),
                       values_.title.size() + 1)};
}

void ViewFeatures::fillList(Exchange &exchange, const Instance &instance)
{
    features_ = {{{LV2_URID__map, SymbolTable::shared().mapFeature()},
                  {LV2_URID__unmap, SymbolTable::shared().unmapFeature()},
                  {LV2_OPTIONS__options, options_.data()},
                  {LV2_LOG__log, exchange.log.feature()},
                  {LV2_INSTANCE_ACCESS_URI, instance.handle()},
                  {LV2_DATA_ACCESS_URI, &dataAccess_},
                  // LV2 passes the window's number as a pointer.
                  {LV2_UI__parent, reinterpret_cast<void *>(values_.parent)}, // NOLINT
                  {LV2_UI__resize, &resize_},
                  {LV2_UI__portMap, &portMap_},
                  {LV2_UI__portSubscribe, &subscribe_},
                  {LV2_UI__touch, &touch_},
                  {LV2_UI__requestValue, &requestValue_},
                  {LV2_UI__idleInterface, nullptr}}};
    std::transform(features_.begin(), features_.end(), list_.begin(),
                   [](const LV2_Feature &feature) { return &feature; });
}

} // namespace platform::lv2
