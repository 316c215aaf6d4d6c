#include "Platform/Foundation/AsymmetricFence.hpp"

#include "Platform/Foundation/FatalError.hpp"

#include <linux/membarrier.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace platform::foundation
{

namespace
{

bool barrier(int command) noexcept
{
    return ::syscall(SYS_membarrier, command, 0U, 0) == 0;
}

} // namespace

// The kernel wants to know beforehand; a program with one thread need not wait for it.
const bool heavyFenceIsShared = barrier(MEMBARRIER_CMD_REGISTER_PRIVATE_EXPEDITED);

void heavyFence() noexcept
{
    if (!heavyFenceIsShared)
        std::atomic_thread_fence(std::memory_order_seq_cst);
    else if (!barrier(MEMBARRIER_CMD_PRIVATE_EXPEDITED))
        fatalError("The kernel does not order memory as it has promised");
}

} // namespace platform::foundation
