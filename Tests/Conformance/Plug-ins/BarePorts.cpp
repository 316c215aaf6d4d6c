#include "Tests/Conformance/Plug-ins/BarePorts.hpp"

#include "Tests/Conformance/Plug-ins/LilvNodes.hpp"

#include <lv2/atom/util.h>
#include <lv2/core/lv2.h>
#include <lv2/midi/midi.h>
#include <lv2/port-groups/port-groups.h>
#include <lv2/port-props/port-props.h>
#include <lv2/resize-port/resize-port.h>
#include <lv2/time/time.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string_view>

namespace conformance
{

namespace
{

constexpr std::uint32_t usualSequenceSize = 32768;
constexpr std::size_t none = static_cast<std::size_t>(-1);

std::size_t padded(std::size_t size)
{
    return (size + 7) / 8 * 8;
}

float number(const LilvNode *node, float otherwise)
{
    if (node == nullptr ||
        (!lilv_node_is_float(node) && !lilv_node_is_int(node) && !lilv_node_is_bool(node)))
        return otherwise;
    return lilv_node_is_bool(node) ? (lilv_node_as_bool(node) ? 1.0F : 0.0F)
                                   : lilv_node_as_float(node);
}

} // namespace

BarePorts::BarePorts(LilvWorld *world, const LilvPlugin *plugin, double sampleRate,
                     std::uint32_t mostFrames, const PortSymbols &symbols)
    : world_(world), plugin_(plugin), symbols_(symbols), mostFrames_(mostFrames),
      sequenceSize_(usualSequenceSize), controls_(lilv_plugin_get_num_ports(plugin), 0.0F),
      noteInput_(none)
{
    for (std::uint32_t index = 0; index < controls_.size(); ++index) {
        const LilvPort *const port = lilv_plugin_get_port_by_index(plugin, index);
        const bool isInput = is(port, LV2_CORE__InputPort);
        if (is(port, LV2_ATOM__AtomPort))
            addEvents(port, index);
        else if (is(port, LV2_CORE__ControlPort))
            addControl(port, index, sampleRate);
        else if (is(port, LV2_CORE__CVPort) || isBeside(port, isInput))
            addAudio(port, index, false);
        else if (is(port, LV2_CORE__AudioPort))
            addAudio(port, index, true);
    }
}

bool BarePorts::is(const LilvPort *port, const char *kind) const
{
    return lilv_port_is_a(plugin_, port, uriNode(world_, kind).get());
}

bool BarePorts::has(const LilvPort *port, const char *property) const
{
    return lilv_port_has_property(plugin_, port, uriNode(world_, property).get());
}

bool BarePorts::isDesignated(const LilvPort *port, const char *designation) const
{
    const NodePointer found(
        lilv_port_get(plugin_, port, uriNode(world_, LV2_CORE__designation).get()));
    return found && lilv_node_equals(found.get(), uriNode(world_, designation).get());
}

// A side chain: said of the port, or of its group, or because another group is the
// main one.
bool BarePorts::isBeside(const LilvPort *port, bool isInput) const
{
    if (has(port, LV2_CORE_PREFIX "isSideChain"))
        return true;
    const NodePointer group(
        lilv_port_get(plugin_, port, uriNode(world_, LV2_PORT_GROUPS__group).get()));
    if (!group)
        return false;
    if (lilv_world_ask(world_, group.get(), uriNode(world_, LV2_PORT_GROUPS__sideChainOf).get(),
                       nullptr))
        return true;
    const NodesPointer main(lilv_plugin_get_value(
        plugin_,
        uriNode(world_, isInput ? LV2_PORT_GROUPS__mainInput : LV2_PORT_GROUPS__mainOutput).get()));
    return lilv_nodes_size(main.get()) > 0 && !lilv_nodes_contains(main.get(), group.get());
}

void BarePorts::addAudio(const LilvPort *port, std::uint32_t index, bool isMain)
{
    if (!isMain && has(port, LV2_CORE__connectionOptional))
        return;
    auto &ports = !isMain ? others_ : is(port, LV2_CORE__InputPort) ? inputs_ : outputs_;
    // A voltage that nobody applies is the one that the plug-in names.
    float value = 0.0F;
    if (is(port, LV2_CORE__CVPort) && is(port, LV2_CORE__InputPort)) {
        LilvNode *named = nullptr;
        lilv_port_get_range(plugin_, port, &named, nullptr, nullptr);
        value = number(NodePointer(named).get(), 0.0F);
    }
    ports.push_back({index, std::vector<float>(mostFrames_, value)});
}

void BarePorts::addControl(const LilvPort *port, std::uint32_t index, double sampleRate)
{
    if (!is(port, LV2_CORE__InputPort))
        return;
    LilvNode *defaultNode = nullptr;
    LilvNode *minimumNode = nullptr;
    LilvNode *maximumNode = nullptr;
    lilv_port_get_range(plugin_, port, &defaultNode, &minimumNode, &maximumNode);
    const NodePointer defaultValue(defaultNode);
    const NodePointer minimum(minimumNode);
    const NodePointer maximum(maximumNode);
    const float scale = has(port, LV2_CORE__sampleRate) ? static_cast<float>(sampleRate) : 1.0F;
    float value = number(defaultValue.get(), number(minimum.get(), 0.0F));
    // Beyond a range that is in multiples of the sample rate it is a frequency.
    if (value <= number(maximum.get(), 1.0F))
        value *= scale;
    // Rendering is not bound to time here, and the effect is to be heard.
    if (isDesignated(port, LV2_CORE__freeWheeling) || isDesignated(port, LV2_CORE__enabled))
        value = 1.0F;
    if (has(port, LV2_PORT_PROPS__hasStrictBounds) && minimum && maximum)
        strictBounds_[index] = {scale * number(minimum.get(), 0.0F),
                                scale * number(maximum.get(), 0.0F)};
    const NodePointer designation(
        lilv_port_get(plugin_, port, uriNode(world_, LV2_CORE__designation).get()));
    if (designation &&
        std::string_view(lilv_node_as_string(designation.get())).starts_with(LV2_TIME_PREFIX))
        timeControls_[index] = lilv_node_as_string(designation.get());
    controls_[index] = value;
    controlInputs_[lilv_node_as_string(lilv_port_get_symbol(plugin_, port))] = index;
}

void BarePorts::addEvents(const LilvPort *port, std::uint32_t index)
{
    const bool isInput = is(port, LV2_CORE__InputPort);
    const bool hasMIDI =
        lilv_port_supports_event(plugin_, port, uriNode(world_, LV2_MIDI__MidiEvent).get());
    const NodePointer wanted(
        lilv_port_get(plugin_, port, uriNode(world_, LV2_RESIZE_PORT__minimumSize).get()));
    const auto size = static_cast<std::uint32_t>(
        std::max(number(wanted.get(), 0.0F), static_cast<float>(usualSequenceSize)));
    sequenceSize_ = std::max(sequenceSize_, size);
    if (isInput && hasMIDI && (noteInput_ == none || isDesignated(port, LV2_CORE__control)))
        noteInput_ = events_.size();
    const bool takesTime = isInput && lilv_port_supports_event(
                                          plugin_, port, uriNode(world_, LV2_TIME__Position).get());
    takesTime_ |= takesTime;
    events_.push_back(
        {index, isInput, hasMIDI, takesTime, std::vector<std::uint64_t>(padded(size) / 8)});
}

void BarePorts::connect(LilvInstance *instance)
{
    for (std::uint32_t index = 0; index < controls_.size(); ++index) {
        const LilvPort *const port = lilv_plugin_get_port_by_index(plugin_, index);
        const bool isControl = is(port, LV2_CORE__ControlPort) && !is(port, LV2_ATOM__AtomPort);
        lilv_instance_connect_port(instance, index, isControl ? &controls_[index] : nullptr);
    }
    for (auto *ports : {&inputs_, &outputs_, &others_})
        for (Audio &audio : *ports)
            lilv_instance_connect_port(instance, audio.port, audio.samples.data());
    for (Events &events : events_)
        lilv_instance_connect_port(instance, events.port, events.sequence());
}

void BarePorts::clear()
{
    for (Events &events : events_) {
        LV2_Atom_Sequence &sequence = *events.sequence();
        if (events.isInput)
            sequence = {{sizeof(LV2_Atom_Sequence_Body), symbols_.sequence}, {0, 0}};
        else
            sequence.atom = {static_cast<std::uint32_t>(8 * events.words.size() - sizeof(LV2_Atom)),
                             symbols_.chunk};
    }
}

void BarePorts::append(LV2_Atom_Sequence &sequence, std::int64_t frame, LV2_URID type,
                       std::span<const std::uint8_t> bytes)
{
    LV2_Atom_Event event{};
    event.time.frames = frame;
    event.body = {static_cast<std::uint32_t>(bytes.size()), type};
    auto *const place =
        reinterpret_cast<std::byte *>(&sequence) + sizeof(LV2_Atom) + sequence.atom.size;
    std::memcpy(place, &event, sizeof event);
    std::memcpy(place + sizeof event, bytes.data(), bytes.size());
    sequence.atom.size += static_cast<std::uint32_t>(sizeof event + padded(bytes.size()));
}

void BarePorts::prepare(std::span<const Note> notes)
{
    clear();
    addNotes(notes);
}

void BarePorts::addNotes(std::span<const Note> notes)
{
    if (noteInput_ == none)
        return;
    for (const Note &note : notes)
        append(*events_[noteInput_].sequence(), note.frame, symbols_.midiEvent,
               {note.bytes.data(), note.bytes.size()});
}

void BarePorts::prepare(std::span<const Note> notes, BarePosition &position, bool isNews)
{
    for (const auto &[port, designation] : timeControls_)
        if (const double *value = position.value(designation))
            controls_[port] = static_cast<float>(*value);
    clear();
    if (isNews && takesTime_)
        addPosition(*position.object());
    addNotes(notes);
}

void BarePorts::addPosition(const LV2_Atom &object)
{
    for (Events &events : events_)
        if (events.takesTime)
            append(*events.sequence(), 0, object.type,
                   {static_cast<const std::uint8_t *>(LV2_ATOM_BODY_CONST(&object)), object.size});
}

void BarePorts::forEachEmitted(const std::function<void(std::int64_t, std::uint8_t,
                                                        std::span<const std::uint8_t>)> &take) const
{
    std::uint8_t output = 0;
    for (const Events &events : events_) {
        if (events.isInput || !events.hasMIDI)
            continue;
        const auto *const sequence =
            reinterpret_cast<const LV2_Atom_Sequence *>(events.words.data());
        if (sequence->atom.type == symbols_.sequence)
            LV2_ATOM_SEQUENCE_FOREACH(sequence, event)
            {
                const auto *const bytes = reinterpret_cast<const std::uint8_t *>(event + 1);
                if (event->body.type == symbols_.midiEvent && event->body.size > 0)
                    take(event->time.frames, output, {bytes, event->body.size});
            }
        ++output;
    }
}

const float *BarePorts::control(const std::string &symbol) const
{
    const auto found = controlInputs_.find(symbol);
    return found == controlInputs_.end() ? nullptr : &controls_[found->second];
}

void BarePorts::setControl(const std::string &symbol, float value)
{
    const auto found = controlInputs_.find(symbol);
    if (found == controlInputs_.end())
        return;
    const auto bounds = strictBounds_.find(found->second);
    controls_[found->second] =
        bounds == strictBounds_.end()
            ? value
            : std::clamp(value, bounds->second.first,
                         std::max(bounds->second.first, bounds->second.second));
}

} // namespace conformance
