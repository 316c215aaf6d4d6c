#pragma once

#include "Effect/Ports.hpp"

#include <array>
#include <cstddef>
#include <optional>
#include <string>

namespace effect::view
{

enum class Taper { linear, logarithmic };

/// How a control input is shown and operated. Its range is that of `controlRanges`.
struct Parameter {
    Port port;
    const char *label;
    Taper taper;
    /// The value at which the arc around the knob begins.
    float origin;
    /// How many equal steps of the knob's way make its whole range, and how many of
    /// them a notch of the wheel and a page key move.
    int steps;
    int wheel;
    int page;
};

constexpr std::size_t controlCount = controlRanges.size();
constexpr std::size_t enabledControl = 0;
constexpr std::size_t speedControl = 1;
constexpr std::size_t spreadControl = 5;

/// In the order of `controlRanges`, which is also that of the keyboard.
constexpr std::array<Parameter, controlCount> parameters{{
    {Port::enabled, "Enabled", Taper::linear, 0, 1, 1, 1},
    {Port::speed, "Speed", Taper::linear, 0, 200, 5, 100},
    {Port::depth, "Depth", Taper::linear, 0, 100, 2, 10},
    {Port::balance, "Balance", Taper::linear, 0, 200, 4, 20},
    {Port::drive, "Drive", Taper::linear, 0, 100, 2, 10},
    {Port::spread, "Spread", Taper::linear, 0, 180, 5, 15},
    {Port::inertia, "Inertia", Taper::logarithmic, 1, 80, 2, 20},
    {Port::mix, "Mix", Taper::linear, 0, 100, 2, 10},
    {Port::level, "Level", Taper::linear, 0, 72, 2, 6},
}};
static_assert(parameters[enabledControl].port == Port::enabled &&
              parameters[speedControl].port == Port::speed &&
              parameters[spreadControl].port == Port::spread);

/// The control of a port, none for a port that is not a control input.
std::optional<std::size_t> controlOf(std::uint32_t port);

/// The knob's way, 0 to 1, for a value of the control; values outside are brought in.
double positionOf(std::size_t control, float value);
/// The value at a place on the knob's way; places outside are brought in.
float valueAt(std::size_t control, double position);

/// The value some steps on, up or down. Steps lie on a grid, so that a value beside it
/// goes to the grid's next line first; a fine step is a tenth.
float stepped(std::size_t control, float value, int steps, bool fine);

/// The value in its unit: "75 %", "−3.5 dB", "Horn 40 %". The same in every locale.
std::string textOf(std::size_t control, float value);
/// A rotor's speed, given in turns a second: "6.70 Hz".
std::string speedText(double speed);

} // namespace effect::view
