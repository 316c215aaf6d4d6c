#include "Platform/Interface/EqualEdges.hpp"

#include <gtest/gtest.h>

using platform::interface::EqualEdges;
using platform::interface::LayoutEdge;
using platform::interface::LayoutItem;
using Side = platform::interface::LayoutEdge::Side;

namespace
{

constexpr CGRect whole(0, 0, 400, 300);

/// The frames of `items` inside `whole` after solving; item 0 is `whole`.
std::vector<CGRect> solved(std::vector<LayoutItem> items, const std::vector<EqualEdges> &equalities)
{
    items.insert(items.begin(), {whole, true});
    platform::interface::solve(items, equalities);
    std::vector<CGRect> frames;
    for (std::size_t item = 1; item < items.size(); ++item)
        frames.push_back(items[item].frame);
    return frames;
}

EqualEdges tie(std::size_t first, Side side, std::size_t second, Side other)
{
    return {LayoutEdge{first, side}, LayoutEdge{second, other}};
}

} // namespace

TEST(EqualEdges, FillAnItemThatIsTiedOnAllSides)
{
    const auto frames =
        solved({{CGRect(5, 6, 7, 8)}},
               {tie(1, Side::top, 0, Side::top), tie(1, Side::left, 0, Side::left),
                tie(1, Side::bottom, 0, Side::bottom), tie(1, Side::right, 0, Side::right)});
    EXPECT_EQ(frames[0], whole);
}

TEST(EqualEdges, KeepTheSizeWhereOneEdgeIsTied)
{
    const auto frames = solved({{CGRect(5, 6, 70, 80)}}, {tie(1, Side::right, 0, Side::right),
                                                          tie(0, Side::top, 1, Side::top)});
    EXPECT_EQ(frames[0], CGRect(330, 0, 70, 80));
}

TEST(EqualEdges, LeaveWhatIsNotTied)
{
    const auto frames = solved({{CGRect(5.5, 6, 7, 8)}}, {});
    EXPECT_EQ(frames[0], CGRect(5.5, 6, 7, 8));
}

TEST(EqualEdges, PutItemsBesideEachOther)
{
    const auto frames =
        solved({{CGRect(0, 0, 120, 10), true}, {CGRect(0, 0, 1, 10)}},
               {tie(2, Side::left, 1, Side::right), tie(2, Side::right, 0, Side::right)});
    EXPECT_EQ(frames[1], CGRect(120, 0, 280, 10));
}

TEST(EqualEdges, CarryPlacesThroughSeveralItems)
{
    const auto frames =
        solved({{CGRect(0, 0, 50, 10)}, {CGRect(0, 0, 60, 10)}, {CGRect(0, 0, 70, 10)}},
               {tie(1, Side::left, 2, Side::right), tie(2, Side::left, 3, Side::right),
                tie(3, Side::left, 0, Side::left)});
    EXPECT_EQ(frames[2], CGRect(0, 0, 70, 10));
    EXPECT_EQ(frames[1], CGRect(70, 0, 60, 10));
    EXPECT_EQ(frames[0], CGRect(130, 0, 50, 10));
}

TEST(EqualEdges, ObeyTheFirstOfTwoThatContradict)
{
    const auto frames =
        solved({{CGRect(0, 0, 50, 10)}, {CGRect(100, 0, 50, 10), true}},
               {tie(1, Side::left, 0, Side::left), tie(1, Side::left, 2, Side::left)});
    EXPECT_EQ(frames[0].origin.x, 0);
}

TEST(EqualEdges, GiveNoNegativeSize)
{
    const auto frames = solved({{CGRect(0, 0, 50, 10)}}, {tie(1, Side::left, 0, Side::right),
                                                          tie(1, Side::right, 0, Side::left)});
    EXPECT_EQ(frames[0].size.width, 0);
}
