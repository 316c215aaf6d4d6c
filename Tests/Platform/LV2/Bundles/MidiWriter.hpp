#pragma once

#include "TestPlugin.hpp"

#include <lv2/atom/atom.h>
#include <lv2/midi/midi.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace testplugin
{

inline std::uint32_t padded(std::uint32_t size)
{
    return (size + 7U) & ~7U;
}

/// Writes MIDI, and other events, into the sequence of an output port.
class MidiWriter
{
public:
    explicit MidiWriter(const LV2_Feature *const *features)
        : midi_(map(features, LV2_MIDI__MidiEvent)), sequence_(map(features, LV2_ATOM__Sequence))
    {
    }

    LV2_URID midi() const { return midi_; }

    void begin(LV2_Atom_Sequence &out)
    {
        out_ = &out;
        room_ = out.atom.size;
        out.atom.type = sequence_;
        out.atom.size = sizeof(LV2_Atom_Sequence_Body);
        out.body = {};
    }

    /// What may follow the port's head, if it is not what it was at the beginning.
    void setRoom(std::uint32_t room) { room_ = room; }

    /// Answers false when there is no room.
    bool emit(std::int64_t frame, const void *bytes, std::uint32_t size)
    {
        return emit(frame, bytes, size, midi_);
    }

    bool emit(std::int64_t frame, const void *bytes, std::uint32_t size, LV2_URID type)
    {
        const auto whole = static_cast<std::uint32_t>(sizeof(LV2_Atom_Event)) + padded(size);
        if (out_->atom.size + whole > room_)
            return false;
        auto *end = reinterpret_cast<std::byte *>(out_) + sizeof(LV2_Atom) + out_->atom.size;
        LV2_Atom_Event event{};
        event.time.frames = frame;
        event.body = {size, type};
        std::memcpy(end, &event, sizeof event);
        std::memcpy(end + sizeof event, bytes, size);
        out_->atom.size += whole;
        return true;
    }

private:
    LV2_URID midi_;
    LV2_URID sequence_;
    LV2_Atom_Sequence *out_ = nullptr;
    std::uint32_t room_ = 0;
};

} // namespace testplugin
