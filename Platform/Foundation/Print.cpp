#include "Platform/Foundation/Print.hpp"

#include <cerrno>
#include <string>

#include <unistd.h>

namespace
{

void writeLine(int descriptor, std::string_view line)
{
    std::string bytes;
    bytes.reserve(line.size() + 1);
    bytes.append(line).push_back('\n');
    std::string_view rest = bytes;
    while (!rest.empty()) {
        const ssize_t written = ::write(descriptor, rest.data(), rest.size());
        if (written > 0)
            rest.remove_prefix(static_cast<std::size_t>(written));
        else if (written < 0 && errno != EINTR)
            return;
    }
}

} // namespace

void print(std::string_view line)
{
    writeLine(STDOUT_FILENO, line);
}

void printError(std::string_view line)
{
    writeLine(STDERR_FILENO, line);
}
