#include "Platform/Audio/ComponentRegistry.hpp"

#include "Platform/Audio/BundleManifest.hpp"
#include "Platform/Audio/DerivedDescription.hpp"
#include "Platform/Audio/LV2Path.hpp"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

namespace platform::audio
{

namespace
{

bool matchesCode(std::uint32_t wanted, std::uint32_t code)
{
    return wanted == 0 || wanted == code;
}

bool matchesButType(const AudioComponentDescription &key, const AudioComponentDescription &found)
{
    return matchesCode(key.componentSubType, found.componentSubType) &&
           matchesCode(key.componentManufacturer, found.componentManufacturer) &&
           (key.componentFlags & key.componentFlagsMask) ==
               (found.componentFlags & key.componentFlagsMask);
}

bool matches(const AudioComponentDescription &key, const AudioComponentDescription &found)
{
    return matchesCode(key.componentType, found.componentType) && matchesButType(key, found);
}

bool saysAnyKey(const std::string &manifestText)
{
    return manifestText.find(componentVocabulary) != std::string::npos;
}

/// The plug-ins that a search has to look at.
std::vector<ManifestPlugin> candidates(bool onlyWithKey)
{
    std::vector<ManifestPlugin> plugins;
    for (const std::string &bundle : lv2Bundles()) {
        const auto text = readManifestText(bundle);
        if (!text || (onlyWithKey && !saysAnyKey(*text)))
            continue;
        if (auto manifest = parseManifest(bundle, *text))
            std::move(manifest->plugins.begin(), manifest->plugins.end(),
                      std::back_inserter(plugins));
    }
    return plugins;
}

std::set<std::string> withKey(const std::vector<ManifestPlugin> &plugins)
{
    std::set<std::string> uris;
    for (const ManifestPlugin &plugin : plugins)
        if (plugin.description)
            uris.insert(plugin.uri);
    return uris;
}

std::optional<AudioComponentDescription> derivedMatch(const AudioComponentDescription &key,
                                                      const ManifestPlugin &plugin,
                                                      DerivedTypes &types)
{
    AudioComponentDescription description = derivedDescription(plugin.uri);
    // The type costs reading the plug-in's own data: only where the rest fits.
    if (!matchesButType(key, description))
        return std::nullopt;
    description.componentType = types.typeOf(plugin.uri, plugin.dataFiles);
    if (!matches(key, description))
        return std::nullopt;
    return description;
}

} // namespace

std::vector<AVAudioUnitComponent> findComponents(const AudioComponentDescription &key)
{
    const std::vector<ManifestPlugin> plugins = candidates(!mayBeDerived(key));
    const std::set<std::string> keyed = withKey(plugins);
    std::set<std::string> seen;
    DerivedTypes types;
    std::vector<AVAudioUnitComponent> components;
    for (const ManifestPlugin &plugin : plugins) {
        if (!plugin.description && keyed.count(plugin.uri) > 0)
            continue;
        if (!seen.insert(plugin.uri).second)
            continue;
        if (!plugin.description) {
            if (const auto description = derivedMatch(key, plugin, types))
                components.emplace_back(*description, plugin.uri);
        } else if (matches(key, *plugin.description)) {
            components.emplace_back(*plugin.description, plugin.uri);
        }
    }
    std::stable_partition(
        components.begin(), components.end(),
        [](const AVAudioUnitComponent &each) { return each.pluginURI() != standInPluginURI; });
    return components;
}

std::vector<std::string> bundlesOfPlugin(const std::string &pluginURI)
{
    std::optional<std::string> own;
    bool ownHasKey = false;
    std::vector<std::string> others;
    for (const std::string &bundle : lv2Bundles()) {
        const auto text = readManifestText(bundle);
        const auto manifest = text ? parseManifest(bundle, *text) : std::nullopt;
        if (!manifest)
            continue;
        const auto plugin =
            std::find_if(manifest->plugins.begin(), manifest->plugins.end(),
                         [&](const ManifestPlugin &each) { return each.uri == pluginURI; });
        const bool hasKey = plugin != manifest->plugins.end() && plugin->description;
        if (plugin != manifest->plugins.end() && (!own || (hasKey && !ownHasKey))) {
            own = bundle;
            ownHasKey = hasKey;
        } else if (plugin == manifest->plugins.end() &&
                   std::find(manifest->appliesTo.begin(), manifest->appliesTo.end(), pluginURI) !=
                       manifest->appliesTo.end()) {
            others.push_back(bundle);
        }
    }
    if (!own)
        return {};
    others.insert(others.begin(), *own);
    return others;
}

} // namespace platform::audio
