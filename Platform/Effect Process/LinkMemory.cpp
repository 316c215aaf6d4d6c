#include "Platform/Effect Process/LinkMemory.hpp"

#include "Platform/Foundation/PlatformError.hpp"

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

namespace platform::effect
{

namespace
{

constexpr int seals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL;

// Buffers begin on cache lines, as plug-ins with vector instructions like it.
constexpr std::size_t alignment = 64;

[[noreturn]] void fail(const std::string &what)
{
    throw PlatformError(what + ": " + std::generic_category().message(errno));
}

} // namespace

LinkMemory::LinkMemory(const LinkShape &shape)
    : shape_(shape), descriptor_(::memfd_create("parvane effect", MFD_CLOEXEC | MFD_ALLOW_SEALING)),
      mapping_(nullptr, Unmap{0})
{
    if (!descriptor_ || ::ftruncate(descriptor_.get(), static_cast<off_t>(size())) != 0 ||
        ::fcntl(descriptor_.get(), F_ADD_SEALS, seals) != 0)
        fail("The memory shared with the effect cannot be made");
    map();
}

LinkMemory::LinkMemory(FileDescriptor descriptor, const LinkShape &shape)
    : shape_(shape), descriptor_(std::move(descriptor)), mapping_(nullptr, Unmap{0})
{
    struct stat status {
    };
    if (::fstat(descriptor_.get(), &status) != 0)
        fail("The memory shared with the host cannot be used");
    if (status.st_size != static_cast<off_t>(size()) ||
        ::fcntl(descriptor_.get(), F_GET_SEALS) != seals)
        throw PlatformError("The memory shared with the host is not of the agreed shape");
    map();
}

std::size_t LinkMemory::channelStride() const
{
    return (shape_.maximumFrames * sizeof(float) + alignment - 1) / alignment * alignment;
}

std::size_t LinkMemory::size() const
{
    const std::size_t count = std::size_t{shape_.inputs} + shape_.outputs;
    return eventsOffset() + 2 * eventCapacity + count * channelStride();
}

void LinkMemory::map()
{
    // Touched now, so that the audio callback meets no page fault.
    void *const address = ::mmap(nullptr, size(), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_POPULATE,
                                 descriptor_.get(), 0);
    if (address == MAP_FAILED)
        fail("The memory shared by host and effect cannot be mapped");
    mapping_ = {static_cast<std::byte *>(address), Unmap{size()}};
    std::byte *channel = base() + eventsOffset() + 2 * eventCapacity;
    for (std::uint32_t i = 0; i < shape_.inputs + shape_.outputs; ++i) {
        channels_.push_back(reinterpret_cast<float *>(channel));
        channel += channelStride();
    }
}

void LinkMemory::Unmap::operator()(std::byte *address) const noexcept
{
    ::munmap(address, size);
}

} // namespace platform::effect
