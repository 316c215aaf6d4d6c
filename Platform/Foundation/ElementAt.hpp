#pragma once

#include "Platform/Foundation/FatalError.hpp"

#include <cstddef>
#include <vector>

/// The element of a list that the caller needs; one that is not there is a fatal
/// error, as with every index that is out of range.
template <typename T>
T elementAt(const std::vector<T> &list, std::size_t index)
{
    if (index >= list.size())
        fatalError("Index out of range");
    return list[index];
}
