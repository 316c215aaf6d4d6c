#include "Platform/Foundation/Bundle.hpp"
#include "Platform/Foundation/FileManager.hpp"
#include "Platform/Interface/UIStoryboard.hpp"
#include "Tests/Platform/Interface/Display.hpp"
#include "Tests/Utilities/EnvironmentVariable.hpp"
#include "Tests/Utilities/MainThread.hpp"
#include "Tests/Utilities/PrintedLines.hpp"
#include "Tests/Utilities/StandInEffect.hpp"
#include "Tests/Utilities/TemporaryFolder.hpp"
#include "Tests/Utilities/WaveFile.hpp"
#include "User Interface/ViewController.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

using test::serveMainThreadUntil;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsSupersetOf;

namespace
{

const std::string loaded = "WARNING: Audio unit is nil (yet?).";
const std::string loadingInterface = "ViewController: Loading the audio unit's interface...";
const std::string noView =
    "ERROR: Something is wrong with the view controller and view of the audio unit.";

/// A file manager whose documents are where a test wants them.
class OtherDocuments : public FileManager
{
public:
    explicit OtherDocuments(std::vector<URL> folders) : folders_(std::move(folders)) {}
    std::vector<URL> urls(SearchPathDirectory /*directory*/,
                          SearchPathDomainMask /*domain*/) const override
    {
        return folders_;
    }

private:
    std::vector<URL> folders_;
};

/// Controller and locator keep each other for the life of the process.
std::vector<std::shared_ptr<ViewController>> &kept()
{
    static auto &controllers = *new std::vector<std::shared_ptr<ViewController>>;
    return controllers;
}

} // namespace

class ViewControllerTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        Bundle::setMain(std::make_shared<Bundle>(URL::fileURLWithPath(RESOURCE_DIRECTORY)));
    }

    void TearDown() override
    {
        Bundle::setMain(nullptr);
        FileManager::setDefaultManager(nullptr);
    }

    /// Loads the screen and waits until the effect is there and has been asked
    /// for its view.
    void load()
    {
        controller->loadViewIfNeeded();
        ASSERT_TRUE(serveMainThreadUntil(
            [this] { return printed.contains(loaded) && printed.contains(noView); }));
    }

    static std::shared_ptr<ViewController> fromStoryboard()
    {
        kept().push_back(std::dynamic_pointer_cast<ViewController>(
            UIStoryboard("Main", nullptr).instantiateInitialViewController()));
        return kept().back();
    }

    // Sound goes nowhere.
    const test::EnvironmentVariable soundDriver{"SDL_AUDIODRIVER", "dummy"};
    const test::StandInEffect effects;
    test::PrintedLines printed;
    std::shared_ptr<ViewController> controller = nullptr;
};

TEST_F(ViewControllerTest, ShowsPlayAloneAfterLoading)
{
    controller = fromStoryboard();
    load();
    EXPECT_FALSE(controller->playButton->isHidden());
    EXPECT_TRUE(controller->stopButton->isHidden());
    EXPECT_TRUE(controller->pluginView->isHidden());
}

TEST_F(ViewControllerTest, CanBeMadeFromItsNib)
{
    kept().push_back(std::make_shared<ViewController>("Main", Bundle::main()));
    controller = kept().back();
    EXPECT_EQ(controller->playButton, nullptr);
    load();
    EXPECT_NE(controller->playButton, nullptr);
}

TEST_F(ViewControllerTest, TellsOfItsLoadingLineByLine)
{
    const auto documents = URL::fileURLWithPath("/home/someone/Documents");
    FileManager::setDefaultManager(std::make_shared<OtherDocuments>(std::vector{documents}));
    controller = fromStoryboard();
    load();
    const auto lines = printed.lines();
    ASSERT_GE(lines.size(), 4U);
    EXPECT_EQ(lines[0], "Info: Main view controller loaded.");
    EXPECT_EQ(lines[1], "NOTE: WE ARE IN AUDIO UNIT RELEASE MODE. ENSURE THE STORYBOARD "
                        "CONNECTIONS ARE VALID!");
    EXPECT_THAT(lines,
                Contains("ViewController: The app's documents path is: /home/someone/Documents"));
    EXPECT_THAT(lines,
                Contains("ViewController: The app's resources path is: " RESOURCE_DIRECTORY));
    EXPECT_THAT(lines, IsSupersetOf({loadingInterface, noView}));
}

TEST_F(ViewControllerTest, FindsTheResourcesWithoutADocumentsFolder)
{
    FileManager::setDefaultManager(
        std::make_shared<OtherDocuments>(std::vector{*URL::fromString("x:")}));
    controller = fromStoryboard();
    load();
    EXPECT_TRUE(printed.contains("ViewController: Documents directory is nil."));
    EXPECT_TRUE(
        printed.contains("ViewController: The app's resources path is: " RESOURCE_DIRECTORY));
}

TEST_F(ViewControllerTest, TellsOfMissingResources)
{
    controller = fromStoryboard();
    Bundle::setMain(std::make_shared<Bundle>(URL::fileURLWithPath("/nonexistent")));
    load();
    EXPECT_TRUE(printed.contains("ViewController: Resources folder is nil."));
}

TEST_F(ViewControllerTest, ShowsOneButtonForEachStateOfThePlayer)
{
    controller = fromStoryboard();
    load();
    controller->onPlayerStateChanged(true);
    EXPECT_TRUE(controller->playButton->isHidden());
    EXPECT_FALSE(controller->stopButton->isHidden());
    controller->onPlayerStateChanged(false);
    EXPECT_FALSE(controller->playButton->isHidden());
    EXPECT_TRUE(controller->stopButton->isHidden());
}

TEST_F(ViewControllerTest, ShowsAndHidesTheEffectsArea)
{
    controller = fromStoryboard();
    load();
    controller->onButtonUnit(nullptr);
    EXPECT_FALSE(controller->pluginView->isHidden());
    controller->onButtonUnit(nullptr);
    EXPECT_TRUE(controller->pluginView->isHidden());
}

TEST_F(ViewControllerTest, AsksNothingOfAnAbsentUnit)
{
    controller = std::make_shared<ViewController>(std::nullopt, nullptr);
    controller->onFoundComponent(nullptr);
    EXPECT_THAT(printed.lines(),
                ElementsAre(loadingInterface, "ERROR: The audio unit is not initialized to load "
                                              "the user interface."));
}

TEST_F(ViewControllerTest, OnlyTellsWhenTheViewComesAfterItsEnd)
{
    const auto effect = effects.instantiate();
    ASSERT_NE(effect, nullptr);
    controller = std::make_shared<ViewController>(std::nullopt, nullptr);
    controller->onFoundComponent(effect);
    controller.reset();
    EXPECT_TRUE(serveMainThreadUntil([this] { return printed.contains("ERROR: Self is nil !?"); }));
    EXPECT_FALSE(printed.contains(noView));
}

/// Resources with loops as short as this test.
void fillWithLoops(const std::filesystem::path &folder)
{
    std::filesystem::copy(RESOURCE_DIRECTORY "/Main.ui", folder / "Main.ui");
    test::writeWave(folder / "1.m4a", test::sine(2, 4800, 440, 48000), 48000);
    for (int number = 2; number <= 80; ++number)
        std::filesystem::create_hard_link(folder / "1.m4a",
                                          folder / (std::to_string(number) + ".m4a"));
}

TEST_F(ViewControllerTest, StartsAndStopsThroughItsButtons)
{
    const test::TemporaryFolder resources;
    fillWithLoops(resources.path());
    Bundle::setMain(std::make_shared<Bundle>(URL::fileURLWithPath(resources.path().string())));
    controller = fromStoryboard();
    load();
    controller->playButton->sendActions();
    ASSERT_TRUE(serveMainThreadUntil([this] { return controller->playButton->isHidden(); }));
    EXPECT_TRUE(printed.contains("AUEnginePlayer: Audio engine starting."));
    controller->stopButton->sendActions();
    ASSERT_TRUE(serveMainThreadUntil([this] { return controller->stopButton->isHidden(); }));
    EXPECT_TRUE(printed.contains("AUEnginePlayer: Audio engine stopping."));
}

class ViewControllerDeathTest : public ::testing::Test
{
protected:
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(ViewControllerDeathTest, NeedsItsOutlets)
{
    const auto load = [] {
        startInterface();
        std::make_shared<ViewController>(std::nullopt, nullptr)->loadViewIfNeeded();
    };
    EXPECT_DEATH(load(), "Fatal error: Unexpectedly found nil while implicitly unwrapping an "
                         "Optional value");
}

TEST_F(ViewControllerDeathTest, NeedsAListOfDocumentsFolders)
{
    const auto load = [] {
        startInterface();
        FileManager::setDefaultManager(std::make_shared<OtherDocuments>(std::vector<URL>{}));
        const auto bundle = std::make_shared<Bundle>(URL::fileURLWithPath(RESOURCE_DIRECTORY));
        std::make_shared<ViewController>("Main", bundle)->loadViewIfNeeded();
    };
    EXPECT_DEATH(load(), "Fatal error: Index out of range");
}

TEST_F(ViewControllerDeathTest, NeedsALocatorToPlay)
{
    const auto press = [] {
        std::make_shared<ViewController>(std::nullopt, nullptr)->onPlayButton(nullptr);
    };
    EXPECT_DEATH(press(), "Fatal error: Unexpectedly found nil while implicitly unwrapping an "
                          "Optional value");
}
