#pragma once

#include "Platform/Effect Process/EffectView.hpp"
#include "Platform/Effect View/FrameArea.hpp"

#include <gtkmm/box.h>
#include <gtkmm/button.h>
#include <gtkmm/label.h>
#include <gtkmm/scrolledwindow.h>
#include <gtkmm/stack.h>

#include <memory>
#include <optional>

namespace platform::effectview
{

/// The effect's view in a place of any size, which scrolls where the view is larger;
/// and where there is no view to be had, a quiet word about it with a button that
/// may help. The view is opened when the frame is first shown and stays open,
/// hidden or not, until the frame goes.
class EffectFrame : public Gtk::Stack
{
public:
    explicit EffectFrame(std::shared_ptr<effect::EffectView> view);
    ~EffectFrame() override;

    /// Closes the view for good, though the frame may stay.
    void close();
    /// What finds the frame as long as it is there.
    std::weak_ptr<EffectFrame *> self() const { return self_; }

    /// While something else is shown in front.
    void setCovered(bool covered) { area_.setCovered(covered); }

private:
    using Phase = effect::EffectView::Phase;
    struct Extent {
        int width = 0;
        int height = 0;
        bool operator==(const Extent &) const = default;
    };

    void listen();
    void update();
    void showPage(Gtk::Widget &page);
    void showMessage(const Glib::ustring &text, const Glib::ustring &remedy);
    void didDraw();
    void open();
    void fitView();
    void help();

    const std::shared_ptr<effect::EffectView> view_;
    effect::EffectView::Status status_;
    /// What a late notice finds the frame with.
    const std::shared_ptr<EffectFrame *> self_;

    Gtk::ScrolledWindow scroller_;
    FrameArea area_;
    Gtk::Box messageBox_;
    Gtk::Label message_;
    Gtk::Button remedy_;
    /// With how many pixels a point the view was opened; 0 before.
    int scale_ = 0;
    bool isClosed_ = false;
    /// The size that the view came with.
    std::optional<lv2::ViewSize> natural_;
    Extent fitted_;
};

} // namespace platform::effectview
