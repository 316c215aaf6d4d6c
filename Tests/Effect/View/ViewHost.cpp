#include "Tests/Effect/View/ViewHost.hpp"
#include "Tests/Utilities/Places.hpp"

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>

#include <dlfcn.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <thread>

namespace
{

using namespace std::chrono_literals;

std::string number(float value)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%g", static_cast<double>(value));
    return text.data();
}

void write(LV2UI_Controller host, std::uint32_t port, std::uint32_t size, std::uint32_t format,
           const void *buffer)
{
    float value = -1;
    if (size == sizeof(value) && format == 0) {
        std::memcpy(&value, buffer, sizeof(value));
    }
    static_cast<ViewHost *>(host)->said.push_back(std::to_string(port) + " = " + number(value));
}

void touch(LV2UI_Feature_Handle host, std::uint32_t port, bool grabbed)
{
    static_cast<ViewHost *>(host)->said.push_back((grabbed ? "hold " : "let go ") +
                                                  std::to_string(port));
}

int resize(LV2UI_Feature_Handle host, int width, int height)
{
    static_cast<ViewHost *>(host)->said.push_back(std::to_string(width) + " x " +
                                                  std::to_string(height));
    return 0;
}

LV2_URID idOf(LV2_URID_Map_Handle /*handle*/, const char *uri)
{
    return std::strcmp(uri, LV2_UI__scaleFactor) == 0 ? 1
           : std::strcmp(uri, LV2_ATOM__Float) == 0   ? 2
                                                      : 3;
}

XSizeHints sizeHints(Display *display, ::Window window)
{
    XSizeHints hints{};
    long supplied = 0;
    XGetWMNormalHints(display, window, &hints, &supplied);
    return hints;
}

} // namespace

void ViewHost::CloseDisplay::operator()(_XDisplay *display) const
{
    XCloseDisplay(display);
}

void ViewHost::CloseLibrary::operator()(void *library) const
{
    dlclose(library);
}

ViewHost::ViewHost()
    : resize_{this, resize}, touch_{this, touch}, display_(XOpenDisplay(nullptr)),
      library_(dlopen(test::buildPath(VIEW_FILE).c_str(), RTLD_NOW | RTLD_LOCAL))
{
    const auto entry =
        reinterpret_cast<LV2UI_DescriptorFunction>(dlsym(library_.get(), "lv2ui_descriptor"));
    descriptor_ = entry(0);
    parent_ = XCreateSimpleWindow(display_.get(), DefaultRootWindow(display_.get()), 0, 0, 1500,
                                  900, 0, 0, 0x00FF00);
    XMapWindow(display_.get(), parent_);
    flush();
}

ViewHost::~ViewHost()
{
    close();
}

bool ViewHost::open(const Offer &offer, const char *plugin)
{
    LV2_URID_Map map{nullptr, idOf};
    std::array<LV2_Options_Option, 2> options{
        {{LV2_OPTIONS_INSTANCE, 0, 1, sizeof(float), 2, &offer.scale},
         {LV2_OPTIONS_INSTANCE, 0, 0, 0, 0, nullptr}}};
    const std::array<LV2_Feature, 5> all{{
        {LV2_UI__parent, reinterpret_cast<void *>(parent_)},
        {LV2_UI__resize, &resize_},
        {LV2_UI__touch, &touch_},
        {LV2_URID__map, &map},
        {LV2_OPTIONS__options, options.data()},
    }};
    std::vector<const LV2_Feature *> features;
    if (offer.parent) {
        features.push_back(all.data());
    }
    for (std::size_t i = 1; offer.rest && i < all.size(); ++i) {
        features.push_back(&all.at(i));
    }
    features.push_back(nullptr);
    LV2UI_Widget widget = nullptr;
    handle_ =
        descriptor_->instantiate(descriptor_, plugin, "/", write, this, &widget, features.data());
    view_ = reinterpret_cast<::Window>(widget);
    return handle_ != nullptr;
}

void ViewHost::close()
{
    if (handle_ != nullptr) {
        descriptor_->cleanup(handle_);
        handle_ = nullptr;
    }
}

int ViewHost::idle()
{
    const auto *interface = static_cast<const LV2UI_Idle_Interface *>(
        descriptor_->extension_data(LV2_UI__idleInterface));
    return interface->idle(handle_);
}

bool ViewHost::idleUntil(const std::function<bool()> &condition)
{
    const auto end = std::chrono::steady_clock::now() + 10s;
    while (std::chrono::steady_clock::now() < end) {
        idle();
        if (condition()) {
            return true;
        }
        std::this_thread::sleep_for(2ms);
    }
    return false;
}

void ViewHost::settle()
{
    std::vector<std::uint32_t> before;
    int same = 0;
    idleUntil([&] {
        const auto [width, height] = size();
        auto now = picture(0, 0, width, height);
        same = now == before ? same + 1 : 0;
        before = std::move(now);
        return same == 5;
    });
}

void ViewHost::send(std::uint32_t port, float value)
{
    sendRaw(port, sizeof(value), 0, &value);
}

void ViewHost::sendRaw(std::uint32_t port, std::uint32_t size, std::uint32_t format,
                       const void *data)
{
    descriptor_->port_event(handle_, port, size, format, data);
}

int ViewHost::resizeByInterface(int width, int height)
{
    const auto *interface =
        static_cast<const LV2UI_Resize *>(descriptor_->extension_data(LV2_UI__resize));
    return interface->ui_resize(handle_, width, height);
}

void ViewHost::resizeWindow(int width, int height)
{
    XResizeWindow(display_.get(), view_, static_cast<unsigned>(width),
                  static_cast<unsigned>(height));
    flush();
}

void ViewHost::destroyParent()
{
    XDestroyWindow(display_.get(), parent_);
    flush();
}

void ViewHost::clearView()
{
    XSetWindowBackground(display_.get(), view_, 0);
    XClearArea(display_.get(), view_, 0, 0, 0, 0, True);
    flush();
}

void ViewHost::moveTo(int x, int y)
{
    XTestFakeMotionEvent(display_.get(), -1, x, y, CurrentTime);
    flush();
}

void ViewHost::button(unsigned button, bool down)
{
    XTestFakeButtonEvent(display_.get(), button, down ? True : False, CurrentTime);
    flush();
}

void ViewHost::click(int x, int y, unsigned which)
{
    moveTo(x, y);
    button(which, true);
    button(which, false);
}

void ViewHost::key(unsigned long symbol)
{
    hold(symbol, true);
    hold(symbol, false);
}

void ViewHost::hold(unsigned long symbol, bool down)
{
    XTestFakeKeyEvent(display_.get(), XKeysymToKeycode(display_.get(), symbol), down ? True : False,
                      CurrentTime);
    flush();
}

void ViewHost::focusView()
{
    XSetInputFocus(display_.get(), view_, RevertToParent, CurrentTime);
    flush();
}

void ViewHost::focusParent()
{
    XSetInputFocus(display_.get(), parent_, RevertToParent, CurrentTime);
    flush();
}

std::pair<int, int> ViewHost::size() const
{
    XWindowAttributes attributes{};
    XGetWindowAttributes(display_.get(), view_, &attributes);
    return {attributes.width, attributes.height};
}

std::array<int, 4> ViewHost::proportions() const
{
    const XSizeHints hints = sizeHints(display_.get(), view_);
    return {hints.min_aspect.x, hints.min_aspect.y, hints.max_aspect.x, hints.max_aspect.y};
}

int ViewHost::leastWidth() const
{
    const XSizeHints hints = sizeHints(display_.get(), view_);
    return hints.min_width;
}

ViewHost::Window ViewHost::focus() const
{
    ::Window window = None;
    int revert = 0;
    XGetInputFocus(display_.get(), &window, &revert);
    return window;
}

std::vector<std::uint32_t> ViewHost::picture(int x, int y, int width, int height) const
{
    struct Destroy {
        void operator()(XImage *image) const { XDestroyImage(image); }
    };
    const std::unique_ptr<XImage, Destroy> image(
        XGetImage(display_.get(), view_, x, y, static_cast<unsigned>(width),
                  static_cast<unsigned>(height), AllPlanes, ZPixmap));
    std::vector<std::uint32_t> colours;
    for (int row = 0; image && row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            colours.push_back(
                static_cast<std::uint32_t>(XGetPixel(image.get(), column, row) & 0xFFFFFFU));
        }
    }
    return colours;
}

void ViewHost::flush()
{
    XSync(display_.get(), False);
}
