#include "Tests/Utilities/OrdinaryUser.hpp"

#include <cerrno>
#include <cstring>

#include <unistd.h>

namespace test
{

namespace
{

constexpr uid_t nobody = 65'534;

} // namespace

OrdinaryUser::OrdinaryUser()
{
    if (geteuid() != 0)
        return;
    wasRoot_ = seteuid(nobody) == 0;
    if (!wasRoot_)
        obstacle_ = std::string("the user cannot be changed: ") + std::strerror(errno);
}

OrdinaryUser::~OrdinaryUser()
{
    if (wasRoot_ && seteuid(0) != 0)
        _exit(1); // no later test could be trusted
}

} // namespace test
