// Text that may be a location, and paths of any bytes.

#include "Platform/Foundation/URL.hpp"
#include "Platform/Foundation/URLText.hpp"
#include "Tests/Fuzzing/Require.hpp"

#include <cstddef>
#include <cstdint>

namespace
{

using fuzzing::require;

void take(const URL &url)
{
    require(URL::fromString(url.absoluteString()) == url);
    url.scheme();
    url.host();
    url.path();
    url.pathExtension();
    require(url.lastPathComponent().size() <= url.absoluteString().size());
    const URL folder = url.deletingLastPathComponent();
    require(platform::foundation::isURL(folder.absoluteString()));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char *>(data), size);
    if (const auto url = URL::fromString(text)) {
        take(*url);
        const URL longer = url->appendingPathComponent(text);
        require(platform::foundation::isURL(longer.absoluteString()));
    }
    const URL file = URL::fileURLWithPath(text);
    require(file.isFileURL());
    take(file);
    platform::foundation::decodePercent(text);
    platform::foundation::encodeForbidden(text);
    return 0;
}
