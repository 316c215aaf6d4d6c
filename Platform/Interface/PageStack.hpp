#pragma once

#include <gtkmm/stack.h>

#include <functional>
#include <vector>

namespace platform::interface
{

/// The pages of a window, of which the uppermost is seen: a new one slides over the
/// others from below and back again.
class PageStack
{
public:
    PageStack();

    Gtk::Stack &widget() { return stack_; }

    /// Puts one page in the place of all.
    void reset(Gtk::Widget *root);
    /// Brings `page` up and calls `done` when it is in place and laid out. A change
    /// that is still under way ends first.
    void push(Gtk::Widget &page, bool animated, std::function<void()> done);
    /// Takes the uppermost page away and calls `done` when it is gone. The lowest
    /// one stays.
    void pop(bool animated, std::function<void()> done);

    /// The window has been laid out: a change that has come to rest ends.
    void didLayout();

private:
    void change(Gtk::Widget &page, Gtk::StackTransitionType transition, bool animated,
                std::function<void()> done);
    void endChangeAtRest();
    void endChange();

    Gtk::Stack stack_;
    std::vector<Gtk::Widget *> pages_;
    Gtk::Widget *leaving_ = nullptr;
    bool changing_ = false;
    bool laidOut_ = false;
    std::function<void()> done_;
};

} // namespace platform::interface
