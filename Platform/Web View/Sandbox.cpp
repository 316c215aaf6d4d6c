#include "Platform/Web View/Sandbox.hpp"

#include <glib.h>

#include <array>

namespace platform::interface
{
namespace
{

/// Where WebKit itself does without bubblewrap: in a Flatpak, and where the user says so.
bool isDoneWithout()
{
    const char *disabled = g_getenv("WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS");
    return g_file_test("/.flatpak-info", G_FILE_TEST_EXISTS) != FALSE ||
           g_strcmp0(disabled, "1") == 0;
}

bool bubblewrapWorks()
{
    // The kinds of namespaces that WebKit asks for.
    std::array<const char *, 11> command{
        "bwrap",         "--ro-bind",     "/",    "/",    "--proc", "/proc", "--unshare-pid",
        "--unshare-uts", "--unshare-ipc", "true", nullptr};
    constexpr auto flags = static_cast<GSpawnFlags>(
        G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL | G_SPAWN_STDERR_TO_DEV_NULL);
    int status = 0;
    return g_spawn_sync(nullptr, const_cast<char **>(command.data()), nullptr, flags, nullptr,
                        nullptr, nullptr, nullptr, &status, nullptr) != FALSE &&
           g_spawn_check_wait_status(status, nullptr) != FALSE;
}

} // namespace

bool canSandbox()
{
    return isDoneWithout() || bubblewrapWorks();
}

} // namespace platform::interface
