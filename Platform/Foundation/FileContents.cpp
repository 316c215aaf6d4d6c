#include "Platform/Foundation/FileContents.hpp"

#include "Platform/Foundation/PlatformError.hpp"

#include <glib.h>

#include <memory>

namespace platform::foundation
{

std::vector<std::byte> fileContents(const std::string &path)
{
    gchar *text = nullptr;
    gsize length = 0;
    GError *fault = nullptr;
    if (!g_file_get_contents(path.c_str(), &text, &length, &fault)) {
        const std::unique_ptr<GError, decltype(&g_error_free)> owner(fault, &g_error_free);
        throw PlatformError(fault->message);
    }
    const std::unique_ptr<gchar, decltype(&g_free)> owner(text, &g_free);
    const auto *bytes = reinterpret_cast<const std::byte *>(text);
    return {bytes, bytes + length};
}

} // namespace platform::foundation
