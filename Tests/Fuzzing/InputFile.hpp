#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

namespace fuzzing
{

/// A regular file in memory, for what takes its input from a path.
class InputFile
{
public:
    InputFile() : descriptor_(::memfd_create("input", MFD_CLOEXEC))
    {
        if (descriptor_ < 0)
            std::abort();
    }
    ~InputFile() { ::close(descriptor_); }
    InputFile(const InputFile &) = delete;
    InputFile &operator=(const InputFile &) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

    /// Has the file hold these bytes and nothing else.
    void hold(const std::uint8_t *data, std::size_t size) const
    {
        if (::ftruncate(descriptor_, 0) != 0 ||
            ::pwrite(descriptor_, data, size, 0) != static_cast<ssize_t>(size))
            std::abort();
    }

private:
    int descriptor_;
};

} // namespace fuzzing
