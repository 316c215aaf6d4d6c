#include "Platform/LV2/Instance.hpp"

#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/Foundation/Print.hpp"
#include "Platform/LV2/Symbols.hpp"

#include <fmt/format.h>
#include <lv2/options/options.h>
#include <lv2/state/state.h>
#include <lv2/worker/worker.h>

#include <algorithm>
#include <cmath>
#include <cstring>

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
      buffers_(plugin.ports(), settings.sampleRate, settings.maximumFrames),
      worker_(settings.isOffline), features_({settings.sampleRate, settings.maximumFrames,
                                              buffers_.sequenceSize(), settings.contextName},
                                             exchange, worker_),
      instance_(plugin.instantiate(settings.sampleRate, features_.forInstance())),
      restoresWhileRunning_(plugin.hasFeature(LV2_STATE__threadSafeRestore))
{
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
        runOpen(0, 0);
}

Instance::~Instance()
{
    worker_.stop();
    lilv_instance_deactivate(instance_.get());
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
    {
        const Log::AudioCallback here;
        buffers_.connectAudio(instance_.get(), inputs, outputs);
        if (frames > 0)
            runOpen(frames, sampleTime);
    }
    gate_.leave();
    return true;
}

void Instance::runOpen(std::uint32_t frames, std::int64_t sampleTime) noexcept
{
    buffers_.prepareRun();
    PortTraffic *traffic = traffic_.load(std::memory_order_acquire);
    if (traffic)
        traffic->deliver(buffers_);
    if (EventBuffer *midi = buffers_.midiInput())
        exchange_.midiInput.drainInto(*midi, frames);
    lilv_instance_run(instance_.get(), frames);
    worker_.finishRun();
    collectMidi(sampleTime);
    if (traffic && traffic->isWatched()) {
        traffic->collect(buffers_);
        buffers_.publishOutputs();
    }
    latency_.store(buffers_.latency(), std::memory_order_relaxed);
}

void Instance::collectMidi(std::int64_t sampleTime) noexcept
{
    const LV2_URID midiEvent = Symbols::shared().midiEvent;
    std::uint8_t output = 0;
    for (EventBuffer *buffer : buffers_.midiOutputs()) {
        buffer->forEach([&](const EventBuffer::Event &event) {
            if (event.type == midiEvent && !event.bytes.empty())
                exchange_.midiOutput.push({sampleTime + event.frame, output, event.bytes});
        });
        ++output;
    }
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
        ownTraffic_ = std::make_unique<PortTraffic>(buffers_.sequenceSize());
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
