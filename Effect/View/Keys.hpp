#pragma once

#include "Effect/View/Panel.hpp"

#include <X11/X.h>

#include <optional>

namespace effect::view
{

/// What a key symbol of X means to the panel, none for most.
std::optional<Key> keyFor(KeySym symbol);

} // namespace effect::view
