#include "LV2PathFixture.hpp"

#include "Platform/Audio/AVAudioUnitComponentManager.hpp"
#include "Platform/Audio/ComponentRegistry.hpp"
#include "Platform/Audio/DerivedDescription.hpp"
#include "Platform/Audio/LV2Path.hpp"
#include "Platform/Foundation/ProcessInfo.hpp"

#include <gmock/gmock.h>

#include <vector>

#include <sys/stat.h>

using platform::audio::derivedDescription;
using platform::audio::fourCharacterCode;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace
{

constexpr AudioComponentDescription searchKey{fourCharacterCode("aumf"), fourCharacterCode("zvqr"),
                                              fourCharacterCode("QRVX"), 2, 0};

std::vector<std::string> found(const AudioComponentDescription &key = searchKey)
{
    std::vector<std::string> uris;
    for (const AVAudioUnitComponent &component :
         AVAudioUnitComponentManager::shared().components(key))
        uris.push_back(component.pluginURI());
    return uris;
}

class ComponentRegistry : public LV2PathFixture
{
protected:
    /// What a search writes to standard error.
    static std::string complaints()
    {
        testing::internal::CaptureStderr();
        found();
        return testing::internal::GetCapturedStderr();
    }
};

} // namespace

TEST_F(ComponentRegistry, FindsTheComponentAsRegistered)
{
    addManifest("a.lv2", manifest("urn:test:a",
                                  R"(; au:type "aumf" ; au:subtype "zvqr" ;
                                     au:manufacturer "QRVX" ; au:flags 14 )"));
    addManifest("b.lv2", manifest("urn:test:b"));
    const auto components = AVAudioUnitComponentManager::shared().components(searchKey);
    ASSERT_EQ(components.size(), 1U);
    EXPECT_EQ(components[0].pluginURI(), "urn:test:a");
    EXPECT_EQ(components[0].audioComponentDescription(),
              (AudioComponentDescription{fourCharacterCode("aumf"), fourCharacterCode("zvqr"),
                                         fourCharacterCode("QRVX"), 14, 0}));
}

TEST_F(ComponentRegistry, FindsNothingInAnEmptyOrMissingFolder)
{
    EXPECT_THAT(found(), IsEmpty());
    usePath((folder() / "missing").string() + "::");
    EXPECT_THAT(found(), IsEmpty());
    usePath("");
    EXPECT_THAT(found({}), IsEmpty());
}

TEST_F(ComponentRegistry, CountsFlagsUnderTheMaskAlone)
{
    addManifest("a.lv2", manifest("urn:test:a", key));
    AudioComponentDescription wanted = searchKey;
    wanted.componentFlags = 1;
    EXPECT_THAT(found(wanted), ElementsAre("urn:test:a"));
    wanted.componentFlagsMask = 1;
    EXPECT_THAT(found(wanted), IsEmpty());
    wanted.componentFlags = 2;
    wanted.componentFlagsMask = 3;
    EXPECT_THAT(found(wanted), ElementsAre("urn:test:a"));
}

TEST_F(ComponentRegistry, LetsAZeroCodeMatchAny)
{
    addManifest("a.lv2", manifest("urn:test:a", key));
    AudioComponentDescription wanted = searchKey;
    wanted.componentType = 0;
    EXPECT_THAT(found(wanted), ElementsAre("urn:test:a"));
    wanted.componentSubType = 0;
    EXPECT_THAT(found(wanted), ElementsAre("urn:test:a"));
    wanted.componentManufacturer = 0;
    EXPECT_THAT(found(wanted), ElementsAre("urn:test:a"));
    wanted.componentManufacturer = fourCharacterCode("ELSE");
    EXPECT_THAT(found(wanted), IsEmpty());
}

TEST_F(ComponentRegistry, KeepsTheOrderOfPathAndNamesWithTheStandInLast)
{
    std::filesystem::create_directories(folder() / "second" / "c.lv2");
    addManifest("z.lv2", manifest("urn:test:z", key));
    addManifest("a.lv2", manifest("urn:qrvx:parvane", key));
    addManifest("m.lv2", manifest("urn:test:m", key));
    std::ofstream(folder() / "second" / "c.lv2" / "manifest.ttl") << manifest("urn:test:c", key);
    usePath(folder().string() + ":" + (folder() / "second").string());
    for (int i = 0; i < 3; ++i)
        EXPECT_THAT(found(),
                    ElementsAre("urn:test:m", "urn:test:z", "urn:test:c", "urn:qrvx:parvane"));
}

TEST_F(ComponentRegistry, SeesABundleOnceHoweverItIsReached)
{
    addManifest("a.lv2", manifest("urn:test:a", key));
    std::filesystem::create_directory_symlink(folder() / "a.lv2", folder() / "b.lv2");
    std::filesystem::create_directory_symlink(folder(), folder() / "again");
    usePath(folder().string() + ":" + (folder() / "again").string());
    EXPECT_THAT(found(), ElementsAre("urn:test:a"));
}

TEST_F(ComponentRegistry, TakesAPluginFromTheFirstBundleThatGivesItAKey)
{
    addManifest("a.lv2", manifest("urn:test:a"));
    addManifest("b.lv2", manifest("urn:test:a", key));
    addManifest("c.lv2", manifest("urn:test:a", key));
    EXPECT_THAT(found(), ElementsAre("urn:test:a"));
    EXPECT_THAT(found({}), ElementsAre("urn:test:a"));
    EXPECT_THAT(platform::audio::bundlesOfPlugin("urn:test:a"),
                ElementsAre((folder() / "b.lv2").string()));
}

TEST_F(ComponentRegistry, PassesOverAHugeManifestWithOneLine)
{
    addManifest("a.lv2", manifest("urn:test:a", key));
    addManifest("huge.lv2", manifest("urn:test:huge", key) + std::string(2'000'000, '\n'));
    EXPECT_THAT(found(), ElementsAre("urn:test:a"));
    const std::string said = complaints();
    EXPECT_THAT(said, HasSubstr("huge.lv2"));
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1);
}

TEST_F(ComponentRegistry, DoesNotReadAManifestOfAHundredMegabytes)
{
    addManifest("a.lv2", manifest("urn:test:a", key));
    addManifest("huge.lv2", manifest("urn:test:huge", key));
    std::filesystem::resize_file(folder() / "huge.lv2" / "manifest.ttl", 100'000'000);
    EXPECT_THAT(found(), ElementsAre("urn:test:a"));
    EXPECT_EQ(complaints(), "The bundle " + (folder() / "huge.lv2").string() +
                                " is passed over: its manifest has 100000000 bytes, more than "
                                "1000000.\n");
}

TEST_F(ComponentRegistry, LoadsNoBinaries)
{
    // Whoever loads it dies.
    link("exploding");
    addManifest("nothing.lv2", manifest("urn:test:nothing", key));
    std::ofstream(folder() / "nothing.lv2" / "none.so") << "no library";
    addManifest("a.lv2", manifest("urn:test:a", key));
    EXPECT_THAT(found(), ElementsAre("urn:test:a", "urn:test:nothing"));
    EXPECT_THAT(found({}), ElementsAre("urn:test:a", "urn:test:exploding", "urn:test:nothing"));
    EXPECT_THAT(found(derivedDescription("urn:test:exploding")), ElementsAre("urn:test:exploding"));
}

TEST_F(ComponentRegistry, FollowsNoCircles)
{
    for (const char *bundle : {"a.lv2", "b.lv2"}) {
        const std::string uri = std::string("urn:test:") + bundle[0];
        addManifest(bundle,
                    "@prefix lv2: <http://lv2plug.in/ns/lv2core#> .\n"
                    "@prefix rdfs: <http://www.w3.org/2000/01/rdf-schema#> .\n<" +
                        uri +
                        "> a lv2:Plugin ; lv2:binary <none.so> ;"
                        " rdfs:seeAlso <manifest.ttl>, <../a.lv2/x.ttl>, <../b.lv2/x.ttl> .");
        std::ofstream(folder() / bundle / "x.ttl")
            << "<" << uri << "> <http://www.w3.org/2000/01/rdf-schema#seeAlso>"
            << " <x.ttl>, <manifest.ttl>, <../a.lv2/manifest.ttl>, <../b.lv2/x.ttl> .";
    }
    std::filesystem::create_directory_symlink(folder(), folder() / "a.lv2" / "again.lv2");
    std::filesystem::create_directory_symlink("itself.lv2", folder() / "itself.lv2");
    EXPECT_THAT(found({}), ElementsAre("urn:test:a", "urn:test:b"));
    EXPECT_THAT(found(derivedDescription("urn:test:b")), ElementsAre("urn:test:b"));
}

TEST_F(ComponentRegistry, PassesOverBrokenManifests)
{
    addManifest("a.lv2", manifest("urn:test:a", key) + "<urn:test:a> lv2:name \"never closed");
    addManifest("b.lv2", manifest("urn:test:b", key) + "nope:nothing a lv2:Plugin .");
    addManifest("c.lv2", manifest("urn:test:c", key) + "<urn:c> <urn:p> " +
                             std::string(400'000, '[') + " .");
    addManifest("d.lv2", manifest("urn:test:d", key));
    addManifest("e.lv2", std::string("urn:qrvx:audio-component#\0\xFF\xFE", 28));
    EXPECT_THAT(found(), ElementsAre("urn:test:d"));
    EXPECT_THAT(complaints(), HasSubstr("a.lv2 is passed over"));
}

TEST_F(ComponentRegistry, IsNotMisledByCutEscapesInLocations)
{
    const std::string plugin = manifest("urn:test:own", key);
    for (const char *location : {"file:///%", "file:///none%2", "file:///%%", "file://", "file:"}) {
        addManifest("own.lv2", plugin +
                                   "<urn:test:own> <http://www.w3.org/2000/01/rdf-schema#"
                                   "seeAlso> <" +
                                   location + "> .\n");
        EXPECT_THAT(found(), ElementsAre("urn:test:own")) << location;
    }
}

TEST_F(ComponentRegistry, IgnoresWhatIsNoManifest)
{
    std::filesystem::create_directories(folder() / "folder.lv2" / "manifest.ttl");
    std::filesystem::create_directories(folder() / "pipe.lv2");
    ASSERT_EQ(::mkfifo((folder() / "pipe.lv2" / "manifest.ttl").c_str(), 0600), 0);
    std::ofstream(folder() / "file.lv2") << "x";
    addManifest("empty.lv2", "");
    EXPECT_THAT(found({}), IsEmpty());
}

TEST_F(ComponentRegistry, DoesNotCountAKeyThatIsNotWhole)
{
    addManifest("a.lv2", manifest("urn:test:a", R"(; au:type "aumf" ; au:subtype "zvqr" )"));
    addManifest("b.lv2", manifest("urn:test:b", R"(; au:type "aumf" ; au:subtype "long code" ;
                                                     au:manufacturer "QRVX" )"));
    EXPECT_THAT(found(), IsEmpty());
    EXPECT_THAT(complaints(), HasSubstr("<urn:test:a>"));
}

TEST_F(ComponentRegistry, ReadsThePathAnewForEachSearch)
{
    EXPECT_THAT(found(), IsEmpty());
    addManifest("a.lv2", manifest("urn:test:a", key));
    EXPECT_THAT(found(), ElementsAre("urn:test:a"));
    std::filesystem::remove_all(folder() / "a.lv2");
    EXPECT_THAT(found(), IsEmpty());
}

TEST_F(ComponentRegistry, ExpandsThePath)
{
    addManifest("a.lv2", manifest("urn:test:a", key));
    const test::EnvironmentVariable variable("TEST_LV2_FOLDER", folder());
    usePath("$TEST_LV2_FOLDER");
    EXPECT_THAT(found(), ElementsAre("urn:test:a"));
    const test::EnvironmentVariable home("HOME", folder().parent_path());
    usePath("~/" + folder().filename().string());
    EXPECT_THAT(found(), ElementsAre("urn:test:a"));
}

TEST_F(ComponentRegistry, LooksBesideTheProgramWhenNoPathIsSet)
{
    const std::string beside = ProcessInfo::processInfo().installationPrefix() + "/lib/lv2";
    EXPECT_THAT(platform::audio::lv2Folders(), ElementsAre(folder().string()));
    usePath(std::nullopt);
    EXPECT_THAT(platform::audio::lv2Folders(), Contains(beside));
}

TEST_F(ComponentRegistry, DerivesADescriptionWhereNoneIsGiven)
{
    for (const char *bundle : {"midi", "ports", "amplifier"})
        link(bundle);
    const auto typeOf = [](const std::string &uri) {
        const auto components =
            AVAudioUnitComponentManager::shared().components(derivedDescription(uri));
        EXPECT_EQ(components.size(), 1U) << uri;
        EXPECT_EQ(components.at(0).pluginURI(), uri);
        return components.at(0).audioComponentDescription().componentType;
    };
    EXPECT_EQ(typeOf("urn:test:mono"), fourCharacterCode("aufx"));
    EXPECT_EQ(typeOf("urn:test:curious"), fourCharacterCode("augn"));
    EXPECT_EQ(typeOf("urn:test:midi:echo"), fourCharacterCode("aumi"));
}

TEST_F(ComponentRegistry, TellsTypesFromThePortsOfInstalledPlugins)
{
    usePath("/usr/lib/lv2");
    const auto typeOf = [](const std::string &uri) -> std::uint32_t {
        for (const auto &component :
             AVAudioUnitComponentManager::shared().components(derivedDescription(uri)))
            if (component.pluginURI() == uri)
                return component.audioComponentDescription().componentType;
        return 0;
    };
    if (typeOf("http://lv2plug.in/plugins/eg-amp") == 0)
        GTEST_SKIP() << "needs lv2-examples";
    EXPECT_EQ(typeOf("http://lv2plug.in/plugins/eg-amp"), fourCharacterCode("aufx"));
    EXPECT_EQ(typeOf("http://lv2plug.in/plugins/eg-midigate"), fourCharacterCode("aumf"));
    EXPECT_EQ(typeOf("http://lv2plug.in/plugins/eg-sampler"), fourCharacterCode("aumu"));
    EXPECT_EQ(typeOf("http://lv2plug.in/plugins/eg-fifths"), fourCharacterCode("aumi"));
    EXPECT_EQ(typeOf("http://lv2plug.in/plugins/eg-metro"), fourCharacterCode("augn"));
}

TEST_F(ComponentRegistry, NamesTheBundlesOfAPluginAndOfItsPresets)
{
    link("amplifier");
    addManifest("more.lv2", "@prefix lv2: <http://lv2plug.in/ns/lv2core#> .\n"
                            "<urn:preset> a <http://lv2plug.in/ns/ext/presets#Preset> ;"
                            " lv2:appliesTo <urn:test:amplifier> .");
    EXPECT_THAT(
        platform::audio::bundlesOfPlugin("urn:test:amplifier"),
        ElementsAre((folder() / "amplifier.lv2").string(), (folder() / "more.lv2").string()));
    EXPECT_THAT(platform::audio::bundlesOfPlugin("urn:test:nowhere"), IsEmpty());
}
