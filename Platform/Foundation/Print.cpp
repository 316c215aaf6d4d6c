#include "Platform/Foundation/Print.hpp"

#include <cerrno>
#include <cstddef>
#include <string>

#include <poll.h>
#include <unistd.h>

namespace
{

/// Somebody else may have told the terminal not to block.
void waitUntilWritable(int descriptor)
{
    pollfd output{descriptor, POLLOUT, 0};
    poll(&output, 1, -1);
}

void writeAll(int descriptor, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written > 0)
            bytes.remove_prefix(static_cast<std::size_t>(written));
        else if (written < 0 && errno == EAGAIN)
            waitUntilWritable(descriptor);
        else if (written < 0 && errno != EINTR)
            return;
    }
}

void writeLine(int descriptor, std::string_view line)
{
    std::string bytes;
    bytes.reserve(line.size() + 1);
    bytes.append(line).push_back('\n');
    writeAll(descriptor, bytes);
}

} // namespace

void print(std::string_view line)
{
    writeLine(STDOUT_FILENO, line);
}

void printBytes(std::string_view bytes)
{
    writeAll(STDOUT_FILENO, bytes);
}

void printError(std::string_view line)
{
    writeLine(STDERR_FILENO, line);
}
