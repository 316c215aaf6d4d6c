#include "Platform/Audio/DerivedDescription.hpp"

#include <gtest/gtest.h>

#include <string>

using platform::audio::derivedDescription;
using platform::audio::fourCharacterCode;
using platform::audio::mayBeDerived;

namespace
{

std::string textOf(std::uint32_t code)
{
    std::string text;
    for (unsigned shift = 32; shift > 0; shift -= 8)
        text += static_cast<char>((code >> (shift - 8)) & 0xFFU);
    return text;
}

} // namespace

// Computed apart from this program, from the description of the hash.
TEST(DerivedDescription, IsTheDocumentedHash)
{
    const auto amp = derivedDescription("http://lv2plug.in/plugins/eg-amp");
    EXPECT_EQ(textOf(amp.componentSubType), "h1bl");
    EXPECT_EQ(textOf(amp.componentManufacturer), "Srsc");
    const auto urn = derivedDescription("urn:zamaudio:ZamEQ2");
    EXPECT_EQ(textOf(urn.componentSubType), "GgcQ");
    EXPECT_EQ(textOf(urn.componentManufacturer), "Epdw");
    EXPECT_EQ(amp.componentType, 0U);
    EXPECT_EQ(amp.componentFlags, 0U);
}

TEST(DerivedDescription, SharesTheManufacturerWithinAnAuthority)
{
    const auto first = derivedDescription("http://lv2plug.in/plugins/eg-amp");
    const auto second = derivedDescription("http://lv2plug.in/other#x");
    EXPECT_EQ(first.componentManufacturer, second.componentManufacturer);
    EXPECT_NE(first.componentSubType, second.componentSubType);
    EXPECT_NE(first.componentManufacturer,
              derivedDescription("http://drobilla.net/x").componentManufacturer);
    EXPECT_EQ(derivedDescription("urn:a:b").componentManufacturer,
              derivedDescription("urn:a:c").componentManufacturer);
    EXPECT_NE(derivedDescription("no-uri").componentManufacturer, 0U);
}

TEST(DerivedDescription, IsAlwaysRecognised)
{
    for (int i = 0; i < 2000; ++i) {
        const std::string uri = "http://host" + std::to_string(i) + ".example/" + std::to_string(i);
        EXPECT_TRUE(mayBeDerived(derivedDescription(uri))) << uri;
    }
    EXPECT_TRUE(mayBeDerived({}));
    EXPECT_FALSE(mayBeDerived({0, 0, fourCharacterCode("QRVX"), 0, 0}));
    EXPECT_FALSE(mayBeDerived({0, fourCharacterCode("a-bc"), 0, 0, 0}));
    EXPECT_FALSE(mayBeDerived({0, 0, 0, 2, 2}));
    EXPECT_TRUE(mayBeDerived({0, 0, 0, 2, 0}));
}
