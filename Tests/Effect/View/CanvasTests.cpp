#include "Effect/View/Canvas.hpp"
#include "Effect/View/Layout.hpp"
#include "Effect/View/PanelPicture.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

using namespace effect::view;

namespace
{

class Silent final : public PanelListener
{
    void touched(std::size_t /*control*/, bool /*held*/) override {}
    void changed(std::size_t /*control*/, float /*value*/) override {}
};

/// The colours 0xRRGGBB of a part, row by row.
std::vector<std::uint32_t> pixels(const Canvas &canvas, const PixelBox &box)
{
    cairo_surface_flush(canvas.surface());
    const unsigned char *data = cairo_image_surface_get_data(canvas.surface());
    const int stride = cairo_image_surface_get_stride(canvas.surface());
    std::vector<std::uint32_t> colours;
    for (int y = box.y; y < box.y + box.height; ++y) {
        for (int x = box.x; x < box.x + box.width; ++x) {
            std::uint32_t colour = 0;
            std::memcpy(&colour, data + y * stride + x * 4, 4);
            colours.push_back(colour & 0xFFFFFFU);
        }
    }
    return colours;
}

class Picture : public testing::TestWithParam<int>
{
protected:
    PixelSize size() const
    {
        return {static_cast<int>(layout::width) * GetParam(),
                static_cast<int>(layout::height) * GetParam()};
    }
    std::vector<std::uint32_t> control(std::size_t index)
    {
        const Box &box = layout::controls.at(index);
        canvas.repaint(box, [&](cairo_t *context) { drawControl(context, panel, index); });
        return pixels(canvas, fit.pixelsOf(box));
    }
    std::vector<std::uint32_t> horn(const RotorMotion &motion)
    {
        canvas.repaint(layout::horn, [&](cairo_t *context) { drawHorn(context, panel, motion); });
        return pixels(canvas, fit.pixelsOf(layout::horn));
    }

    Silent silent;
    Panel panel{silent};
    Fit fit{size()};
    Canvas canvas{size()};
};

constexpr std::uint32_t accent = 0xF0A34A;

std::ptrdiff_t count(const std::vector<std::uint32_t> &colours, std::uint32_t colour)
{
    return std::count(colours.begin(), colours.end(), colour);
}

} // namespace

TEST(Fit, FillsAWindowOfTheSameProportion)
{
    const Fit fit({1440, 816});
    EXPECT_EQ(fit.scale(), 2);
    EXPECT_EQ(fit.pointAt(100, 50).x, 50);
    EXPECT_EQ(fit.pointAt(100, 50).y, 25);
}

TEST(Fit, StandsInTheMiddleOfOthers)
{
    const Fit wide({1000, 408});
    EXPECT_EQ(wide.scale(), 1);
    EXPECT_EQ(wide.pointAt(140, 0).x, 0);
    const Fit tall({360, 500});
    EXPECT_EQ(tall.scale(), 0.5);
    EXPECT_EQ(tall.pointAt(0, 148).y, 0);
}

TEST(Fit, CoversEveryPixelThatABoxTouches)
{
    const Fit fit({1080, 612});
    const PixelBox box = fit.pixelsOf({1, 1, 1, 1});
    EXPECT_EQ(box.x, 1);
    EXPECT_EQ(box.y, 1);
    EXPECT_EQ(box.width, 2);
    EXPECT_EQ(box.height, 2);
}

TEST_P(Picture, HasALitArcAsLongAsTheValue)
{
    panel.setValue(2, 0);
    EXPECT_EQ(count(control(2), accent), 0);
    panel.setValue(2, 0.5F);
    const auto half = count(control(2), accent);
    panel.setValue(2, 1);
    const auto whole = count(control(2), accent);
    EXPECT_GT(half, 50);
    EXPECT_NEAR(static_cast<double>(whole) / static_cast<double>(half), 2, 0.3);
}

TEST_P(Picture, PutsTheAccentToSleepInBypass)
{
    ASSERT_GT(count(control(2), accent), 0);
    panel.setValue(enabledControl, 0);
    EXPECT_EQ(count(control(2), accent), 0);
}

TEST_P(Picture, RingsTheFocus)
{
    constexpr std::uint32_t ring = 0xFFD7A1;
    for (std::size_t i = 0; i < controlCount; ++i) {
        EXPECT_EQ(count(control(i), ring), 0);
    }
    panel.setKeyboard(true);
    for (std::size_t i = speedControl; i < controlCount; ++i) {
        EXPECT_GT(count(control(i), ring), 100) << i;
        panel.press(Key::next, false);
    }
    EXPECT_GT(count(control(enabledControl), ring), 100);
}

TEST_P(Picture, ShowsTheRotorWhereItIs)
{
    RotorMotion motion;
    motion.reportAngle(0, 0);
    motion.advance(0);
    const auto front = horn(motion);
    EXPECT_EQ(horn(motion), front);
    RotorMotion turned;
    turned.reportAngle(0.25, 0);
    turned.advance(0);
    EXPECT_NE(horn(turned), front);
    // At the front the horn's mouth lights the lower half, turned by half the upper.
    const auto half = front.size() / 2;
    const std::vector<std::uint32_t> upper(front.begin(),
                                           front.begin() + static_cast<std::ptrdiff_t>(half));
    EXPECT_GT(count(front, accent), 0);
    EXPECT_EQ(count(upper, accent), 0);
}

TEST_P(Picture, DrawsNothingOutsideTheBox)
{
    const PixelBox all{0, 0, size().width, size().height};
    for (std::size_t i = 0; i < controlCount; ++i) {
        control(i);
    }
    const auto before = pixels(canvas, all);
    panel.setValue(4, 0.9F);
    control(4);
    const auto after = pixels(canvas, all);
    const PixelBox box = fit.pixelsOf(layout::controls[4]);
    int outside = 0;
    for (int y = 0; y < all.height; ++y) {
        for (int x = 0; x < all.width; ++x) {
            const auto at = static_cast<std::size_t>(y * all.width + x);
            const bool inside =
                x >= box.x && x < box.x + box.width && y >= box.y && y < box.y + box.height;
            outside += !inside && before[at] != after[at] ? 1 : 0;
        }
    }
    EXPECT_NE(before, after);
    EXPECT_EQ(outside, 0);
}

INSTANTIATE_TEST_SUITE_P(Scales, Picture, testing::Values(1, 2));
