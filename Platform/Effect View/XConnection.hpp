#pragma once

#include <functional>
#include <memory>
#include <string>

// Xlib's headers define macros with everyday names.
struct _XDisplay; // NOLINT(bugprone-reserved-identifier)
union _XEvent;    // NOLINT(bugprone-reserved-identifier)

namespace platform::effectview
{

/// A connection to the X server beside GTK's own, on which an error would end the
/// program: here it is passed over. Main thread.
class XConnection
{
public:
    /// Connects to the display of that name, and has `handler` called by the main
    /// loop for each event. A `PlatformError` when the server does not answer.
    XConnection(const std::string &display, std::function<void(_XEvent &)> handler);
    /// Closes the connection, and with it the windows that were made on it.
    ~XConnection();
    XConnection(const XConnection &) = delete;
    XConnection &operator=(const XConnection &) = delete;

    _XDisplay *get() const { return display_; }

    /// Brings what was asked for on its way. Waits for nothing.
    void flush();
    /// Returns when the server has done all that was asked for.
    void sync();

private:
    /// What came along with an answer is in no hurry to be read from the socket.
    void scheduleEvents();
    void takeEvents();

    _XDisplay *display_;
    std::function<void(_XEvent &)> handler_;
    unsigned int watch_ = 0;
    unsigned int later_ = 0;
};

} // namespace platform::effectview
