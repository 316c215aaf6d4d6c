#include "Platform/Effect View/EffectFrame.hpp"

#include "Platform/Foundation/DispatchQueue.hpp"
#include "Platform/Interface/StackPages.hpp"

#include <algorithm>
#include <utility>

namespace platform::effectview
{

namespace
{

constexpr int messageSpacing = 12;

// How far a view that can be resized is brought to the size of its place. One that
// would be too small to be read scrolls instead.
constexpr double smallestFactor = 0.75;
constexpr double largestFactor = 2.0;

/// Windows are destroyed on the main thread, whoever is the last to need them.
std::shared_ptr<void> keptForMainThread(std::shared_ptr<FrameWindow> window)
{
    return {nullptr, [window = std::move(window)](void *) mutable {
                DispatchQueue::main().async([last = std::move(window)] {});
            }};
}

} // namespace

EffectFrame::EffectFrame(std::shared_ptr<effect::EffectView> view)
    : view_(std::move(view)), self_(std::make_shared<EffectFrame *>(this))
{
    // GTK's scroll bars that come and go would be behind the view.
    scroller_.set_overlay_scrolling(false);
    scroller_.set_policy(Gtk::PolicyType::AUTOMATIC, Gtk::PolicyType::AUTOMATIC);
    scroller_.set_child(area_);
    area_.setFrameHandler([this] { didDraw(); });

    message_.set_wrap(true);
    message_.set_justify(Gtk::Justification::CENTER);
    message_.add_css_class("effect-message");
    remedy_.set_halign(Gtk::Align::CENTER);
    remedy_.signal_clicked().connect([this] { help(); });
    messageBox_.set_orientation(Gtk::Orientation::VERTICAL);
    messageBox_.set_spacing(messageSpacing);
    messageBox_.set_halign(Gtk::Align::CENTER);
    messageBox_.set_valign(Gtk::Align::CENTER);
    messageBox_.append(message_);
    messageBox_.append(remedy_);

    set_hhomogeneous(false);
    set_vhomogeneous(false);
    add(scroller_);
    add(messageBox_);
    showPage(scroller_);
    listen();
    update();
}

EffectFrame::~EffectFrame()
{
    close();
}

void EffectFrame::close()
{
    if (std::exchange(isClosed_, true))
        return;
    view_->setListener(nullptr);
    // The view keeps its window until it is closed.
    area_.setFrameHandler(nullptr);
    area_.releaseWindow();
    view_->close();
}

void EffectFrame::listen()
{
    view_->setListener([weak = std::weak_ptr(self_)] {
        DispatchQueue::main().async([weak] {
            if (const auto self = weak.lock())
                (*self)->update();
        });
    });
}

void EffectFrame::update()
{
    const Phase former = status_.phase;
    status_ = view_->status();
    switch (status_.phase) {
    case Phase::closed:
        // An effect that was being started again when this was made has come: the area
        // asks for the view when it is drawn.
        if (scale_ == 0)
            showPage(scroller_);
        break;
    case Phase::opening:
    case Phase::closing:
        break;
    case Phase::open:
        if (former != Phase::open || !natural_)
            natural_ = status_.size;
        showPage(scroller_);
        break;
    case Phase::refused:
        showMessage("The effect does not show its view.", "Show Again");
        break;
    case Phase::effectStarts:
        showMessage("The effect has failed and is being started again…", {});
        break;
    case Phase::effectIsDown:
        showMessage("The effect has failed and is silent.", "Start Again");
        break;
    }
    if (status_.phase == Phase::open) {
        area_.setView(status_.size);
        fitted_ = former == Phase::open ? fitted_ : Extent{};
    } else if (status_.phase != Phase::opening) {
        natural_.reset();
        area_.setView(std::nullopt);
    }
    queue_draw();
}

void EffectFrame::showPage(Gtk::Widget &page)
{
    // The style sheet tells the two apart.
    if (&page == &messageBox_)
        add_css_class("message");
    else
        remove_css_class("message");
    interface::showPageOf(gobj(), page.gobj());
}

void EffectFrame::showMessage(const Glib::ustring &text, const Glib::ustring &remedy)
{
    message_.set_text(text);
    remedy_.set_label(remedy);
    remedy_.set_visible(!remedy.empty());
    showPage(messageBox_);
}

void EffectFrame::didDraw()
{
    const bool isFirst = status_.phase == Phase::closed && scale_ == 0;
    const bool isOfOtherScale = status_.phase == Phase::open && scale_ != get_scale_factor();
    if (isFirst || isOfOtherScale)
        open();
    else
        fitView();
}

void EffectFrame::open()
{
    if (!area_.window())
        return;
    scale_ = get_scale_factor();
    natural_.reset();
    view_->open({area_.window()->inner(), static_cast<float>(scale_)},
                keptForMainThread(area_.window()));
    update();
}

void EffectFrame::fitView()
{
    if (status_.phase != Phase::open || !status_.isResizable || !natural_)
        return;
    const Extent room{scroller_.get_width(), scroller_.get_height()};
    // Once for each size of the room: what the view makes of it is up to the view.
    if (room == fitted_ || room.width <= 0 || room.height <= 0)
        return;
    fitted_ = room;
    const double across = room.width * scale_ / static_cast<double>(natural_->width);
    const double down = room.height * scale_ / static_cast<double>(natural_->height);
    // In its own shape: views that stretch one way only look odd.
    const double factor = std::clamp(std::min(across, down), smallestFactor, largestFactor);
    const auto length = [factor](std::uint32_t natural) {
        return std::clamp(static_cast<std::uint32_t>(natural * factor), 1U, lv2::ViewSize::largest);
    };
    const lv2::ViewSize wanted{length(natural_->width), length(natural_->height)};
    if (wanted != status_.size)
        view_->resize(wanted);
}

void EffectFrame::help()
{
    if (status_.phase == Phase::effectIsDown) {
        view_->restartEffect();
    } else if (status_.phase == Phase::refused) {
        showPage(scroller_);
        open();
    }
}

} // namespace platform::effectview
