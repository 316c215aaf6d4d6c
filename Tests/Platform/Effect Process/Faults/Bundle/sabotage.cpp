// One plug-in for each pair of a moment and a fault: urn:test:sabotage:MOMENT:FAULT.

#include "Faults.hpp"
#include "SabotageFolder.hpp"
#include "Tests/Platform/LV2/Bundles/TestPlugin.hpp"

#include <lv2/atom/atom.h>
#include <lv2/atom/util.h>
#include <lv2/midi/midi.h>
#include <lv2/state/state.h>
#include <lv2/worker/worker.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace
{

constexpr const char *prefix = "urn:test:sabotage:";
constexpr const char *savedKey = "urn:test:sabotage-saved";
constexpr const char *presetKey = "urn:test:sabotage-preset";

constexpr std::uint32_t blockOfWork = 20;
constexpr std::uint8_t volume = 7;

/// Passes audio on, times the port "gain", times the factor of its state, times the
/// MIDI volume in 128ths, and fails at its moment while its folder says so.
class Saboteur
{
public:
    Saboteur(const char *uri, const LV2_Feature *const *features)
        : folder_(std::getenv("SABOTAGE_FOLDER")),
          schedule_(testplugin::feature<LV2_Worker_Schedule>(features, LV2_WORKER__schedule)),
          midiEvent_(testplugin::map(features, LV2_MIDI__MidiEvent)),
          savedKey_(testplugin::map(features, savedKey)),
          presetKey_(testplugin::map(features, presetKey)),
          float_(testplugin::map(features, LV2_ATOM__Float)),
          path_(testplugin::map(features, LV2_ATOM__Path)),
          fileKey_(testplugin::map(features, "urn:test:sabotage-file"))
    {
        const std::string_view name = std::string_view(uri).substr(std::strlen(prefix));
        const std::size_t colon = name.find(':');
        moment_ = name.substr(0, colon);
        fault_ = name.substr(colon + 1);
        folder_.noteStart();
        failAt("instantiate");
    }

    ~Saboteur() = default;

    void connect(std::uint32_t port, void *data) { ports_[port] = data; }
    void activate() { failAt("activate"); }
    void deactivate() { failAt("deactivate"); }
    void beforeCleanup() { failAt("cleanup"); }

    void run(std::uint32_t frames)
    {
        if (frames == 0)
            return;
        ++blocks_;
        if (blocks_ == 1)
            failAt("run1");
        if (blocks_ == 1000)
            failAt("run1000");
        if (blocks_ == blockOfWork)
            schedule_->schedule_work(schedule_->handle, 0, nullptr);
        takeMidi();
        const float factor = *port<const float>(0) * number_ * static_cast<float>(volume_) / 128.0F;
        for (std::uint32_t channel = 0; channel < 2; ++channel)
            std::transform(port<const float>(1 + channel), port<const float>(1 + channel) + frames,
                           port<float>(3 + channel), [factor](float in) { return in * factor; });
    }

    static const void *extension(const char *uri)
    {
        static const LV2_Worker_Interface worker{
            [](LV2_Handle handle, LV2_Worker_Respond_Function, LV2_Worker_Respond_Handle,
               std::uint32_t, const void *) {
                static_cast<Saboteur *>(handle)->failAt("worker");
                return LV2_WORKER_SUCCESS;
            },
            nullptr, nullptr};
        static const LV2_State_Interface state{&Saboteur::save, &Saboteur::restore};
        if (std::strcmp(uri, LV2_WORKER__interface) == 0)
            return &worker;
        return std::strcmp(uri, LV2_STATE__interface) == 0 ? &state : nullptr;
    }

private:
    template <typename T>
    T *port(std::size_t index) const
    {
        return static_cast<T *>(ports_[index]);
    }

    void failAt(std::string_view moment)
    {
        if (moment == moment_ && folder_.takeFault())
            sabotage::provoke(fault_);
    }

    void takeMidi()
    {
        LV2_ATOM_SEQUENCE_FOREACH(port<const LV2_Atom_Sequence>(5), event)
        {
            const auto *bytes = reinterpret_cast<const std::uint8_t *>(event + 1);
            if (event->body.type == midiEvent_ && event->body.size == 3 && bytes[0] == 0xB0 &&
                bytes[1] == volume)
                volume_ = bytes[2];
        }
    }

    static LV2_State_Status save(LV2_Handle handle, LV2_State_Store_Function store,
                                 LV2_State_Handle state, std::uint32_t,
                                 const LV2_Feature *const *features)
    {
        auto &self = *static_cast<Saboteur *>(handle);
        self.failAt("save");
        // A file as well, so that there is a scratch folder to be left behind.
        auto *makePath = testplugin::feature<LV2_State_Make_Path>(features, LV2_STATE__makePath);
        auto *freePath = testplugin::feature<LV2_State_Free_Path>(features, LV2_STATE__freePath);
        char *path = makePath->path(makePath->handle, "number.txt");
        std::ofstream(path) << self.number_;
        store(state, self.fileKey_, path, std::strlen(path) + 1, self.path_, LV2_STATE_IS_POD);
        freePath->free_path(freePath->handle, path);
        return store(state, self.savedKey_, &self.number_, sizeof self.number_, self.float_,
                     LV2_STATE_IS_POD);
    }

    static LV2_State_Status restore(LV2_Handle handle, LV2_State_Retrieve_Function retrieve,
                                    LV2_State_Handle state, std::uint32_t,
                                    const LV2_Feature *const *)
    {
        auto &self = *static_cast<Saboteur *>(handle);
        // What was saved, and what a preset says, come to the same call.
        self.restoreFrom(retrieve, state, self.savedKey_, "restore");
        self.restoreFrom(retrieve, state, self.presetKey_, "preset");
        return LV2_STATE_SUCCESS;
    }

    void restoreFrom(LV2_State_Retrieve_Function retrieve, LV2_State_Handle state, LV2_URID key,
                     std::string_view moment)
    {
        std::size_t size = 0;
        std::uint32_t type = 0;
        std::uint32_t flags = 0;
        const void *value = retrieve(state, key, &size, &type, &flags);
        if (!value || size != sizeof number_)
            return;
        failAt(moment);
        std::memcpy(&number_, value, sizeof number_);
    }

    SabotageFolder folder_;
    std::string moment_;
    std::string fault_;
    LV2_Worker_Schedule *schedule_;
    LV2_URID midiEvent_;
    LV2_URID savedKey_;
    LV2_URID presetKey_;
    LV2_URID float_;
    LV2_URID path_;
    LV2_URID fileKey_;
    std::array<void *, 6> ports_{};
    std::uint32_t blocks_ = 0;
    float number_ = 1.0F;
    int volume_ = 128;
};

LV2_Descriptor describe(const std::string &uri)
{
    return {uri.c_str(),
            [](const LV2_Descriptor *descriptor, double, const char *,
               const LV2_Feature *const *features) -> LV2_Handle {
                return std::make_unique<Saboteur>(descriptor->URI, features).release();
            },
            [](LV2_Handle handle, std::uint32_t port, void *data) {
                static_cast<Saboteur *>(handle)->connect(port, data);
            },
            [](LV2_Handle handle) { static_cast<Saboteur *>(handle)->activate(); },
            [](LV2_Handle handle, std::uint32_t frames) {
                static_cast<Saboteur *>(handle)->run(frames);
            },
            [](LV2_Handle handle) { static_cast<Saboteur *>(handle)->deactivate(); },
            [](LV2_Handle handle) {
                const std::unique_ptr<Saboteur> owner(static_cast<Saboteur *>(handle));
                owner->beforeCleanup();
            },
            &Saboteur::extension};
}

std::vector<std::string> uris()
{
    std::vector<std::string> all{std::string(prefix) + "never:none"};
    for (const char *moment : {SABOTAGE_MOMENTS})
        for (const char *fault : {SABOTAGE_FAULTS})
            all.push_back(std::string(prefix) + moment + ":" + fault);
    return all;
}

} // namespace

LV2_SYMBOL_EXPORT const LV2_Descriptor *lv2_descriptor(std::uint32_t index)
{
    static const std::vector<std::string> names = uris();
    static const std::vector<LV2_Descriptor> descriptors = [] {
        std::vector<LV2_Descriptor> all;
        std::transform(names.begin(), names.end(), std::back_inserter(all), describe);
        return all;
    }();
    return index < descriptors.size() ? &descriptors[index] : nullptr;
}
