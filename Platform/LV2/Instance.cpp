#include "Platform/LV2/Instance.hpp"

#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/Foundation/Print.hpp"
#include "Platform/LV2/Symbols.hpp"

#include <fmt/format.h>
#include <lv2/options/options.h>
#include <lv2/resize-port/resize-port.h>
#include <lv2/state/state.h>
#include <lv2/worker/worker.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <utility>

namespace platform::lv2
{

namespace
{

template <typename T>
std::optional<float> numberAs(const void *value, std::uint32_t size)
{
    T number{};
    if (size != sizeof number)
        return std::nullopt;
    std::memcpy(&number, value, sizeof number);
    return static_cast<float>(number);
}

std::optional<float> numberOf(const void *value, std::uint32_t size, LV2_URID type)
{
    const Symbols &symbols = Symbols::shared();
    if (type == symbols.atomFloat)
        return numberAs<float>(value, size);
    if (type == symbols.atomDouble)
        return numberAs<double>(value, size);
    if (type == symbols.atomInt || type == symbols.atomBool)
        return numberAs<std::int32_t>(value, size);
    if (type == symbols.atomLong)
        return numberAs<std::int64_t>(value, size);
    return std::nullopt;
}

void setPortValue(const char *symbol, void *buffers, const void *value, std::uint32_t size,
                  std::uint32_t type)
{
    if (const auto number = numberOf(value, size, type))
        static_cast<PortBuffers *>(buffers)->setControl(symbol, *number);
}

Plugin &servable(Plugin &plugin)
{
    plugin.requireServable();
    return plugin;
}

} // namespace

Instance::Instance(Plugin &plugin, Exchange &exchange, const Settings &settings,
                   const State *restored)
    : plugin_(servable(plugin)), exchange_(exchange), settings_(settings),
      buffers_(plugin.ports(), settings.sampleRate, settings.maximumFrames,
               plugin.hasFeature(LV2_RESIZE_PORT__resize)),
      position_(settings.sampleRate), worker_(settings.isOffline),
      features_({settings.sampleRate, settings.maximumFrames, plugin.runLengths(),
                 buffers_.sequenceSize(), settings.contextName},
                exchange, worker_, buffers_.resizeFeature()),
      instance_(plugin.instantiate(settings.sampleRate, features_.forInstance())),
      restoresWhileRunning_(plugin.hasFeature(LV2_STATE__threadSafeRestore))
{
    makeRunBuffers();
    attachWorker();
    buffers_.connect(instance_.get());
    buffers_.setFreeWheeling(settings.isOffline);
    if (restored)
        restore(*restored);
    else if (plugin.hasFeature(LV2_STATE__loadDefaultState))
        loadState(plugin.uri());
    // From here on nothing throws: the thread must end before the plug-in does.
    worker_.start();
    lilv_instance_activate(instance_.get());
    // A run of no frames is legal and lets a plug-in report its delay.
    if (std::any_of(plugin.ports().begin(), plugin.ports().end(),
                    [](const Port &port) { return port.isLatency; }))
        runConnected(0, 0, [](EventBuffer &) {});
}

Instance::~Instance()
{
    worker_.stop();
    lilv_instance_deactivate(instance_.get());
}

void Instance::makeRunBuffers()
{
    const RunLengths &lengths = plugin_.runLengths();
    const std::uint32_t longest = lengths.longest(settings_.maximumFrames);
    if (settings_.checksBounds)
        guarded_.emplace(buffers_.outputCount(), longest);
    if (lengths.areFree())
        return;
    arrived_.emplace(buffers_.sequenceSize());
    if (lengths.areFixed)
        fixedRuns_.emplace(FixedRuns::Shape{buffers_.inputCount(), buffers_.outputCount(),
                                            buffers_.midiOutputs().size(), longest,
                                            buffers_.largestSequence()});
    else
        parts_.emplace(buffers_.inputCount(), buffers_.outputCount());
}

template <typename Interface>
const Interface *Instance::extension(const char *uri) const
{
    return static_cast<const Interface *>(lilv_instance_get_extension_data(instance_.get(), uri));
}

void Instance::attachWorker()
{
    const auto *interface = extension<LV2_Worker_Interface>(LV2_WORKER__interface);
    if (interface && interface->work)
        worker_.attach(lilv_instance_get_handle(instance_.get()), interface);
}

bool Instance::run(const float *const *inputs, float *const *outputs, std::uint32_t frames,
                   std::int64_t sampleTime) noexcept
{
    if (frames > settings_.maximumFrames)
        return false;
    if (!gate_.enter())
        return false;
    if (frames > 0) {
        const Log::AudioCallback here;
        runBlock({inputs, outputs, frames, sampleTime});
    }
    gate_.leave();
    return true;
}

void Instance::runBlock(const Block &block) noexcept
{
    if (fixedRuns_ && !fixedRuns_->suits(block.frames))
        runGathered(block);
    else if (!fixedRuns_ && arrived_ && !std::has_single_bit(block.frames))
        runInParts(block);
    else
        runAsItIs(block);
}

void Instance::runAsItIs(const Block &block) noexcept
{
    runOnce(
        block, [&](EventBuffer &events) { exchange_.midiInput.drainInto(events, block.frames); },
        [&](std::size_t output, const EventBuffer::Event &event) {
            emit(output, block.sampleTime + event.frame, event.bytes);
        });
}

EventBuffer &Instance::arrivedEvents(std::uint32_t frames) noexcept
{
    arrived_->clear();
    if (buffers_.midiInput())
        exchange_.midiInput.drainInto(*arrived_, frames);
    return *arrived_;
}

// Every length is a sum of powers of two, the long ones first.
void Instance::runInParts(const Block &block) noexcept
{
    EventBuffer &arrived = arrivedEvents(block.frames);
    for (std::uint32_t first = 0; first < block.frames;) {
        const std::uint32_t count = std::bit_floor(block.frames - first);
        const std::int64_t time = block.sampleTime + first;
        runOnce(
            {parts_->inputs(block.inputs, first), parts_->outputs(block.outputs, first), count,
             time},
            [&](EventBuffer &events) {
                arrived.forEach([&](const EventBuffer::Event &event) {
                    if (event.frame >= first && event.frame < first + count)
                        events.append(event.frame - first, event.type, event.bytes);
                });
            },
            [&](std::size_t output, const EventBuffer::Event &event) {
                emit(output, time + event.frame, event.bytes);
            });
        first += count;
    }
}

void Instance::runGathered(const Block &block) noexcept
{
    fixedRuns_->render(
        block.inputs, block.outputs, block.frames, arrivedEvents(block.frames),
        [&](const FixedRuns::Run &run) {
            runOnce(
                {run.inputs, run.outputs, run.frames, block.sampleTime + run.offset},
                [&](EventBuffer &events) {
                    run.events.forEach([&](const EventBuffer::Event &event) {
                        events.append(event.frame, event.type, event.bytes);
                    });
                },
                [&](std::size_t output, const EventBuffer::Event &event) {
                    run.emitted[output].append(event.frame, event.type, event.bytes);
                });
        },
        [&](std::size_t output, const EventBuffer::Event &event) {
            emit(output, block.sampleTime + event.frame, event.bytes);
        });
}

template <typename AddEvents, typename TakeMidi>
void Instance::runOnce(const Block &block, AddEvents addEvents, TakeMidi takeMidi) noexcept
{
    buffers_.connectAudio(instance_.get(), block.inputs,
                          guarded_ ? guarded_->begin(block.frames) : block.outputs);
    runConnected(block.frames, block.sampleTime, addEvents);
    collectMidi(block.frames, takeMidi);
    if (guarded_)
        checkBounds(guarded_->end(block.outputs, block.frames));
}

template <typename AddEvents>
void Instance::runConnected(std::uint32_t frames, std::int64_t sampleTime,
                            AddEvents addEvents) noexcept
{
    buffers_.prepareRun();
    if (buffers_.takesPosition())
        tellPosition(frames, sampleTime);
    PortTraffic *traffic = traffic_.load(std::memory_order_acquire);
    if (traffic)
        traffic->deliver(buffers_);
    if (EventBuffer *midi = buffers_.midiInput())
        addEvents(*midi);
    lilv_instance_run(instance_.get(), frames);
    worker_.finishRun();
    if (buffers_.stateHasChanged())
        stateHasChanged_.store(true, std::memory_order_relaxed);
    if (traffic && traffic->isWatched()) {
        traffic->collect(buffers_);
        buffers_.publishOutputs();
    }
    const auto delay = static_cast<float>(fixedRuns_ ? fixedRuns_->delay() : 0);
    latency_.store(buffers_.latency() + delay, std::memory_order_relaxed);
}

// Where it is by itself a plug-in knows that does its counting.
void Instance::tellPosition(std::uint32_t frames, std::int64_t sampleTime) noexcept
{
    if (frames == 0)
        return;
    position_.moveTo(sampleTime);
    buffers_.tellPosition(position_, sampleTime != expectedTime_);
    expectedTime_ = sampleTime + frames;
}

template <typename TakeMidi>
void Instance::collectMidi(std::uint32_t frames, TakeMidi takeMidi) noexcept
{
    const LV2_URID midiEvent = Symbols::shared().midiEvent;
    std::size_t output = 0;
    for (EventBuffer *buffer : buffers_.midiOutputs()) {
        buffer->forEach([&](EventBuffer::Event event) {
            if (event.type != midiEvent || event.bytes.empty())
                return;
            // A plug-in may stamp it with a frame that the run does not have.
            event.frame = std::clamp<std::int64_t>(event.frame, 0, std::int64_t{frames} - 1);
            takeMidi(output, event);
        });
        ++output;
    }
}

void Instance::emit(std::size_t output, std::int64_t sampleTime,
                    std::span<const std::uint8_t> bytes) noexcept
{
    exchange_.midiOutput.push({sampleTime, static_cast<std::uint8_t>(output), bytes});
}

void Instance::checkBounds(bool outputsAreIntact) noexcept
{
    if (!outputsAreIntact && !std::exchange(toldOfBounds_, true))
        exchange_.log.say("writes beyond its block");
    if (!buffers_.eventsAreIntact() && !std::exchange(toldOfEvents_, true))
        exchange_.log.say("writes beyond its room for events");
}

void Instance::holdAlways(const std::function<void()> &operation)
{
    const RunGate::Closure closure(gate_);
    const auto pause = worker_.pause();
    operation();
}

void Instance::holdForRestore(const std::function<void()> &operation)
{
    if (restoresWhileRunning_)
        operation();
    else
        holdAlways(operation);
}

State Instance::save()
{
    State state;
    state.controls = buffers_.controls();
    const auto *interface = extension<LV2_State_Interface>(LV2_STATE__interface);
    if (!interface || !interface->save)
        return state;
    const LV2_State_Status status =
        interface->save(lilv_instance_get_handle(instance_.get()), &storeProperty, &state,
                        LV2_STATE_IS_POD | LV2_STATE_IS_NATIVE, features_.forState());
    if (status != LV2_STATE_SUCCESS)
        printError(fmt::format("{}: its state could not be saved (code {})", plugin_.name(),
                               static_cast<int>(status)));
    return state;
}

void Instance::restore(const State &state)
{
    for (const auto &[symbol, value] : state.controls)
        buffers_.setControl(symbol, value);
    const auto *interface = extension<LV2_State_Interface>(LV2_STATE__interface);
    if (!interface || !interface->restore || state.properties.empty())
        return;
    const LV2_State_Status status = interface->restore(
        lilv_instance_get_handle(instance_.get()), &retrieveProperty, const_cast<State *>(&state),
        LV2_STATE_IS_POD | LV2_STATE_IS_NATIVE, features_.forState());
    if (status != LV2_STATE_SUCCESS)
        printError(fmt::format("{}: its state could not be restored (code {})", plugin_.name(),
                               static_cast<int>(status)));
}

bool Instance::loadState(const std::string &uri)
{
    const StatePointer state = plugin_.loadState(uri);
    if (!state)
        return false;
    holdForRestore([&] {
        lilv_state_restore(state.get(), instance_.get(), &setPortValue, &buffers_, 0,
                           features_.forState());
    });
    return true;
}

PortTraffic &Instance::traffic()
{
    if (!ownTraffic_) {
        ownTraffic_ = std::make_unique<PortTraffic>(buffers_.largestSequence());
        traffic_.store(ownTraffic_.get(), std::memory_order_release);
    }
    return *ownTraffic_;
}

void Instance::setContextName(const std::optional<std::string> &name)
{
    settings_.contextName = name;
    const auto *interface = extension<LV2_Options_Interface>(LV2_OPTIONS__interface);
    holdAlways([&] {
        const LV2_Options_Option *options = features_.setContextName(name);
        if (interface && interface->set)
            interface->set(lilv_instance_get_handle(instance_.get()), options);
    });
}

void Instance::setOffline(bool offline)
{
    settings_.isOffline = offline;
    worker_.setOffline(offline);
    buffers_.setFreeWheeling(offline);
}

} // namespace platform::lv2
