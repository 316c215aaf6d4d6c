#pragma once

#include <X11/Xlib.h>

namespace effect::view
{

/// While it lives, errors that the server reports on the display are taken here: Xlib
/// would end the whole program, and a window may go with its parent at any time. Errors
/// of other displays go where they went before. One at a time, on the view's thread.
class ErrorTrap
{
public:
    explicit ErrorTrap(Display *display);
    ErrorTrap(const ErrorTrap &) = delete;
    ErrorTrap &operator=(const ErrorTrap &) = delete;
    ~ErrorTrap();

    /// Waits for the server; whether it has reported an error so far.
    bool caught() const;

private:
    Display *display_;
};

} // namespace effect::view
