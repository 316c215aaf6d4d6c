#pragma once

#include "Tests/Conformance/Plug-ins/BarePosition.hpp"
#include "Tests/Conformance/Plug-ins/TestSignal.hpp"

#include <lilv/lilv.h>
#include <lv2/atom/atom.h>
#include <lv2/urid/urid.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace conformance
{

/// The URIDs that ports have to do with.
struct PortSymbols {
    LV2_URID sequence;
    LV2_URID chunk;
    LV2_URID midiEvent;
};

/// Memory for every port of an instance, as lilv describes them.
class BarePorts
{
public:
    BarePorts(LilvWorld *world, const LilvPlugin *plugin, double sampleRate,
              std::uint32_t mostFrames, const PortSymbols &symbols);

    /// Connects all of them.
    void connect(LilvInstance *instance);

    std::size_t inputs() const { return inputs_.size(); }
    std::size_t outputs() const { return outputs_.size(); }
    float *input(std::size_t channel) { return inputs_[channel].samples.data(); }
    const float *output(std::size_t channel) const { return outputs_[channel].samples.data(); }

    /// Before a run: events with their frames for the MIDI input, empty outputs.
    void prepare(std::span<const Note> notes);
    /// Whether there are ports for a position.
    bool takePosition() const { return takesTime_ || !timeControls_.empty(); }
    /// Instead of `prepare`, where there are; events get it when it is news.
    void prepare(std::span<const Note> notes, BarePosition &position, bool isNews);
    /// After a run: calls `take` with frame, output and bytes of all MIDI.
    void forEachEmitted(const std::function<void(std::int64_t, std::uint8_t,
                                                 std::span<const std::uint8_t>)> &take) const;

    /// The value of a control input, for lilv's state functions.
    const float *control(const std::string &symbol) const;
    void setControl(const std::string &symbol, float value);

    std::uint32_t sequenceSize() const { return sequenceSize_; }

private:
    struct Audio {
        std::uint32_t port;
        std::vector<float> samples;
    };
    struct Events {
        std::uint32_t port;
        bool isInput;
        bool hasMIDI;
        bool takesTime;
        std::vector<std::uint64_t> words;

        LV2_Atom_Sequence *sequence()
        {
            return reinterpret_cast<LV2_Atom_Sequence *>(words.data());
        }
    };

    bool is(const LilvPort *port, const char *kind) const;
    bool has(const LilvPort *port, const char *property) const;
    bool isDesignated(const LilvPort *port, const char *designation) const;
    bool isBeside(const LilvPort *port, bool isInput) const;
    void addAudio(const LilvPort *port, std::uint32_t index, bool isMain);
    void addControl(const LilvPort *port, std::uint32_t index, double sampleRate);
    void clear();
    void addNotes(std::span<const Note> notes);
    void addPosition(const LV2_Atom &object);
    static void append(LV2_Atom_Sequence &sequence, std::int64_t frame, LV2_URID type,
                       std::span<const std::uint8_t> bytes);
    void addEvents(const LilvPort *port, std::uint32_t index);

    LilvWorld *world_;
    const LilvPlugin *plugin_;
    PortSymbols symbols_;
    std::uint32_t mostFrames_;
    std::uint32_t sequenceSize_;
    std::vector<Audio> inputs_;
    std::vector<Audio> outputs_;
    std::vector<Audio> others_;
    std::vector<float> controls_; // by port
    std::map<std::string, std::uint32_t> controlInputs_;
    // The designation by port.
    std::map<std::uint32_t, std::string> timeControls_;
    // The range by port, where values beyond it are not to get through.
    std::map<std::uint32_t, std::pair<float, float>> strictBounds_;
    bool takesTime_ = false;
    std::vector<Events> events_;
    // Where notes go: the port for control if it takes MIDI, else the first that does.
    std::size_t noteInput_;
};

} // namespace conformance
