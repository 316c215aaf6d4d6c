#include "Platform/Foundation/Bundle.hpp"

#include "Platform/Foundation/Immortal.hpp"
#include "Platform/Foundation/ProcessInfo.hpp"
#include "Platform/Foundation/Shared.hpp"

#include <filesystem>
#include <system_error>
#include <utility>

namespace
{

using platform::foundation::Immortal;

std::shared_ptr<Bundle> programBundle()
{
    static const Immortal<std::shared_ptr<Bundle>> bundle([] {
        return std::make_shared<Bundle>(URL::fileURLWithPath(
            ProcessInfo::processInfo().installationPrefix() + "/share/parvane-host"));
    });
    return bundle.value;
}

Shared<std::shared_ptr<Bundle>> &replacement()
{
    static Immortal<Shared<std::shared_ptr<Bundle>>> bundle(
        [] { return Shared<std::shared_ptr<Bundle>>(); });
    return bundle.value;
}

} // namespace

std::shared_ptr<Bundle> Bundle::main()
{
    if (auto bundle = replacement().load())
        return bundle;
    return programBundle();
}

void Bundle::setMain(std::shared_ptr<Bundle> bundle)
{
    replacement().store(std::move(bundle));
}

Bundle::Bundle(URL folder) : folder_(std::move(folder)) {}

std::optional<URL> Bundle::resourceURL() const
{
    std::error_code error;
    const std::string path = folder_.path();
    if (!std::filesystem::is_directory(path, error))
        return std::nullopt;
    return URL::fileURLWithPath(path);
}

std::optional<URL> Bundle::urlForResource(std::string_view name, std::string_view extension) const
{
    std::string file(name);
    if (!extension.empty())
        file.append(".").append(extension);
    const URL url = URL::fileURLWithPath(folder_.path()).appendingPathComponent(file);
    std::error_code error;
    const auto status = std::filesystem::status(url.path(), error);
    if (!std::filesystem::exists(status) || std::filesystem::is_directory(status))
        return std::nullopt;
    return url;
}

std::optional<std::string> Bundle::pathForResource(std::string_view name,
                                                   std::string_view extension) const
{
    const std::optional<URL> url = urlForResource(name, extension);
    if (!url)
        return std::nullopt;
    return url->path();
}
