#pragma once

#include "Platform/Effect View/XConnection.hpp"
#include "Platform/LV2/ViewSize.hpp"

#include <functional>
#include <string>
#include <vector>

namespace platform::effectview
{

/// The X windows between a GTK window and the view that another process draws: the
/// outer one is as large as what is seen of the view, the inner one, the view's
/// parent, as large as the view. Both are of the screen's own depth, visual and
/// colours, since views fail in GTK's, which have an alpha channel. Pixels. Main
/// thread.
class FrameWindow
{
public:
    struct Rectangle {
        int x = 0;
        int y = 0;
        unsigned int width = 0;
        unsigned int height = 0;
        bool operator==(const Rectangle &) const = default;
    };
    struct Placement {
        /// What is seen of the view, within the GTK window.
        Rectangle seen;
        /// Where the view begins, from the seen part's corner.
        int offsetX = 0;
        int offsetY = 0;
        lv2::ViewSize view;
        bool operator==(const Placement &) const = default;
    };

    /// Makes the windows on the display of that name, seen nowhere yet. `hostKey`
    /// gets each of the `hostKeys`, accelerators that stay the host's also while the
    /// view has the keyboard. A `PlatformError` when the display does not answer.
    FrameWindow(const std::string &display, std::vector<std::string> hostKeys,
                std::function<void(const std::string &)> hostKey);

    /// The parent for the view.
    unsigned long inner() const { return inner_; }

    /// Puts the frame inside the X window `toplevel`, hidden; it has to be there.
    void attach(unsigned long toplevel);
    /// Takes it out again, hidden, so that it outlives the window.
    void detach();
    bool isAttached() const { return toplevel_ != 0; }

    /// Shows the frame there, at once or when it is attached.
    void show(const Placement &placement);
    void hide();

    /// What is seen where the view has not drawn yet, 0xRRGGBB.
    void setBackground(unsigned long colour);

    /// Gives the keyboard to the view, if it can be seen. Clicking it does so, too.
    void takeKeyboard();
    /// Gives the keyboard to whom it was taken from, if the view has it.
    void giveKeyboardBack();

private:
    void handle(_XEvent &event);
    void grabButtons();
    void grabKeys();
    void reparent(unsigned long parent);
    /// The view's own window; 0 without one that can be seen.
    unsigned long viewWindow() const;

    const std::vector<std::string> hostKeys_;
    const std::function<void(const std::string &)> hostKey_;
    XConnection connection_;
    unsigned long root_ = 0;
    unsigned long outer_ = 0;
    unsigned long inner_ = 0;
    unsigned long toplevel_ = 0;
    Placement placement_;
    bool isShown_ = false;
    bool tookKeyboard_ = false;
    unsigned long formerFocus_ = 0;
};

} // namespace platform::effectview
