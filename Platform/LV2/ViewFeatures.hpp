#pragma once

#include "Platform/LV2/Exchange.hpp"
#include "Platform/LV2/Instance.hpp"

#include <lv2/core/lv2.h>
#include <lv2/data-access/data-access.h>
#include <lv2/options/options.h>
#include <lv2/ui/ui.h>

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace platform::lv2
{

/// What a plug-in's view is offered: the features of LV2's user interfaces and the
/// options. Stays where it is as long as the view lives.
class ViewFeatures
{
public:
    /// What the view is told.
    struct Values {
        /// The X window that the view is to be in.
        unsigned long parent;
        /// Pixels a point.
        float scale;
        float updateRate;  ///< in Hz
        std::string title; ///< of the window, should it have one of its own
        /// Gets the size in pixels that the view asks for.
        std::function<void(int width, int height)> resize;
    };

    /// Whether a view may require the feature of this URI.
    static bool serves(std::string_view feature);

    /// Features that are valid as long as the instance and the exchange are.
    ViewFeatures(const Plugin &plugin, const Instance &instance, Exchange &exchange, Values values);
    ViewFeatures(const ViewFeatures &) = delete;
    ViewFeatures &operator=(const ViewFeatures &) = delete;

    /// For the view's `instantiate`; ends with null.
    const LV2_Feature *const *list() const { return list_.data(); }

private:
    static constexpr std::size_t featureCount = 13;

    std::uint32_t portIndex(std::string_view symbol) const;
    void fillOptions();
    void fillList(Exchange &exchange, const Instance &instance);

    const std::vector<Port> &ports_;
    Values values_;
    float sampleRate_;
    std::int32_t minimumFrames_ = 1;
    std::int32_t maximumFrames_;
    std::int32_t sequenceSize_;

    LV2UI_Resize resize_;
    LV2UI_Port_Map portMap_;
    LV2UI_Port_Subscribe subscribe_;
    LV2UI_Touch touch_;
    LV2UI_Request_Value requestValue_;
    LV2_Extension_Data_Feature dataAccess_;
    // Each list ends with an empty entry.
    std::array<LV2_Options_Option, 9> options_{};
    std::array<LV2_Feature, featureCount> features_{};
    std::array<const LV2_Feature *, featureCount + 1> list_{};
};

} // namespace platform::lv2
