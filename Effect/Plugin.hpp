#pragma once

#include "Effect/Ports.hpp"
#include "Effect/RotaryCabinet.hpp"
#include "Effect/SpeedSteering.hpp"
#include "Platform/Foundation/Realtime.hpp"

#include <lv2/atom/atom.h>
#include <lv2/urid/urid.h>

#include <array>
#include <cstdint>

namespace effect
{

/// The cabinet as an LV2 plug-in: ports, MIDI in and out. One instance is used by
/// one thread at a time, as LV2 has it; `run` is real-time safe.
class Plugin final : private TurnListener
{
public:
    static constexpr const char *uri = "urn:qrvx:parvane";
    static constexpr double lowestRate = 1000;
    static constexpr double highestRate = 1536000;

    Plugin(double sampleRate, const LV2_URID_Map &map);

    REALTIME void connectPort(std::uint32_t index, void *data);
    REALTIME void activate();
    REALTIME void run(std::uint32_t frames);

private:
    struct Urids {
        LV2_URID sequence;
        LV2_URID midiEvent;
    };

    REALTIME void turned(std::uint32_t frame) override;

    template <typename Data>
    Data *data(Port port) const
    {
        return static_cast<Data *>(ports_[static_cast<std::size_t>(port)]);
    }
    REALTIME float control(const ControlRange &range) const;
    REALTIME void readControls();
    REALTIME void applySettings();
    REALTIME void openTurns();
    REALTIME void processEvents(std::uint32_t frames);
    REALTIME void processTo(std::uint32_t frame);
    REALTIME void report() const;
    REALTIME void set(Port port, double value) const;

    Urids urids_;
    std::array<void *, portCount> ports_{};
    RotaryCabinet cabinet_;
    SpeedSteering steering_;
    CabinetSettings settings_;
    bool fresh_ = true;

    /// Of the block in hand: frames done, and room in the turns' sequence.
    std::uint32_t done_ = 0;
    std::uint32_t turnsCapacity_ = 0;
};

} // namespace effect
