#include "Platform/LV2/ViewLibrary.hpp"

#include "Platform/Foundation/PlatformError.hpp"

#include <fmt/format.h>

#include <cstdint>

#include <dlfcn.h>

namespace platform::lv2
{

namespace
{

// More than any library holds.
constexpr std::uint32_t mostViews = 65536;

} // namespace

const LV2UI_Descriptor &loadView(const ViewDescription &description)
{
    void *library = ::dlopen(description.binary.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (!library) {
        const char *reason = ::dlerror();
        throw PlatformError(
            fmt::format("Its view cannot be loaded: {}.", reason ? reason : description.binary));
    }
    const auto descriptorOf =
        reinterpret_cast<LV2UI_DescriptorFunction>(::dlsym(library, "lv2ui_descriptor"));
    for (std::uint32_t index = 0; descriptorOf && index < mostViews; ++index) {
        const LV2UI_Descriptor *descriptor = descriptorOf(index);
        if (!descriptor)
            break;
        if (descriptor->URI && description.uri == descriptor->URI)
            return *descriptor;
    }
    throw PlatformError(
        fmt::format("Its view <{}> is not in {}.", description.uri, description.binary));
}

} // namespace platform::lv2
