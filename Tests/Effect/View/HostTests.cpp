#include "Effect/View/Host.hpp"

#include <gtest/gtest.h>

#include <lv2/atom/atom.h>
#include <lv2/options/options.h>
#include <lv2/urid/urid.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>

using effect::view::Host;

namespace
{

LV2_URID idOf(LV2_URID_Map_Handle /*handle*/, const char *uri)
{
    return std::strcmp(uri, LV2_UI__scaleFactor) == 0 ? 1
           : std::strcmp(uri, LV2_ATOM__Float) == 0   ? 2
                                                      : 3;
}

/// The scale that a view takes from one option.
float scaleFrom(LV2_URID type, std::uint32_t size, const void *value)
{
    LV2_URID_Map map{nullptr, idOf};
    std::array<LV2_Options_Option, 3> options{{{LV2_OPTIONS_INSTANCE, 0, 3, 4, 2, value},
                                               {LV2_OPTIONS_INSTANCE, 0, 1, size, type, value},
                                               {LV2_OPTIONS_INSTANCE, 0, 0, 0, 0, nullptr}}};
    const LV2_Feature mapFeature{LV2_URID__map, &map};
    const LV2_Feature optionsFeature{LV2_OPTIONS__options, options.data()};
    const std::array<const LV2_Feature *, 3> features{&mapFeature, &optionsFeature, nullptr};
    return Host(nullptr, nullptr, features.data()).scale();
}

float scaleFrom(float value)
{
    return scaleFrom(2, sizeof(value), &value);
}

} // namespace

TEST(Host, SaysItsScaleAsAnOption)
{
    EXPECT_EQ(scaleFrom(1), 1);
    EXPECT_EQ(scaleFrom(1.5F), 1.5F);
    EXPECT_EQ(scaleFrom(2), 2);
}

TEST(Host, IsNotFollowedBeyondReason)
{
    EXPECT_EQ(scaleFrom(0), 1);
    EXPECT_EQ(scaleFrom(-2), 1);
    EXPECT_EQ(scaleFrom(std::numeric_limits<float>::quiet_NaN()), 1);
    EXPECT_EQ(scaleFrom(std::numeric_limits<float>::infinity()), 1);
    EXPECT_EQ(scaleFrom(1000), 4);
    EXPECT_EQ(scaleFrom(0.01F), 0.5F);
}

TEST(Host, IsReadOnlyWhereTheOptionIsAFloat)
{
    const double wide = 2;
    EXPECT_EQ(scaleFrom(2, sizeof(wide), &wide), 1);
    EXPECT_EQ(scaleFrom(3, sizeof(float), &wide), 1);
    EXPECT_EQ(scaleFrom(2, sizeof(float), nullptr), 1);
}

TEST(Host, NeedNotHaveAnyFeature)
{
    const Host none(nullptr, nullptr, nullptr);
    EXPECT_EQ(none.scale(), 1);
    EXPECT_EQ(none.parent(), 0U);
    none.announceSize(1, 1);
}
