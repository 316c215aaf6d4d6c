#include "HeldPlugin.hpp"

#include "Platform/Foundation/PlatformError.hpp"

#include <gmock/gmock.h>

#include <dlfcn.h>

using namespace testsupport;
using platform::lv2::Plugin;
using platform::lv2::Port;
using platform::lv2::PortKind;
using testing::HasSubstr;

namespace
{

/// What is wrong with the plug-in, in the words that a user would see.
std::string whatFails(const std::string &uri, const std::string &bundle)
{
    try {
        const HeldPlugin held(uri, ownBundle(bundle));
        return "";
    } catch (const PlatformError &error) {
        return error.what();
    }
}

} // namespace

TEST(Plugin, ReadsPorts)
{
    const Plugin plugin("urn:test:everything", ownBundle("ports"));
    EXPECT_EQ(plugin.name(), "Test Everything");
    const std::vector<Port> &ports = plugin.ports();
    ASSERT_EQ(ports.size(), 13U);
    EXPECT_EQ(ports[0].kind, PortKind::audio);
    EXPECT_TRUE(ports[0].isInput);
    EXPECT_FALSE(ports[0].isSideChain);
    EXPECT_TRUE(ports[1].isSideChain);
    EXPECT_FALSE(ports[2].isInput);
    EXPECT_EQ(ports[3].kind, PortKind::cv);
    EXPECT_TRUE(ports[5].isOptional);
    EXPECT_EQ(ports[6].kind, PortKind::unknown);
    EXPECT_EQ(ports[7].kind, PortKind::atom);
    EXPECT_FALSE(ports[7].hasMidi);
    EXPECT_EQ(ports[8].minimumSize, 100000U);
    EXPECT_EQ(ports[9].defaultValue, 0.0F);
    EXPECT_EQ(ports[10].defaultValue, 5.0F);
    EXPECT_TRUE(ports[11].isScaledBySampleRate);
}

TEST(Plugin, StaysLoadedForThreadsThatOutliveTheInstance)
{
    const auto bundle = ownBundle("amplifier");
    {
        const HeldPlugin held("urn:test:mono", bundle);
    }
    const std::string binary = bundle.front() + "/amplifier.so";
    void *const stillThere = ::dlopen(binary.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    ASSERT_NE(stillThere, nullptr);
    ::dlclose(stillThere);
}

TEST(Plugin, ListsPresetsByURI)
{
    Plugin plugin("urn:test:amplifier", ownBundle("amplifier"));
    const auto &presets = plugin.presets();
    ASSERT_EQ(presets.size(), 2U);
    EXPECT_EQ(presets[0].label, "Half");
    EXPECT_EQ(presets[1].label, "Triple");
    EXPECT_TRUE(Plugin("urn:test:mono", ownBundle("amplifier")).presets().empty());
}

TEST(Plugin, SaysWhatIsWrong)
{
    EXPECT_THAT(whatFails("urn:test:nowhere", "amplifier"), HasSubstr("<urn:test:nowhere>"));
    EXPECT_THAT(whatFails("no uri at all", "amplifier"), HasSubstr("is installed"));
    EXPECT_THAT(whatFails("urn:test:refusing", "refusing"), HasSubstr("refuses"));
    EXPECT_THAT(whatFails("urn:test:missing-binary", "missing-binary"),
                HasSubstr("cannot be loaded"));
    EXPECT_THAT(whatFails("urn:test:unknown-feature", "unknown-feature"),
                HasSubstr("<urn:test:no-such-feature>"));
}
