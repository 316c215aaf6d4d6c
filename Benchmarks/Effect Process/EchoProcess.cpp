#include "Benchmarks/Effect Process/EchoProcess.hpp"

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

EchoProcess::EchoProcess()
{
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
        throw std::system_error(errno, std::generic_category(), "socketpair");
    process_ = ::fork();
    if (process_ < 0)
        throw std::system_error(errno, std::generic_category(), "fork");
    if (process_ == 0) {
        ::close(ends[0]);
        char byte = 0;
        while (::read(ends[1], &byte, 1) == 1 && ::write(ends[1], &byte, 1) == 1) {
        }
        ::_exit(0);
    }
    ::close(ends[1]);
    socket_ = ends[0];
}

EchoProcess::~EchoProcess()
{
    ::close(socket_);
    ::waitpid(process_, nullptr, 0);
}

void EchoProcess::callBack() const
{
    char byte = 0;
    if (::write(socket_, &byte, 1) != 1 || ::read(socket_, &byte, 1) != 1)
        throw std::system_error(errno, std::generic_category(), "echo");
}
