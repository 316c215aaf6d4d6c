#include "Tests/Utilities/WatchedDevice.hpp"

#include "Tests/Utilities/RealtimeProbe.hpp"

#include <chrono>
#include <vector>

namespace test
{

WatchedDevice::~WatchedDevice()
{
    WatchedDevice::close();
}

WatchedDevice::Obtained WatchedDevice::open(const AVAudioFormat & /*wanted*/)
{
    return {AVAudioFormat(48000, 2), 256};
}

void WatchedDevice::run(Source &source)
{
    runs_ = true;
    thread_ = std::thread([this, &source] { play(source); });
}

void WatchedDevice::close()
{
    runs_ = false;
    if (thread_.joinable())
        thread_.join();
}

void WatchedDevice::play(Source &source)
{
    std::vector<float> block(512);
    while (runs_) {
        RealtimeProbe::enter();
        source.renderInterleaved(block.data(), 256, 2);
        const RealtimeProbe::Counts counts = RealtimeProbe::leave();
        ++findings_.blocks;
        findings_.allocations += counts.allocations;
        findings_.locks += counts.locks;
        findings_.systemCalls += counts.systemCalls;
        findings_.futexCalls += counts.futexCalls;
        std::this_thread::sleep_for(std::chrono::microseconds(500));
    }
}

} // namespace test
