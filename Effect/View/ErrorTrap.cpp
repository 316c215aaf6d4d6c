#include "Effect/View/ErrorTrap.hpp"

#include <atomic>

namespace effect::view
{

namespace
{

// Xlib's handler takes no context. A host may run its own Xlib calls on other threads
// meanwhile, hence atomics.
std::atomic<Display *> trapped{nullptr};
std::atomic<bool> hasCaught{false};
std::atomic<XErrorHandler> previous{nullptr};

int handle(Display *display, XErrorEvent *error)
{
    if (display == trapped) {
        hasCaught = true;
        return 0;
    }
    const XErrorHandler other = previous;
    return other == nullptr ? 0 : other(display, error);
}

} // namespace

ErrorTrap::ErrorTrap(Display *display) : display_(display)
{
    hasCaught = false;
    trapped = display;
    previous = XSetErrorHandler(handle);
}

ErrorTrap::~ErrorTrap()
{
    XSetErrorHandler(previous);
    trapped = nullptr;
}

bool ErrorTrap::caught() const
{
    XSync(display_, False);
    return hasCaught;
}

} // namespace effect::view
