#include "Platform/Effect Process/ViewServer.hpp"

#include "Platform/Foundation/PlatformError.hpp"

#include <algorithm>

namespace platform::effect
{

void ViewServer::open(std::uint64_t number, const ViewPlace &place, lv2::HostedPlugin &hosted)
{
    close();
    number_ = number;
    place_ = place;
    show(hosted);
}

void ViewServer::suspend()
{
    if (!view_)
        return;
    view_.reset();
    send_(MessageKind::viewWaits, number_, {});
}

void ViewServer::resume(lv2::HostedPlugin &hosted)
{
    if (place_ && !view_)
        show(hosted);
}

void ViewServer::show(lv2::HostedPlugin &hosted)
{
    const auto description = hosted.plugin().x11View();
    try {
        if (!description)
            throw PlatformError("It has no view.");
        view_ = std::make_unique<lv2::PluginView>(
            hosted.plugin(), hosted.instance(), *hosted.exchange(), *description,
            lv2::PluginView::Place{place_->window, place_->scale});
    } catch (const PlatformError &error) {
        end(error.what());
        return;
    }
    isResizable_ = description->isResizable;
    told_.reset();
    nextIdle_ = nextPulse_ = Clock::now();
    tellSize();
}

void ViewServer::close()
{
    if (place_)
        end({});
}

void ViewServer::end(const std::string &reason)
{
    view_.reset();
    place_.reset();
    send_(MessageKind::viewClosed, number_, MessageWriter::message(reason));
}

void ViewServer::resize(std::uint64_t number, const lv2::ViewSize &size)
{
    if (!view_ || number != number_)
        return;
    view_->resize(size);
    view_->takeEvents();
    // The host waits for an answer, even if nothing has changed.
    told_.reset();
    tellSize();
}

std::optional<ViewServer::Clock::time_point> ViewServer::deadline() const
{
    return view_ ? std::optional(nextIdle_) : std::nullopt;
}

bool ViewServer::turn()
{
    if (!view_)
        return false;
    const auto now = Clock::now();
    if (now < nextIdle_) {
        view_->takeEvents();
    } else {
        // What was missed is not made up for.
        nextIdle_ = std::max(nextIdle_ + view_->interval(), now);
        if (!view_->idle()) {
            end("It has closed its view.");
            return false;
        }
        tellOfLife();
    }
    tellSize();
    return view_->takeHasChangedSettings();
}

void ViewServer::tellSize()
{
    const auto size = view_->size();
    if (!size || size == told_)
        return;
    told_ = size;
    send_(MessageKind::viewResized, number_,
          MessageWriter::message(ViewShape{*size, isResizable_}));
}

void ViewServer::tellOfLife()
{
    const auto now = Clock::now();
    if (now < nextPulse_)
        return;
    nextPulse_ = now + viewPulse;
    send_(MessageKind::viewLives, number_, {});
}

} // namespace platform::effect
