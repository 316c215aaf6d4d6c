#pragma once

#include "Platform/Foundation/Realtime.hpp"
#include "Platform/LV2/EventBuffer.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace platform::lv2
{

/// Gathers the host's blocks into runs of one length, for a plug-in that insists on
/// it. What comes out is late by one run. All but the construction belongs to the
/// audio callback.
class FixedRuns
{
public:
    /// What is to be gathered.
    struct Shape {
        std::size_t inputs;          ///< channels to the plug-in
        std::size_t outputs;         ///< channels from it
        std::size_t midiOutputs;     ///< ports that emit MIDI
        std::uint32_t frames;        ///< of a run
        std::uint32_t eventCapacity; ///< in bytes, of one sequence
    };

    /// Allocates all that it takes.
    explicit FixedRuns(const Shape &shape);

    /// Whether such a block is a run as it is. As long as all have been so, nothing is
    /// late; after the first that was not, everything is.
    REALTIME bool suits(std::uint32_t frames) const noexcept
    {
        return !isLate_ && frames == frames_;
    }
    /// By how many frames what comes out is late.
    REALTIME std::uint32_t delay() const noexcept { return isLate_ ? frames_ : 0; }

    /// What a run takes and gives.
    struct Run {
        const float *const *inputs; ///< one pointer a channel
        float *const *outputs;      ///< one pointer a channel
        std::uint32_t frames;       ///< always the same
        /// The first frame's place in the host's block; below zero before it.
        std::int64_t offset;
        EventBuffer &events; ///< with frames of the run
        /// One for each MIDI output, for what the run emits.
        std::vector<EventBuffer> &emitted;
    };

    /// Takes a block and gives one: `inputs` and `events`, for the whole of it, to
    /// `outputs`. Calls `run(Run)` for each run that has come together, and
    /// `emit(output, event)` for MIDI whose moment has come, both with frames of the
    /// block.
    template <typename RunOne, typename Emit>
    REALTIME void render(const float *const *inputs, float *const *outputs, std::uint32_t frames,
                         EventBuffer &events, RunOne run, Emit emit) noexcept
    {
        isLate_ = true;
        for (std::uint32_t first = 0; first < frames;) {
            const std::uint32_t count = std::min(frames - first, frames_ - filled_);
            exchange(inputs, outputs, first, count);
            const std::int64_t shift = std::int64_t{filled_} - first;
            events.forEach([&](const EventBuffer::Event &event) {
                if (event.frame >= first && event.frame < first + count)
                    gathered_.append(event.frame + shift, event.type, event.bytes);
            });
            for (std::size_t output = 0; output < emitted_.size(); ++output)
                emitted_[output].forEach([&](EventBuffer::Event event) {
                    if (event.frame >= filled_ && event.frame < filled_ + count) {
                        event.frame -= shift;
                        emit(output, event);
                    }
                });
            first += count;
            filled_ += count;
            if (filled_ < frames_)
                return;
            filled_ = 0;
            for (EventBuffer &buffer : emitted_)
                buffer.clear();
            run(Run{inputs_.pointers.data(), outputs_.pointers.data(), frames_,
                    std::int64_t{first} - frames_, gathered_, emitted_});
            gathered_.clear();
        }
    }

private:
    struct Channels {
        Channels(std::size_t count, std::uint32_t frames);
        std::vector<std::vector<float>> samples;
        std::vector<float *> pointers;
    };

    void exchange(const float *const *inputs, float *const *outputs, std::uint32_t first,
                  std::uint32_t count) noexcept;

    const std::uint32_t frames_;
    // What the next run takes, and what the last one gave.
    Channels inputs_;
    Channels outputs_;
    EventBuffer gathered_;
    std::vector<EventBuffer> emitted_;
    std::uint32_t filled_ = 0;
    bool isLate_ = false;
};

} // namespace platform::lv2
