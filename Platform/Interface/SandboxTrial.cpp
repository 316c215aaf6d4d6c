#include "Platform/Interface/SandboxTrial.hpp"

#include <glib.h>

#include <array>
#include <cerrno>
#include <utility>

#include <sys/wait.h>

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

} // namespace

SandboxTrial::SandboxTrial() : succeeds_(isDoneWithout())
{
    if (succeeds_)
        return;
    // The kinds of namespaces that WebKit asks for.
    std::array<const char *, 11> command{
        "bwrap",         "--ro-bind",     "/",    "/",    "--proc", "/proc", "--unshare-pid",
        "--unshare-uts", "--unshare-ipc", "true", nullptr};
    constexpr auto flags =
        static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL |
                                 G_SPAWN_STDERR_TO_DEV_NULL | G_SPAWN_DO_NOT_REAP_CHILD);
    g_spawn_async(nullptr, const_cast<char **>(command.data()), nullptr, flags, nullptr, nullptr,
                  &process_, nullptr);
}

SandboxTrial::~SandboxTrial()
{
    wait();
}

bool SandboxTrial::succeeds()
{
    wait();
    return succeeds_;
}

void SandboxTrial::wait()
{
    const pid_t process = std::exchange(process_, 0);
    if (process == 0)
        return;
    int status = 0;
    pid_t ended = 0;
    do
        ended = waitpid(process, &status, 0);
    while (ended < 0 && errno == EINTR);
    succeeds_ = ended == process && g_spawn_check_wait_status(status, nullptr) != FALSE;
}

} // namespace platform::interface
