#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

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
    /// What the window shows: every fourth pixel of every fourth line, with what
    /// stands in it. Empty when it is not there.
    std::vector<std::uint32_t> picture(Window window) const;

private:
    struct Close {
        void operator()(_XDisplay *display) const;
    };
    std::unique_ptr<_XDisplay, Close> display_;
};

} // namespace bench
