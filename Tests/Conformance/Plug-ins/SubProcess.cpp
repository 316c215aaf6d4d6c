#include "Tests/Conformance/Plug-ins/SubProcess.hpp"

#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace conformance
{

namespace
{

/// The environment with another home and another folder for what is temporary.
std::vector<std::string> environmentIn(const std::filesystem::path &home, bool withOtherMemory)
{
    std::vector<std::string> variables{"HOME=" + home.string(), "TMPDIR=" + home.string()};
    if (withOtherMemory)
        variables.emplace_back("MALLOC_PERTURB_=165"); // the C library's own
    for (char **variable = environ; *variable != nullptr; ++variable) {
        const std::string_view text = *variable;
        if (!text.starts_with("HOME=") && !text.starts_with("TMPDIR=") && !text.starts_with("XDG_"))
            variables.emplace_back(text);
    }
    return variables;
}

std::vector<char *> pointersTo(std::vector<std::string> &texts)
{
    std::vector<char *> pointers;
    for (std::string &text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

pid_t spawn(const std::vector<std::string> &arguments, const std::filesystem::path &home,
            const std::filesystem::path &log, bool withOtherMemory)
{
    std::vector<std::string> command{"plugin-conformance"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    std::vector<std::string> environment = environmentIn(home, withOtherMemory);

    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, log.c_str(),
                                     O_WRONLY | O_CREAT | O_APPEND, 0644);
    posix_spawn_file_actions_adddup2(&files, STDOUT_FILENO, STDERR_FILENO);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    pid_t child = -1;
    const int error = posix_spawn(&child, "/proc/self/exe", &files, &attributes,
                                  pointersTo(command).data(), pointersTo(environment).data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    if (error != 0)
        throw std::system_error(error, std::generic_category(), "this program cannot be run again");
    return child;
}

} // namespace

Ending runAgain(const std::vector<std::string> &arguments, const std::filesystem::path &home,
                const std::filesystem::path &log, std::chrono::seconds patience,
                bool withOtherMemory)
{
    const pid_t child = spawn(arguments, home, log, withOtherMemory);
    const int descriptor = static_cast<int>(::syscall(SYS_pidfd_open, child, 0));
    if (descriptor < 0)
        throw std::system_error(errno, std::generic_category(), "a process cannot be watched");
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

} // namespace conformance
