#pragma once

#include "Platform/LV2/Exchange.hpp"
#include "Platform/LV2/Instance.hpp"
#include "Platform/LV2/ViewDescription.hpp"
#include "Platform/LV2/ViewFeatures.hpp"
#include "Platform/LV2/ViewSize.hpp"
#include "Platform/LV2/ViewWindow.hpp"

#include <lv2/ui/ui.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace platform::lv2
{

/// A plug-in's own view inside an X window, tied to the ports of a running instance.
/// One thread, the same that controls the instance.
class PluginView
{
public:
    /// Where a view is to be.
    struct Place {
        /// The X window to be in.
        unsigned long window = 0;
        /// Pixels a point.
        float scale = 1.0F;
    };

    /// Opens the view. A `PlatformError` when it does not load or refuses. Plug-in,
    /// instance and exchange outlive it.
    PluginView(const Plugin &plugin, Instance &instance, Exchange &exchange,
               const ViewDescription &description, const Place &place);
    /// Closes it.
    ~PluginView();
    PluginView(const PluginView &) = delete;
    PluginView &operator=(const PluginView &) = delete;

    /// How often `idle` is to be called.
    std::chrono::nanoseconds interval() const { return interval_; }
    /// Tells the view what the ports have, and lets it draw and react. Answers false
    /// when it wants to be closed.
    bool idle();

    /// Readable when there is something for `takeEvents`.
    int descriptor() const { return window_.descriptor(); }
    /// Reads what X says of the view's window: its size, its end.
    void takeEvents() { window_.takeEvents(); }

    /// The view's size; none before it is known.
    std::optional<ViewSize> size() const { return window_.size(); }
    /// Asks the view to take a size; it may take another.
    void resize(const ViewSize &size);

    /// Whether the view has changed a setting since the last call.
    bool takeHasChangedSettings() { return std::exchange(hasChangedSettings_, false); }

private:
    static void write(LV2UI_Controller self, std::uint32_t port, std::uint32_t size,
                      std::uint32_t protocol, const void *data);
    void writeFloat(std::uint32_t port, std::uint32_t size, const void *data);
    void writeAtom(std::uint32_t port, std::uint32_t size, const void *data);
    void tellControls(bool all);
    void tellEvents();
    template <typename Interface>
    const Interface *extension(const char *uri) const;

    const std::vector<Port> &ports_;
    Instance &instance_;
    const std::chrono::nanoseconds interval_;
    const LV2_URID eventTransfer_;
    ViewWindow window_;
    ViewFeatures features_;
    const LV2UI_Descriptor &descriptor_;
    LV2UI_Handle handle_ = nullptr;
    const LV2UI_Idle_Interface *idle_ = nullptr;
    const LV2UI_Resize *resize_ = nullptr;
    // By port: what the view was last told.
    std::vector<float> told_;
    bool hasChangedSettings_ = false;
};

} // namespace platform::lv2
