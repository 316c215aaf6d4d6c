#include "../TestPlugin.hpp"

#include <lv2/atom/atom.h>
#include <lv2/atom/util.h>

#include <array>
#include <cmath>

namespace
{

/// Amplifies, tells the peak, and answers each event with the same event.
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

    static const void *extension(const char *) { return nullptr; }

private:
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
