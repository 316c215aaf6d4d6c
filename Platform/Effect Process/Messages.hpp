#pragma once

#include "Platform/Effect Process/LinkMemory.hpp"
#include "Platform/Effect Process/MessageCoding.hpp"
#include "Platform/LV2/State.hpp"
#include "Platform/LV2/ViewSize.hpp"

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

/// What the host and the effect's process say to each other, beside the audio.
namespace platform::effect
{

/// What a message is about; behind each stands what its body holds and what answers it.
enum class MessageKind : std::uint32_t {
    // Requests of the host. Each gets one answer or refusal of the same number, in
    // the order of the requests.
    instantiate,    // Instantiation -> Description
    prepare,        // Preparation, with the link's memory -> nothing
    listPresets,    // nothing -> std::vector<std::string>
    loadPreset,     // std::uint64_t -> bool, whether there is such a preset
    setContextName, // std::optional<std::string> -> nothing
    setOffline,     // bool -> nothing
    end,            // nothing -> nothing; the process ends
    // Wishes of the host for the effect's view. They get no answer; their number is
    // that of the opening.
    openView,   // ViewPlace
    closeView,  // nothing
    resizeView, // lv2::ViewSize
    // Of the effect.
    answer,
    refusal,   // std::string, why
    settings,  // lv2::State as it is now; answers nothing
    workHangs, // nothing; what it does beside the audio takes longer than it may
    // Of its view, with the number of the opening. The first size means that it is open.
    viewResized, // ViewShape; answers `resizeView`, or comes by itself
    viewClosed,  // std::string, why, unless the host wanted it
    viewWaits,   // nothing; it is closed for a moment, while its instance is replaced
    viewLives,   // nothing, once in `viewPulse`
};

/// How often a view that is open says so, unless it is busy.
inline constexpr std::chrono::seconds viewPulse{1};

/// The format that blocks are rendered in.
struct Preparation {
    double sampleRate = 0.0;         ///< in Hz
    std::uint32_t maximumFrames = 0; ///< of a block
    bool isOffline = false;          ///< rendering is not bound to time
    LinkShape shape;                 ///< of the memory that blocks go through
};

/// All that brings an effect to where it is to be.
struct Instantiation {
    std::string uri;                        ///< of the plug-in
    std::vector<std::string> bundles;       ///< paths: its own, and those of its presets
    std::string scratchFolder;              ///< the path where its state may put files
    std::uint64_t workLimit = 0;            ///< for a piece of a worker's work, in ms
    std::optional<std::string> contextName; ///< what the host calls the context it runs in
    std::optional<lv2::State> state;        ///< none: its default one
    /// MIDI messages that lead the first block.
    std::vector<std::vector<std::uint8_t>> midi;
    Preparation preparation; ///< the format it is made for
    /// Whether blocks are to be rendered at once: the link's memory comes with it.
    bool hasLink = false;
};

/// What the host needs to know of an effect.
struct Description {
    std::string name;                         ///< what people call it
    std::uint32_t inputs = 0;                 ///< channels of the main signal
    std::uint32_t outputs = 0;                ///< channels of the main signal
    bool takesMIDI = false;                   ///< it has a port for MIDI
    std::vector<std::string> midiOutputNames; ///< one for each output
    /// Whether it has a view of its own that can be shown.
    bool hasView = false;
};

/// Where the effect's view is to be.
struct ViewPlace {
    /// The X window around it.
    std::uint64_t window = 0;
    /// Pixels a point.
    float scale = 1.0F;
};

/// What the effect's view looks like from outside.
struct ViewShape {
    lv2::ViewSize size; ///< as it is now
    /// Whether a person may give it another size.
    bool isResizable = false;
};

template <>
struct Fields<lv2::ViewSize> {
    static auto of(auto &s) { return std::tie(s.width, s.height); }
};

template <>
struct Fields<ViewPlace> {
    static auto of(auto &p) { return std::tie(p.window, p.scale); }
};

template <>
struct Fields<ViewShape> {
    static auto of(auto &s) { return std::tie(s.size, s.isResizable); }
};

template <>
struct Fields<LinkShape> {
    static auto of(auto &s)
    {
        return std::tie(s.inputs, s.outputs, s.maximumFrames, s.midiOutputs);
    }
};

template <>
struct Fields<Preparation> {
    static auto of(auto &p)
    {
        return std::tie(p.sampleRate, p.maximumFrames, p.isOffline, p.shape);
    }
};

template <>
struct Fields<lv2::State::Property> {
    static auto of(auto &p) { return std::tie(p.type, p.flags, p.value); }
};

template <>
struct Fields<lv2::State> {
    static auto of(auto &s) { return std::tie(s.properties, s.controls); }
};

template <>
struct Fields<Instantiation> {
    static auto of(auto &i)
    {
        return std::tie(i.uri, i.bundles, i.scratchFolder, i.workLimit, i.contextName, i.state,
                        i.midi, i.preparation, i.hasLink);
    }
};

template <>
struct Fields<Description> {
    static auto of(auto &d)
    {
        return std::tie(d.name, d.inputs, d.outputs, d.takesMIDI, d.midiOutputNames, d.hasView);
    }
};

} // namespace platform::effect
