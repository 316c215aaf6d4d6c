#pragma once

#include "Platform/Foundation/Realtime.hpp"

#include <atomic>
#include <cstdint>

namespace soak
{

/// The files that are played: each frame tells its place in the file on the left and
/// the file's number on the right, in values that 16 bits hold exactly.
struct PlaceTelling {
    static constexpr int files = 16;

    /// Frames of a file, each file of another length: 0.4 to 0.65 s at 48 kHz.
    static constexpr std::int64_t length(int file) { return 20000 + 701 * file; }
    static constexpr float left(std::int64_t frame)
    {
        return static_cast<float>(frame + 1) / 32768.0F;
    }
    static constexpr float right(int file) { return static_cast<float>(file) / 128.0F; }
};

/// Follows what is played, frame by frame, and counts whole rounds of a file and all
/// that is not as it ought to be. Counts may be read on any thread.
class LoopListener
{
public:
    /// More frames than are ever decoded ahead of what is heard.
    static constexpr std::int64_t mostAhead = 6000;

    struct Counts {
        /// Files heard to their last frame, with another or the same behind it.
        std::atomic<std::int64_t> rounds{0};
        /// Files heard from their first frame on behind one that was broken off, and
        /// how many of those were broken off so near their end that they may have been
        /// decoded to it.
        std::atomic<std::int64_t> beginnings{0};
        std::atomic<std::int64_t> brokenOffAtTheEnd{0};
        /// Frames that follow on none that they could.
        std::atomic<std::int64_t> misplaced{0};
        /// Samples that no file has.
        std::atomic<std::int64_t> foreign{0};
        /// Blocks with silence in them, while nothing was being changed.
        std::atomic<std::int64_t> silentBlocks{0};
        std::atomic<std::int64_t> sounding{0};
    };

    /// The next frames; `stride` leads from one of a channel's samples to the next. The
    /// audio callback.
    REALTIME void take(const float *left, const float *right, std::uint32_t frames,
                       std::uint32_t stride) noexcept;

    /// Whether silence is a fault from now on.
    void expectSound(bool expected) { soundIsExpected_ = expected; }

    /// What is playing is broken off. Not while the callback runs.
    void breakOff() noexcept;

    const Counts &counts() const { return counts_; }

private:
    REALTIME void follow(int file, std::int64_t frame) noexcept;
    REALTIME void begin() noexcept;
    REALTIME void noteBreak() noexcept;

    Counts counts_;
    std::atomic<bool> soundIsExpected_{false};
    int file_ = 0; // 0 before the first
    std::int64_t frame_ = 0;
};

} // namespace soak
