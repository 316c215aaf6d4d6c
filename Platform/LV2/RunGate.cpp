#include "Platform/LV2/RunGate.hpp"

#include <chrono>
#include <thread>

namespace platform::lv2
{

RunGate::Closure::Closure(RunGate &gate) : gate_(gate)
{
    gate_.closed_.store(true, std::memory_order_relaxed);
    foundation::heavyFence();
    // The callback signals nobody; a block is over within milliseconds.
    while (gate_.inside_.load(std::memory_order_acquire))
        std::this_thread::sleep_for(std::chrono::microseconds(100));
}

RunGate::Closure::~Closure()
{
    gate_.closed_.store(false, std::memory_order_release);
}

} // namespace platform::lv2
