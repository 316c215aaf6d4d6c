#pragma once

#include "Resources/Demonstration Loops/Composition/Score.hpp"

#include <cstddef>

namespace demonstration_loops
{

/// How many demonstration loops there are; they are numbered from 1.
constexpr std::size_t loopCount = 80;

/// Composes the loop of a number from 1 to `loopCount`, the same at every call.
Score compose(std::size_t number);

} // namespace demonstration_loops
