#include "../MidiWriter.hpp"

#include <lv2/atom/util.h>
#include <lv2/buf-size/buf-size.h>
#include <lv2/options/options.h>

#include <algorithm>
#include <array>
#include <bit>

namespace
{

/// Doubles what it hears and echoes the MIDI that it gets, as long as the lengths of
/// its blocks are those that it was promised. Otherwise it plays a constant.
class Blocks
{
public:
    Blocks(double, const LV2_Feature *const *features)
        : writer_(features), areFixed_(hasFeature(features, LV2_BUF_SIZE__fixedBlockLength)),
          arePowersOfTwo_(hasFeature(features, LV2_BUF_SIZE__powerOf2BlockLength))
    {
        const auto *option =
            testplugin::feature<const LV2_Options_Option>(features, LV2_OPTIONS__options);
        const LV2_URID shortest = testplugin::map(features, LV2_BUF_SIZE__minBlockLength);
        const LV2_URID longest = testplugin::map(features, LV2_BUF_SIZE__maxBlockLength);
        for (; option->key != 0; ++option) {
            if (option->key == shortest)
                shortest_ = *static_cast<const std::uint32_t *>(option->value);
            else if (option->key == longest)
                longest_ = *static_cast<const std::uint32_t *>(option->value);
        }
    }

    void connect(std::uint32_t port, void *data) { ports_[port] = data; }

    void run(std::uint32_t frames)
    {
        *samples(4) = 3.0F;
        auto &out = *static_cast<LV2_Atom_Sequence *>(ports_[3]);
        writer_.begin(out);
        const auto *in = static_cast<const LV2_Atom_Sequence *>(ports_[2]);
        LV2_ATOM_SEQUENCE_FOREACH(in, event)
        {
            if (event->time.frames >= 0 && event->time.frames < frames)
                writer_.emit(event->time.frames, event + 1, event->body.size);
        }
        if (isAsPromised(frames))
            std::transform(samples(0), samples(0) + frames, samples(1),
                           [](float sample) { return 2.0F * sample; });
        else
            std::fill_n(samples(1), frames, 999.0F);
    }

    static const void *extension(const char *) { return nullptr; }

private:
    static bool hasFeature(const LV2_Feature *const *features, const char *uri)
    {
        for (; *features; ++features)
            if (std::strcmp((*features)->URI, uri) == 0)
                return true;
        return false;
    }

    bool isAsPromised(std::uint32_t frames) const
    {
        // A run of nothing is always legal.
        return frames == 0 || (frames >= shortest_ && frames <= longest_ &&
                               (!areFixed_ || shortest_ == longest_) &&
                               (!arePowersOfTwo_ || std::has_single_bit(frames)) &&
                               (areFixed_ || arePowersOfTwo_));
    }

    float *samples(std::size_t port) { return static_cast<float *>(ports_[port]); }

    testplugin::MidiWriter writer_;
    bool areFixed_;
    bool arePowersOfTwo_;
    std::uint32_t shortest_ = 0;
    std::uint32_t longest_ = 0;
    std::array<void *, 5> ports_{};
};

} // namespace

TEST_PLUGINS(testplugin::describe<Blocks>("urn:test:blocks:fixed"),
             testplugin::describe<Blocks>("urn:test:blocks:power"),
             testplugin::describe<Blocks>("urn:test:blocks:both"))
