#include "Platform/LV2/PluginView.hpp"

#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/LV2/SymbolTable.hpp"
#include "Platform/LV2/ViewLibrary.hpp"

#include <lv2/atom/atom.h>

#include <bit>
#include <cmath>
#include <cstring>

namespace platform::lv2
{

namespace
{

std::chrono::nanoseconds period(float rate)
{
    return std::chrono::nanoseconds(static_cast<std::int64_t>(1e9F / rate));
}

} // namespace

PluginView::PluginView(const Plugin &plugin, Instance &instance, Exchange &exchange,
                       const ViewDescription &description, const Place &place)
    : ports_(plugin.ports()), instance_(instance), interval_(period(description.updateRate)),
      eventTransfer_(SymbolTable::shared().map(LV2_ATOM__eventTransfer)), window_(place.window),
      features_(plugin, instance, exchange,
                {place.window, place.scale, description.updateRate, plugin.name(),
                 [this](int width, int height) { window_.wish(width, height); }}),
      descriptor_(loadView(description)), told_(ports_.size(), 0.0F)
{
    instance_.traffic().setWatched(true);
    LV2UI_Widget widget = nullptr;
    handle_ =
        descriptor_.instantiate(&descriptor_, plugin.uri().c_str(), description.bundle.c_str(),
                                &PluginView::write, this, &widget, features_.list());
    if (!handle_) {
        instance_.traffic().setWatched(false);
        throw PlatformError("Its view refuses to open.");
    }
    idle_ = extension<LV2UI_Idle_Interface>(LV2_UI__idleInterface);
    resize_ = extension<LV2UI_Resize>(LV2_UI__resize);
    tellControls(true);
    window_.find();
}

PluginView::~PluginView()
{
    descriptor_.cleanup(handle_);
    instance_.traffic().setWatched(false);
}

template <typename Interface>
const Interface *PluginView::extension(const char *uri) const
{
    return descriptor_.extension_data
               ? static_cast<const Interface *>(descriptor_.extension_data(uri))
               : nullptr;
}

bool PluginView::idle()
{
    tellControls(false);
    tellEvents();
    const bool wantsToClose = idle_ && idle_->idle(handle_) != 0;
    window_.takeEvents();
    return !wantsToClose;
}

void PluginView::resize(const ViewSize &size)
{
    if (resize_ && resize_->ui_resize)
        resize_->ui_resize(handle_, static_cast<int>(size.width), static_cast<int>(size.height));
    window_.resize(size);
}

void PluginView::tellControls(bool all)
{
    if (!descriptor_.port_event)
        return;
    for (const Port &port : ports_) {
        if (port.kind != PortKind::control)
            continue;
        const float value = instance_.control(port.index);
        // Compared as bits: what is not a number is told once, too.
        if (!all &&
            std::bit_cast<std::uint32_t>(value) == std::bit_cast<std::uint32_t>(told_[port.index]))
            continue;
        told_[port.index] = value;
        descriptor_.port_event(handle_, port.index, sizeof value, 0, &value);
    }
}

void PluginView::tellEvents()
{
    while (const auto event = instance_.traffic().next())
        if (descriptor_.port_event)
            descriptor_.port_event(handle_, event->port,
                                   static_cast<std::uint32_t>(sizeof(LV2_Atom)) + event->atom->size,
                                   eventTransfer_, event->atom);
}

void PluginView::write(LV2UI_Controller self, std::uint32_t port, std::uint32_t size,
                       std::uint32_t protocol, const void *data)
{
    auto *view = static_cast<PluginView *>(self);
    if (port >= view->ports_.size() || !data || !view->ports_[port].isInput)
        return;
    if (protocol == 0)
        view->writeFloat(port, size, data);
    else if (protocol == view->eventTransfer_)
        view->writeAtom(port, size, data);
}

void PluginView::writeFloat(std::uint32_t port, std::uint32_t size, const void *data)
{
    float value = 0.0F;
    if (size != sizeof value)
        return;
    std::memcpy(&value, data, sizeof value);
    if (!std::isfinite(value))
        return;
    instance_.setControl(port, value);
    // It knows already.
    told_[port] = instance_.control(port);
    hasChangedSettings_ = true;
}

void PluginView::writeAtom(std::uint32_t port, std::uint32_t size, const void *data)
{
    const auto *atom = static_cast<const LV2_Atom *>(data);
    if (ports_[port].kind != PortKind::atom || size < sizeof *atom ||
        atom->size > size - sizeof *atom)
        return;
    instance_.traffic().send(port, *atom);
    hasChangedSettings_ = true;
}

} // namespace platform::lv2
