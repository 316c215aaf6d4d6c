#pragma once

#include <lv2/atom/atom.h>
#include <lv2/options/options.h>
#include <lv2/ui/ui.h>
#include <lv2/urid/urid.h>

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

struct _XDisplay; // NOLINT(bugprone-reserved-identifier)

/// A host of the view, as small as can be: a window at the top left of the screen, the
/// view within it, and a person at mouse and keyboard.
class ViewHost
{
public:
    using Window = unsigned long;

    struct Offer {
        float scale = 1;
        bool parent = true;
        /// Touch, resize, map and options.
        bool rest = true;
    };

    ViewHost();
    ~ViewHost();
    ViewHost(const ViewHost &) = delete;
    ViewHost &operator=(const ViewHost &) = delete;

    const LV2UI_Descriptor *descriptor() const { return descriptor_; }
    /// Whether there is a view then.
    bool open(const Offer &offer, const char *plugin = "urn:qrvx:parvane");
    void close();
    /// The value that the view returns from its idle call.
    int idle();
    /// Idles until the condition holds; whether it does within ten seconds.
    bool idleUntil(const std::function<bool()> &condition);
    /// Idles until the view has drawn nothing for some rounds.
    void settle();

    void send(std::uint32_t port, float value);
    void sendRaw(std::uint32_t port, std::uint32_t size, std::uint32_t format, const void *data);
    /// By the view's own extension.
    int resizeByInterface(int width, int height);
    /// By the window, as a host does that lays it out.
    void resizeWindow(int width, int height);
    void destroyParent();
    /// Makes the view's window black, and lets the server ask for its content.
    void clearView();

    void moveTo(int x, int y);
    void button(unsigned button, bool down);
    void click(int x, int y, unsigned button = 1);
    void key(unsigned long symbol);
    void hold(unsigned long symbol, bool down);
    void focusView();
    void focusParent();

    Window view() const { return view_; }
    std::pair<int, int> size() const;
    /// Width and height, in the least proportion and in the most.
    std::array<int, 4> proportions() const;
    /// The least width that the view asks for.
    int leastWidth() const;
    Window focus() const;
    /// 0xRRGGBB, row by row.
    std::vector<std::uint32_t> picture(int x, int y, int width, int height) const;

    /// What the view has said: "6 = 1", "hold 6", "let go 6", "720 x 408".
    std::vector<std::string> said;

private:
    struct CloseDisplay {
        void operator()(_XDisplay *display) const;
    };
    struct CloseLibrary {
        void operator()(void *library) const;
    };

    void flush();

    // Called for as long as the view lives.
    LV2UI_Resize resize_;
    LV2UI_Touch touch_;
    std::unique_ptr<_XDisplay, CloseDisplay> display_;
    std::unique_ptr<void, CloseLibrary> library_;
    const LV2UI_Descriptor *descriptor_ = nullptr;
    Window parent_ = 0;
    LV2UI_Handle handle_ = nullptr;
    Window view_ = 0;
};
