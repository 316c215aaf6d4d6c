#include "PlayingHost.hpp"

#include "Platform/Audio/PlayerCore.hpp"
#include "Tests/Utilities/WaveFile.hpp"

#include <thread>
#include <utility>

bool eventually(const std::function<bool()> &condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

std::chrono::duration<double> timeOf(const std::function<void()> &operation)
{
    const auto begun = std::chrono::steady_clock::now();
    operation();
    return std::chrono::steady_clock::now() - begun;
}

PlayingHost::PlayingHost(std::shared_ptr<AUAudioUnit> unit, const test::Channels &wave,
                         PacedDevice::Take take)
    : unit_(std::make_shared<AVAudioUnit>(std::move(unit))),
      report_(std::make_shared<PacedDevice::Report>()),
      engine_(std::make_unique<PacedDevice>(report_)),
      file_(std::make_shared<AVAudioFile>(test::writeWave(
          folder_.path() / "loop.wav", wave, static_cast<std::uint32_t>(PacedDevice::sampleRate))))
{
    // Where the machine is too busy to read ahead, the device is late rather than the
    // player short of frames: what is heard is the same each time.
    report_->before = [core = player_->core()] {
        while (!core->hasFrames(PacedDevice::framesPerBlock))
            std::this_thread::sleep_for(std::chrono::microseconds(200));
    };
    report_->take = std::move(take);
    engine_.connect(engine_.mainMixerNode(), engine_.outputNode(), nullptr);
    useRate(PacedDevice::sampleRate);
    schedule();
    engine_.start();
    player_->play();
}

PlayingHost::~PlayingHost()
{
    stop();
}

void PlayingHost::schedule()
{
    player_->scheduleFile(file_, [this] {
        if (ending_)
            return;
        ++loops_;
        schedule();
    });
}

void PlayingHost::useRate(double sampleRate)
{
    const auto format = std::make_shared<AVAudioFormat>(sampleRate, 2);
    // Its own hold: another thread may let go of the unit meanwhile.
    const auto unit = unit_.load();
    engine_.connect(player_, unit, format);
    engine_.connect(unit, engine_.mainMixerNode(), format);
}

bool PlayingHost::goesOn()
{
    const std::uint64_t before = report_->blocks;
    return eventually([&] { return report_->blocks > before + 10; });
}

bool PlayingHost::sounds()
{
    const std::uint64_t before = report_->sounding;
    return eventually([&] { return report_->sounding > before + 10; });
}

void PlayingHost::stop()
{
    ending_ = true;
    player_->stop();
    engine_.stop();
}

void PlayingHost::detachUnit()
{
    engine_.detach(unit_.exchange(nullptr));
}
