#include "Platform/Effect View/EffectViewController.hpp"

#include "Platform/Audio/EffectViewFactory.hpp"
#include "Platform/Effect View/EffectFrame.hpp"
#include "Platform/Interface/UIView.hpp"
#include "Platform/Interface/Widget.hpp"

#include <gdk/x11/gdkx.h>

#include <utility>

namespace platform::effectview
{

namespace
{

std::shared_ptr<AUViewController> makeController(std::shared_ptr<effect::EffectView> effectView)
{
    if (!GDK_IS_X11_DISPLAY(gdk_display_get_default()))
        return nullptr;
    return std::make_shared<EffectViewController>(std::move(effectView));
}

/// Linked into a program, this gives its effects their views.
[[maybe_unused]] const bool isRegistered = [] {
    audio::setEffectViewFactory(makeController);
    return true;
}();

} // namespace

EffectViewController::EffectViewController(std::shared_ptr<effect::EffectView> effectView)
    : AUViewController(std::nullopt, nullptr), effectView_(std::move(effectView))
{
}

EffectViewController::~EffectViewController()
{
    if (!frameIsThere_.expired())
        frame_->close();
}

void EffectViewController::loadView()
{
    frame_ = Gtk::make_managed<EffectFrame>(effectView_);
    frameIsThere_ = frame_->self();
    setView(std::make_shared<UIView>(std::make_unique<interface::Widget>(*frame_)));
}

void EffectViewController::viewWillAppear(bool animated)
{
    AUViewController::viewWillAppear(animated);
    // A page that slides away still covers the view; one that is there at once does not.
    if (frame_)
        frame_->setCovered(animated);
}

void EffectViewController::viewDidAppear(bool animated)
{
    AUViewController::viewDidAppear(animated);
    if (frame_)
        frame_->setCovered(false);
}

void EffectViewController::viewWillDisappear(bool animated)
{
    AUViewController::viewWillDisappear(animated);
    if (frame_)
        frame_->setCovered(true);
}

} // namespace platform::effectview
