#include "../TestPlugin.hpp"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <lv2/atom/atom.h>
#include <lv2/data-access/data-access.h>
#include <lv2/instance-access/instance-access.h>
#include <lv2/options/options.h>
#include <lv2/parameters/parameters.h>
#include <lv2/ui/ui.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include <unistd.h>

namespace
{

/// A view that tells what it knows in the property VIEW_REPORT of its window, and
/// does one unusual thing, as its URI says, when it has been idle three times.
///
/// A click with the left button sets the gain to 5, with the right one asks a
/// question; a key sets the gain to 7.
class TestView
{
public:
    TestView(const std::string &kind, LV2UI_Write_Function write, LV2UI_Controller controller,
             const LV2_Feature *const *features)
        : kind_(kind), write_(write), controller_(controller), display_(XOpenDisplay(nullptr)),
          resize_(testplugin::feature<LV2UI_Resize>(features, LV2_UI__resize)),
          eventTransfer_(testplugin::map(features, LV2_ATOM__eventTransfer)),
          question_(testplugin::map(features, "urn:test:question"))
    {
        const auto parent =
            reinterpret_cast<Window>(testplugin::feature<void>(features, LV2_UI__parent));
        window_ = XCreateSimpleWindow(display_, parent, 0, 0, 200, kind == "tall" ? 2000 : 100, 0,
                                      0, 0x2060A0);
        XSelectInput(display_, window_, ButtonPressMask | KeyPressMask | StructureNotifyMask);
        XMapWindow(display_, window_);
        const auto *ports = testplugin::feature<LV2UI_Port_Map>(features, LV2_UI__portMap);
        gainPort_ = ports->port_index(ports->handle, "gain");
        questionPort_ = ports->port_index(ports->handle, "question");
        hasInstance_ = testplugin::feature<void>(features, LV2_INSTANCE_ACCESS_URI) != nullptr;
        const auto *data =
            testplugin::feature<LV2_Extension_Data_Feature>(features, LV2_DATA_ACCESS_URI);
        saved_ = static_cast<const std::atomic<float> *>(data->data_access("urn:test:saved"));
        readOptions(features);
        report();
    }
    TestView(const TestView &) = delete;
    TestView &operator=(const TestView &) = delete;
    ~TestView()
    {
        XDestroyWindow(display_, window_);
        XCloseDisplay(display_);
    }

    Window window() const { return window_; }

    void portEvent(std::uint32_t port, std::uint32_t size, std::uint32_t format, const void *data)
    {
        if (format == 0 && port == gainPort_)
            std::memcpy(&gain_, data, sizeof gain_);
        else if (format == 0)
            std::memcpy(&peak_, data, sizeof peak_);
        else if (format == eventTransfer_ && size >= sizeof(LV2_Atom) &&
                 static_cast<const LV2_Atom *>(data)->type == question_)
            answer_ = static_cast<const char *>(LV2_ATOM_BODY_CONST(data));
        report();
    }

    int idle()
    {
        while (XPending(display_) > 0) {
            XEvent event{};
            XNextEvent(display_, &event);
            if (event.type == ButtonPress && event.xbutton.button == Button1)
                setGain(5);
            else if (event.type == ButtonPress && event.xbutton.button == Button3)
                ask();
            else if (event.type == KeyPress)
                setGain(7);
        }
        if (*saved_ != toldSaved_)
            report();
        return ++idles_ == 3 ? doUnusual() : 0;
    }

private:
    void readOptions(const LV2_Feature *const *features)
    {
        const LV2_URID scale = testplugin::map(features, LV2_UI__scaleFactor);
        const LV2_URID rate = testplugin::map(features, LV2_UI__updateRate);
        const LV2_URID sampleRate = testplugin::map(features, LV2_PARAMETERS__sampleRate);
        const auto *option =
            testplugin::feature<LV2_Options_Option>(features, LV2_OPTIONS__options);
        for (; option->key != 0; ++option) {
            if (option->key == scale)
                std::memcpy(&scale_, option->value, sizeof scale_);
            else if (option->key == rate)
                std::memcpy(&rate_, option->value, sizeof rate_);
            else if (option->key == sampleRate)
                std::memcpy(&sampleRate_, option->value, sizeof sampleRate_);
        }
    }

    int doUnusual()
    {
        if (kind_ == "growing")
            XResizeWindow(display_, window_, 320, 240);
        else if (kind_ == "asking")
            resize_->ui_resize(resize_->handle, 260, 140);
        else if (kind_ == "failing")
            fail();
        else if (kind_ == "dying")
            std::abort();
        else if (kind_ == "hanging")
            for (;;)
                ::pause();
        XFlush(display_);
        return kind_ == "closing" ? 1 : 0;
    }

    void fail()
    {
        XMapWindow(display_, 1);
        XSync(display_, False);
        hasFailed_ = true;
        report();
    }

    void setGain(float gain)
    {
        gain_ = gain;
        write_(controller_, gainPort_, sizeof gain_, 0, &gain_);
        report();
    }

    void ask()
    {
        struct {
            LV2_Atom atom;
            char text[8];
        } const question{{8, question_}, "why?"};
        write_(controller_, questionPort_, sizeof question, eventTransfer_, &question);
    }

    void report()
    {
        toldSaved_ = *saved_;
        const auto text = "gain=" + number(gain_) + " peak=" + number(peak_) +
                          " answer=" + answer_ + " scale=" + number(scale_) +
                          " rate=" + number(rate_) + " instance=" + (hasInstance_ ? "yes" : "no") +
                          " hertz=" + number(sampleRate_) + " saved=" + number(toldSaved_) +
                          " failed=" + (hasFailed_ ? "yes" : "no");
        XChangeProperty(display_, window_, XInternAtom(display_, "VIEW_REPORT", False), XA_STRING,
                        8, PropModeReplace, reinterpret_cast<const unsigned char *>(text.data()),
                        static_cast<int>(text.size()));
        XFlush(display_);
    }

    static std::string number(float value) { return std::to_string(static_cast<int>(value)); }

    std::string kind_;
    LV2UI_Write_Function write_;
    LV2UI_Controller controller_;
    Display *display_;
    const LV2UI_Resize *resize_;
    LV2_URID eventTransfer_;
    LV2_URID question_;
    Window window_ = 0;
    std::uint32_t gainPort_ = 0;
    std::uint32_t questionPort_ = 0;
    float gain_ = -1;
    float peak_ = -1;
    float scale_ = -1;
    float rate_ = -1;
    float sampleRate_ = -1;
    bool hasInstance_ = false;
    const std::atomic<float> *saved_ = nullptr;
    float toldSaved_ = -1;
    bool hasFailed_ = false;
    std::string answer_ = "none";
    int idles_ = 0;
};

const void *extension(const char *uri)
{
    static const LV2UI_Idle_Interface idle{
        [](LV2UI_Handle view) { return static_cast<TestView *>(view)->idle(); }};
    return std::strcmp(uri, LV2_UI__idleInterface) == 0 ? &idle : nullptr;
}

LV2UI_Handle instantiate(const LV2UI_Descriptor *, const char *plugin, const char *,
                         LV2UI_Write_Function write, LV2UI_Controller controller,
                         LV2UI_Widget *widget, const LV2_Feature *const *features)
{
    const std::string kind = std::string(plugin).substr(std::strlen("urn:test:view:"));
    if (kind == "refusing")
        return nullptr;
    auto view = std::make_unique<TestView>(kind, write, controller, features);
    *widget = reinterpret_cast<LV2UI_Widget>(view->window());
    return view.release();
}

constexpr LV2UI_Descriptor describe(const char *uri)
{
    return {uri, instantiate,
            [](LV2UI_Handle view) {
                const std::unique_ptr<TestView> owner(static_cast<TestView *>(view));
            },
            [](LV2UI_Handle view, std::uint32_t port, std::uint32_t size, std::uint32_t format,
               const void *data) {
                static_cast<TestView *>(view)->portEvent(port, size, format, data);
            },
            extension};
}

} // namespace

LV2_SYMBOL_EXPORT const LV2UI_Descriptor *lv2ui_descriptor(std::uint32_t index)
{
    static const LV2UI_Descriptor descriptors[] = {
        describe("urn:test:view:plain:ui"),    describe("urn:test:view:fixed:ui"),
        describe("urn:test:view:tall:ui"),     describe("urn:test:view:growing:ui"),
        describe("urn:test:view:asking:ui"),   describe("urn:test:view:refusing:ui"),
        describe("urn:test:view:closing:ui"),  describe("urn:test:view:dying:ui"),
        describe("urn:test:view:hanging:ui"),  describe("urn:test:view:failing:ui"),
        describe("urn:test:view:demanding:ui")};
    return index < sizeof descriptors / sizeof *descriptors ? &descriptors[index] : nullptr;
}
