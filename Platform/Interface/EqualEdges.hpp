#pragma once

#include "Platform/Interface/CGGeometry.hpp"

#include <cstddef>
#include <vector>

namespace platform::interface
{

/// A rectangle of a layout. A fixed one stays where it is.
struct LayoutItem {
    CGRect frame;
    bool fixed = false;
};

/// One side of one item.
struct LayoutEdge {
    enum class Side { left, right, top, bottom };

    std::size_t item = 0;
    Side side = Side::left;
};

/// Two edges, on the same axis, that lie at the same place.
struct EqualEdges {
    LayoutEdge first;
    LayoutEdge second;
};

/// Moves and sizes the items that are not fixed so that all `equalities` hold, the
/// earlier ones where they contradict each other. An item of which one edge is tied
/// keeps its size along that axis; one that is not tied stays.
void solve(std::vector<LayoutItem> &items, const std::vector<EqualEdges> &equalities);

} // namespace platform::interface
