// The program that holds one effect for the host, so that the host lives whatever
// the effect does.

#include "Platform/Effect Process/ChildProcess.hpp"
#include "Platform/Effect Process/EffectServer.hpp"
#include "Platform/Foundation/Print.hpp"

#include <csignal>
#include <exception>
#include <fstream>

#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace
{

using platform::effect::ChildProcess;
using platform::effect::FileDescriptor;

/// Out of memory, the system is to end this process and not the host.
void offerItselfFirst()
{
    std::ofstream("/proc/self/oom_score_adj") << 500;
}

bool hasSocket()
{
    return ::fcntl(ChildProcess::socketNumber, F_SETFD, FD_CLOEXEC) == 0;
}

} // namespace

int main()
{
    // The host's thread that started us lives as long as we are wanted. Where this
    // comes too late, the end of the connection tells the same.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (!hasSocket()) {
        printError("parvane-effect is started by parvane-host and does nothing by itself.");
        return 2;
    }
    offerItselfFirst();
    bool wasAskedToEnd = false;
    try {
        platform::effect::EffectServer server{FileDescriptor(ChildProcess::socketNumber)};
        wasAskedToEnd = server.run();
    } catch (const std::exception &error) {
        printError(std::string("parvane-effect: ") + error.what());
        ::_exit(1);
    }
    // What libraries would still do at a regular end is no use to anybody.
    ::_exit(wasAskedToEnd ? 0 : 1);
}
