#include "Platform/LV2/ViewWindow.hpp"

#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/Foundation/Print.hpp"
#include "Platform/LV2/Xlib.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <span>
#include <utility>

#include <unistd.h>

namespace platform::lv2
{

namespace
{

// A view that fails at each repaint is not to fill the log.
constexpr int mostReports = 5;

int reportError(Display *display, XErrorEvent *error)
{
    static std::atomic<int> reports{0};
    if (reports.fetch_add(1) >= mostReports)
        return 0;
    std::array<char, 128> text{};
    Xlib::shared().getErrorText(display, error->error_code, text.data(),
                                static_cast<int>(text.size()));
    printError(fmt::format("The effect's view met an X error: {} (request {}).", text.data(),
                           static_cast<int>(error->request_code)));
    return 0;
}

[[noreturn]] int endWithDisplay(Display * /*display*/)
{
    printError("The effect's view lost its display.");
    // Nothing that libraries would do at the end is of use without a display.
    ::_exit(1);
}

void installHandlers()
{
    static const bool installed = [] {
        Xlib::shared().setErrorHandler(reportError);
        Xlib::shared().setIOErrorHandler(endWithDisplay);
        return true;
    }();
    static_cast<void>(installed);
}

ViewSize sizeOf(int width, int height)
{
    const auto bounded = [](int length) {
        return std::clamp<std::uint32_t>(static_cast<std::uint32_t>(std::max(length, 1)), 1,
                                         ViewSize::largest);
    };
    return {bounded(width), bounded(height)};
}

/// What of `size` the window says that it can take.
ViewSize withinHints(Display *display, Window window, ViewSize size)
{
    XSizeHints hints{};
    long supplied = 0;
    if (Xlib::shared().getWMNormalHints(display, window, &hints, &supplied) == 0)
        return size;
    if ((hints.flags & PMinSize) != 0) {
        const ViewSize least = sizeOf(hints.min_width, hints.min_height);
        size = {std::max(size.width, least.width), std::max(size.height, least.height)};
    }
    if ((hints.flags & PMaxSize) != 0 && hints.max_width > 0 && hints.max_height > 0) {
        const ViewSize most = sizeOf(hints.max_width, hints.max_height);
        size = {std::min(size.width, most.width), std::min(size.height, most.height)};
    }
    return size;
}

} // namespace

void ViewWindow::Close::operator()(_XDisplay *display) const
{
    Xlib::shared().closeDisplay(display);
}

ViewWindow::ViewWindow(unsigned long parent)
    : display_(Xlib::shared().openDisplay(nullptr)), parent_(parent)
{
    if (!display_)
        throw PlatformError("The effect's view finds no display.");
    installHandlers();
    Xlib::shared().selectInput(display_.get(), parent_, SubstructureNotifyMask);
    Xlib::shared().sync(display_.get(), False);
}

int ViewWindow::descriptor() const
{
    return Xlib::shared().connectionNumber(display_.get());
}

void ViewWindow::find()
{
    if (window_ == 0) {
        Window root = 0;
        Window grandparent = 0;
        Window *children = nullptr;
        unsigned int count = 0;
        if (Xlib::shared().queryTree(display_.get(), parent_, &root, &grandparent, &children,
                                     &count) == 0)
            return;
        if (count > 0)
            adopt(std::span(children, count).front());
        if (children)
            Xlib::shared().free(children);
    }
    applyWish();
}

void ViewWindow::adopt(unsigned long window)
{
    XWindowAttributes attributes{};
    if (Xlib::shared().getWindowAttributes(display_.get(), window, &attributes) == 0)
        return;
    window_ = window;
    // Some leave this to whoever embeds them.
    if (attributes.map_state == IsUnmapped)
        Xlib::shared().mapWindow(display_.get(), window);
    setSize(attributes.width, attributes.height);
    Xlib::shared().flush(display_.get());
}

void ViewWindow::wish(int width, int height)
{
    if (width <= 0 || height <= 0)
        return;
    wish_ = sizeOf(width, height);
}

void ViewWindow::applyWish()
{
    // Only once, since a view that asks and then does something else would do so for
    // ever.
    const auto wished = std::exchange(wish_, std::nullopt);
    if (!wished || wished == size_)
        return;
    if (window_ != 0)
        Xlib::shared().resizeWindow(display_.get(), window_, wished->width, wished->height);
    Xlib::shared().flush(display_.get());
    size_ = wished;
}

void ViewWindow::resize(const ViewSize &size)
{
    if (window_ == 0)
        return;
    const ViewSize possible = withinHints(display_.get(), window_, size);
    Xlib::shared().resizeWindow(display_.get(), window_, possible.width, possible.height);
    Xlib::shared().flush(display_.get());
}

void ViewWindow::setSize(int width, int height)
{
    size_ = sizeOf(width, height);
}

void ViewWindow::takeEvents()
{
    while (Xlib::shared().pending(display_.get()) > 0) {
        XEvent event{};
        Xlib::shared().nextEvent(display_.get(), &event);
        if (event.type == ConfigureNotify && event.xconfigure.window == window_)
            setSize(event.xconfigure.width, event.xconfigure.height);
        else if (event.type == DestroyNotify && event.xdestroywindow.window == window_)
            window_ = 0;
        else if (event.type == CreateNotify || event.type == ReparentNotify)
            find();
    }
    applyWish();
}

} // namespace platform::lv2
