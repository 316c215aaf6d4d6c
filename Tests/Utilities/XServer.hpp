#pragma once

#include <string>

#include <sys/types.h>

namespace test
{

/// An X server without a screen, Xvfb, that ends with this object or with the
/// process that made it, so that tests run anywhere and disturb nobody.
class XServer
{
public:
    /// With a screen of that many pixels.
    explicit XServer(int width = 1280, int height = 800);
    ~XServer();
    XServer(const XServer &) = delete;
    XServer &operator=(const XServer &) = delete;

    /// The name of its display; empty when it does not start.
    const std::string &display() const { return display_; }

private:
    pid_t process_ = -1;
    std::string display_;
};

} // namespace test
