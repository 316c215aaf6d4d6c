#pragma once

#include "Platform/Foundation/FatalError.hpp"

#include <memory>
#include <optional>

/// The value of an optional or the object of a pointer that the caller needs.
/// Its absence is a fatal error, as with every forced use of an absent value.
template <typename T>
const T &unwrap(const std::optional<T> &value)
{
    if (!value)
        fatalError("Unexpectedly found nil while unwrapping an Optional value");
    return *value;
}

template <typename T>
T &unwrap(const std::shared_ptr<T> &pointer)
{
    if (!pointer)
        fatalError("Unexpectedly found nil while unwrapping an Optional value");
    return *pointer;
}

/// The same for a property that is declared optional but used as if it were
/// always set, such as an outlet.
template <typename T>
T &unwrapImplicitly(const std::shared_ptr<T> &pointer)
{
    if (!pointer)
        fatalError("Unexpectedly found nil while implicitly unwrapping an Optional value");
    return *pointer;
}
