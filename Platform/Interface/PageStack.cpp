#include "Platform/Interface/PageStack.hpp"

#include "Platform/Interface/StackPages.hpp"

#include <utility>

namespace platform::interface
{

PageStack::PageStack()
{
    stack_.property_transition_running().signal_changed().connect([this] { endChangeAtRest(); });
}

void PageStack::reset(Gtk::Widget *root)
{
    endChange();
    // The new page first: with none the keyboard would be nobody's.
    if (root) {
        stack_.add(*root);
        stack_.set_transition_type(Gtk::StackTransitionType::NONE);
        showPageOf(stack_.gobj(), root->gobj());
    }
    for (Gtk::Widget *page : std::exchange(pages_, {}))
        stack_.remove(*page);
    if (root)
        pages_.push_back(root);
}

void PageStack::push(Gtk::Widget &page, bool animated, std::function<void()> done)
{
    endChange();
    stack_.add(page);
    pages_.push_back(&page);
    change(page, Gtk::StackTransitionType::OVER_UP, animated, std::move(done));
}

void PageStack::pop(bool animated, std::function<void()> done)
{
    endChange();
    if (pages_.size() < 2)
        return;
    leaving_ = pages_.back();
    pages_.pop_back();
    change(*pages_.back(), Gtk::StackTransitionType::UNDER_DOWN, animated, std::move(done));
}

void PageStack::change(Gtk::Widget &page, Gtk::StackTransitionType transition, bool animated,
                       std::function<void()> done)
{
    changing_ = true;
    laidOut_ = false;
    done_ = std::move(done);
    stack_.set_transition_type(animated ? transition : Gtk::StackTransitionType::NONE);
    showPageOf(stack_.gobj(), page.gobj());
    // There is a layout even if the page has the size of the last.
    stack_.queue_resize();
}

void PageStack::didLayout()
{
    laidOut_ = true;
    endChangeAtRest();
}

void PageStack::endChangeAtRest()
{
    if (laidOut_ && !stack_.get_transition_running())
        endChange();
}

void PageStack::endChange()
{
    if (!std::exchange(changing_, false))
        return;
    if (leaving_)
        stack_.remove(*std::exchange(leaving_, nullptr));
    const auto done = std::exchange(done_, nullptr);
    done();
}

} // namespace platform::interface
