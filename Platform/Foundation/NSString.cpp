#include "Platform/Foundation/NSString.hpp"

#include "Platform/Foundation/FileContents.hpp"
#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/Foundation/UTF8.hpp"

#include <vector>

std::string stringWithContentsOfFile(const std::string &path)
{
    const auto bytes = platform::foundation::fileContents(path);
    std::string text(reinterpret_cast<const char *>(bytes.data()), bytes.size());
    if (!platform::foundation::isUTF8(text))
        throw PlatformError("The file '" + path + "' is not text in UTF-8.");
    return text;
}
