#pragma once

#include "Platform/Foundation/URL.hpp"

#include <memory>
#include <string_view>
#include <vector>

/// Which well-known folder is meant, and in whose domain.
enum class SearchPathDirectory { documentDirectory };
enum class SearchPathDomainMask { userDomainMask };

/// The file system. A subclass can stand in for it in tests. Any
/// thread.
class FileManager
{
public:
    virtual ~FileManager() = default;

    /// The shared instance, or the one a test put in its place.
    static std::shared_ptr<FileManager> defaultManager();
    /// Puts another in its place, for tests; null brings back the shared one.
    static void setDefaultManager(std::shared_ptr<FileManager> manager);

    /// The folders that serve the purpose. The user's documents folder is the
    /// one that the desktop has configured, else `Documents` in the home folder;
    /// it need not exist.
    virtual std::vector<URL> urls(SearchPathDirectory directory, SearchPathDomainMask domain) const;

    /// Whether there is a file or folder at the path, links followed.
    virtual bool fileExists(std::string_view path) const;

    /// Makes the folder that the file URL names, with the permissions that the process
    /// gives by default. With intermediate folders, those missing above it are made
    /// as well, and a folder that exists already is no fault.
    /// Throws `PlatformError` with the system's words; folders made until then stay.
    virtual void createDirectory(const URL &url, bool withIntermediateDirectories) const;
};
