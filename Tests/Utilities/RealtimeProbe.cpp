#include "Tests/Utilities/RealtimeProbe.hpp"

#include <atomic>
#include <cstdint>
#include <cstdlib>

#include <dlfcn.h>
#include <pthread.h>
#include <semaphore.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <ucontext.h>

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define UNDER_SANITIZER
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define UNDER_SANITIZER
#endif

#ifndef PR_SET_SYSCALL_USER_DISPATCH
#define PR_SET_SYSCALL_USER_DISPATCH 59
#define PR_SYS_DISPATCH_ON 1
#endif

namespace
{

thread_local bool watching = false;
thread_local bool dispatching = false;
thread_local test::RealtimeProbe::Counts counts;

// The kernel reads this before each system call of the thread: 0 lets it pass,
// 1 makes it a signal.
thread_local volatile char selector = 0;

#if defined(__x86_64__)
/// Carries out the call that was held back, as if it had not been.
void carryOut(mcontext_t &registers)
{
    greg_t *const values = registers.gregs;
    // The C library's wrapper would fold the error into errno, and the code that
    // was interrupted expects it in the register.
    greg_t result = values[REG_RAX];
    register greg_t r10 asm("r10") = values[REG_R10];
    register greg_t r8 asm("r8") = values[REG_R8];
    register greg_t r9 asm("r9") = values[REG_R9];
    asm volatile("syscall"
                 : "+a"(result)
                 : "D"(values[REG_RDI]), "S"(values[REG_RSI]), "d"(values[REG_RDX]), "r"(r10),
                   "r"(r8), "r"(r9)
                 : "rcx", "r11", "memory");
    values[REG_RAX] = result;
}
#endif

// Where a signal handler returns to: from there a thread goes back to what it did by
// a system call of its own, which must pass.
std::uintptr_t signalReturn = 0;
constexpr std::size_t signalReturnSize = 16;

void onSystemCall(int /*signal*/, siginfo_t *call, void *context)
{
    selector = 0;
#if defined(__x86_64__)
    if (call->si_syscall == SYS_futex) {
        ++counts.futexCalls;
        auto &registers = static_cast<ucontext_t *>(context)->uc_mcontext;
        registers.gregs[REG_RAX] = SYS_futex;
        carryOut(registers);
        selector = 1;
        return;
    }
#endif
    // The call itself is not carried out; what follows passes. One is enough to fail
    // a test.
    ++counts.systemCalls;
}

void findSignalReturn(int /*signal*/)
{
    signalReturn = reinterpret_cast<std::uintptr_t>(__builtin_return_address(0));
}

bool dispatchSystemCalls()
{
    if (dispatching)
        return true;
    struct sigaction action = {};
    action.sa_handler = findSignalReturn;
    sigaction(SIGSYS, &action, nullptr);
    raise(SIGSYS);
    action = {};
    action.sa_sigaction = onSystemCall;
    action.sa_flags = SA_SIGINFO;
    sigaction(SIGSYS, &action, nullptr);
    dispatching = prctl(PR_SET_SYSCALL_USER_DISPATCH, PR_SYS_DISPATCH_ON, signalReturn,
                        signalReturnSize, &selector) == 0;
    return dispatching;
}

} // namespace

#ifndef UNDER_SANITIZER

// NOLINTBEGIN: the C library's own names, and what stands behind them.
namespace
{

template <typename Function>
Function *next(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

void noteAllocation()
{
    if (watching)
        ++counts.allocations;
}

void noteLock()
{
    if (watching)
        ++counts.locks;
}

} // namespace

#define FORWARD(type, name, parameters, arguments)                                                 \
    __attribute__((visibility("default"))) type name parameters                                    \
    {                                                                                              \
        noteLock();                                                                                \
        static auto *const real = next<type parameters>(#name);                                    \
        return real arguments;                                                                     \
    }

extern "C" {
void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size);
void *__libc_realloc(void *block, std::size_t size);
void *__libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void *block);

__attribute__((visibility("default"))) void *malloc(std::size_t size)
{
    noteAllocation();
    return __libc_malloc(size);
}

__attribute__((visibility("default"))) void *calloc(std::size_t count, std::size_t size)
{
    noteAllocation();
    return __libc_calloc(count, size);
}

__attribute__((visibility("default"))) void *realloc(void *block, std::size_t size)
{
    noteAllocation();
    return __libc_realloc(block, size);
}

__attribute__((visibility("default"))) void *aligned_alloc(std::size_t alignment, std::size_t size)
{
    noteAllocation();
    return __libc_memalign(alignment, size);
}

__attribute__((visibility("default"))) int posix_memalign(void **block, std::size_t alignment,
                                                          std::size_t size)
{
    noteAllocation();
    *block = __libc_memalign(alignment, size);
    return *block == nullptr ? 12 : 0; // ENOMEM
}

__attribute__((visibility("default"))) void free(void *block)
{
    noteAllocation();
    __libc_free(block);
}

FORWARD(int, pthread_mutex_lock, (pthread_mutex_t * mutex), (mutex))
FORWARD(int, pthread_mutex_trylock, (pthread_mutex_t * mutex), (mutex))
FORWARD(int, pthread_rwlock_rdlock, (pthread_rwlock_t * lock), (lock))
FORWARD(int, pthread_rwlock_wrlock, (pthread_rwlock_t * lock), (lock))
FORWARD(int, pthread_cond_wait, (pthread_cond_t * condition, pthread_mutex_t *mutex),
        (condition, mutex))
FORWARD(int, pthread_cond_signal, (pthread_cond_t * condition), (condition))
FORWARD(int, pthread_cond_broadcast, (pthread_cond_t * condition), (condition))
FORWARD(int, sem_wait, (sem_t * semaphore), (semaphore))
FORWARD(int, sem_post, (sem_t * semaphore), (semaphore))
}
// NOLINTEND

#endif

namespace test
{

const char *RealtimeProbe::obstacle()
{
#ifdef UNDER_SANITIZER
    return "a sanitizer stands before the allocator";
#else
    return dispatchSystemCalls() ? nullptr : "the kernel cannot report system calls";
#endif
}

void RealtimeProbe::enter()
{
    dispatchSystemCalls();
    counts = {};
    watching = true;
    selector = 1;
}

RealtimeProbe::Counts RealtimeProbe::leave()
{
    selector = 0;
    watching = false;
    return counts;
}

} // namespace test
