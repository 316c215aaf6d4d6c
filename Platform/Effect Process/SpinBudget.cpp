#include "Platform/Effect Process/SpinBudget.hpp"

#include <thread>

namespace platform::effect
{

std::chrono::nanoseconds usualSpin()
{
    using std::chrono::microseconds;
    return std::thread::hardware_concurrency() > 1 ? microseconds(100) : microseconds(0);
}

} // namespace platform::effect
