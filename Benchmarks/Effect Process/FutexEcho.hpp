#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include <sys/types.h>

/// A process that counts along in shared memory: both sides sleep until the other has
/// counted and do nothing else. What this takes, the machine takes for any handing over
/// to another process. It runs at the priority of who makes it.
class FutexEcho
{
public:
    FutexEcho();
    ~FutexEcho();
    FutexEcho(const FutexEcho &) = delete;
    FutexEcho &operator=(const FutexEcho &) = delete;

    /// There and back.
    void callBack();

    pid_t processIdentifier() const { return process_; }

private:
    struct Words {
        alignas(64) std::atomic<std::uint32_t> asked;
        alignas(64) std::atomic<std::uint32_t> answered;
    };
    struct Unmap {
        void operator()(Words *words) const noexcept;
    };

    [[noreturn]] void serve();

    std::unique_ptr<Words, Unmap> words_;
    pid_t process_ = 0;
};
