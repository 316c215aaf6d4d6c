// What a bundle says about itself, up to what a search of the registry makes of it. The
// input is the manifest; behind a line `%%` stands the file that it may refer to as
// <plugin.ttl>.

#include "Platform/Audio/AVAudioUnitComponentManager.hpp"
#include "Tests/Fuzzing/Require.hpp"
#include "Tests/Utilities/EnvironmentVariable.hpp"
#include "Tests/Utilities/TemporaryFolder.hpp"

#include <algorithm>
#include <fstream>
#include <string_view>

namespace
{

using fuzzing::require;

/// A path with one bundle on it.
class Registry
{
public:
    Registry() { std::filesystem::create_directory(bundle_); }

    void hold(std::string_view input) const
    {
        constexpr std::string_view separator = "\n%%\n";
        const std::size_t end = input.find(separator);
        const bool isOneFile = end == std::string_view::npos;
        write("manifest.ttl", input.substr(0, end));
        write("plugin.ttl", isOneFile ? "" : input.substr(end + separator.size()));
    }

private:
    void write(const char *name, std::string_view text) const
    {
        std::ofstream(bundle_ / name, std::ios::binary) << text;
    }

    const test::TemporaryFolder folder_;
    const std::filesystem::path bundle_ = folder_.path() / "fuzzed.lv2";
    const test::EnvironmentVariable path_{"LV2_PATH", folder_.path().string()};
};

bool finds(const AVAudioUnitComponent &wanted)
{
    const auto found =
        AVAudioUnitComponentManager::shared().components(wanted.audioComponentDescription());
    return std::any_of(found.begin(), found.end(), [&](const AVAudioUnitComponent &each) {
        return each.pluginURI() == wanted.pluginURI();
    });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const Registry registry;
    registry.hold({reinterpret_cast<const char *>(data), size});
    const auto all = AVAudioUnitComponentManager::shared().components({});
    // What is found among all is found by its own key.
    for (std::size_t i = 0; i < std::min<std::size_t>(all.size(), 4); ++i)
        require(finds(all[i]));
    return 0;
}
