#include "Platform/Foundation/NSString.hpp"

#include "Platform/Foundation/FileContents.hpp"
#include "Platform/Foundation/PlatformError.hpp"

#include <glib.h>

std::string stringWithContentsOfFile(const std::string &path)
{
    const auto bytes = platform::foundation::fileContents(path);
    std::string text(reinterpret_cast<const char *>(bytes.data()), bytes.size());
    if (!g_utf8_validate_len(text.data(), text.size(), nullptr))
        throw PlatformError("The file '" + path + "' is not text in UTF-8.");
    return text;
}
