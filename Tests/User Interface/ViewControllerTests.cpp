#include "Audio Engine/AUExtensionManager.hpp"
#include "Platform/Foundation/Bundle.hpp"
#include "Platform/Foundation/FileManager.hpp"
#include "Platform/Interface/AUViewController.hpp"
#include "Platform/Interface/UIDocumentPickerViewController.hpp"
#include "Platform/Interface/UIStoryboard.hpp"
#include "Platform/Interface/UIStoryboardSegue.hpp"
#include "Tests/Platform/Interface/Dialogs.hpp"
#include "Tests/Platform/Interface/Display.hpp"
#include "Tests/Platform/Interface/LeakCheck.hpp"
#include "Tests/Utilities/EnvironmentVariable.hpp"
#include "Tests/Utilities/MainThread.hpp"
#include "Tests/Utilities/PDFDocument.hpp"
#include "Tests/Utilities/Places.hpp"
#include "Tests/Utilities/PrintedLines.hpp"
#include "Tests/Utilities/ScriptedUnit.hpp"
#include "Tests/Utilities/StandInEffect.hpp"
#include "Tests/Utilities/TemporaryFolder.hpp"
#include "Tests/Utilities/WaveFile.hpp"
#include "User Interface/HelpViewController.hpp"
#include "User Interface/ViewController.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>

#include <unistd.h>

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

/// Those of this build.
std::string builtResources()
{
    return test::buildPath("share/parvane-host");
}

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

/// Lets the tests call what only the class itself calls.
class OpenViewController : public ViewController
{
public:
    using ViewController::audioUnitManager;
    using ViewController::audioUnitView;
    using ViewController::audioUnitViewController;
    using ViewController::embedPlugInView;
    using ViewController::resetPluginView;
    using ViewController::ViewController;
};

/// An effect's view controller; without a view if told so.
class EffectView : public AUViewController
{
public:
    explicit EffectView(bool hasView = true)
        : AUViewController(std::nullopt, nullptr), hasView_(hasView)
    {
    }
    void loadView() override
    {
        if (hasView_)
            AUViewController::loadView();
    }
    void willMove(const std::shared_ptr<UIViewController> &newParent) override
    {
        movesTo = newParent;
        wasInsideWhenAdded = view()->superview() != nullptr;
    }
    void didMove(const std::shared_ptr<UIViewController> &newParent) override
    {
        movedTo = newParent;
        const auto area = view()->superview();
        wasPinnedWhenMoved = area && area->constraints().size() == 4;
    }

    std::shared_ptr<UIViewController> movesTo;
    std::shared_ptr<UIViewController> movedTo;
    bool wasInsideWhenAdded = false;
    bool wasPinnedWhenMoved = false;

private:
    bool hasView_;
};

std::shared_ptr<AVAudioUnit> unitWith(const std::shared_ptr<AUViewController> &viewController)
{
    const auto unit = std::make_shared<test::ScriptedUnit>();
    unit->viewController = viewController;
    return std::make_shared<AVAudioUnit>(unit);
}

/// Counts what it is told instead of doing it.
class CountingManager : public AUExtensionManager
{
public:
    using AUExtensionManager::AUExtensionManager;
    bool togglePlayback() override
    {
        ++toggles;
        return false;
    }
    int toggles = 0;
};

/// What each constraint of `view` ties, in order.
std::vector<std::pair<NSLayoutAttribute, NSLayoutAttribute>> tiesOf(const UIView &view)
{
    std::vector<std::pair<NSLayoutAttribute, NSLayoutAttribute>> ties;
    for (const auto &constraint : view.constraints())
        ties.emplace_back(constraint->firstAttribute(), constraint->secondAttribute());
    return ties;
}

const std::vector<std::pair<NSLayoutAttribute, NSLayoutAttribute>> allEdges{
    {NSLayoutAttribute::top, NSLayoutAttribute::top},
    {NSLayoutAttribute::leading, NSLayoutAttribute::leading},
    {NSLayoutAttribute::bottom, NSLayoutAttribute::bottom},
    {NSLayoutAttribute::trailing, NSLayoutAttribute::trailing}};

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
        Bundle::setMain(std::make_shared<Bundle>(URL::fileURLWithPath(builtResources())));
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

TEST_F(ViewControllerTest, BeginsWithNothing)
{
    const auto fromNib = std::make_shared<OpenViewController>("Main", Bundle::main());
    EXPECT_EQ(fromNib->audioUnitManager, nullptr);
    EXPECT_EQ(fromNib->audioUnitViewController, nullptr);
    EXPECT_EQ(fromNib->audioUnitView(), nullptr);
    for (const std::shared_ptr<ViewController> &made :
         {std::shared_ptr<ViewController>(fromNib),
          std::dynamic_pointer_cast<ViewController>(
              UIStoryboard("Main", nullptr).instantiateInitialViewController())}) {
        ASSERT_NE(made, nullptr);
        EXPECT_EQ(made->pluginView, nullptr);
        EXPECT_EQ(made->buttonUnit, nullptr);
        EXPECT_EQ(made->buttonInfo, nullptr);
        EXPECT_EQ(made->buttonHelp, nullptr);
        EXPECT_EQ(made->playButton, nullptr);
        EXPECT_EQ(made->stopButton, nullptr);
    }
    EXPECT_THAT(printed.lines(), ::testing::IsEmpty());
}

TEST_F(ViewControllerTest, HasAnOutletForEachControlOfTheStoryboard)
{
    controller = fromStoryboard();
    load();
    for (const auto &button :
         {controller->buttonUnit, controller->buttonInfo, controller->buttonHelp,
          controller->playButton, controller->stopButton})
        EXPECT_NE(button, nullptr);
    EXPECT_NE(controller->pluginView, nullptr);
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
                Contains("ViewController: The app's resources path is: " + builtResources()));
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
        printed.contains("ViewController: The app's resources path is: " + builtResources()));
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
    std::filesystem::copy(builtResources() + "/Main.ui", folder / "Main.ui");
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

/// A screen whose view is loaded, with the effect searched for.
class LoadedViewController : public ViewControllerTest
{
protected:
    void SetUp() override
    {
        for (const char *name : {"Main.ui", "Help.ui"})
            std::filesystem::copy(std::filesystem::path(builtResources()) / name, resources.path());
        std::ofstream(resources.path() / "manual.pdf") << test::pdfDocument("The Manual");
        Bundle::setMain(std::make_shared<Bundle>(URL::fileURLWithPath(resources.path().string())));
        open = std::make_shared<OpenViewController>("Main", nullptr);
        controller = open;
        kept().push_back(controller);
        load();
        before = printed.lines().size();
    }

    /// The lines since the screen was loaded.
    std::vector<std::string> newLines() const
    {
        const auto lines = printed.lines();
        return {lines.begin() + static_cast<std::ptrdiff_t>(before), lines.end()};
    }

    const test::TemporaryFolder resources;
    std::shared_ptr<OpenViewController> open;
    std::size_t before = 0;
};

TEST_F(LoadedViewController, IsTheDelegateOfItsEnginePlayer)
{
    EXPECT_EQ(open->audioUnitManager->auEngine()->delegate.load(), controller);
}

TEST_F(LoadedViewController, TogglesOnceWithEitherButton)
{
    const auto manager = std::make_shared<CountingManager>(controller);
    open->audioUnitManager = manager;
    controller->playButton->sendActions();
    EXPECT_EQ(manager->toggles, 1);
    controller->onStopButton(controller->stopButton);
    EXPECT_EQ(manager->toggles, 2);
    controller->onPlayButton(nullptr);
    EXPECT_EQ(manager->toggles, 3);
}

TEST_F(LoadedViewController, OnlyHearsOfWhatItHasNothingToDoFor)
{
    const CGRect area = controller->pluginView->frame();
    open->audioUnitViewController = std::make_shared<EffectView>();
    const CGRect effect = open->audioUnitView()->frame();
    controller->onEngineInitialized();
    controller->onFileSelect("1.m4a");
    controller->onLoop(3);
    controller->viewWillAppear(true);
    controller->viewDidDisappear(true);
    controller->viewDidLayoutSubviews();
    EXPECT_THAT(newLines(), ::testing::IsEmpty());
    EXPECT_EQ(controller->pluginView->frame(), area) << "A layout gives the effect no shape.";
    EXPECT_EQ(open->audioUnitView()->frame(), effect);
    EXPECT_FALSE(controller->playButton->isHidden());
    EXPECT_TRUE(controller->stopButton->isHidden());
}

TEST_F(LoadedViewController, EmbedsTheEffectsView)
{
    const auto effect = std::make_shared<EffectView>();
    controller->pluginView->setFrame(CGRect(0, 0, 640.5, 480));
    controller->onFoundComponent(unitWith(effect));
    EXPECT_THAT(newLines(), ElementsAre(loadingInterface));
    EXPECT_THAT(controller->children(), ElementsAre(effect));
    EXPECT_EQ(effect->movesTo, controller);
    EXPECT_FALSE(effect->wasInsideWhenAdded);
    EXPECT_EQ(effect->movedTo, controller);
    EXPECT_TRUE(effect->wasPinnedWhenMoved);
    EXPECT_EQ(effect->view()->superview(), controller->pluginView);
    EXPECT_EQ(effect->view()->frame(), CGRect(0, 0, 640.5, 480));
    EXPECT_FALSE(effect->view()->translatesAutoresizingMaskIntoConstraints);
    EXPECT_EQ(tiesOf(*controller->pluginView), allEdges);
    EXPECT_EQ(open->audioUnitViewController, nullptr) << "Nothing keeps it but its parent.";
}

TEST_F(LoadedViewController, ShowsTheEffectsViewAtThePressOfAButton)
{
    const test::ShownScreen screen(controller);
    const auto effect = std::make_shared<EffectView>();
    controller->onFoundComponent(unitWith(effect));
    const auto isSeen = [&] { return effect->view()->widget().get().get_mapped(); };
    EXPECT_FALSE(isSeen());
    const CGRect area = controller->pluginView->frame();
    EXPECT_GT(area.size.width, 300);
    EXPECT_EQ(effect->view()->frame(), controller->pluginView->bounds());

    controller->buttonUnit->sendActions();
    EXPECT_TRUE(test::shows([&] {
        return test::ShownScreen::drawnFrame(*effect->view(), *controller->view()) == area;
    }));
    EXPECT_EQ(controller->pluginView->frame(), area) << "Nothing moves for the effect.";
    controller->buttonUnit->sendActions();
    EXPECT_TRUE(test::shows([&] { return !isSeen(); }));
}

TEST_F(LoadedViewController, TellsOfAnEffectWithoutAView)
{
    controller->onFoundComponent(unitWith(std::make_shared<EffectView>(false)));
    controller->onFoundComponent(unitWith(nullptr));
    EXPECT_THAT(newLines(), ElementsAre(loadingInterface, noView, loadingInterface, noView));
    EXPECT_THAT(controller->children(), ::testing::IsEmpty());
}

TEST_F(LoadedViewController, EmbedsTheViewThatTheLocatorHolds)
{
    const auto effect = std::make_shared<EffectView>();
    open->audioUnitManager->viewController = effect;
    controller->pluginView->setFrame(CGRect(0, 0, 400, 300));
    open->embedPlugInView();
    EXPECT_THAT(newLines(), ::testing::IsEmpty());
    EXPECT_EQ(effect->parent(), controller);
    EXPECT_EQ(effect->movedTo, controller);
    EXPECT_EQ(effect->view()->frame(), CGRect(0, 0, 400, 300));
    EXPECT_EQ(tiesOf(*controller->pluginView), allEdges);
}

TEST_F(LoadedViewController, EmbedsNothingWithoutAView)
{
    open->audioUnitManager->viewController = std::make_shared<EffectView>(false);
    open->embedPlugInView();
    EXPECT_THAT(controller->children(), ::testing::IsEmpty());
    EXPECT_THAT(controller->pluginView->subviews(), ::testing::IsEmpty());
}

TEST_F(LoadedViewController, CannotShapeTheViewThatItHasNot)
{
    const CGRect frame = controller->pluginView->frame();
    open->resetPluginView(800, 600);
    controller->centerPluginView();
    EXPECT_THAT(newLines(), ElementsAre("WARNING: Cannot reset the pluginview (yet).",
                                        "WARNING: Cannot reset the pluginview (yet)."));
    EXPECT_EQ(controller->pluginView->frame(), frame);
}

/// With an effect's view to give a shape to.
class ShapedView : public LoadedViewController
{
protected:
    void SetUp() override
    {
        LoadedViewController::SetUp();
        open->audioUnitViewController = effect;
        controller->pluginView->addSubview(effect->view());
    }

    std::shared_ptr<EffectView> effect = std::make_shared<EffectView>();
};

TEST_F(ShapedView, IsCentredInLandscape)
{
    controller->view()->setFrame(CGRect(0, 0, 800, 1000));
    open->resetPluginView(800, 600);
    EXPECT_EQ(controller->pluginView->frame(), CGRect(0, 200, 800, 600));
    EXPECT_EQ(effect->view()->frame(), CGRect(0, 0, 800, 600));
}

TEST_F(ShapedView, IsLandscapeWhereBothSidesAreEqual)
{
    controller->view()->setFrame(CGRect(0, 0, 600, 600));
    open->resetPluginView(600, 600);
    EXPECT_EQ(controller->pluginView->frame(), CGRect(0, 75, 600, 450));
    EXPECT_EQ(effect->view()->frame(), CGRect(0, 0, 600, 450));
}

TEST_F(ShapedView, ReachesBeyondBothSidesInPortrait)
{
    controller->view()->setFrame(CGRect(0, 0, 300, 600));
    open->resetPluginView(300, 600);
    EXPECT_EQ(controller->pluginView->frame(), CGRect(-250, 0, 800, 600));
    EXPECT_EQ(effect->view()->frame(), CGRect(0, 0, 800, 600));
}

TEST_F(ShapedView, TakesTheSizeOfTheScreen)
{
    controller->view()->setFrame(CGRect(5, 6, 1000, 800));
    controller->centerPluginView();
    EXPECT_EQ(controller->pluginView->frame(), CGRect(0, 25, 1000, 750));
    EXPECT_THAT(newLines(), ::testing::IsEmpty());
}

TEST_F(ShapedView, IsDrawnAsWideAsItIs)
{
    const test::ShownScreen screen(controller);
    controller->buttonUnit->sendActions();
    controller->centerPluginView();
    const CGSize size = controller->view()->bounds().size;
    const CGRect frame(0, size.height * 0.5 - size.width * 0.75 * 0.5, size.width,
                       size.width * 0.75);
    EXPECT_EQ(controller->pluginView->frame(), frame);
    EXPECT_TRUE(test::shows([&] {
        const CGRect drawn =
            test::ShownScreen::drawnFrame(*controller->pluginView, *controller->view());
        return std::abs(drawn.origin.y - frame.origin.y) <= 0.5 &&
               drawn.size.width == frame.size.width;
    }));
}

TEST_F(LoadedViewController, TellsTheHelpScreenWhatToShow)
{
    const test::ShownScreen screen(controller);
    controller->buttonHelp->sendActions();
    EXPECT_THAT(newLines()[0], "ShowHelp");
    EXPECT_NE(std::dynamic_pointer_cast<HelpViewController>(controller->presentedViewController()),
              nullptr);
}

TEST_F(LoadedViewController, PreparesTheHelpScreen)
{
    class Prepared : public HelpViewController
    {
    public:
        using HelpViewController::HelpViewController;
        void prepareInfo(const std::string &which) override { identifiers.push_back(which); }
        std::vector<std::string> identifiers;
    };
    const auto help = std::make_shared<Prepared>(std::nullopt, nullptr);
    for (const std::string identifier : {"ShowInfo", "ShowHelp", "ShowOther", ""}) {
        UIStoryboardSegue segue(identifier, controller, help);
        controller->prepare(segue, nullptr);
    }
    UIStoryboardSegue nameless(std::nullopt, controller, help);
    controller->prepare(nameless, nullptr);
    EXPECT_THAT(newLines(), ElementsAre("ShowInfo", "ShowHelp", "ShowOther", ""));
    EXPECT_THAT(help->identifiers, ElementsAre("ShowInfo", "ShowHelp"));
}

TEST_F(LoadedViewController, IgnoresTheDestinationOfAnUnknownSegue)
{
    UIStoryboardSegue segue("ShowOther", controller, std::make_shared<EffectView>());
    controller->prepare(segue, nullptr);
    EXPECT_THAT(newLines(), ElementsAre("ShowOther"));
}

TEST_F(LoadedViewController, AlertsAndHearsTheAnswer)
{
    const test::ShownScreen screen(controller);
    for (const int response : {0, 1}) {
        controller->alertMessage("Title", "Something happened");
        GtkDialog *dialog = test::dialogToCome();
        ASSERT_NE(dialog, nullptr);
        EXPECT_EQ(test::buttonText(dialog, 0), "OK");
        EXPECT_EQ(test::buttonText(dialog, 1), "Cancel");
        gtk_dialog_response(dialog, response);
        ASSERT_TRUE(test::shows([] { return test::shownDialog() == nullptr; }));
    }
    EXPECT_THAT(newLines(), ElementsAre("Title: Something happened", "Alert was confirmed.",
                                        "Title: Something happened", "Alert was canceled."));
}

TEST_F(LoadedViewController, AsksForAFolder)
{
    test::outgrowTheTableOfNames();
    const test::ShownScreen screen(controller);
    controller->openFilePicker();
    GtkDialog *dialog = test::dialogToCome();
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(gtk_file_chooser_get_action(GTK_FILE_CHOOSER(dialog)),
              GTK_FILE_CHOOSER_ACTION_SELECT_FOLDER);
    EXPECT_FALSE(gtk_file_chooser_get_select_multiple(GTK_FILE_CHOOSER(dialog)));
    gtk_dialog_response(dialog, GTK_RESPONSE_CANCEL);
    EXPECT_THAT(newLines(), ElementsAre("The document picker was canceled."));
}

TEST_F(LoadedViewController, TellsWhatWasPicked)
{
    UIDocumentPickerViewController picker({"public.folder"}, UIDocumentPickerMode::open);
    const auto first = URL::fileURLWithPath("/nowhere/My Music");
    const auto second = URL::fileURLWithPath("/nowhere/b");
    controller->documentPicker(picker, first);
    controller->documentPicker(picker, std::vector{first, second});
    controller->documentPicker(picker, std::vector<URL>{});
    EXPECT_THAT(newLines(),
                ElementsAre("documentPicker (didPickDocumentAt): /nowhere/My Music",
                            "documentPicker: [file:///nowhere/My%20Music, file:///nowhere/b]",
                            "documentPicker (didPickDocumentsAt): /nowhere/My Music",
                            "documentPicker: []"));
}

class ViewControllerDeathTest : public ::testing::Test
{
protected:
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

const std::string missing =
    "Fatal error: Unexpectedly found nil while implicitly unwrapping an Optional value";

/// Loads the screen of a storyboard that lacks one of its outlets. What it prints goes
/// where a death test reads.
void loadWithout(const std::function<void(ViewController &)> &forget)
{
    class Incomplete : public ViewController
    {
    public:
        Incomplete(const std::shared_ptr<Bundle> &bundle,
                   std::function<void(ViewController &)> forgetOne)
            : ViewController("Main", bundle), forget(std::move(forgetOne))
        {
        }
        void loadView() override
        {
            ViewController::loadView();
            forget(*this);
        }
        std::function<void(ViewController &)> forget;
    };
    dup2(STDERR_FILENO, STDOUT_FILENO);
    startInterface();
    Bundle::setMain(std::make_shared<Bundle>(URL::fileURLWithPath(builtResources())));
    std::make_shared<Incomplete>(Bundle::main(), forget)->loadViewIfNeeded();
}

TEST_F(ViewControllerDeathTest, NeedsItsButtonsBeforeItSearches)
{
    EXPECT_DEATH(loadWithout([](ViewController &screen) { screen.playButton.reset(); }),
                 "^Info: Main view controller loaded.\n" + missing);
    EXPECT_DEATH(loadWithout([](ViewController &screen) { screen.stopButton.reset(); }),
                 "^Info: Main view controller loaded.\n" + missing);
}

TEST_F(ViewControllerDeathTest, NeedsTheEffectsAreaBeforeItLooksForFolders)
{
    const auto load = [] {
        loadWithout([](ViewController &screen) { screen.pluginView.reset(); });
    };
    EXPECT_DEATH(load(),
                 "^Info: Main view controller loaded.\nNOTE: WE ARE IN AUDIO UNIT.*" + missing);
    EXPECT_DEATH(load(), ::testing::Not(::testing::HasSubstr("documents path")));
}

TEST_F(ViewControllerDeathTest, NeedsItsOutletsWhereverItUsesThem)
{
    const auto loose = [] { return std::make_shared<OpenViewController>(std::nullopt, nullptr); };
    EXPECT_DEATH(loose()->onPlayerStateChanged(true), missing);
    EXPECT_DEATH(loose()->onPlayerStateChanged(false), missing);
    EXPECT_DEATH(loose()->onButtonUnit(nullptr), missing);
    EXPECT_DEATH(loose()->onStopButton(nullptr), missing);
    EXPECT_DEATH(loose()->embedPlugInView(), missing);
}

TEST_F(ViewControllerDeathTest, NeedsAListOfDocumentsFolders)
{
    const auto load = [] {
        startInterface();
        FileManager::setDefaultManager(std::make_shared<OtherDocuments>(std::vector<URL>{}));
        const auto bundle = std::make_shared<Bundle>(URL::fileURLWithPath(builtResources()));
        std::make_shared<ViewController>("Main", bundle)->loadViewIfNeeded();
    };
    EXPECT_DEATH(load(), "Fatal error: Index out of range");
}

TEST_F(ViewControllerDeathTest, NeedsAViewControllerToEmbed)
{
    const auto embed = [] {
        const auto controller = std::make_shared<OpenViewController>(std::nullopt, nullptr);
        controller->audioUnitManager = std::make_shared<AUExtensionManager>(controller);
        controller->embedPlugInView();
    };
    EXPECT_DEATH(embed(), "Fatal error: ERROR: Could not load audio unit's view controller.");
}

TEST_F(ViewControllerDeathTest, NeedsTheHelpScreenAtTheEndOfItsSegues)
{
    const auto prepare = [](const std::string &identifier) {
        const auto controller = std::make_shared<ViewController>(std::nullopt, nullptr);
        UIStoryboardSegue segue(identifier, controller, controller);
        controller->prepare(segue, nullptr);
    };
    for (const std::string identifier : {"ShowInfo", "ShowHelp"})
        EXPECT_DEATH(prepare(identifier), "Fatal error: The segue '" + identifier +
                                              "' does not lead to a HelpViewController.");
}

TEST_F(ViewControllerDeathTest, NeedsALocatorToPlay)
{
    const auto press = [] {
        std::make_shared<ViewController>(std::nullopt, nullptr)->onPlayButton(nullptr);
    };
    EXPECT_DEATH(press(), missing);
}
