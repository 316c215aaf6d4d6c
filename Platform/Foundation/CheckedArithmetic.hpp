#pragma once

#include "Platform/Foundation/FatalError.hpp"

#include <cmath>
#include <concepts>
#include <cstddef>
#include <limits>
#include <string>
#include <type_traits>
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

namespace platform::foundation
{

/// The platform's name of a type of number, for the words of a fault.
template <typename T>
std::string numberTypeName()
{
    if constexpr (std::floating_point<T>)
        return std::same_as<T, float> ? "Float" : "Double";
    constexpr std::size_t bits = 8 * sizeof(T);
    return (std::is_signed_v<T> ? "Int" : "UInt") + (bits == 64 ? "" : std::to_string(bits));
}

/// Ends the process because `value` cannot become a `T`.
template <std::integral T, std::floating_point F>
[[noreturn]] void failConversion(F value)
{
    const std::string integer = numberTypeName<T>();
    const std::string start =
        numberTypeName<F>() + " value cannot be converted to " + integer + " because ";
    if (!std::isfinite(value))
        fatalError(start + "it is either infinite or NaN");
    if (value < 0)
        fatalError(start + "the result would be less than " + integer + ".min");
    fatalError(start + "the result would be greater than " + integer + ".max");
}

} // namespace platform::foundation

/// `value` without its fraction. A fatal error when it is not a number or `T`
/// cannot hold it.
template <std::integral T, std::floating_point F>
constexpr T checkedInteger(F value)
{
    // The first number past the end is a power of two, so it is exact where the
    // largest integer itself would be rounded. One less than the lowest may be
    // rounded to the lowest, which is why that is asked for by itself.
    constexpr T half = std::numeric_limits<T>::max() / 2 + 1;
    constexpr F end = static_cast<F>(half) * F{2};
    constexpr F lowest = static_cast<F>(std::numeric_limits<T>::min());
    if (value < end && (value >= lowest || value > lowest - F{1}))
        return static_cast<T>(value);
    platform::foundation::failConversion<T>(value);
}
