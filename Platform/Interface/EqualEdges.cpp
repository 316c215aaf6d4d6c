#include "Platform/Interface/EqualEdges.hpp"

#include <algorithm>
#include <optional>

namespace platform::interface
{

namespace
{

/// Where an item lies along one axis, as far as it is known.
struct Span {
    std::optional<CGFloat> low;
    std::optional<CGFloat> high;
};

struct Axis {
    std::vector<Span> spans;
    /// Places from before.
    std::vector<CGFloat> origins;
    std::vector<CGFloat> lengths;
};

/// An equality along one axis: each end is an item and whether its high edge is meant.
struct Tie {
    std::size_t firstItem;
    bool firstIsHigh;
    std::size_t secondItem;
    bool secondIsHigh;
};

std::optional<CGFloat> &place(Axis &axis, std::size_t item, bool isHigh)
{
    Span &span = axis.spans[item];
    return isHigh ? span.high : span.low;
}

/// Carries known places across one tie; answers whether something became known.
bool carry(Axis &axis, const Tie &tie)
{
    auto &first = place(axis, tie.firstItem, tie.firstIsHigh);
    auto &second = place(axis, tie.secondItem, tie.secondIsHigh);
    if (first.has_value() == second.has_value())
        return false;
    if (first)
        second = first;
    else
        first = second;
    return true;
}

void carryAll(Axis &axis, const std::vector<Tie> &ties)
{
    while (
        std::any_of(ties.begin(), ties.end(), [&](const Tie &tie) { return carry(axis, tie); })) {
    }
}

/// Gives an item of which one edge is known the other one; with `untied`, also one of
/// which none is. Answers whether there was such an item.
bool completeOne(Axis &axis, bool untied)
{
    for (std::size_t item = 0; item < axis.spans.size(); ++item) {
        Span &span = axis.spans[item];
        if (span.low && span.high)
            continue;
        if (!span.low && !span.high) {
            if (!untied)
                continue;
            span.low = axis.origins[item];
        }
        if (span.low)
            span.high = *span.low + axis.lengths[item];
        else
            span.low = *span.high - axis.lengths[item];
        return true;
    }
    return false;
}

void solve(Axis &axis, const std::vector<Tie> &ties)
{
    do
        carryAll(axis, ties);
    while (completeOne(axis, false) || completeOne(axis, true));
}

Axis axisOf(const std::vector<LayoutItem> &items, CGFloat CGPoint::*origin, CGFloat CGSize::*length)
{
    Axis axis;
    for (const LayoutItem &item : items) {
        const CGFloat low = item.frame.origin.*origin;
        const CGFloat high = low + item.frame.size.*length;
        axis.spans.push_back(item.fixed ? Span{low, high} : Span{});
        axis.origins.push_back(low);
        axis.lengths.push_back(item.frame.size.*length);
    }
    return axis;
}

std::vector<Tie> tiesBetween(const std::vector<EqualEdges> &equalities, LayoutEdge::Side low,
                             LayoutEdge::Side high)
{
    std::vector<Tie> ties;
    for (const auto &[first, second] : equalities) {
        if (first.side == low || first.side == high)
            ties.push_back({first.item, first.side == high, second.item, second.side == high});
    }
    return ties;
}

} // namespace

void solve(std::vector<LayoutItem> &items, const std::vector<EqualEdges> &equalities)
{
    using Side = LayoutEdge::Side;
    Axis horizontal = axisOf(items, &CGPoint::x, &CGSize::width);
    Axis vertical = axisOf(items, &CGPoint::y, &CGSize::height);
    solve(horizontal, tiesBetween(equalities, Side::left, Side::right));
    solve(vertical, tiesBetween(equalities, Side::top, Side::bottom));
    for (std::size_t item = 0; item < items.size(); ++item) {
        const Span &x = horizontal.spans[item];
        const Span &y = vertical.spans[item];
        items[item].frame = CGRect(*x.low, *y.low, std::max(0.0, *x.high - *x.low),
                                   std::max(0.0, *y.high - *y.low));
    }
}

} // namespace platform::interface
