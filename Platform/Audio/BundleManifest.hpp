#pragma once

#include "Platform/Audio/AudioComponentDescription.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform::audio
{

/// The vocabulary in which a manifest says under which key a plug-in is
/// registered: `type`, `subtype` and `manufacturer`, codes of four ASCII
/// characters, and `flags`, a whole number.
inline constexpr std::string_view componentVocabulary = "urn:qrvx:audio-component#";

/// A plug-in as its bundle's manifest names it.
struct ManifestPlugin {
    std::string uri;
    /// The files that say more about it.
    std::vector<std::string> dataFiles;
    /// None when the manifest says nothing, or nothing whole, about its key.
    std::optional<AudioComponentDescription> description;
};

/// What a bundle's `manifest.ttl` says that concerns the registry.
struct BundleManifest {
    std::vector<ManifestPlugin> plugins;
    /// URIs of plug-ins for which the bundle holds presets and the like.
    std::vector<std::string> appliesTo;
};

/// The text of the bundle's manifest; none when it has none. One over 1 MB is
/// passed over with a line on standard error: foreign data of that size would
/// cost every search seconds.
std::optional<std::string> readManifestText(const std::string &bundle);

/// What the text says; none, with a line on standard error, when it is broken.
std::optional<BundleManifest> parseManifest(const std::string &bundle, const std::string &text);

} // namespace platform::audio
