// The settings that an effect is brought to. Behind a first character 0 they are the
// Turtle of a preset, as somebody keeps it in a file; behind a 1 the message in which
// they crossed between two processes.

#include "Platform/Effect Process/MessageSocket.hpp"
#include "Platform/Effect Process/Messages.hpp"
#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/LV2/Instance.hpp"
#include "Tests/Fuzzing/Require.hpp"
#include "Tests/Utilities/TemporaryFolder.hpp"

#include <cmath>
#include <fstream>
#include <string_view>

namespace
{

using namespace platform::lv2;
using fuzzing::require;

constexpr const char *uri = "urn:test:settings";
constexpr const char *preset = "urn:test:fuzzed";

/// A bundle with a preset for the plug-in, in a file that changes.
class PresetBundle
{
public:
    PresetBundle()
    {
        std::ofstream(folder_.path() / "manifest.ttl")
            << "@prefix lv2: <http://lv2plug.in/ns/lv2core#> .\n"
               "@prefix pset: <http://lv2plug.in/ns/ext/presets#> .\n"
               "@prefix rdfs: <http://www.w3.org/2000/01/rdf-schema#> .\n"
               "<"
            << preset << "> a pset:Preset ; lv2:appliesTo <" << uri
            << "> ; rdfs:seeAlso <preset.ttl> .\n";
    }

    void hold(std::string_view text) const
    {
        std::ofstream(folder_.path() / "preset.ttl", std::ios::binary) << text;
    }
    std::string path() const { return folder_.path(); }

private:
    const test::TemporaryFolder folder_;
};

void check(Instance &instance)
{
    for (const auto &[symbol, value] : instance.controls())
        require(std::isfinite(value));
    const State state = instance.save();
    const auto message = platform::effect::MessageWriter::message(state);
    platform::effect::MessageReader::read<State>(message);
}

void loadPreset(std::string_view text)
{
    static const PresetBundle bundle;
    bundle.hold(text);
    Plugin plugin(uri, {SETTINGS_BUNDLE, bundle.path()});
    Exchange exchange(plugin.name());
    Instance instance(plugin, exchange, {});
    for (const Plugin::Preset &each : plugin.presets())
        instance.loadState(each.uri);
    check(instance);
}

void restore(std::span<const std::byte> message)
{
    const State state = platform::effect::MessageReader::read<State>(message);
    static Plugin plugin(uri, {SETTINGS_BUNDLE});
    Exchange exchange(plugin.name());
    Instance instance(plugin, exchange, {}, &state);
    check(instance);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0)
        return 0;
    try {
        if (data[0] == '1')
            restore(std::as_bytes(std::span(data + 1, size - 1)));
        else
            loadPreset({reinterpret_cast<const char *>(data) + 1, size - 1});
    } catch (const platform::effect::ProtocolBreach &) {
    } catch (const PlatformError &) {
    }
    return 0;
}
