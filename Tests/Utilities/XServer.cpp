#include "Tests/Utilities/XServer.hpp"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>

namespace test
{

namespace
{

[[noreturn]] void becomeServer(int answer)
{
    // However the tests end, their server ends with them.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const std::string descriptor = std::to_string(answer);
    execlp("Xvfb", "Xvfb", "-displayfd", descriptor.c_str(), "-screen", "0", "1600x1000x24",
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
        if (count <= 0) {
            return {};
        }
        number.append(part.data(), static_cast<std::size_t>(count));
    }
    return ":" + number.substr(0, number.find('\n'));
}

} // namespace

XServer::XServer()
{
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) {
        return;
    }
    server_ = fork();
    if (server_ == 0) {
        becomeServer(ends[1]);
    }
    close(ends[1]);
    display_ = readDisplay(ends[0]);
    close(ends[0]);
}

XServer::~XServer()
{
    if (server_ > 0) {
        kill(server_, SIGTERM);
        waitpid(server_, nullptr, 0);
    }
}

} // namespace test
