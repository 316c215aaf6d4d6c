#include "Platform/Effect Process/LinkMemory.hpp"

#include "Platform/Foundation/PlatformError.hpp"

#include <gtest/gtest.h>

#include <cstdint>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

using platform::effect::FileDescriptor;
using platform::effect::LinkMemory;
using platform::effect::LinkShape;

namespace
{

constexpr LinkShape shape{2, 3, 100, 1};

FileDescriptor copyOf(const LinkMemory &memory)
{
    return FileDescriptor(::dup(memory.descriptor()));
}

} // namespace

TEST(LinkMemory, IsTheSameAtBothEnds)
{
    const LinkMemory host(shape);
    const LinkMemory effect(copyOf(host), shape);
    host.header().request.store(7);
    EXPECT_EQ(effect.header().request.load(), 7U);
    host.inputs()[1][99] = 0.25F;
    EXPECT_EQ(effect.inputs()[1][99], 0.25F);
    effect.outputs()[2][0] = -1.0F;
    EXPECT_EQ(host.outputs()[2][0], -1.0F);
    effect.outputEvents().back() = std::byte{42};
    EXPECT_EQ(host.outputEvents().back(), std::byte{42});
}

TEST(LinkMemory, KeepsItsPartsApart)
{
    const LinkMemory memory(shape);
    float *end =
        reinterpret_cast<float *>(memory.outputEvents().data() + memory.outputEvents().size());
    for (std::uint32_t channel = 0; channel < shape.inputs + shape.outputs; ++channel) {
        float *const begin = memory.inputs()[channel];
        EXPECT_GE(begin, end);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(begin) % 64, 0U);
        end = begin + shape.maximumFrames;
    }
}

TEST(LinkMemory, CannotBeResized)
{
    const LinkMemory memory(shape);
    EXPECT_NE(::ftruncate(memory.descriptor(), 0), 0);
    EXPECT_NE(::ftruncate(memory.descriptor(), 1 << 24), 0);
}

TEST(LinkMemory, IsRefusedInAnotherShape)
{
    const LinkMemory memory(shape);
    EXPECT_THROW(LinkMemory(copyOf(memory), {2, 3, 4000, 1}), PlatformError);
    EXPECT_THROW(LinkMemory(FileDescriptor(), shape), PlatformError);
}

TEST(LinkMemory, IsRefusedWhereItCouldBeResized)
{
    const LinkMemory memory(shape);
    FileDescriptor loose(::memfd_create("loose", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    ASSERT_EQ(::ftruncate(loose.get(), ::lseek(memory.descriptor(), 0, SEEK_END)), 0);
    EXPECT_THROW(LinkMemory(std::move(loose), shape), PlatformError);
}
