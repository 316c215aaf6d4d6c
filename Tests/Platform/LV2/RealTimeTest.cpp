#include "HeldPlugin.hpp"

#include "Platform/LV2/SymbolTable.hpp"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdlib>

#include <dlfcn.h>
#include <pthread.h>
#include <semaphore.h>
#include <unistd.h>

// What the audio callback must not call is interposed on here and counted on the
// threads that are marked. A sanitizer brings an allocator of its own.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define PARVANE_UNDER_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define PARVANE_UNDER_SANITIZER 1
#endif
#endif

#ifndef PARVANE_UNDER_SANITIZER

namespace
{

thread_local bool isCounting = false;
thread_local int forbiddenCalls = 0;

void count()
{
    if (isCounting)
        ++forbiddenCalls;
}

template <typename Function>
Function *next(const char *name)
{
    return reinterpret_cast<Function *>(::dlsym(RTLD_NEXT, name));
}

} // namespace

#pragma GCC visibility push(default)
extern "C" {
// glibc's own names for what is replaced. NOLINTNEXTLINE(bugprone-reserved-identifier)
void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size); // NOLINT(bugprone-reserved-identifier)
void *__libc_realloc(void *old, std::size_t size);        // NOLINT(bugprone-reserved-identifier)
void __libc_free(void *memory);                           // NOLINT(bugprone-reserved-identifier)

void *malloc(std::size_t size) noexcept
{
    count();
    return __libc_malloc(size);
}
void *calloc(std::size_t number, std::size_t size) noexcept
{
    count();
    return __libc_calloc(number, size);
}
void *realloc(void *old, std::size_t size) noexcept
{
    count();
    return __libc_realloc(old, size);
}
void free(void *memory) noexcept
{
    if (memory)
        count();
    __libc_free(memory);
}
int pthread_mutex_lock(pthread_mutex_t *mutex) noexcept
{
    static auto *const real = next<int(pthread_mutex_t *)>("pthread_mutex_lock");
    count();
    return real(mutex);
}
int pthread_cond_signal(pthread_cond_t *condition) noexcept
{
    static auto *const real = next<int(pthread_cond_t *)>("pthread_cond_signal");
    count();
    return real(condition);
}
int sem_post(sem_t *semaphore) noexcept
{
    static auto *const real = next<int(sem_t *)>("sem_post");
    count();
    return real(semaphore);
}
ssize_t write(int descriptor, const void *bytes, std::size_t size)
{
    static auto *const real = next<ssize_t(int, const void *, std::size_t)>("write");
    count();
    return real(descriptor, bytes, size);
}
}
#pragma GCC visibility pop

namespace
{

using namespace testsupport;

/// Runs blocks with MIDI coming in and answers how often the callback did what it
/// must not.
int forbiddenCallsOf(HeldPlugin &held, std::size_t inputs, std::size_t outputs)
{
    const Channels in(inputs, 128, 0.5F);
    Channels out(outputs, 128);
    const std::array<std::uint8_t, 3> note{0x90, 60, 100};
    forbiddenCalls = 0;
    for (int block = 0; block < 200; ++block) {
        isCounting = true;
        held.exchange.midiInput.push(64, note);
        held.instance.run(in.constData(), out.data(), 128, block * 128);
        isCounting = false;
    }
    return forbiddenCalls;
}

} // namespace

TEST(RealTime, NoticesWhatIsForbidden)
{
    forbiddenCalls = 0;
    isCounting = true;
    std::atomic<std::vector<int> *> seen{new std::vector<int>(100)};
    delete seen.load(); // NOLINT(cppcoreguidelines-owning-memory): the allocation is the test
    isCounting = false;
    EXPECT_GE(forbiddenCalls, 4);
}

TEST(RealTime, RunNeitherAllocatesNorLocks)
{
    struct Case {
        const char *uri;
        const char *bundle;
        std::size_t inputs;
        std::size_t outputs;
    };
    for (const Case &each :
         {Case{"urn:test:amplifier", "amplifier", 2, 2}, Case{"urn:test:midi:echo", "midi", 0, 0},
          Case{"urn:test:midi:flood", "midi", 0, 0}, Case{"urn:test:everything", "ports", 1, 1},
          Case{"urn:test:delay", "ports", 1, 1}, Case{"urn:test:curious", "ports", 0, 1},
          Case{"urn:test:worker", "worker", 0, 1}}) {
        HeldPlugin held(each.uri, ownBundle(each.bundle));
        held.instance.setControl("requests", 5.0F);
        EXPECT_EQ(forbiddenCallsOf(held, each.inputs, each.outputs), 0) << each.uri;
    }
}

TEST(RealTime, MappingAKnownURINeitherAllocatesNorLocks)
{
    auto &table = platform::lv2::SymbolTable::shared();
    table.map("urn:test:known");
    forbiddenCalls = 0;
    isCounting = true;
    const LV2_URID symbol = table.map("urn:test:known");
    const char *uri = table.unmap(symbol);
    isCounting = false;
    EXPECT_STREQ(uri, "urn:test:known");
    EXPECT_EQ(forbiddenCalls, 0);
}

#else

TEST(RealTime, IsLookedAtWithoutSanitizers)
{
    GTEST_SKIP() << "a sanitizer replaces the allocator";
}

#endif
