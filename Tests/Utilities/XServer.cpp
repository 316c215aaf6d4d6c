#include "Tests/Utilities/XServer.hpp"

#include <array>
#include <csignal>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace test
{

namespace
{

[[noreturn]] void becomeServer(int answer, const std::string &screen)
{
    // However the tests end, their server ends with them.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const std::string descriptor = std::to_string(answer);
    execlp("Xvfb", "Xvfb", "-displayfd", descriptor.c_str(), "-screen", "0", screen.c_str(),
           "-nolisten", "tcp", "-noreset", nullptr);
    _exit(127);
}

/// The server writes the number of its display when it is ready to serve.
std::string readDisplay(int answer)
{
    std::string number;
    std::array<char, 16> part{};
    while (number.find('\n') == std::string::npos) {
        const ssize_t count = read(answer, part.data(), part.size());
        if (count <= 0)
            return {};
        number.append(part.data(), static_cast<std::size_t>(count));
    }
    return ":" + number.substr(0, number.find('\n'));
}

} // namespace

XServer::XServer(int width, int height)
{
    const std::string screen = std::to_string(width) + "x" + std::to_string(height) + "x24";
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0)
        return;
    process_ = fork();
    if (process_ == 0)
        becomeServer(ends[1], screen);
    close(ends[1]);
    display_ = readDisplay(ends[0]);
    close(ends[0]);
}

XServer::~XServer()
{
    if (process_ <= 0)
        return;
    kill(process_, SIGTERM);
    waitpid(process_, nullptr, 0);
}

} // namespace test
