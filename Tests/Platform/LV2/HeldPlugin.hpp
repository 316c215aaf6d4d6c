#pragma once

#include "Platform/LV2/Instance.hpp"
#include "Tests/Utilities/Channels.hpp"
#include "Tests/Utilities/Places.hpp"

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

/// What the tests of this folder share.
namespace testsupport
{

inline std::vector<std::string> ownBundle(const std::string &name)
{
    return {test::buildPath(TEST_LV2_BUNDLES "/" + name + ".lv2")};
}

/// Bundles of Debian's packages; tests are skipped where they are missing.
inline std::vector<std::string> installedBundle(const std::string &name)
{
    return {"/usr/lib/lv2/" + name + ".lv2"};
}
inline bool isInstalled(const std::string &name)
{
    return std::filesystem::exists(installedBundle(name).front());
}

/// Channels of samples with the pointers that are handed to plug-ins.
class Channels
{
public:
    Channels(std::size_t count, std::size_t frames, float value = 0.0F)
        : Channels(test::constant(count, frames, value))
    {
    }
    explicit Channels(test::Channels samples) : samples_(std::move(samples))
    {
        for (auto &channel : samples_)
            pointers_.push_back(channel.data());
    }
    float *const *data() { return pointers_.data(); }
    const float *const *constData() const { return pointers_.data(); }
    std::vector<float> &operator[](std::size_t channel) { return samples_[channel]; }

private:
    test::Channels samples_;
    std::vector<float *> pointers_;
};

/// A plug-in with one instance of it.
struct HeldPlugin {
    HeldPlugin(const std::string &uri, const std::vector<std::string> &bundles,
               const platform::lv2::Instance::Settings &settings = {})
        : plugin(uri, bundles), exchange(plugin.name()), instance(plugin, exchange, settings)
    {
    }

    /// Runs a block of a plug-in with one output and answers its samples.
    std::vector<float> run(std::uint32_t frames = 16, std::size_t inputs = 0)
    {
        const Channels in(inputs, frames);
        Channels out(1, frames);
        if (!instance.run(in.constData(), out.data(), frames, 0))
            return {};
        return out[0];
    }

    platform::lv2::Plugin plugin;
    platform::lv2::Exchange exchange;
    platform::lv2::Instance instance;
};

} // namespace testsupport
