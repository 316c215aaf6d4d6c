#pragma once

namespace effect::view
{

/// A rotor as it is shown. The plug-in tells its angle and speed once in a while; in
/// between the rotor runs on at that speed, and what jitters in the telling is evened
/// out. Turns, turns a second, and seconds of any steady clock.
class RotorMotion
{
public:
    /// For how long a rotor of which nothing is heard runs on.
    static constexpr double patience = 0.25;

    void reportAngle(double turns, double now);
    void reportSpeed(double turnsPerSecond);

    /// Comes to the time; whether the rotor looks different from when that was last so.
    bool advance(double now);

    /// Within [0, 1).
    double angle() const { return shown_; }
    double speed() const { return speed_; }

private:
    double reported_ = 0;
    double reportedAt_ = 0;
    bool isKnown_ = false;
    double speed_ = 0;
    double shown_ = 0;
    double shownAt_ = 0;
    double seen_ = 0;
    double seenSpeed_ = 0;
};

} // namespace effect::view
