#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct _XDisplay; // NOLINT(bugprone-reserved-identifier)

namespace test
{

/// Looks at the windows of a display from outside, on a connection of its own.
/// Windows that are gone have no size, no children and no properties.
class XWindows
{
public:
    using Window = unsigned long;
    struct Extent {
        int x = 0;
        int y = 0;
        int width = 0;
        int height = 0;
        bool operator==(const Extent &) const = default;
    };

    XWindows();

    Window root() const;
    /// A new window that is shown, of the display's own kind.
    Window make(int width, int height);
    void destroy(Window window);

    /// From the lowest to the uppermost.
    std::vector<Window> children(Window parent) const;
    /// All windows below `parent`, however deep.
    std::vector<Window> descendants(Window parent) const;
    bool isThere(Window window) const;
    /// Whether it and all around it are shown.
    bool isViewable(Window window) const;
    int depth(Window window) const;
    /// Within its parent.
    Extent extent(Window window) const;
    /// Where it is on the screen.
    Extent onScreen(Window window) const;
    /// A text property; empty without it.
    std::string text(Window window, const std::string &property) const;
    Window focus() const;
    /// Tells the window of a click as if somebody had made it there.
    void sendClick(Window window, unsigned int button);

    /// How many colours are seen in a window that is shown, 0 when that fails.
    std::size_t colours(Window window) const;
    /// The colour, 0xRRGGBB, at a place of a window that is shown.
    std::uint32_t colour(Window window, int x, int y) const;
    /// Writes a picture of the screen as a PPM file.
    void savePicture(const std::string &path) const;

private:
    struct Close {
        void operator()(_XDisplay *display) const;
    };
    std::unique_ptr<_XDisplay, Close> display_;
};

} // namespace test
