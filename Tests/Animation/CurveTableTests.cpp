#include "Animation/Animator.hpp"
#include "Animation/Inspection.hpp"
#include "Tests/Utilities/Places.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>

namespace
{

using animation::Inspection;

/// One line of the table that curves.py computes.
struct Row {
    std::int64_t type = 0;
    std::int64_t frames = 0;
    float source = 0;
    float amount = 0;
    std::int64_t frame = 0;
    double value = 0;
    double tolerance = 0;

    bool isWithinTheRun() const { return frame >= 0 && frame <= frames; }
};

void forEachRow(const std::function<void(const Row &)> &look)
{
    const std::string command = "python3 '" + test::sourcePath("Tests/Animation/curves.py") + "'";
    const std::unique_ptr<FILE, int (*)(FILE *)> table(popen(command.c_str(), "r"), pclose);
    ASSERT_NE(table, nullptr);
    Row row;
    int rows = 0;
    while (std::fscanf(table.get(), "%ld %ld %f %f %ld %la %la", &row.type, &row.frames,
                       &row.source, &row.amount, &row.frame, &row.value, &row.tolerance) == 7) {
        look(row);
        ++rows;
    }
    EXPECT_EQ(rows, 36288); // 42 curves, 10 lengths, 3 amounts, 3 frames around each
}

/// One unit in the last place of a single-precision number as large as the run's.
double unitInTheLastPlace(const Row &row)
{
    const double largest =
        std::max({std::abs(static_cast<double>(row.source)),
                  std::abs(static_cast<double>(row.source + row.amount)), std::abs(row.value)});
    return std::ldexp(1.0, std::ilogb(largest) - 23);
}

float evaluate(const Row &row)
{
    Animator animator;
    animator.setType(easingFromRawValue(row.type).value());
    return Inspection::curve(animator, row.frame, row.source, row.amount, row.frames);
}

// The tolerance is not chosen: the program that computes the table carries along what
// each rounding may cost. How much that comes to within a run is pinned as well, in
// units in the last place of the largest value that the run takes, since a bound that
// grew unnoticed would make the table worthless. A curve takes about ten roundings of
// half a unit, magnified by its own steepness; in the Elastic ones an angle of up to
// 21 radians is rounded as well, whose unit is 32 times as large.
TEST(CurveTable, CurvesAgreeWithFormulasInDoublePrecision)
{
    forEachRow([](const Row &row) {
        const double value = evaluate(row);
        if (std::isnan(row.value)) {
            EXPECT_TRUE(std::isnan(value)) << row.type << " at " << row.frame;
            return;
        }
        EXPECT_LE(std::abs(value - row.value), row.tolerance)
            << "curve " << row.type << " over " << row.frames << " from " << row.source << " by "
            << row.amount << " at " << row.frame;
        const bool isElastic =
            row.type >= EASING_easeInElastic && row.type <= EASING_easeOutInElastic;
        if (row.isWithinTheRun()) {
            EXPECT_LE(row.tolerance, (isElastic ? 42 : 13) * unitInTheLastPlace(row))
                << "curve " << row.type << " over " << row.frames << " at " << row.frame;
        }
    });
}

} // namespace
