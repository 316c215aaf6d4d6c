#include "../TestPlugin.hpp"

#include <array>

namespace
{

/// Port 0 is the gain, then come the inputs, then the outputs.
template <std::size_t channels>
class Amplifier
{
public:
    Amplifier(double, const LV2_Feature *const *) {}

    void connect(std::uint32_t port, void *data) { ports_[port] = static_cast<float *>(data); }

    void run(std::uint32_t frames)
    {
        for (std::size_t channel = 0; channel < channels; ++channel)
            for (std::uint32_t i = 0; i < frames; ++i)
                ports_[1 + channels + channel][i] = ports_[1 + channel][i] * *ports_[0];
    }

    static const void *extension(const char *) { return nullptr; }

private:
    std::array<float *, 1 + 2 * channels> ports_{};
};

} // namespace

TEST_PLUGINS(testplugin::describe<Amplifier<2>>("urn:test:amplifier"),
             testplugin::describe<Amplifier<1>>("urn:test:mono"),
             testplugin::describe<Amplifier<6>>("urn:test:surround"))
