// The program that holds one effect for the host, so that the host lives whatever
// the effect does.

#include "Platform/Effect Process/ChildProcess.hpp"
#include "Platform/Effect Process/EffectServer.hpp"
#include "Platform/Foundation/Print.hpp"

#include <csignal>
#include <exception>
#include <fstream>

#include <fcntl.h>
#include <malloc.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

using platform::effect::ChildProcess;
using platform::effect::FileDescriptor;

/// Whether the host went before the system knew that it takes us along.
bool hostIsGone()
{
    pollfd look{ChildProcess::socketNumber, 0, 0};
    return ::poll(&look, 1, 0) > 0 && (look.revents & POLLHUP) != 0;
}

/// Out of memory, the system is to end this process and not the host.
void offerItselfFirst()
{
    std::ofstream("/proc/self/oom_score_adj") << 500;
}

/// Large memory is fresh from the system, and so zeroed, whatever was freed before: some
/// plug-ins rely on that.
void keepLargeMemoryFresh()
{
    ::mallopt(M_MMAP_THRESHOLD, 128 * 1024);
}

bool hasSocket()
{
    int type = 0;
    socklen_t size = sizeof type;
    return ::getsockopt(ChildProcess::socketNumber, SOL_SOCKET, SO_TYPE, &type, &size) == 0 &&
           ::fcntl(ChildProcess::socketNumber, F_SETFD, FD_CLOEXEC) == 0;
}

} // namespace

int main()
{
    // The host's thread that started us lives as long as we are wanted.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (!hasSocket()) {
        printError("parvane-effect is started by parvane-host and does nothing by itself.");
        return 2;
    }
    if (hostIsGone())
        return 1;
    offerItselfFirst();
    keepLargeMemoryFresh();
    // Outside: a plug-in that failed, or whose host has gone, is not asked to end. It
    // might not, and would stay for ever.
    platform::effect::EffectServer server{FileDescriptor(ChildProcess::socketNumber)};
    bool wasAskedToEnd = false;
    try {
        wasAskedToEnd = server.run();
    } catch (const std::exception &error) {
        printError(std::string("parvane-effect: ") + error.what());
    }
    // What libraries would still do at a regular end is no use to anybody.
    ::_exit(wasAskedToEnd ? 0 : 1);
}
