#include "Platform/Audio/EngineCore.hpp"

#include "Platform/Audio/AUAudioUnit.hpp"
#include "Platform/Audio/AVAudioPCMBuffer.hpp"
#include "Platform/Audio/AVAudioUnit.hpp"
#include "Platform/Audio/PlayerCore.hpp"
#include "Platform/Foundation/DenormalMode.hpp"
#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/Foundation/Print.hpp"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <string>
#include <utility>

#include <pthread.h>

namespace platform::audio
{

namespace
{

constexpr double secondsAhead = 0.1;

// Without a clock to keep to, what is asked for is early enough.
constexpr double secondsAheadByHand = 0.0;

// A larger block of the device is rendered in parts, so this bounds memory alone.
constexpr std::uint32_t mostFramesPerBlock = 8192;

constexpr auto watchInterval = std::chrono::milliseconds(100);

// How often to look whether what is under way has ended.
constexpr auto glanceInterval = std::chrono::milliseconds(2);

// Some drivers fall silent without a word when their server dies. A device that
// lives asks every few milliseconds.
constexpr auto deviceSilence = std::chrono::seconds(2);

bool hasFrames(const RenderPlan &plan)
{
    return std::all_of(plan.players.begin(), plan.players.end(),
                       [](const RenderPlan::Player &player) {
                           return player.core->hasFrames(player.framesPerBlock);
                       });
}

[[noreturn]] void throwNotByHand()
{
    throw PlatformError("The engine has not been started for manual rendering");
}

void requireFitting(std::uint32_t frames, const AVAudioPCMBuffer &buffer,
                    const AVAudioFormat &format, std::uint32_t maximumFrames)
{
    if (buffer.format() != format)
        throw PlatformError("The buffer's format is not that of manual rendering");
    if (frames > maximumFrames || frames > buffer.frameCapacity())
        throw PlatformError("More frames than agreed were asked for");
}

// What one thread counts for others to see.
REALTIME void countUp(std::atomic<std::uint64_t> &count) noexcept
{
    count.store(count.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
}

} // namespace

EngineCore::EngineCore(std::unique_ptr<OutputDevice> device)
    : device_(std::move(device)), maximumFrames_(512)
{
    graph_.attach(mixer_);
    graph_.attach(output_);
}

EngineCore::~EngineCore()
{
    stop();
}

void EngineCore::attach(const std::shared_ptr<AVAudioNode> &node)
{
    const Lock lock(mutex_);
    graph_.attach(node);
}

void EngineCore::detach(const std::shared_ptr<AVAudioNode> &node)
{
    const auto unitNode = std::dynamic_pointer_cast<AVAudioUnit>(node);
    if (unitNode)
        unitNode->auAudioUnit()->hurry();
    const Lock lock = lockWithoutUnits();
    graph_.detach(*node);
    graphChanged();
    if (unitNode) {
        unitNode->auAudioUnit()->deallocateRenderResources();
        units_.erase(unitNode->auAudioUnit());
    }
}

void EngineCore::connect(const std::shared_ptr<AVAudioNode> &source,
                         const std::shared_ptr<AVAudioNode> &destination,
                         const std::optional<AVAudioFormat> &format)
{
    const Lock lock(mutex_);
    graph_.connect(source, destination, format);
    graphChanged();
}

void EngineCore::disconnectNodeInput(const AVAudioNode &node)
{
    const bool isUnit = dynamic_cast<const AVAudioUnit *>(&node) != nullptr;
    const Lock lock = isUnit ? lockWithoutUnits() : Lock(mutex_);
    graph_.disconnectInput(node);
    graphChanged();
}

void EngineCore::prepare()
{
    const Lock lock(mutex_);
    if (!running_)
        allocateUnits(planner().units());
}

void EngineCore::start()
{
    const Lock lock(mutex_);
    if (running_)
        return;
    if (!manualFormat_)
        openDevice();
    try {
        publish(true);
    } catch (...) {
        closeDevice();
        throw;
    }
    running_ = true;
    if (manualFormat_)
        return;
    runDevice();
    watch_ = std::thread([this] { watchDevice(); });
    pthread_setname_np(watch_.native_handle(), "audio watch");
}

void EngineCore::stop()
{
    std::thread watch;
    {
        const Lock lock = lockWithoutUnits();
        if (!running_)
            return;
        running_ = false;
        closeDevice();
        withdrawPlan();
        tellFaults();
        watch = std::move(watch_);
    }
    watchEnds_.notify_all();
    if (watch.joinable())
        watch.join();
}

void EngineCore::enableManualRenderingMode(const AVAudioFormat &format,
                                           std::uint32_t maximumFrameCount)
{
    const Lock lock(mutex_);
    if (running_)
        throw PlatformError("Manual rendering cannot begin while the engine runs");
    if (maximumFrameCount == 0)
        throw PlatformError("Manual rendering needs blocks of at least one frame");
    if (!manualFormat_)
        formatBeforeManual_ = *output_->outputFormat(0);
    manualFormat_ = format;
    maximumFrames_ = maximumFrameCount;
    output_->setOutputFormat(format);
}

void EngineCore::disableManualRenderingMode()
{
    stop();
    const Lock lock(mutex_);
    if (!manualFormat_)
        return;
    manualFormat_.reset();
    output_->setOutputFormat(*formatBeforeManual_);
}

void EngineCore::renderOffline(std::uint32_t frames, AVAudioPCMBuffer &buffer)
{
    if (hasLatencies_.load()) {
        const Lock lock(mutex_);
        followLatencies();
    }
    if (renderPlanned(frames, buffer, false))
        return;
    waitForPlayers();
    if (!renderPlanned(frames, buffer, true))
        renderSilence(frames, buffer);
}

// Answers false without a plan, and where a player is short of frames and may not be.
bool EngineCore::renderPlanned(std::uint32_t frames, AVAudioPCMBuffer &buffer, bool mayBeShort)
{
    const Published<RenderPlan>::Use plan(plan_);
    if (!plan)
        return false;
    if (!plan->isByHand)
        throwNotByHand();
    requireFitting(frames, buffer, plan->last->format(), plan->maximumFrames);
    if (frames > 0 && !mayBeShort && !hasFrames(*plan))
        return false;
    buffer.setFrameLength(frames);
    if (frames > 0) {
        const foundation::DenormalMode noDenormals;
        plan->last->pullInto(buffer.floatChannelData(), frames);
        plan->finishBlock();
    }
    return true;
}

// Without plan and mutex: what the wait is for may change the graph.
void EngineCore::waitForPlayers()
{
    const std::shared_ptr<const Players> players = players_.load();
    for (const RenderPlan::Player &player : *players)
        player.core->waitForFrames(player.framesPerBlock);
}

// What comes out while the graph cannot be rendered.
void EngineCore::renderSilence(std::uint32_t frames, AVAudioPCMBuffer &buffer)
{
    {
        const Lock lock(mutex_);
        if (!manualFormat_ || !running_)
            throwNotByHand();
        requireFitting(frames, buffer, *manualFormat_, maximumFrames_);
    }
    buffer.setFrameLength(frames);
    for (std::uint32_t channel = 0; channel < buffer.format().channelCount(); ++channel)
        std::fill_n(buffer.floatChannelData()[channel], frames, 0.0F);
}

void EngineCore::renderInterleaved(float *samples, std::uint32_t frames,
                                   std::uint32_t channels) noexcept
{
    countUp(blocksBegun_);
    const auto begun = std::chrono::steady_clock::now();
    const foundation::DenormalMode noDenormals;
    const Published<RenderPlan>::Use plan(plan_);
    const bool fits = plan && plan->last->format().channelCount() == channels;
    const double seconds = fits ? frames / plan->last->format().sampleRate() : 0.0;
    while (fits && frames > 0) {
        const std::uint32_t part = std::min(frames, plan->maximumFrames);
        guard_.pass(plan->last->pull(part), channels, part, samples);
        plan->finishBlock();
        samples += static_cast<std::size_t>(part) * channels;
        frames -= part;
    }
    std::fill_n(samples, static_cast<std::size_t>(frames) * channels, 0.0F);
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begun;
    if (fits && taken.count() > seconds)
        countUp(overloads_);
    countUp(blocksDone_);
}

EngineCore::Lock EngineCore::lockWithoutUnits()
{
    Lock lock(mutex_, std::try_to_lock);
    while (!lock.owns_lock()) {
        if (const auto unit = unitInPreparation_.load())
            unit->hurry();
        // Again, since the preparation may begin only now.
        std::this_thread::sleep_for(glanceInterval);
        static_cast<void>(lock.try_lock());
    }
    return lock;
}

RenderPlanner EngineCore::planner() const
{
    return {graph_, *output_, *output_->outputFormat(0), maximumFrames_,
            manualFormat_ ? secondsAheadByHand : secondsAhead};
}

void EngineCore::graphChanged()
{
    if (running_)
        publish(false);
}

void EngineCore::publish(bool mayThrow)
{
    RenderPlanner planning = planner();
    allocateUnits(planning.units());
    try {
        auto plan = planning.build([this](const AUAudioUnit &unit) {
            for (const auto &[known, state] : units_)
                if (known.get() == &unit)
                    return state.clock;
            return std::make_shared<RenderClock>();
        });
        plan->isByHand = manualFormat_.has_value();
        players_.store(std::make_shared<const Players>(plan->players));
        latencies_ = plan->latencies;
        hasLatencies_.store(!latencies_.empty());
        plan_.exchange(std::move(plan));
    } catch (const PlatformError &error) {
        withdrawPlan();
        if (mayThrow)
            throw;
        printError(std::string("The audio graph cannot be rendered: ") + error.what());
    }
}

void EngineCore::followLatencies()
{
    const auto hasChanged = [](const RenderPlan::Latency &latency) {
        return latency.unit->latency() != latency.seconds;
    };
    if (std::any_of(latencies_.begin(), latencies_.end(), hasChanged))
        publish(false);
}

void EngineCore::withdrawPlan()
{
    // Units that are not rendered any more are not to be held.
    latencies_.clear();
    hasLatencies_.store(false);
    players_.store(std::make_shared<const Players>());
    plan_.exchange(nullptr);
}

// A unit that cannot run is silent, and no reason for the others to be.
void EngineCore::allocateUnits(const std::vector<RenderPlanner::Unit> &units)
{
    for (const RenderPlanner::Unit &planned : units) {
        try {
            allocateUnit(planned);
        } catch (const PlatformError &error) {
            printError("The effect '" + planned.unit->audioUnitName() +
                       "' cannot render: " + error.what());
        }
    }
}

void EngineCore::allocateUnit(const RenderPlanner::Unit &planned)
{
    const bool offline = manualFormat_.has_value();
    const auto known = units_.find(planned.unit);
    if (known != units_.end() && known->second.sampleRate == planned.sampleRate &&
        known->second.maximumFrames == maximumFrames_ && known->second.offline == offline)
        return;
    // The callback must not be in the unit meanwhile.
    withdrawPlan();
    units_.erase(planned.unit);
    // From here on it may be waited for.
    unitInPreparation_.store(planned.unit);
    try {
        planned.unit->setRenderingOffline(offline);
        planned.unit->allocateRenderResources(planned.sampleRate, maximumFrames_);
    } catch (...) {
        unitInPreparation_.store(nullptr);
        throw;
    }
    unitInPreparation_.store(nullptr);
    units_[planned.unit] = {planned.sampleRate, maximumFrames_, offline,
                            std::make_shared<RenderClock>()};
}

void EngineCore::openDevice()
{
    const AVAudioFormat wanted(48000.0, 2);
    const OutputDevice::Obtained obtained = device_->open(wanted);
    output_->setOutputFormat(obtained.format);
    maximumFrames_ = std::clamp(obtained.framesPerBlock, 1U, mostFramesPerBlock);
}

void EngineCore::closeDevice()
{
    if (!manualFormat_)
        device_->close();
}

void EngineCore::watchDevice()
{
    Lock lock(mutex_);
    while (running_) {
        watchEnds_.wait_for(lock, watchInterval, [this] { return !running_; });
        if (running_)
            watchOnce();
    }
}

void EngineCore::watchOnce()
{
    tellFaults();
    if (!deviceLost_) {
        if (deviceIsAlive()) {
            followLatencies();
            return;
        }
        deviceLost_ = true;
        printError("The audio device has gone away; going on with the default device.");
    }
    device_->close();
    try {
        openDevice();
    } catch (const PlatformError &) {
        return; // tried again the next time
    }
    publish(false);
    runDevice();
}

void EngineCore::runDevice()
{
    deviceLost_ = false;
    lastBlockSeen_ = std::chrono::steady_clock::now();
    device_->run(*this);
}

bool EngineCore::deviceIsAlive()
{
    const auto now = std::chrono::steady_clock::now();
    const std::uint64_t begun = blocksBegun_.load();
    // A block under way is an effect that takes its time, not a device that is gone.
    if (begun != blocksSeen_ || begun != blocksDone_.load()) {
        blocksSeen_ = begun;
        lastBlockSeen_ = now;
    }
    return device_->isAlive() && now - lastBlockSeen_ < deviceSilence;
}

void EngineCore::tellFaults()
{
    if (guard_.sawNonFinite() && !std::exchange(toldNonFinite_, true))
        printError("The audio held samples that are no numbers; such blocks are silenced.");
    if (guard_.sawTooLoud() && !std::exchange(toldTooLoud_, true))
        printError("The audio is louder than the device can play; it is limited.");
    if (isOverloaded() && !std::exchange(toldOverload_, true))
        printError("The audio takes longer to render than to play; there are gaps in it.");
}

// Where it lasts: blocks that are held up now and then are the machine's business.
bool EngineCore::isOverloaded()
{
    constexpr int looks = 10; // a second
    const std::uint64_t late = overloads_.load() - overloadsSeen_;
    const std::uint64_t blocks = blocksDone_.load() - blocksAtLook_;
    overloadsSeen_ += late;
    blocksAtLook_ += blocks;
    overloadedLooks_ = 2 * late > blocks ? overloadedLooks_ + 1 : 0;
    return overloadedLooks_ >= looks;
}

} // namespace platform::audio
