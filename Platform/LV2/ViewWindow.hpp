#pragma once

#include "Platform/LV2/ViewSize.hpp"

#include <memory>
#include <optional>

// Xlib's headers define macros with everyday names.
struct _XDisplay; // NOLINT(bugprone-reserved-identifier)

namespace platform::lv2
{

/// The X windows around a plug-in's view: the parent that it was given and the one
/// that it makes inside, followed on a connection of our own. One thread.
class ViewWindow
{
public:
    /// Follows `parent`. A `PlatformError` when there is no display. From here on X
    /// errors in this process are told on standard error instead of ending it.
    explicit ViewWindow(unsigned long parent);
    ViewWindow(const ViewWindow &) = delete;
    ViewWindow &operator=(const ViewWindow &) = delete;

    /// The view is there: finds its window, if it has made one yet, and shows it.
    void find();

    /// The view asks for a size (`ui:resize`).
    void wish(int width, int height);
    /// Gives the view's window another size, as far as it says that it can.
    void resize(const ViewSize &size);

    /// The size of the view, however it came about; none before it is known.
    std::optional<ViewSize> size() const { return size_; }

    /// Readable when the display has news.
    int descriptor() const;
    /// Takes in the news, without waiting.
    void takeEvents();

private:
    struct Close {
        void operator()(_XDisplay *display) const;
    };

    void adopt(unsigned long window);
    void setSize(int width, int height);
    void applyWish();

    const std::unique_ptr<_XDisplay, Close> display_;
    const unsigned long parent_;
    unsigned long window_ = 0;
    std::optional<ViewSize> size_;
    std::optional<ViewSize> wish_;
};

} // namespace platform::lv2
