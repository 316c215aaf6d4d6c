#include "Tests/Soak/SoakedHost.hpp"

#include "Platform/Audio/SDLOutputDevice.hpp"
#include "Platform/Foundation/DispatchQueue.hpp"
#include "Tests/Soak/ListeningUnit.hpp"

#include <chrono>
#include <future>
#include <stdexcept>
#include <string>
#include <utility>

namespace soak
{

namespace
{

void onMain(const std::function<void()> &operation)
{
    DispatchQueue::main().sync(operation);
}

/// Lets the search begin on a player of the caller's.
class Manager : public AUExtensionManager
{
public:
    using AUExtensionManager::AUExtensionManager;
    using AUExtensionManager::componentDescription;
    using AUExtensionManager::loadForRelease;
};

} // namespace

/// Hears what player and manager have to say.
class SoakedHost::Delegates : public AUEnginePlayerDelegate, public AUExtensionManagerDelegate
{
public:
    explicit Delegates(SoakedHost &host) : host_(host) {}

    void onPlayerStateChanged(bool /*playing*/) override {}
    void onFileSelect(const std::string & /*file*/) override {}
    void onLoop(std::int64_t count) override
    {
        if (count != host_.told_)
            ++host_.miscounted_;
        ++host_.told_;
    }
    void onFoundComponent(const std::shared_ptr<AVAudioUnit> &unit) override { unit_ = unit; }
    void onEngineInitialized() override { found_.set_value(unit_); }

    std::future<std::shared_ptr<AVAudioUnit>> found() { return found_.get_future(); }

private:
    SoakedHost &host_;
    std::shared_ptr<AVAudioUnit> unit_;
    std::promise<std::shared_ptr<AVAudioUnit>> found_;
};

SoakedHost::SoakedHost(std::filesystem::path folder)
    : folder_(std::move(folder)), delegates_(std::make_shared<Delegates>(*this))
{
    using platform::audio::SDLOutputDevice;
    auto device = std::make_unique<ListeningDevice>(
        std::make_unique<SDLOutputDevice>(framesPerBlock), callback_);
    player_ = std::make_shared<AUEnginePlayer>(std::make_shared<AVAudioEngine>(std::move(device)));
    player_->delegate.store(delegates_);
}

SoakedHost::~SoakedHost()
{
    stop();
    onMain([this] { player_->finalize(); });
    letGoOfEffect();
    manager_.reset();
    onMain([this] {
        player_->delegate.store(nullptr);
        player_.reset();
    });
}

bool SoakedHost::findEffect()
{
    auto found = delegates_->found();
    const auto manager = std::make_shared<Manager>(delegates_, player_);
    manager_ = manager;
    manager->loadForRelease();
    if (found.wait_for(std::chrono::minutes(1)) != std::future_status::ready)
        return false;
    disconnectEffect();
    listenToEffect(found.get());
    return true;
}

void SoakedHost::listenToEffect(const std::shared_ptr<AVAudioUnit> &unit)
{
    remote_ = std::dynamic_pointer_cast<RemoteAudioUnit>(unit->auAudioUnit());
    effect_ = std::make_shared<AVAudioUnit>(std::make_shared<ListeningUnit>(remote_, callback_));
}

void SoakedHost::letGoOfEffect()
{
    lateBlocksBefore_ = lateBlocks();
    effect_.reset();
    remote_.reset();
}

void SoakedHost::start()
{
    onMain([this] {
        noteLoad();
        player_->start();
    });
    isPlaying_ = true;
}

void SoakedHost::stop()
{
    onMain([this] { player_->stop(); });
    callback_->listener.breakOff();
    isPlaying_ = false;
    // What was to be told is behind this.
    onMain([] {});
}

void SoakedHost::load(int file)
{
    const auto path = folder_ / (std::to_string(file) + ".m4a");
    onMain([&] {
        noteLoad();
        player_->load(URL::fileURLWithPath(path.string()));
    });
}

void SoakedHost::noteLoad()
{
    if (isPlaying_)
        ++loadsWhilePlaying_;
}

void SoakedHost::connectEffect()
{
    player_->connect(effect_);
    effectIsIn_ = true;
}

void SoakedHost::disconnectEffect()
{
    player_->disconnect();
    effectIsIn_ = false;
}

void SoakedHost::replaceEffect()
{
    const AudioComponentDescription description = remote_->componentDescription();
    if (effectIsIn_)
        disconnectEffect();
    letGoOfEffect();
    std::promise<std::shared_ptr<AVAudioUnit>> made;
    AVAudioUnit::instantiate(
        description, 0,
        [&made](const std::shared_ptr<AVAudioUnit> &unit, const std::exception_ptr & /*error*/) {
            made.set_value(unit);
        });
    const auto unit = made.get_future().get();
    if (!unit)
        throw std::runtime_error("the effect cannot be instantiated again");
    listenToEffect(unit);
    connectEffect();
}

void SoakedHost::selectPreset(std::uint32_t number)
{
    const auto presets = remote_->factoryPresets();
    if (presets && !presets->empty())
        remote_->setCurrentPreset((*presets)[number % presets->size()]);
}

std::uint64_t SoakedHost::lateBlocks() const
{
    return lateBlocksBefore_ + (remote_ ? remote_->process().lateBlocks() : 0);
}

} // namespace soak
