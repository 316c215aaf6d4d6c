#include "Tests/Conformance/Plug-ins/BareLoop.hpp"

#include "Platform/Foundation/DenormalMode.hpp"
#include "Tests/Conformance/Plug-ins/LilvNodes.hpp"

#include <fmt/format.h>
#include <lv2/atom/atom.h>
#include <lv2/buf-size/buf-size.h>
#include <lv2/midi/midi.h>
#include <lv2/parameters/parameters.h>
#include <lv2/presets/presets.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>
#include <utility>

#include <dlfcn.h>

namespace conformance
{

namespace
{

constexpr std::uint32_t stateFlags = LV2_STATE_IS_POD | LV2_STATE_IS_NATIVE;

int saysNothing(LV2_Log_Handle, LV2_URID, const char *, va_list)
{
    return 0;
}

int saysNothingEither(LV2_Log_Handle, LV2_URID, const char *, ...)
{
    return 0;
}

/// Threads of some plug-ins still end when their instance has gone: their code stays.
void keepLoaded(const LilvPlugin *plugin)
{
    char *const path =
        lilv_file_uri_parse(lilv_node_as_uri(lilv_plugin_get_library_uri(plugin)), nullptr);
    ::dlopen(path, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    lilv_free(path);
}

} // namespace

BareWorld::BareWorld() : world_(lilv_world_new())
{
    lilv_world_load_all(world_.get());
}

BareLoop::BareLoop(const BareWorld &world, std::string uri, double sampleRate,
                   std::uint32_t mostFrames)
    : uri_(std::move(uri)), world_(world.lilv())
{
    const NodePointer node = uriNode(world_, uri_.c_str());
    plugin_ = lilv_plugins_get_by_uri(lilv_world_get_all_plugins(world_), node.get());
    if (plugin_ == nullptr)
        throw Refusal("it is not installed");
    findPresets();
    makeFeatures();
    keepLoaded(plugin_);
    StatePointer state;
    if (lilv_plugin_has_feature(plugin_, uriNode(world_, LV2_STATE__loadDefaultState).get()))
        state.reset(lilv_state_new_from_world(world_, &mapData_, node.get()));
    instantiate(sampleRate, mostFrames, state.get());
}

BareLoop::~BareLoop()
{
    if (instance_)
        lilv_instance_deactivate(instance_.get());
}

std::uint32_t BareLoop::inputs() const
{
    return static_cast<std::uint32_t>(ports_->inputs());
}

std::uint32_t BareLoop::outputs() const
{
    return static_cast<std::uint32_t>(ports_->outputs());
}

LV2_URID BareLoop::map(const char *uri)
{
    const auto [found, isNew] = urids_.emplace(uri, static_cast<LV2_URID>(urids_.size() + 1));
    if (isNew)
        uris_.emplace_back(uri);
    return found->second;
}

const char *BareLoop::unmap(LV2_URID urid) const
{
    return urid > 0 && urid <= uris_.size() ? uris_[urid - 1].c_str() : nullptr;
}

void BareLoop::findPresets()
{
    const NodesPointer found(
        lilv_plugin_get_related(plugin_, uriNode(world_, LV2_PRESETS__Preset).get()));
    LILV_FOREACH(nodes, i, found.get())
    presets_.emplace_back(lilv_node_as_uri(lilv_nodes_get(found.get(), i)));
    std::sort(presets_.begin(), presets_.end());
}

void BareLoop::makeOptions(double sampleRate, std::uint32_t mostFrames)
{
    rate_ = sampleRate;
    sampleRate_ = static_cast<float>(sampleRate);
    mostFrames_ = static_cast<std::int32_t>(mostFrames);
    const auto option = [this](const char *key, const char *type, const void *value) {
        return LV2_Options_Option{LV2_OPTIONS_INSTANCE, 0, map(key), 4, map(type), value};
    };
    options_ = {option(LV2_PARAMETERS__sampleRate, LV2_ATOM__Float, &sampleRate_),
                option(LV2_BUF_SIZE__minBlockLength, LV2_ATOM__Int, &leastFrames_),
                option(LV2_BUF_SIZE__maxBlockLength, LV2_ATOM__Int, &mostFrames_),
                option(LV2_BUF_SIZE__nominalBlockLength, LV2_ATOM__Int, &mostFrames_),
                option(LV2_BUF_SIZE__sequenceSize, LV2_ATOM__Int, &sequenceSize_),
                LV2_Options_Option{}};
}

void BareLoop::makeFeatures()
{
    mapData_ = {this, [](LV2_URID_Map_Handle self, const char *uri) {
                    return static_cast<BareLoop *>(self)->map(uri);
                }};
    unmapData_ = {this, [](LV2_URID_Unmap_Handle self, LV2_URID urid) {
                      return static_cast<const BareLoop *>(self)->unmap(urid);
                  }};
    logData_ = {this, &saysNothingEither, &saysNothing};
    scheduleData_ = {
        this, [](LV2_Worker_Schedule_Handle self, std::uint32_t size, const void *data) {
            auto &loop = *static_cast<BareLoop *>(self);
            if (loop.worker_ == nullptr)
                return LV2_WORKER_ERR_UNKNOWN;
            const auto respond = [](LV2_Worker_Respond_Handle to, std::uint32_t length,
                                    const void *answer) {
                const auto *const bytes = static_cast<const std::byte *>(answer);
                static_cast<BareLoop *>(to)->responses_.emplace_back(bytes, bytes + length);
                return LV2_WORKER_SUCCESS;
            };
            return loop.worker_->work(lilv_instance_get_handle(loop.instance_.get()), respond,
                                      &loop, size, data);
        }};
    features_ = {{{LV2_URID__map, &mapData_},
                  {LV2_URID__unmap, &unmapData_},
                  {LV2_LOG__log, &logData_},
                  {LV2_WORKER__schedule, &scheduleData_},
                  {LV2_OPTIONS__options, options_.data()},
                  {LV2_BUF_SIZE__boundedBlockLength, nullptr},
                  {LV2_CORE__isLive, nullptr},
                  {LV2_STATE__loadDefaultState, nullptr},
                  {LV2_STATE__threadSafeRestore, nullptr},
                  {LV2_CORE__inPlaceBroken, nullptr}}};
    std::transform(features_.begin(), features_.end(), featureList_.begin(),
                   [](const LV2_Feature &feature) { return &feature; });
}

void BareLoop::instantiate(double sampleRate, std::uint32_t mostFrames, const LilvState *state)
{
    if (instance_) {
        lilv_instance_deactivate(instance_.get());
        instance_.reset();
    }
    worker_ = nullptr;
    expectedTime_ = -1;
    responses_.clear();
    ports_ = std::make_unique<BarePorts>(
        world_, plugin_, sampleRate, mostFrames,
        PortSymbols{map(LV2_ATOM__Sequence), map(LV2_ATOM__Chunk), map(LV2_MIDI__MidiEvent)});
    sequenceSize_ = static_cast<std::int32_t>(ports_->sequenceSize());
    makeOptions(sampleRate, mostFrames);
    instance_.reset(lilv_plugin_instantiate(plugin_, sampleRate, featureList_.data()));
    if (!instance_)
        throw Refusal(fmt::format("it refuses to be used at {} Hz", sampleRate));
    worker_ = static_cast<const LV2_Worker_Interface *>(
        lilv_instance_get_extension_data(instance_.get(), LV2_WORKER__interface));
    ports_->connect(instance_.get());
    if (state != nullptr)
        restore(state);
    lilv_instance_activate(instance_.get());
    // The host asks for its delay before it plays, and what the plug-in had worked on for
    // its state is in effect from the first frame then.
    if (lilv_plugin_has_latency(plugin_)) {
        ports_->prepare({});
        lilv_instance_run(instance_.get(), 0);
        finishWork();
    }
}

void BareLoop::restore(const LilvState *state)
{
    const auto setValue = [](const char *symbol, void *ports, const void *value, std::uint32_t size,
                             std::uint32_t type) {
        auto &self = *static_cast<BareLoop *>(ports);
        const std::string kind = self.unmap(type) != nullptr ? self.unmap(type) : "";
        const auto as = [&]<typename T>(T number) {
            if (size != sizeof number)
                return;
            std::memcpy(&number, value, sizeof number);
            self.ports_->setControl(symbol, static_cast<float>(number));
        };
        if (kind == LV2_ATOM__Float)
            as(0.0F);
        else if (kind == LV2_ATOM__Double)
            as(0.0);
        else if (kind == LV2_ATOM__Int || kind == LV2_ATOM__Bool)
            as(std::int32_t{0});
        else if (kind == LV2_ATOM__Long)
            as(std::int64_t{0});
    };
    lilv_state_restore(state, instance_.get(), setValue, this, 0, featureList_.data());
}

BareLoop::StatePointer BareLoop::save()
{
    const auto getValue = [](const char *symbol, void *loop, std::uint32_t *size,
                             std::uint32_t *type) -> const void * {
        auto &self = *static_cast<BareLoop *>(loop);
        *size = sizeof(float);
        *type = self.map(LV2_ATOM__Float);
        return self.ports_->control(symbol);
    };
    return StatePointer(lilv_state_new_from_instance(plugin_, instance_.get(), &mapData_, nullptr,
                                                     nullptr, nullptr, nullptr, getValue, this,
                                                     stateFlags, featureList_.data()));
}

void BareLoop::begin(double sampleRate, std::uint32_t block, const test::Channels &signal)
{
    // What was promised once stands.
    const std::uint32_t most = std::max(block, static_cast<std::uint32_t>(mostFrames_));
    if (sampleRate != rate_ || most > static_cast<std::uint32_t>(mostFrames_))
        instantiate(sampleRate, most, save().get());
    signal_ = &signal;
    position_ = 0;
    sampleTime_ = 0;
}

void BareLoop::render(float *const *output, std::uint32_t frames, std::span<const Note> notes)
{
    const platform::foundation::DenormalMode noDenormals;
    for (std::size_t channel = 0; channel < ports_->inputs(); ++channel)
        std::copy_n((*signal_)[channel].data() + position_, frames, ports_->input(channel));
    prepare(frames, notes);
    lilv_instance_run(instance_.get(), frames);
    finishWork();
    collectEvents();
    for (std::size_t channel = 0; channel < ports_->outputs(); ++channel)
        std::copy_n(ports_->output(channel), frames, output[channel]);
    position_ += frames;
    sampleTime_ += frames;
}

void BareLoop::prepare(std::uint32_t frames, std::span<const Note> notes)
{
    if (!ports_->takePosition()) {
        ports_->prepare(notes);
        return;
    }
    if (!time_)
        time_.emplace(mapData_);
    time_->moveTo(sampleTime_, rate_);
    ports_->prepare(notes, *time_, sampleTime_ != expectedTime_);
    expectedTime_ = sampleTime_ + frames;
}

void BareLoop::finishWork()
{
    if (worker_ == nullptr)
        return;
    const LV2_Handle handle = lilv_instance_get_handle(instance_.get());
    for (; !responses_.empty(); responses_.pop_front())
        if (worker_->work_response != nullptr)
            worker_->work_response(handle, static_cast<std::uint32_t>(responses_.front().size()),
                                   responses_.front().data());
    if (worker_->end_run != nullptr)
        worker_->end_run(handle);
}

void BareLoop::collectEvents()
{
    ports_->forEachEmitted(
        [this](std::int64_t frame, std::uint8_t output, std::span<const std::uint8_t> bytes) {
            emitted_.push_back({sampleTime_ + frame, output, {bytes.begin(), bytes.end()}});
        });
}

void BareLoop::loadPreset(std::size_t number)
{
    const NodePointer preset = uriNode(world_, presets_.at(number).c_str());
    lilv_world_load_resource(world_, preset.get());
    const StatePointer state(lilv_state_new_from_world(world_, &mapData_, preset.get()));
    if (state)
        restore(state.get());
}

} // namespace conformance
