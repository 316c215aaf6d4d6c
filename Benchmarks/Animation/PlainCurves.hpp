#pragma once

#include <cmath>
#include <numbers>

/// The textbook easing curves from 0 to 1 in plain floats: what a program would write
/// that wanted nothing but speed. Not the kit's own: those keep an order of operations.
namespace plain
{

using Curve = float (*)(float progress);

inline float linear(float u)
{
    return u;
}
template <int Exponent>
float power(float u)
{
    float value = u;
    for (int i = 1; i < Exponent; ++i)
        value *= u;
    return value;
}
inline float sine(float u)
{
    return 1 - std::cos(u * std::numbers::pi_v<float> / 2);
}
inline float expo(float u)
{
    return u == 0 ? 0 : std::pow(2.0F, 10 * (u - 1));
}
inline float circ(float u)
{
    return 1 - std::sqrt(1 - u * u);
}
inline float elastic(float u)
{
    if (u == 0 || u == 1)
        return u;
    constexpr float angle = 2 * std::numbers::pi_v<float> / 0.3F;
    return -std::pow(2.0F, 10 * (u - 1)) * std::sin((u - 1 - 0.075F) * angle);
}
inline float back(float u)
{
    return u * u * (2.70158F * u - 1.70158F);
}
inline float bounce(float u)
{
    const float v = 1 - u;
    if (v < 1 / 2.75F)
        return 1 - 7.5625F * v * v;
    const auto arc = [v](float k, float h) { return 1 - (7.5625F * (v - k) * (v - k) + h); };
    if (v < 2 / 2.75F)
        return arc(1.5F / 2.75F, 0.75F);
    if (v < 2.5F / 2.75F)
        return arc(2.25F / 2.75F, 0.9375F);
    return arc(2.625F / 2.75F, 0.984375F);
}

template <Curve In>
float out(float u)
{
    return 1 - In(1 - u);
}
template <Curve In>
float inOut(float u)
{
    return u < 0.5F ? In(2 * u) / 2 : 1 - In(2 - 2 * u) / 2;
}
template <Curve In>
float outIn(float u)
{
    return u < 0.5F ? out<In>(2 * u) / 2 : 0.5F + In(2 * u - 1) / 2;
}

} // namespace plain
