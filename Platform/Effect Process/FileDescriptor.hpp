#pragma once

#include <utility>

#include <unistd.h>

namespace platform::effect
{

/// A file descriptor that is closed with its owner. -1 stands for none.
class FileDescriptor
{
public:
    FileDescriptor() = default;
    /// Owns `number` from now on.
    explicit FileDescriptor(int number) : number_(number) {}
    ~FileDescriptor() { reset(); }
    ///@{
    /// Takes it over; the other owns none then.
    FileDescriptor(FileDescriptor &&other) noexcept : number_(std::exchange(other.number_, -1)) {}
    ///@}
    /// Closes its own and takes over the other's.
    FileDescriptor &operator=(FileDescriptor &&other) noexcept
    {
        if (this != &other) {
            reset();
            number_ = std::exchange(other.number_, -1);
        }
        return *this;
    }

    /// Its number, still owned here.
    int get() const { return number_; }
    /// Whether there is one.
    explicit operator bool() const { return number_ >= 0; }
    /// Closes it.
    void reset()
    {
        if (number_ >= 0)
            ::close(std::exchange(number_, -1));
    }

private:
    int number_ = -1;
};

} // namespace platform::effect
