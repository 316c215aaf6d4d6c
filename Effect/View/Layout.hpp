#pragma once

#include "Effect/View/Geometry.hpp"
#include "Effect/View/Parameter.hpp"

#include <array>
#include <cstddef>
#include <optional>

/// Where everything on the panel stands, in points.
namespace effect::view::layout
{

constexpr double width = 720;
constexpr double height = 408;

constexpr double headerHeight = 50;
constexpr double dividerHeight = 286;

/// What a control fills, for the pointer and for what is drawn when it changes.
constexpr std::array<Box, controlCount> controls{{
    {598, 11, 98, 28},
    {258, 60, 204, 218},
    {28, 294, 88, 104},
    {124, 294, 88, 104},
    {220, 294, 88, 104},
    {316, 294, 88, 104},
    {412, 294, 88, 104},
    {508, 294, 88, 104},
    {604, 294, 88, 104},
}};

/// A rotor with its microphones and its name.
constexpr Box horn{36, 56, 212, 226};
constexpr Box drum{472, 56, 212, 226};

/// The names of the speeds around their knob; pressing one sets it.
struct SpeedMark {
    const char *label;
    float value;
    Box box;
};
constexpr std::array<SpeedMark, 3> speedMarks{{
    {"STOP", 0, {266, 204, 46, 20}},
    {"SLOW", 1, {337, 62, 46, 20}},
    {"FAST", 2, {408, 204, 46, 20}},
}};

/// A knob's axle and the radius of the arc around it.
struct Knob {
    Point axle;
    double radius;
};
/// The knob of a control other than the switch.
constexpr Knob knobOf(std::size_t control)
{
    const Point middle = controls.at(control).centre();
    return control == speedControl ? Knob{{middle.x, 154}, 60} : Knob{{middle.x, 343}, 26};
}

/// What stands at a place.
std::optional<std::size_t> controlAt(Point at);
std::optional<SpeedMark> speedMarkAt(Point at);

} // namespace effect::view::layout
