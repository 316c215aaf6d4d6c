#include "Platform/Foundation/FileManager.hpp"

#include "Platform/Foundation/Immortal.hpp"
#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/Foundation/Shared.hpp"

#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include <glib.h>

namespace
{

using platform::foundation::Immortal;

Shared<std::shared_ptr<FileManager>> &replacement()
{
    static Immortal<Shared<std::shared_ptr<FileManager>>> manager(
        [] { return Shared<std::shared_ptr<FileManager>>(); });
    return manager.value;
}

/// A name with a NUL in it would be taken for the part before it.
bool isName(std::string_view path)
{
    return path.find('\0') == std::string_view::npos;
}

std::string documentsFolder()
{
    if (const char *configured = g_get_user_special_dir(G_USER_DIRECTORY_DOCUMENTS))
        return configured;
    return std::string(g_get_home_dir()) + "/Documents";
}

} // namespace

std::shared_ptr<FileManager> FileManager::defaultManager()
{
    if (auto manager = replacement().load())
        return manager;
    static const Immortal<std::shared_ptr<FileManager>> manager(
        [] { return std::make_shared<FileManager>(); });
    return manager.value;
}

void FileManager::setDefaultManager(std::shared_ptr<FileManager> manager)
{
    replacement().store(std::move(manager));
}

std::vector<URL> FileManager::urls(SearchPathDirectory /*directory*/,
                                   SearchPathDomainMask /*domain*/) const
{
    return {URL::fileURLWithPath(documentsFolder())};
}

bool FileManager::fileExists(std::string_view path) const
{
    if (!isName(path))
        return false;
    std::error_code error;
    return std::filesystem::exists(std::filesystem::path(path), error);
}

void FileManager::createDirectory(const URL &url, bool withIntermediateDirectories) const
{
    const std::string path = url.path();
    std::error_code error;
    if (!url.isFileURL() || !isName(path))
        error = std::make_error_code(std::errc::invalid_argument);
    else if (withIntermediateDirectories)
        std::filesystem::create_directories(path, error);
    else if (!std::filesystem::create_directory(path, error) && !error)
        error = std::make_error_code(std::errc::file_exists);
    if (error)
        throw PlatformError(error.message());
}
