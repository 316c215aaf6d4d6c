#pragma once

#include "Tests/Conformance/Plug-ins/BarePorts.hpp"
#include "Tests/Conformance/Plug-ins/Performer.hpp"

#include <lilv/lilv.h>
#include <lv2/log/log.h>
#include <lv2/options/options.h>
#include <lv2/state/state.h>
#include <lv2/urid/urid.h>
#include <lv2/worker/worker.h>

#include <array>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace conformance
{

/// What is installed, as lilv sees it.
class BareWorld
{
public:
    BareWorld();

    LilvWorld *lilv() const { return world_.get(); }

private:
    struct FreeWorld {
        void operator()(LilvWorld *world) const { lilv_world_free(world); }
    };
    std::unique_ptr<LilvWorld, FreeWorld> world_;
};

/// A plug-in run with lilv alone, in the least that a host does: offer features,
/// connect ports, hand over events, run. Work is done in place. Nothing of the host
/// that it is compared with is in it.
class BareLoop : public Performer
{
public:
    /// A `Refusal` when the plug-in is not to be had.
    BareLoop(const BareWorld &world, std::string uri, double sampleRate, std::uint32_t mostFrames);
    ~BareLoop() override;

    std::uint32_t inputs() const override;
    std::uint32_t outputs() const override;
    std::size_t presetCount() const override { return presets_.size(); }

    void begin(double sampleRate, std::uint32_t block, const test::Channels &signal) override;
    void render(float *const *output, std::uint32_t frames, std::span<const Note> notes) override;
    std::vector<Emitted> takeEmitted() override { return std::exchange(emitted_, {}); }
    void loadPreset(std::size_t number) override;

private:
    struct FreeState {
        void operator()(LilvState *state) const { lilv_state_free(state); }
    };
    struct FreeInstance {
        void operator()(LilvInstance *instance) const { lilv_instance_free(instance); }
    };
    using StatePointer = std::unique_ptr<LilvState, FreeState>;

    LV2_URID map(const char *uri);
    const char *unmap(LV2_URID urid) const;
    void findPresets();
    void makeOptions(double sampleRate, std::uint32_t mostFrames);
    void makeFeatures();
    void instantiate(double sampleRate, std::uint32_t mostFrames, const LilvState *state);
    void restore(const LilvState *state);
    StatePointer save();
    void prepare(std::uint32_t frames, std::span<const Note> notes);
    void finishWork();
    void collectEvents();

    const std::string uri_;
    LilvWorld *const world_;
    const LilvPlugin *plugin_ = nullptr;
    std::vector<std::string> presets_;

    std::map<std::string, LV2_URID> urids_;
    std::deque<std::string> uris_;

    float sampleRate_ = 0;
    double rate_ = 0;
    std::int32_t leastFrames_ = 1;
    std::int32_t mostFrames_ = 0;
    std::int32_t sequenceSize_ = 0;
    std::array<LV2_Options_Option, 6> options_{};
    LV2_URID_Map mapData_{};
    LV2_URID_Unmap unmapData_{};
    LV2_Log_Log logData_{};
    LV2_Worker_Schedule scheduleData_{};
    std::array<LV2_Feature, 10> features_{};
    std::array<const LV2_Feature *, 11> featureList_{};

    std::unique_ptr<BarePorts> ports_;
    std::unique_ptr<LilvInstance, FreeInstance> instance_;
    const LV2_Worker_Interface *worker_ = nullptr;
    std::deque<std::vector<std::byte>> responses_;

    const test::Channels *signal_ = nullptr;
    std::size_t position_ = 0; // in the signal
    std::int64_t sampleTime_ = 0;
    std::int64_t expectedTime_ = -1; // by the plug-in; none before the first run
    std::optional<BarePosition> time_;
    std::vector<Emitted> emitted_;
};

} // namespace conformance
