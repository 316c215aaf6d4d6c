#include "../TestPlugin.hpp"

#include <lv2/atom/atom.h>
#include <lv2/log/log.h>
#include <lv2/options/options.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace
{

bool isSilent(const float *samples, std::uint32_t frames)
{
    return std::all_of(samples, samples + frames, [](float sample) { return sample == 0.0F; });
}

/// Has a port of every kind and tells in the samples of its audio output (port 2)
/// what they were connected to: whether each condition below holds, 1 or 0, then
/// control values.
class Everything
{
public:
    Everything(double, const LV2_Feature *const *features)
        : chunk_(testplugin::map(features, LV2_ATOM__Chunk)),
          sequence_(testplugin::map(features, LV2_ATOM__Sequence))
    {
    }

    void connect(std::uint32_t port, void *data) { ports_[port] = data; }

    void run(std::uint32_t frames)
    {
        const auto *atomIn = static_cast<LV2_Atom *>(ports_[7]);
        const auto *atomOut = static_cast<LV2_Atom *>(ports_[8]);
        const std::array<bool, 8> conditions{ports_[1] && isSilent(samples(1), frames),
                                             ports_[3] && isSilent(samples(3), frames),
                                             ports_[4] != nullptr,
                                             ports_[5] == nullptr,
                                             ports_[6] == nullptr,
                                             atomIn->type == sequence_ &&
                                                 atomIn->size == sizeof(LV2_Atom_Sequence_Body),
                                             atomOut->type == chunk_,
                                             atomOut->size + sizeof(LV2_Atom) >= 100000};
        std::array<float, 11> values{};
        std::transform(conditions.begin(), conditions.end(), values.begin(),
                       [](bool holds) { return holds ? 1.0F : 0.0F; });
        for (std::size_t i = 0; i < 3; ++i)
            values[8 + i] = *samples(9 + i);
        std::copy_n(values.begin(), std::min<std::size_t>(values.size(), frames), samples(2));
        if (frames > 0)
            std::fill_n(samples(4), frames, 1.0F);
    }

    static const void *extension(const char *) { return nullptr; }

private:
    float *samples(std::size_t port) { return static_cast<float *>(ports_[port]); }

    LV2_URID chunk_;
    LV2_URID sequence_;
    std::array<void *, 13> ports_{};
};

/// Delays by 64 frames and says so.
class Delay
{
public:
    Delay(double, const LV2_Feature *const *) {}

    void connect(std::uint32_t port, void *data) { ports_[port] = static_cast<float *>(data); }

    void run(std::uint32_t frames)
    {
        *ports_[2] = static_cast<float>(line_.size());
        for (std::uint32_t i = 0; i < frames; ++i) {
            ports_[1][i] = line_[place_];
            line_[place_] = ports_[0][i];
            place_ = (place_ + 1) % line_.size();
        }
    }

    static const void *extension(const char *) { return nullptr; }

private:
    std::array<float *, 3> ports_{};
    std::array<float, 64> line_{};
    std::size_t place_ = 0;
};

/// Tells in the samples of its output: how long the host's context name was at
/// instantiation and is now, the maximum block length and whether the sample rate
/// of the options is that of the instance. Logs in every run.
class Curious
{
public:
    Curious(double rate, const LV2_Feature *const *features)
        : log_(testplugin::feature<LV2_Log_Log>(features, LV2_LOG__log)),
          note_(testplugin::map(features, LV2_LOG__Note)),
          context_(testplugin::map(features, "urn:qrvx:audio-component#contextName")),
          maximum_(testplugin::map(features, "http://lv2plug.in/ns/ext/buf-size#maxBlockLength")),
          rate_(testplugin::map(features, "http://lv2plug.in/ns/ext/parameters#sampleRate"))
    {
        const auto *option =
            testplugin::feature<const LV2_Options_Option>(features, LV2_OPTIONS__options);
        for (; option->key != 0; ++option)
            read(*option, rate);
        values_[0] = values_[1];
    }

    void connect(std::uint32_t, void *data) { report_ = static_cast<float *>(data); }

    void run(std::uint32_t frames)
    {
        log_->printf(log_->handle, note_, "a block of %u frames\n", frames);
        std::copy_n(values_.begin(), std::min<std::size_t>(values_.size(), frames), report_);
    }

    static const void *extension(const char *uri)
    {
        static const LV2_Options_Interface options{
            [](LV2_Handle, LV2_Options_Option *) -> std::uint32_t {
                return LV2_OPTIONS_ERR_UNKNOWN;
            },
            [](LV2_Handle handle, const LV2_Options_Option *option) -> std::uint32_t {
                for (; option->key != 0; ++option)
                    static_cast<Curious *>(handle)->read(*option, 0.0);
                return LV2_OPTIONS_SUCCESS;
            }};
        return std::strcmp(uri, LV2_OPTIONS__interface) == 0 ? &options : nullptr;
    }

private:
    void read(const LV2_Options_Option &option, double rate)
    {
        if (option.key == context_)
            values_[1] = static_cast<float>(std::strlen(static_cast<const char *>(option.value)));
        else if (option.key == maximum_)
            values_[2] = static_cast<float>(*static_cast<const std::int32_t *>(option.value));
        else if (option.key == rate_)
            values_[3] = static_cast<double>(*static_cast<const float *>(option.value)) == rate
                             ? 1.0F
                             : 0.0F;
    }

    LV2_Log_Log *log_;
    LV2_URID note_;
    LV2_URID context_;
    LV2_URID maximum_;
    LV2_URID rate_;
    float *report_ = nullptr;
    std::array<float, 4> values_{};
};

} // namespace

TEST_PLUGINS(testplugin::describe<Everything>("urn:test:everything"),
             testplugin::describe<Delay>("urn:test:delay"),
             testplugin::describe<Curious>("urn:test:curious"))
