#include "Platform/Foundation/URL.hpp"

#include "Platform/Foundation/URLText.hpp"

#include <cstddef>
#include <filesystem>
#include <system_error>

using platform::foundation::decodePercent;
using platform::foundation::encodePath;
using platform::foundation::splitURL;
using platform::foundation::URLParts;

namespace
{

std::string_view withoutTrailingSlashes(std::string_view path)
{
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    return path;
}

/// The text with another path in place of its own.
std::string replacingPath(const std::string &text, std::string_view oldPath,
                          std::string_view newPath)
{
    const auto start = static_cast<std::size_t>(oldPath.data() - text.data());
    std::string result = text;
    result.replace(start, oldPath.size(), newPath);
    return result;
}

} // namespace

URL URL::fileURLWithPath(std::string_view path)
{
    std::error_code error;
    std::string absolute(path);
    if (absolute.empty() || absolute.front() != '/') {
        std::string folder = std::filesystem::current_path(error).string();
        if (folder.empty() || folder.back() != '/')
            folder += '/';
        absolute.insert(0, folder);
    }
    if (absolute.back() != '/' && absolute.find('\0') == std::string::npos &&
        std::filesystem::is_directory(absolute, error))
        absolute += '/';
    return URL("file://" + encodePath(absolute));
}

std::optional<URL> URL::fromString(std::string_view text)
{
    if (!platform::foundation::isURL(text))
        return std::nullopt;
    return URL(std::string(text));
}

std::optional<std::string> URL::scheme() const
{
    const URLParts parts = splitURL(text_);
    if (!parts.scheme)
        return std::nullopt;
    return std::string(*parts.scheme);
}

std::optional<std::string> URL::host() const
{
    const URLParts parts = splitURL(text_);
    if (!parts.authority)
        return std::nullopt;
    const std::string_view host = platform::foundation::hostOfAuthority(*parts.authority);
    if (host.empty())
        return std::nullopt;
    return decodePercent(host);
}

std::string URL::path() const
{
    return decodePercent(withoutTrailingSlashes(splitURL(text_).path));
}

std::string URL::lastPathComponent() const
{
    const std::string_view path = withoutTrailingSlashes(splitURL(text_).path);
    if (path == "/")
        return "/";
    return decodePercent(path.substr(path.rfind('/') + 1));
}

std::string URL::pathExtension() const
{
    const std::string name = lastPathComponent();
    const auto dot = name.rfind('.');
    // A name that only begins with a dot is that of a hidden file.
    if (dot == std::string::npos || name.find_first_not_of('.') > dot)
        return {};
    return name.substr(dot + 1);
}

bool URL::isFileURL() const
{
    const std::optional<std::string> name = scheme();
    return name && platform::foundation::equalsIgnoringCase(*name, "file");
}

URL URL::appendingPathComponent(std::string_view component) const
{
    const URLParts parts = splitURL(text_);
    std::string path(parts.path);
    if (path.empty() ? parts.authority.has_value() : path.back() != '/')
        path += '/';
    while (!path.empty() && component.starts_with('/'))
        component.remove_prefix(1);
    path += encodePath(component);
    return URL(replacingPath(text_, parts.path, path));
}

URL URL::deletingLastPathComponent() const
{
    const URLParts parts = splitURL(text_);
    const std::string_view path = withoutTrailingSlashes(parts.path);
    const auto slash = path.rfind('/');
    std::string_view folder = path.substr(0, slash + 1);
    // Behind an authority there is the root at least: a dot would belong to its name.
    if (slash == std::string_view::npos)
        folder = parts.authority ? "/" : "./";
    return URL(replacingPath(text_, parts.path, folder));
}
