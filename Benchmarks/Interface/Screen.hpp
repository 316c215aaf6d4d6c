#pragma once

#include <cstdint>
#include <memory>
#include <string>

// Xlib's headers define macros with everyday names.
struct _XDisplay; // NOLINT(bugprone-reserved-identifier)

namespace bench
{

/// The display of the environment, looked at and used as a person would.
class Screen
{
public:
    using Window = unsigned long;

    /// A `std::runtime_error` without a display.
    Screen();

    /// Waits for a window of that title; a `std::runtime_error` when none comes.
    Window waitForWindow(const std::string &title) const;
    void resize(Window window, int width, int height) const;
    /// Presses and releases F1, or a key with Control, in the window.
    void type(Window window, unsigned long symbol, bool withControl = false) const;
    /// A number that is another one when the window is drawn differently.
    std::uint64_t fingerprint(Window window) const;

private:
    struct Close {
        void operator()(_XDisplay *display) const;
    };
    std::unique_ptr<_XDisplay, Close> display_;
};

} // namespace bench
