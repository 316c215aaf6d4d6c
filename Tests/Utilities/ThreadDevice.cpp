#include "Tests/Utilities/ThreadDevice.hpp"

namespace test
{

ThreadDevice::Obtained ThreadDevice::open(const AVAudioFormat & /*wanted*/)
{
    return {AVAudioFormat(sampleRate, 2), framesPerBlock_};
}

void ThreadDevice::run(Source &source)
{
    runs_ = true;
    thread_ = std::thread([this, &source] {
        while (runs_)
            turn(source);
    });
}

void ThreadDevice::close()
{
    runs_ = false;
    if (thread_.joinable())
        thread_.join();
}

} // namespace test
