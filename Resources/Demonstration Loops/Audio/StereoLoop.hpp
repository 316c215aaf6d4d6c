#pragma once

#include <cstddef>
#include <vector>

namespace demonstration_loops
{

/// Frames a second of everything that is rendered here.
constexpr double sampleRate = 48000.0;

/// A stretch of stereo audio whose end is its beginning. Whatever reaches past
/// the end, the tail of a note or of a room, is heard again at the start, as it
/// would be if the loop had been playing for ever.
struct StereoLoop {
    std::vector<double> left;
    std::vector<double> right;

    explicit StereoLoop(std::size_t frames) : left(frames), right(frames) {}

    /// Length in frames.
    [[nodiscard]] std::size_t frames() const { return left.size(); }

    /// Adds `other`, which has the same length, times `gain`.
    void add(const StereoLoop &other, double gain);

    /// Multiplies every sample.
    void scale(double gain);

    /// The largest absolute sample of both channels.
    [[nodiscard]] double peak() const;
};

/// Writes one voice into a loop, frame after frame, wrapping at the end.
class LoopWriter
{
public:
    LoopWriter(StereoLoop &loop, std::size_t start) : loop_(loop), position_(start % loop.frames())
    {
    }

    /// Mixes one frame in and steps on.
    void add(double left, double right)
    {
        loop_.left[position_] += left;
        loop_.right[position_] += right;
        if (++position_ == loop_.frames())
            position_ = 0;
    }

private:
    StereoLoop &loop_;
    std::size_t position_;
};

} // namespace demonstration_loops
