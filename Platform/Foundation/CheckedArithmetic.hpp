#pragma once

#include "Platform/Foundation/FatalError.hpp"

#include <cmath>
#include <concepts>
#include <limits>
#include <utility>

/// Arithmetic on integers whose overflow is a fatal error.
template <std::integral T>
constexpr T checkedAdd(T left, T right)
{
    T result{};
    if (__builtin_add_overflow(left, right, &result))
        fatalError("Arithmetic overflow");
    return result;
}

template <std::integral T>
constexpr T checkedSubtract(T left, T right)
{
    T result{};
    if (__builtin_sub_overflow(left, right, &result))
        fatalError("Arithmetic overflow");
    return result;
}

template <std::integral T>
constexpr T checkedMultiply(T left, T right)
{
    T result{};
    if (__builtin_mul_overflow(left, right, &result))
        fatalError("Arithmetic overflow");
    return result;
}

/// `value` as a `T`. A fatal error when `T` cannot hold it.
template <std::integral T, std::integral V>
constexpr T checkedInteger(V value)
{
    if (!std::in_range<T>(value))
        fatalError("A number is beyond the range of the integer that it is to become");
    return static_cast<T>(value);
}

/// `value` without its fraction. A fatal error when it is not a number or `T`
/// cannot hold it.
template <std::integral T, std::floating_point F>
constexpr T checkedInteger(F value)
{
    // The first number past the end is a power of two, so it is exact where the
    // largest integer itself would be rounded.
    constexpr T half = std::numeric_limits<T>::max() / 2 + 1;
    constexpr F end = static_cast<F>(half) * F{2};
    constexpr F lowest = static_cast<F>(std::numeric_limits<T>::min());
    if (!std::isfinite(value))
        fatalError("A number that is infinite or none cannot become an integer");
    const F whole = std::trunc(value);
    if (whole >= end || whole < lowest)
        fatalError("A number is beyond the range of the integer that it is to become");
    return static_cast<T>(whole);
}
