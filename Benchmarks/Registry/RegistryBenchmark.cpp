#include "Platform/Audio/AVAudioUnitComponentManager.hpp"
#include "Platform/Audio/ComponentRegistry.hpp"
#include "Platform/Audio/DerivedDescription.hpp"
#include "Platform/Audio/LV2Path.hpp"
#include "Platform/LV2/Lilv.hpp"

#include <benchmark/benchmark.h>

namespace
{

using platform::audio::fourCharacterCode;

constexpr const char *standIn = "urn:qrvx:parvane";
constexpr AudioComponentDescription effectKey{fourCharacterCode("aumf"), fourCharacterCode("zvqr"),
                                              fourCharacterCode("QRVX"), 2, 0};

void noteRegistry(benchmark::State &state, std::size_t found)
{
    state.counters["bundles"] = static_cast<double>(platform::audio::lv2Bundles().size());
    state.counters["found"] = static_cast<double>(found);
}

/// What the program does on start.
void searchForTheEffect(benchmark::State &state)
{
    std::size_t found = 0;
    for (auto _ : state)
        found = AVAudioUnitComponentManager::shared().components(effectKey).size();
    noteRegistry(state, found);
}
BENCHMARK(searchForTheEffect)->Unit(benchmark::kMillisecond);

/// A key that only a derived description can have: every manifest is parsed.
void searchForADerivedKey(benchmark::State &state)
{
    const auto key = platform::audio::derivedDescription("http://lv2plug.in/plugins/eg-amp");
    std::size_t found = 0;
    for (auto _ : state)
        found = AVAudioUnitComponentManager::shared().components(key).size();
    noteRegistry(state, found);
}
BENCHMARK(searchForADerivedKey)->Unit(benchmark::kMillisecond);

/// Every component with its type: every plug-in's own data is parsed.
void searchForEverything(benchmark::State &state)
{
    std::size_t found = 0;
    for (auto _ : state)
        found = AVAudioUnitComponentManager::shared().components({}).size();
    noteRegistry(state, found);
}
BENCHMARK(searchForEverything)->Unit(benchmark::kMillisecond);

/// What instantiation asks after the search.
void findTheBundles(benchmark::State &state)
{
    std::size_t found = 0;
    for (auto _ : state)
        found = platform::audio::bundlesOfPlugin(standIn).size();
    noteRegistry(state, found);
}
BENCHMARK(findTheBundles)->Unit(benchmark::kMillisecond);

/// The peer: lilv loads every manifest and the specifications, then looks up one.
void loadAllWithLilv(benchmark::State &state)
{
    std::size_t found = 0;
    for (auto _ : state) {
        const platform::lv2::WorldPointer world(lilv_world_new());
        lilv_world_load_all(world.get());
        const platform::lv2::NodePointer uri(lilv_new_uri(world.get(), standIn));
        found = lilv_plugins_get_by_uri(lilv_world_get_all_plugins(world.get()), uri.get()) ? 1 : 0;
    }
    noteRegistry(state, found);
}
BENCHMARK(loadAllWithLilv)->Unit(benchmark::kMillisecond);

/// The peer for everything: lilv is asked for the ports of each, and so parses each
/// plug-in's own data, too.
void askAllWithLilv(benchmark::State &state)
{
    std::size_t found = 0;
    for (auto _ : state) {
        const platform::lv2::WorldPointer world(lilv_world_new());
        lilv_world_load_all(world.get());
        const LilvPlugins *const plugins = lilv_world_get_all_plugins(world.get());
        found = 0;
        LILV_FOREACH(plugins, each, plugins)
        found += lilv_plugin_get_num_ports(lilv_plugins_get(plugins, each)) > 0 ? 1U : 0U;
    }
    noteRegistry(state, found);
}
BENCHMARK(askAllWithLilv)->Unit(benchmark::kMillisecond);

} // namespace
