#include "Support/FileLocations.hpp"

#include "Platform/Foundation/Bundle.hpp"
#include "Platform/Foundation/ElementAt.hpp"
#include "Platform/Foundation/FileManager.hpp"
#include "Platform/Foundation/PlatformError.hpp"
#include "Support/DiagnosticPrinting.hpp"

#include <memory>
#include <string>

// There from the beginning, whatever else is made before `main`.
constinit Shared<std::optional<URL>> documentsURL;
constinit Shared<std::optional<URL>> resourcesURL;
constinit Shared<std::optional<URL>> sharedURLAudio;
constinit Shared<std::optional<URL>> sharedURLMIDI;

namespace
{

URL userDocuments()
{
    return elementAt(FileManager::defaultManager()->urls(SearchPathDirectory::documentDirectory,
                                                         SearchPathDomainMask::userDomainMask),
                     0);
}

void printPath(const std::string &kind, const std::optional<URL> &url)
{
    const std::string prefix = "AudioUnitViewController::getPaths() : ";
    if (url)
        safeprint(prefix + "Audio Unit's " + kind + " path is: " + url->path());
    else
        safeprint(prefix + "ERROR: Audio Unit's " + kind + " path is nil.");
}

} // namespace

void getPaths()
{
    documentsURL.store(userDocuments());
    printPath("documents", documentsURL.load());
    resourcesURL.store(Bundle::main()->resourceURL());
    printPath("resources", resourcesURL.load());
}

bool ensureDirectoryExists(const URL &url)
{
    const auto manager = FileManager::defaultManager();
    if (manager->fileExists(url.path()))
        return true;
    try {
        manager->createDirectory(url, true);
        return true;
    } catch (const PlatformError &error) {
        debugprint("ensureDirectoryExists() : ERROR: Creating required directory '" + url.path() +
                   "' failed: " + error.what());
        return false;
    }
}
