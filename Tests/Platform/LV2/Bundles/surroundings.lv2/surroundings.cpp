#include "../TestPlugin.hpp"

#include <lv2/atom/atom.h>
#include <lv2/atom/util.h>
#include <lv2/time/time.h>

#include <algorithm>
#include <array>

namespace
{

/// Tells in the samples of its output what it was told: how many positions came in
/// this block and at which frame the last, then that position's frame, speed, beats a
/// minute, bar, beat in the bar, beats a bar and frames a second; then its control
/// ports, its voltage and the sizes of its outputs for events.
class Surroundings
{
public:
    Surroundings(double, const LV2_Feature *const *features)
        : object_(testplugin::map(features, LV2_ATOM__Object)),
          position_(testplugin::map(features, LV2_TIME__Position)),
          frame_(testplugin::map(features, LV2_TIME__frame)),
          speed_(testplugin::map(features, LV2_TIME__speed)),
          tempo_(testplugin::map(features, LV2_TIME__beatsPerMinute)),
          bar_(testplugin::map(features, LV2_TIME__bar)),
          barBeat_(testplugin::map(features, LV2_TIME__barBeat)),
          beats_(testplugin::map(features, LV2_TIME__beatsPerBar)),
          rate_(testplugin::map(features, LV2_TIME__framesPerSecond))
    {
    }

    void connect(std::uint32_t port, void *data) { ports_[port] = data; }

    void run(std::uint32_t frames)
    {
        std::array<float, 17> report{};
        const auto *events = static_cast<const LV2_Atom_Sequence *>(ports_[0]);
        LV2_ATOM_SEQUENCE_FOREACH(events, event)
        {
            const auto *object = reinterpret_cast<const LV2_Atom_Object *>(&event->body);
            if (event->body.type != object_ || object->body.otype != position_)
                continue;
            report[0] += 1.0F;
            report[1] = static_cast<float>(event->time.frames);
            read(*object, report);
        }
        for (std::size_t port = 2; port <= 7; ++port)
            report[7 + port] = *static_cast<const float *>(ports_[port]);
        for (std::size_t port = 8; port <= 9; ++port)
            report[7 + port] =
                static_cast<float>(static_cast<const LV2_Atom *>(ports_[port])->size);
        std::copy_n(report.begin(), std::min<std::size_t>(report.size(), frames),
                    static_cast<float *>(ports_[1]));
    }

    static const void *extension(const char *) { return nullptr; }

private:
    void read(const LV2_Atom_Object &object, std::array<float, 17> &report) const
    {
        LV2_ATOM_OBJECT_FOREACH(&object, property)
        {
            const void *value = LV2_ATOM_BODY_CONST(&property->value);
            if (property->key == frame_)
                report[2] = static_cast<float>(*static_cast<const std::int64_t *>(value));
            else if (property->key == speed_)
                report[3] = *static_cast<const float *>(value);
            else if (property->key == tempo_)
                report[4] = *static_cast<const float *>(value);
            else if (property->key == bar_)
                report[5] = static_cast<float>(*static_cast<const std::int64_t *>(value));
            else if (property->key == barBeat_)
                report[6] = *static_cast<const float *>(value);
            else if (property->key == beats_)
                report[7] = *static_cast<const float *>(value);
            else if (property->key == rate_)
                report[8] = *static_cast<const float *>(value);
        }
    }

    LV2_URID object_;
    LV2_URID position_;
    LV2_URID frame_;
    LV2_URID speed_;
    LV2_URID tempo_;
    LV2_URID bar_;
    LV2_URID barBeat_;
    LV2_URID beats_;
    LV2_URID rate_;
    std::array<void *, 10> ports_{};
};

/// Spoils all its outputs before it looks at its inputs.
class InPlaceBroken
{
public:
    InPlaceBroken(double, const LV2_Feature *const *) {}

    void connect(std::uint32_t port, void *data) { ports_[port] = static_cast<float *>(data); }

    void run(std::uint32_t frames)
    {
        std::fill_n(ports_[2], frames, -1.0F);
        std::fill_n(ports_[3], frames, -1.0F);
        std::copy_n(ports_[0], frames, ports_[2]);
        std::copy_n(ports_[1], frames, ports_[3]);
    }

    static const void *extension(const char *) { return nullptr; }

private:
    std::array<float *, 4> ports_{};
};

} // namespace

TEST_PLUGINS(testplugin::describe<Surroundings>("urn:test:surroundings"),
             testplugin::describe<InPlaceBroken>("urn:test:in-place-broken"))
