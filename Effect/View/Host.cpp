#include "Effect/View/Host.hpp"

#include <lv2/atom/atom.h>
#include <lv2/core/lv2_util.h>
#include <lv2/options/options.h>
#include <lv2/urid/urid.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace effect::view
{

namespace
{

constexpr float leastScale = 0.5F;
constexpr float mostScale = 4;

template <typename Data>
Data *featureOf(const LV2_Feature *const *features, const char *uri)
{
    return features == nullptr ? nullptr : static_cast<Data *>(lv2_features_data(features, uri));
}

float scaleOf(const LV2_Feature *const *features)
{
    const auto *map = featureOf<const LV2_URID_Map>(features, LV2_URID__map);
    const auto *option = featureOf<const LV2_Options_Option>(features, LV2_OPTIONS__options);
    if (map == nullptr || option == nullptr) {
        return 1;
    }
    const LV2_URID key = map->map(map->handle, LV2_UI__scaleFactor);
    const LV2_URID type = map->map(map->handle, LV2_ATOM__Float);
    for (; option->key != 0; ++option) {
        float scale = 0;
        if (option->key == key && option->type == type && option->size == sizeof(scale) &&
            option->value != nullptr) {
            std::memcpy(&scale, option->value, sizeof(scale));
            return std::isfinite(scale) && scale > 0 ? std::clamp(scale, leastScale, mostScale) : 1;
        }
    }
    return 1;
}

std::uint32_t portOf(std::size_t control)
{
    return static_cast<std::uint32_t>(parameters.at(control).port);
}

} // namespace

Host::Host(LV2UI_Write_Function write, LV2UI_Controller controller,
           const LV2_Feature *const *features)
    : write_(write), controller_(controller),
      // The window's number itself is in the place of the pointer.
      parent_(reinterpret_cast<std::uintptr_t>(featureOf<void>(features, LV2_UI__parent))),
      resize_(featureOf<const LV2UI_Resize>(features, LV2_UI__resize)),
      touch_(featureOf<const LV2UI_Touch>(features, LV2_UI__touch)), scale_(scaleOf(features))
{
}

void Host::announceSize(int width, int height) const
{
    if (resize_ != nullptr) {
        resize_->ui_resize(resize_->handle, width, height);
    }
}

void Host::touched(std::size_t control, bool held)
{
    if (touch_ != nullptr) {
        touch_->touch(touch_->handle, portOf(control), held);
    }
}

void Host::changed(std::size_t control, float value)
{
    // The protocol 0 is a float for a control port.
    write_(controller_, portOf(control), sizeof(value), 0, &value);
}

} // namespace effect::view
