#include "../TestPlugin.hpp"

#include <lv2/atom/atom.h>
#include <lv2/atom/util.h>
#include <lv2/state/state.h>

#include <array>
#include <atomic>
#include <cmath>

namespace
{

/// Amplifies, tells the peak, and answers each event with the same event. Its extension
/// urn:test:saved is the gain that it had when its state was last asked for.
class Viewed
{
public:
    Viewed(double, const LV2_Feature *const *features)
        : sequence_(testplugin::map(features, LV2_ATOM__Sequence))
    {
    }

    void connect(std::uint32_t port, void *data) { ports_[port] = data; }

    void run(std::uint32_t frames)
    {
        float &peak = *static_cast<float *>(ports_[1]);
        const auto *in = static_cast<const float *>(ports_[4]);
        auto *out = static_cast<float *>(ports_[5]);
        peak = 0;
        for (std::uint32_t i = 0; i < frames; ++i) {
            out[i] = in[i] * *static_cast<float *>(ports_[0]);
            peak = std::max(peak, std::fabs(out[i]));
        }
        answer();
    }

    static const void *extension(const char *uri)
    {
        static const LV2_State_Interface state{&Viewed::save, nullptr};
        if (std::strcmp(uri, LV2_STATE__interface) == 0)
            return &state;
        return std::strcmp(uri, "urn:test:saved") == 0 ? &saved : nullptr;
    }

private:
    static LV2_State_Status save(LV2_Handle handle, LV2_State_Store_Function, LV2_State_Handle,
                                 std::uint32_t, const LV2_Feature *const *)
    {
        saved = *static_cast<float *>(static_cast<Viewed *>(handle)->ports_[0]);
        return LV2_STATE_SUCCESS;
    }

    void answer()
    {
        const auto *questions = static_cast<const LV2_Atom_Sequence *>(ports_[2]);
        auto *answers = static_cast<LV2_Atom_Sequence *>(ports_[3]);
        const std::uint32_t capacity = answers->atom.size;
        answers->atom.type = sequence_;
        lv2_atom_sequence_clear(answers);
        LV2_ATOM_SEQUENCE_FOREACH(questions, event)
        lv2_atom_sequence_append_event(answers, capacity, event);
    }

    static inline std::atomic<float> saved = -1;

    LV2_URID sequence_;
    std::array<void *, 6> ports_{};
};

} // namespace

TEST_PLUGINS(testplugin::describe<Viewed>("urn:test:view:plain"),
             testplugin::describe<Viewed>("urn:test:view:fixed"),
             testplugin::describe<Viewed>("urn:test:view:tall"),
             testplugin::describe<Viewed>("urn:test:view:growing"),
             testplugin::describe<Viewed>("urn:test:view:asking"),
             testplugin::describe<Viewed>("urn:test:view:refusing"),
             testplugin::describe<Viewed>("urn:test:view:closing"),
             testplugin::describe<Viewed>("urn:test:view:dying"),
             testplugin::describe<Viewed>("urn:test:view:hanging"),
             testplugin::describe<Viewed>("urn:test:view:failing"),
             testplugin::describe<Viewed>("urn:test:view:demanding"),
             testplugin::describe<Viewed>("urn:test:view:missing"))
