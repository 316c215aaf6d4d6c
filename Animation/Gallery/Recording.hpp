#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace animation::gallery
{

/// A curve as an animator runs along it from 0 to 1: one value a frame, the first
/// and the last included.
struct CurveRecording {
    std::string name;
    std::vector<float> values;
};

/// One value over the ticks of a timeline.
struct Lane {
    std::string name;
    /// The curve, the length, the place: what made it so.
    std::string note;
    /// The value after each tick from `firstTick` on.
    std::int64_t firstTick = 0;
    std::vector<float> values;
    /// Ticks on which something happened: an end, a bounce.
    std::vector<std::int64_t> marks;
};

/// What a container, or an impulse, did from its first tick to its last.
struct TimelineRecording {
    std::string title;
    std::string caption;
    std::vector<Lane> lanes;
    std::int64_t ticks = 0;
};

/// All curves, each in `frames` frames, in the order of their raw values.
std::vector<CurveRecording> recordCurves(std::int64_t frames);

/// Stack, chain, sequencer and impulse at work. They run on timers that are turned by
/// hand; no driver may be in use.
std::vector<TimelineRecording> recordTimelines();

} // namespace animation::gallery
