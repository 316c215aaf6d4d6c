#pragma once

#include <sys/types.h>

#include <string>

namespace test
{

/// An X server of one's own, Xvfb, that ends with the object, or with the thread that
/// made it.
class XServer
{
public:
    XServer();
    ~XServer();
    XServer(const XServer &) = delete;
    XServer &operator=(const XServer &) = delete;

    /// What DISPLAY has to say; empty when no server has started.
    const std::string &display() const { return display_; }

private:
    pid_t server_ = -1;
    std::string display_;
};

} // namespace test
