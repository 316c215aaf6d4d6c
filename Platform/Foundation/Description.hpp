#pragma once

#include <concepts> // IWYU pragma: keep
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The text that stands for a value in a printed line.
namespace platform::foundation
{

/// Something that says itself how it reads.
template <typename T>
concept Described = requires(const T &value)
{
    {
        value.description()
        } -> std::convertible_to<std::string>;
};

/// Text as it stands.
inline std::string describe(std::string_view text)
{
    return std::string(text);
}

/// Text as it stands.
inline std::string describe(const std::string &text)
{
    return text;
}

/// Text as it stands.
inline std::string describe(const char *text)
{
    return text;
}

/// "true" or "false".
inline std::string describe(bool value)
{
    return value ? "true" : "false";
}

/// In decimal.
template <std::integral T>
std::string describe(T value)
{
    return std::to_string(value);
}

/// The shortest decimal number that reads back as `value`, with a fraction or an
/// exponent always: 1.0, 0.1, 1e-05, 1e+16, inf, nan.
std::string describe(double value);
/// The same in single precision.
std::string describe(float value);

/// What the value says itself.
template <Described T>
std::string describe(const T &value)
{
    return value.description();
}

template <typename T>
std::string describe(const std::optional<T> &value);
template <typename T>
std::string describe(const std::vector<T> &values);

/// `text` in quotation marks, with those in it, backslashes and control
/// characters escaped.
std::string inQuotationMarks(std::string_view text);

/// How a value reads inside another: text in quotation marks, all else the same.
template <typename T>
std::string describeInside(const T &value)
{
    if constexpr (std::convertible_to<T, std::string_view>)
        return inQuotationMarks(value);
    else
        return describe(value);
}

/// "Optional(value)", or "nil".
template <typename T>
std::string describe(const std::optional<T> &value)
{
    return value ? "Optional(" + describeInside(*value) + ")" : "nil";
}

/// "[a, b]".
template <typename T>
std::string describe(const std::vector<T> &values)
{
    std::string text = "[";
    std::string_view separator;
    for (const auto &value : values) {
        text.append(separator).append(describeInside<T>(value));
        separator = ", ";
    }
    return text + "]";
}

} // namespace platform::foundation
