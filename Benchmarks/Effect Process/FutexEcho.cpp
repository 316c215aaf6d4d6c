#include "Benchmarks/Effect Process/FutexEcho.hpp"

#include "Platform/Effect Process/Futex.hpp"

#include <cerrno>
#include <csignal>
#include <new>
#include <system_error>

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

using platform::effect::futexWait;
using platform::effect::futexWake;

FutexEcho::FutexEcho()
{
    void *const memory = ::mmap(nullptr, sizeof(Words), PROT_READ | PROT_WRITE,
                                MAP_SHARED | MAP_ANONYMOUS | MAP_POPULATE, -1, 0);
    if (memory == MAP_FAILED)
        throw std::system_error(errno, std::generic_category(), "mmap");
    words_.reset(new (memory) Words{});
    process_ = ::fork();
    if (process_ < 0)
        throw std::system_error(errno, std::generic_category(), "fork");
    if (process_ == 0)
        serve();
}

FutexEcho::~FutexEcho()
{
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
}

void FutexEcho::serve()
{
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    for (std::uint32_t done = 0;; ++done) {
        while (words_->asked.load() == done)
            futexWait(words_->asked, done);
        words_->answered.store(done + 1);
        futexWake(words_->answered);
    }
}

void FutexEcho::callBack()
{
    const std::uint32_t before = words_->answered.load();
    words_->asked.store(before + 1);
    futexWake(words_->asked);
    while (words_->answered.load() == before)
        futexWait(words_->answered, before);
}

void FutexEcho::Unmap::operator()(Words *words) const noexcept
{
    ::munmap(words, sizeof(Words));
}
