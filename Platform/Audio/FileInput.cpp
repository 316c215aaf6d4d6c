#include "Platform/Audio/FileInput.hpp"

#include "Platform/Foundation/PlatformError.hpp"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace platform::audio
{
namespace
{

[[noreturn]] void throwSystemError(int number)
{
    throw PlatformError(std::generic_category().message(number));
}

void requireAudioCandidate(const struct stat &status)
{
    if (S_ISDIR(status.st_mode))
        throwSystemError(EISDIR);
    if (!S_ISREG(status.st_mode))
        throw PlatformError("Not a regular file");
    if (status.st_size == 0)
        throw PlatformError("The file is empty");
}

int openRegularFile(const std::string &path)
{
    // Asked before opening, since opening a device may act on it.
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0)
        throwSystemError(errno);
    requireAudioCandidate(status);

    // Not blocking, in case a FIFO has taken the file's place meanwhile.
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0)
        throwSystemError(errno);
    try {
        if (fstat(descriptor, &status) != 0)
            throwSystemError(errno);
        requireAudioCandidate(status);
    } catch (...) {
        close(descriptor);
        throw;
    }
    return descriptor;
}

} // namespace

FileInput::FileInput(const std::string &path) : descriptor_(openRegularFile(path)) {}

FileInput::~FileInput()
{
    close(descriptor_);
}

std::int64_t FileInput::size() const noexcept
{
    struct stat status = {};
    return fstat(descriptor_, &status) == 0 ? status.st_size : 0;
}

std::size_t FileInput::readAt(std::int64_t offset, std::span<std::uint8_t> bytes) const noexcept
{
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count = pread(descriptor_, bytes.data() + done, bytes.size() - done,
                                    offset + static_cast<std::int64_t>(done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        done += static_cast<std::size_t>(count);
    }
    return done;
}

void FileInput::allow(std::chrono::steady_clock::duration time) noexcept
{
    deadline_ = std::chrono::steady_clock::now() + time;
}

bool FileInput::isOverdue() const noexcept
{
    return std::chrono::steady_clock::now() > deadline_;
}

} // namespace platform::audio
