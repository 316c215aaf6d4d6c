#include "Effect/View/View.hpp"

#include <lv2/core/lv2.h>
#include <lv2/ui/ui.h>

#include <cstring>
#include <exception>
#include <memory>

// The view's entry point and the functions of its C interface. No exception leaves
// them: the host need not be C++.
namespace
{

using effect::view::Host;
using effect::view::View;

constexpr const char *pluginUri = "urn:qrvx:parvane";
constexpr const char *viewUri = "urn:qrvx:parvane#view";

LV2UI_Handle instantiate(const LV2UI_Descriptor * /*descriptor*/, const char *plugin,
                         const char * /*bundlePath*/, LV2UI_Write_Function write,
                         LV2UI_Controller controller, LV2UI_Widget *widget,
                         const LV2_Feature *const *features)
{
    if (std::strcmp(plugin, pluginUri) != 0) {
        return nullptr;
    }
    try {
        const Host host(write, controller, features);
        if (host.parent() == 0) {
            return nullptr;
        }
        auto view = std::make_unique<View>(host);
        // The interface has the window's number in the place of a pointer.
        // NOLINTNEXTLINE(performance-no-int-to-ptr)
        *widget = reinterpret_cast<LV2UI_Widget>(view->window());
        return view.release();
    } catch (const std::exception &) {
        return nullptr;
    }
}

void cleanup(LV2UI_Handle instance)
{
    // Takes back what `instantiate` released.
    const std::unique_ptr<View> view(static_cast<View *>(instance));
}

void receive(LV2UI_Handle instance, std::uint32_t port, std::uint32_t size, std::uint32_t format,
             const void *buffer)
{
    if (format == 0 && size == sizeof(float)) {
        float value = 0;
        std::memcpy(&value, buffer, sizeof(value));
        static_cast<View *>(instance)->receive(port, value);
    }
}

int idle(LV2UI_Handle instance)
{
    try {
        return static_cast<View *>(instance)->idle() ? 0 : 1;
    } catch (const std::exception &) {
        return 1;
    }
}

int resize(LV2UI_Feature_Handle instance, int width, int height)
{
    if (width < 1 || height < 1) {
        return 1;
    }
    static_cast<View *>(instance)->resize({width, height});
    return 0;
}

const LV2UI_Idle_Interface idleInterface{idle};
const LV2UI_Resize resizeInterface{nullptr, resize};

const void *extensionData(const char *uri)
{
    if (std::strcmp(uri, LV2_UI__idleInterface) == 0) {
        return &idleInterface;
    }
    if (std::strcmp(uri, LV2_UI__resize) == 0) {
        return &resizeInterface;
    }
    return nullptr;
}

const LV2UI_Descriptor descriptor{viewUri, instantiate, cleanup, receive, extensionData};

} // namespace

LV2_SYMBOL_EXPORT const LV2UI_Descriptor *lv2ui_descriptor(std::uint32_t index)
{
    return index == 0 ? &descriptor : nullptr;
}
