#include "Platform/Foundation/Module.hpp"

#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/Foundation/ProcessInfo.hpp"

#include <dlfcn.h>

#include <string>
#include <vector>

namespace platform::foundation
{
namespace
{

void *loadModule(const char *file, const std::string &subject)
{
    std::string reason;
    for (const std::string &folder : ProcessInfo::processInfo().libraryFolders()) {
        const std::string path = folder + "/parvane-host/" + file;
        if (void *module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL))
            return module;
        if (reason.empty())
            reason = dlerror();
    }
    throw PlatformError(subject + " cannot be loaded: " + reason);
}

} // namespace

void *moduleSymbol(const char *file, const char *symbol, const char *purpose)
{
    const std::string subject = std::string("The module that ") + purpose;
    void *address = dlsym(loadModule(file, subject), symbol);
    if (address == nullptr)
        throw PlatformError(subject + " is not of this program");
    return address;
}

} // namespace platform::foundation
