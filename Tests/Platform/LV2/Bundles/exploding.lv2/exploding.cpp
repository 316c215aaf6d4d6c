// Takes down whoever loads it.

#include <csignal>

namespace
{

[[gnu::constructor]] void explode()
{
    std::raise(SIGKILL);
}

} // namespace
