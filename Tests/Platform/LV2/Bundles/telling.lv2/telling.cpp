#include "../MidiWriter.hpp"

#include <lv2/atom/util.h>
#include <lv2/state/state.h>

#include <atomic>

namespace
{

/// Keeps the key of the last note that came to port 0 as its state, and says on port 1
/// that this has changed. Port 2 tells the key and how often it was saved.
class Telling
{
public:
    Telling(double, const LV2_Feature *const *features)
        : writer_(features), key_(testplugin::map(features, "urn:test:telling:key")),
          number_(testplugin::map(features, LV2_ATOM__Float)),
          object_(testplugin::map(features, LV2_ATOM__Object)),
          stateChanged_(testplugin::map(features, LV2_STATE__StateChanged))
    {
    }

    void connect(std::uint32_t port, void *data)
    {
        if (port == 2)
            report_ = static_cast<float *>(data);
        else
            (port == 0 ? in_ : out_) = static_cast<LV2_Atom_Sequence *>(data);
    }

    void run(std::uint32_t frames)
    {
        writer_.begin(*out_);
        LV2_ATOM_SEQUENCE_FOREACH(in_, event)
        {
            const auto *const bytes = reinterpret_cast<const std::uint8_t *>(event + 1);
            if (event->body.type != writer_.midi() || event->body.size != 3)
                continue;
            value_ = bytes[1];
            const LV2_Atom_Object_Body said{0, stateChanged_};
            writer_.emit(event->time.frames, &said, sizeof said, object_);
        }
        const float values[] = {value_.load(), saved_.load()};
        for (std::uint32_t i = 0; i < frames && i < 2; ++i)
            report_[i] = values[i];
    }

    static const void *extension(const char *uri)
    {
        static const LV2_State_Interface state{&Telling::save, &Telling::restore};
        return std::strcmp(uri, LV2_STATE__interface) == 0 ? &state : nullptr;
    }

private:
    static LV2_State_Status save(LV2_Handle handle, LV2_State_Store_Function store,
                                 LV2_State_Handle state, std::uint32_t, const LV2_Feature *const *)
    {
        auto &self = *static_cast<Telling *>(handle);
        const float value = self.value_;
        const LV2_State_Status status =
            store(state, self.key_, &value, sizeof value, self.number_, LV2_STATE_IS_POD);
        self.saved_ = self.saved_ + 1.0F;
        return status;
    }

    static LV2_State_Status restore(LV2_Handle handle, LV2_State_Retrieve_Function retrieve,
                                    LV2_State_Handle state, std::uint32_t,
                                    const LV2_Feature *const *)
    {
        auto &self = *static_cast<Telling *>(handle);
        std::size_t size = 0;
        std::uint32_t type = 0;
        std::uint32_t flags = 0;
        const void *value = retrieve(state, self.key_, &size, &type, &flags);
        if (!value || size != sizeof(float))
            return LV2_STATE_ERR_NO_PROPERTY;
        float number = 0.0F;
        std::memcpy(&number, value, sizeof number);
        self.value_ = number;
        return LV2_STATE_SUCCESS;
    }

    testplugin::MidiWriter writer_;
    LV2_URID key_;
    LV2_URID number_;
    LV2_URID object_;
    LV2_URID stateChanged_;
    LV2_Atom_Sequence *in_ = nullptr;
    LV2_Atom_Sequence *out_ = nullptr;
    float *report_ = nullptr;
    std::atomic<float> value_{0.0F};
    std::atomic<float> saved_{0.0F};
};

} // namespace

TEST_PLUGINS(testplugin::describe<Telling>("urn:test:telling"))
