#include "Benchmarks/Effect Process/BusyProcessors.hpp"

#include <csignal>
#include <cstdint>
#include <thread>

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

BusyProcessors::BusyProcessors()
{
    for (unsigned i = 0; i < std::thread::hardware_concurrency(); ++i) {
        const pid_t process = ::fork();
        if (process == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            for (volatile std::uint64_t count = 0;;)
                count = count + 1;
        }
        processes_.push_back(process);
    }
}

BusyProcessors::~BusyProcessors()
{
    for (const pid_t process : processes_) {
        ::kill(process, SIGKILL);
        ::waitpid(process, nullptr, 0);
    }
}
