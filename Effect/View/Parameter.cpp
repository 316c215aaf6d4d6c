#include "Effect/View/Parameter.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace effect::view
{

namespace
{

constexpr const char *minus = "\u2212";

/// `std::to_chars`, since printing follows the locale that the host has set.
std::string digits(double magnitude, int decimals)
{
    std::array<char, 32> text{};
    const auto result = std::to_chars(text.data(), text.data() + text.size(), magnitude,
                                      std::chars_format::fixed, decimals);
    return {text.data(), result.ptr};
}

double rounded(double value, int decimals)
{
    const double scale = std::pow(10.0, decimals);
    return std::round(value * scale) / scale;
}

std::string percent(double part)
{
    return digits(std::round(std::abs(part) * 100), 0) + " %";
}

std::string speedSetting(float value)
{
    constexpr std::array<const char *, 3> marks{"Stop", "Slow", "Fast"};
    const double shown = rounded(value, 2);
    const double mark = std::round(shown);
    return shown == mark ? marks.at(static_cast<std::size_t>(mark)) : digits(shown, 2);
}

std::string balance(float value)
{
    if (std::round(value * 100) == 0) {
        return "Both";
    }
    return (value < 0 ? "Drum " : "Horn ") + percent(value);
}

std::string decibels(float value)
{
    const double shown = rounded(value, 1);
    const std::string sign = shown < 0 ? minus : shown > 0 ? "+" : "";
    return sign + digits(std::abs(shown), 1) + " dB";
}

float brought(const ControlRange &range, double value)
{
    return std::clamp(static_cast<float>(value), range.least, range.most);
}

/// The value at `count` of `whole` equal parts of the way; one division, so that the
/// grid's lines are as exact as they can be.
float valueOnGrid(std::size_t control, double count, double whole)
{
    const ControlRange &range = controlRanges.at(control);
    const double least = range.least;
    const double most = range.most;
    if (parameters.at(control).taper == Taper::logarithmic) {
        return brought(range, least * std::pow(most / least, count / whole));
    }
    return brought(range, least + (most - least) * count / whole);
}

} // namespace

std::optional<std::size_t> controlOf(std::uint32_t port)
{
    const auto first = static_cast<std::uint32_t>(firstControl);
    if (port < first || port - first >= controlCount) {
        return std::nullopt;
    }
    return port - first;
}

double positionOf(std::size_t control, float value)
{
    const ControlRange &range = controlRanges.at(control);
    const double inside = std::clamp(value, range.least, range.most);
    if (parameters.at(control).taper == Taper::logarithmic) {
        return std::log(inside / range.least) /
               std::log(static_cast<double>(range.most) / range.least);
    }
    return (inside - range.least) / (static_cast<double>(range.most) - range.least);
}

float valueAt(std::size_t control, double position)
{
    return valueOnGrid(control, std::clamp(position, 0.0, 1.0), 1);
}

float stepped(std::size_t control, float value, int steps, bool fine)
{
    const int grid = parameters.at(control).steps * (fine ? 10 : 1);
    // Wider than a float's rounding, narrower than anyone's step.
    constexpr double slack = 1e-3;
    const double place = positionOf(control, value) * grid;
    const double line = steps > 0 ? std::floor(place + slack) : std::ceil(place - slack);
    return valueOnGrid(control, std::clamp(line + steps, 0.0, static_cast<double>(grid)), grid);
}

std::string textOf(std::size_t control, float value)
{
    switch (parameters.at(control).port) {
    case Port::enabled:
        return value > 0 ? "On" : "Bypass";
    case Port::speed:
        return speedSetting(value);
    case Port::balance:
        return balance(value);
    case Port::spread:
        return digits(std::round(value), 0) + "\u00B0";
    case Port::inertia:
        return "\u00D7 " + digits(value, 2);
    case Port::level:
        return decibels(value);
    default:
        return percent(value);
    }
}

std::string speedText(double speed)
{
    return digits(std::abs(speed), 2) + " Hz";
}

} // namespace effect::view
