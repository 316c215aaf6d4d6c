#include "Platform/Interface/ApplicationProperties.hpp"

#include "Platform/Foundation/PlatformError.hpp"

#include <glibmm/error.h>
#include <glibmm/keyfile.h>

namespace platform::interface
{

ApplicationProperties ApplicationProperties::load(const Bundle &bundle)
{
    constexpr const char *group = "Application";
    const auto path = bundle.pathForResource(group, "ini");
    if (!path)
        throw PlatformError("The resource 'Application.ini' is missing.");
    try {
        const auto file = Glib::KeyFile::create();
        file->load_from_file(*path);
        return {
            file->get_string(group, "Identifier"),     file->get_string(group, "Name"),
            file->get_string(group, "MainStoryboard"), file->get_string(group, "StyleSheet"),
            file->get_integer(group, "WindowWidth"),   file->get_integer(group, "WindowHeight")};
    } catch (const Glib::Error &error) {
        throw PlatformError("'" + *path + "': " + error.what());
    }
}

} // namespace platform::interface
