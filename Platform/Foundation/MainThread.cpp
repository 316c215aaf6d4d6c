#include "Platform/Foundation/MainThread.hpp"

#include <unistd.h>

namespace platform::foundation
{

bool isMainThread()
{
    thread_local const bool isMain = gettid() == getpid();
    return isMain;
}

} // namespace platform::foundation
