#include "Tests/Utilities/WatchedDevice.hpp"

#include "Tests/Utilities/RealtimeProbe.hpp"

#include <chrono>
#include <thread>

namespace test
{

void WatchedDevice::turn(Source &source)
{
    RealtimeProbe::enter();
    source.renderInterleaved(block_.data(), framesPerBlock, 2);
    const RealtimeProbe::Counts counts = RealtimeProbe::leave();
    ++findings_.blocks;
    findings_.allocations += counts.allocations;
    findings_.locks += counts.locks;
    findings_.systemCalls += counts.systemCalls;
    findings_.futexCalls += counts.futexCalls;
    std::this_thread::sleep_for(std::chrono::microseconds(500));
}

} // namespace test
