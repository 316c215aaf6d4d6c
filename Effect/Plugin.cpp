#include "Effect/Plugin.hpp"

#include "Effect/FlushDenormals.hpp"

#include <lv2/atom/util.h>
#include <lv2/midi/midi.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace effect
{

Plugin::Plugin(double sampleRate, const LV2_URID_Map &map)
    : urids_{map.map(map.handle, LV2_ATOM__Sequence), map.map(map.handle, LV2_MIDI__MidiEvent)},
      cabinet_(sampleRate)
{
}

void Plugin::connectPort(std::uint32_t index, void *data)
{
    if (index < ports_.size()) {
        ports_[index] = data;
    }
}

void Plugin::activate()
{
    steering_.reset();
    fresh_ = true;
}

void Plugin::run(std::uint32_t frames)
{
    const FlushDenormals flush;
    done_ = 0;
    readControls();
    applySettings();
    if (fresh_) {
        cabinet_.reset();
        fresh_ = false;
    }
    openTurns();
    processEvents(frames);
    processTo(frames);
    report();
}

float Plugin::control(const ControlRange &range) const
{
    const auto *value = data<const float>(range.port);
    if (value == nullptr || std::isnan(*value)) {
        return range.standard;
    }
    return std::clamp(*value, range.least, range.most);
}

void Plugin::readControls()
{
    std::array<float, controlRanges.size()> values;
    std::transform(controlRanges.begin(), controlRanges.end(), values.begin(),
                   [this](const ControlRange &range) { return control(range); });
    const auto value = [&values](Port port) {
        return values[static_cast<std::size_t>(port) - static_cast<std::size_t>(firstControl)];
    };
    steering_.setParameter(value(Port::speed));
    settings_.depth = value(Port::depth);
    settings_.balance = value(Port::balance);
    settings_.drive = value(Port::drive);
    settings_.spread = value(Port::spread);
    settings_.inertia = value(Port::inertia);
    settings_.mix = value(Port::enabled) > 0 ? value(Port::mix) : 0;
    settings_.level = value(Port::level);
}

void Plugin::applySettings()
{
    settings_.speed = steering_.position();
    cabinet_.setSettings(settings_);
}

void Plugin::openTurns()
{
    auto *turns = data<LV2_Atom_Sequence>(Port::turns);
    turnsCapacity_ = 0;
    if (turns != nullptr && turns->atom.size >= sizeof(LV2_Atom_Sequence_Body)) {
        // The host says in the atom's size how much room follows its header.
        turnsCapacity_ = turns->atom.size;
        turns->atom.type = urids_.sequence;
        turns->body.unit = 0;
        turns->body.pad = 0;
        lv2_atom_sequence_clear(turns);
    }
}

void Plugin::processEvents(std::uint32_t frames)
{
    const auto *events = data<const LV2_Atom_Sequence>(Port::events);
    if (events == nullptr || events->atom.type != urids_.sequence) {
        return;
    }
    LV2_ATOM_SEQUENCE_FOREACH(events, event)
    {
        if (event->body.type == urids_.midiEvent) {
            const std::int64_t frame = event->time.frames;
            processTo(static_cast<std::uint32_t>(
                std::clamp(frame, std::int64_t{done_}, std::int64_t{frames})));
            steering_.receive(static_cast<const std::uint8_t *>(LV2_ATOM_BODY_CONST(&event->body)),
                              event->body.size);
            applySettings();
        }
    }
}

void Plugin::processTo(std::uint32_t frame)
{
    if (frame > done_) {
        cabinet_.process(data<const float>(Port::leftIn) + done_,
                         data<const float>(Port::rightIn) + done_,
                         data<float>(Port::leftOut) + done_, data<float>(Port::rightOut) + done_,
                         frame - done_, *this);
        done_ = frame;
    }
}

void Plugin::turned(std::uint32_t frame)
{
    if (turnsCapacity_ == 0) {
        return;
    }
    struct {
        LV2_Atom_Event event;
        std::array<std::uint8_t, 8> bytes;
    } message{};
    message.event.time.frames = std::int64_t{done_} + frame;
    message.event.body.type = urids_.midiEvent;
    message.event.body.size = static_cast<std::uint32_t>(turnMessage.size());
    std::copy(turnMessage.begin(), turnMessage.end(), message.bytes.begin());
    // Without room the turn goes unreported.
    lv2_atom_sequence_append_event(data<LV2_Atom_Sequence>(Port::turns), turnsCapacity_,
                                   &message.event);
}

void Plugin::report() const
{
    set(Port::hornAngle, cabinet_.horn().angle());
    set(Port::hornSpeed, cabinet_.horn().speed());
    set(Port::drumAngle, cabinet_.drum().angle());
    set(Port::drumSpeed, cabinet_.drum().speed());
}

void Plugin::set(Port port, double value) const
{
    if (auto *destination = data<float>(port)) {
        *destination = static_cast<float>(value);
    }
}

} // namespace effect
