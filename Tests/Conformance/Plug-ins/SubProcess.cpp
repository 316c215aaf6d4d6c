#include "Tests/Conformance/Plug-ins/SubProcess.hpp"

#include "Platform/Foundation/Print.hpp"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iterator>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace conformance
{

namespace
{

[[noreturn]] void fail(const char *what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

bool hasOneThread()
{
    const std::filesystem::directory_iterator threads("/proc/self/task");
    return std::distance(begin(threads), end(threads)) == 1;
}

void redirect(const char *path, int flags, int descriptor)
{
    const int file = ::open(path, flags | O_CLOEXEC, 0644);
    if (file < 0 || ::dup2(file, descriptor) < 0)
        fail(path);
    ::close(file);
}

/// Neither a person's settings nor what another plug-in has left.
void settleIn(const std::filesystem::path &home, const std::filesystem::path &log)
{
    ::setpgid(0, 0);
    redirect("/dev/null", O_RDONLY, STDIN_FILENO);
    redirect(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, STDOUT_FILENO);
    ::dup2(STDOUT_FILENO, STDERR_FILENO);
    ::setenv("HOME", home.c_str(), 1);
    ::setenv("TMPDIR", home.c_str(), 1);
    for (const char *each : {"XDG_CACHE_HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME",
                             "XDG_RUNTIME_DIR"})
        ::unsetenv(each);
}

Ending endingOf(pid_t child, std::chrono::seconds patience)
{
    const int descriptor = static_cast<int>(::syscall(SYS_pidfd_open, child, 0));
    if (descriptor < 0)
        fail("a process cannot be watched");
    pollfd end{descriptor, POLLIN, 0};
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(patience);
    int news = 0;
    do
        news = ::poll(&end, 1, static_cast<int>(milliseconds.count()));
    while (news < 0 && errno == EINTR);
    ::close(descriptor);
    Ending ending;
    ending.isLate = news == 0;
    if (ending.isLate)
        ::kill(-child, SIGKILL);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (WIFSIGNALED(status))
        ending.signal = WTERMSIG(status);
    else
        ending.code = WEXITSTATUS(status);
    return ending;
}

} // namespace

pid_t fork(const std::function<void()> &work)
{
    if (!hasOneThread())
        throw std::logic_error("a process of several threads is not to be forked");
    const pid_t parent = ::getpid();
    const pid_t child = ::fork();
    if (child < 0)
        fail("there is no process to be had");
    if (child > 0)
        return child;
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent)
        ::_exit(1);
    try {
        work();
    } catch (const std::exception &error) {
        printError(error.what());
        ::_exit(2);
    }
    // An orderly end: what fails then is seen, too.
    std::exit(0);
}

Ending runApart(const std::function<void()> &work, const std::filesystem::path &home,
                const std::filesystem::path &log, std::chrono::seconds patience)
{
    const pid_t child = fork([&] {
        settleIn(home, log);
        work();
    });
    // Whoever comes first: it may have to be ended before it has got so far.
    ::setpgid(child, child);
    return endingOf(child, patience);
}

} // namespace conformance
