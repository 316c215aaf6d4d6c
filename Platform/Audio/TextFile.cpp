#include "Platform/Audio/TextFile.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform::audio
{

namespace
{

class Descriptor
{
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor()
    {
        if (number_ >= 0)
            ::close(number_);
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    int number() const { return number_; }

private:
    int number_;
};

} // namespace

std::optional<std::string> readTextFile(const std::string &path, std::size_t largest,
                                        std::size_t &tooLarge)
{
    tooLarge = 0;
    // Without waiting: a named pipe has nothing to say here.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {
    };
    if (file.number() < 0 || ::fstat(file.number(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    const auto size = static_cast<std::size_t>(status.st_size);
    if (size > largest) {
        tooLarge = size;
        return std::nullopt;
    }
    std::string text(size, '\0');
    std::size_t filled = 0;
    while (filled < size) {
        const ssize_t count = ::read(file.number(), text.data() + filled, size - filled);
        if (count <= 0)
            break;
        filled += static_cast<std::size_t>(count);
    }
    text.resize(filled);
    return text;
}

} // namespace platform::audio
