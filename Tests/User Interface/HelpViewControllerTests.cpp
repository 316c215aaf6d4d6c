#include "Platform/Foundation/Bundle.hpp"
#include "Platform/Interface/UIStoryboard.hpp"
#include "Tests/Platform/Interface/Display.hpp"
#include "Tests/Platform/Interface/ShownScreen.hpp"
#include "Tests/Utilities/HTTPServer.hpp"
#include "Tests/Utilities/MainThread.hpp"
#include "Tests/Utilities/PDFDocument.hpp"
#include "Tests/Utilities/Places.hpp"
#include "Tests/Utilities/PrintedLines.hpp"
#include "Tests/Utilities/TemporaryFolder.hpp"
#include "User Interface/HelpViewController.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>

using test::serveMainThreadUntil;
using test::ShownScreen;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace
{

/// Lets the tests call what only the class itself calls, and knows its loads.
class OpenHelp : public HelpViewController
{
public:
    using HelpViewController::HelpViewController;
    using HelpViewController::loadHelpHtml;
    using HelpViewController::loadHelpPdf;
    using HelpViewController::navigateWeb;
};

/// Notes what it would load.
class CountingHelp : public OpenHelp
{
public:
    using OpenHelp::OpenHelp;
    void loadHelpPdf() override { loads.emplace_back("manual"); }
    void navigateWeb() override { loads.emplace_back("site"); }
    void loadHelpHtml() override { loads.emplace_back("page"); }
    std::vector<std::string> loads;
};

/// Resources with the screen, a manual and a help page.
class HelpResources
{
public:
    HelpResources()
    {
        std::filesystem::copy(test::buildPath("share/parvane-host/Help.ui"), folder_.path());
        std::ofstream(path("manual.pdf")) << test::pdfDocument("The Manual");
        std::ofstream(path("help.html")) << "<!DOCTYPE html><title>Help</title>Read this.";
        Bundle::setMain(std::make_shared<Bundle>(URL::fileURLWithPath(folder_.path().string())));
    }
    ~HelpResources() { Bundle::setMain(nullptr); }

    std::string path(const std::string &name) const { return (folder_.path() / name).string(); }
    std::string address(const std::string &name) const
    {
        return URL::fileURLWithPath(path(name)).absoluteString();
    }

private:
    test::TemporaryFolder folder_;
};

WKNavigationAction actionTo(const std::optional<std::string> &address)
{
    return {URLRequest(address ? URL::fromString(*address) : std::nullopt)};
}

WKNavigationResponse responseFrom(const std::optional<std::string> &address)
{
    return {std::make_shared<URLResponse>(address ? URL::fromString(*address) : std::nullopt,
                                          "text/html")};
}

} // namespace

class HelpViewControllerTest : public ::testing::Test
{
protected:
    template <typename Controller>
    static std::shared_ptr<Controller> make()
    {
        return std::make_shared<Controller>("Help", nullptr);
    }

    const HelpResources resources;
    test::PrintedLines printed;
};

TEST_F(HelpViewControllerTest, IsTheStoryboardsDestination)
{
    const auto controller = std::dynamic_pointer_cast<HelpViewController>(
        UIStoryboard("Help", nullptr).instantiateInitialViewController());
    ASSERT_NE(controller, nullptr);
    EXPECT_EQ(controller->webView, nullptr);
    controller->loadViewIfNeeded();
    EXPECT_NE(controller->webView, nullptr);
    EXPECT_NE(controller->buttonExit, nullptr);
}

TEST_F(HelpViewControllerTest, IsTheDelegateOfItsWebView)
{
    const auto controller = make<OpenHelp>();
    controller->loadViewIfNeeded();
    EXPECT_EQ(controller->webView->navigationDelegate.lock(), controller);
    EXPECT_EQ(controller->webView->uiDelegate.lock(), controller);
}

TEST_F(HelpViewControllerTest, BeginsWithNothing)
{
    const auto controller = make<OpenHelp>();
    EXPECT_EQ(controller->webView, nullptr);
    EXPECT_EQ(controller->buttonExit, nullptr);
}

TEST_F(HelpViewControllerTest, ShowsTheManualAtFirst)
{
    const auto controller = make<CountingHelp>();
    controller->loadViewIfNeeded();
    EXPECT_THAT(controller->loads, IsEmpty());
    controller->viewWillAppear(false);
    EXPECT_THAT(controller->loads, ElementsAre("manual"));
}

TEST_F(HelpViewControllerTest, ShowsWhatItWasPreparedFor)
{
    const auto controller = make<CountingHelp>();
    controller->prepareInfo("ShowInfo");
    controller->viewWillAppear(false);
    controller->prepareInfo("ShowHelp");
    controller->viewWillAppear(false);
    controller->prepareInfo("showhelp");
    controller->viewWillAppear(false);
    EXPECT_THAT(controller->loads, ElementsAre("site", "manual"));
}

TEST_F(HelpViewControllerTest, LoadsAgainAtEachAppearance)
{
    const auto controller = make<CountingHelp>();
    controller->viewWillAppear(false);
    controller->viewWillAppear(true);
    EXPECT_THAT(controller->loads, ElementsAre("manual", "manual"));
}

TEST_F(HelpViewControllerTest, LeavesTheViewEmptyForAnotherIdentifier)
{
    const auto controller = make<OpenHelp>();
    controller->prepareInfo("ShowNothing");
    const ShownScreen screen(controller);
    EXPECT_FALSE(controller->webView->isLoading());
    EXPECT_EQ(controller->webView->url(), std::nullopt);
    EXPECT_THAT(printed.lines(), IsEmpty());
}

TEST_F(HelpViewControllerTest, ShowsTheManualAsItIs)
{
    const auto controller = make<OpenHelp>();
    const ShownScreen screen(controller);
    ASSERT_TRUE(serveMainThreadUntil([&] { return printed.lines().size() >= 4; }));
    const std::string manual = resources.address("manual.pdf");
    EXPECT_THAT(printed.lines(),
                ElementsAre("navigationAction: ", manual, "navigationResponse: ", manual));
    EXPECT_EQ(controller->webView->url(), URL::fromString(manual));
}

TEST_F(HelpViewControllerTest, StaysAsItIsWhenTheSystemIsShortOfMemory)
{
    const auto controller = make<CountingHelp>();
    controller->loadViewIfNeeded();
    controller->didReceiveMemoryWarning();
    EXPECT_THAT(controller->loads, IsEmpty());
    EXPECT_THAT(printed.lines(), IsEmpty());
}

TEST_F(HelpViewControllerTest, GoesToTheMakersSite)
{
    const auto controller = make<OpenHelp>();
    controller->prepareInfo("ShowInfo");
    const ShownScreen screen(controller);
    ASSERT_TRUE(serveMainThreadUntil([&] { return printed.lines().size() >= 2; }));
    EXPECT_THAT(printed.lines(), ElementsAre("navigationAction: ", "https://qrvx.example/"));
}

TEST_F(HelpViewControllerTest, ShowsTheHelpPage)
{
    const auto controller = make<OpenHelp>();
    controller->prepareInfo("ShowNothing");
    const ShownScreen screen(controller);
    controller->loadHelpHtml();
    ASSERT_TRUE(serveMainThreadUntil([&] { return controller->webView->title() == "Help"; }));
    EXPECT_EQ(controller->webView->url(), URL::fromString(resources.address("help.html")));
}

TEST_F(HelpViewControllerTest, TellsOfAHelpPageThatIsNoText)
{
    std::ofstream(resources.path("help.html")) << "\xFF\xFE";
    const auto controller = make<OpenHelp>();
    controller->loadViewIfNeeded();
    controller->loadHelpHtml();
    EXPECT_THAT(printed.lines(), ElementsAre("The file '" + resources.path("help.html") +
                                             "' is not text in UTF-8."));
    EXPECT_EQ(controller->webView->url(), std::nullopt);
}

TEST_F(HelpViewControllerTest, TellsOfAHelpPageThatCannotBeRead)
{
    std::filesystem::remove(resources.path("help.html"));
    // Its beginning is no memory.
    std::filesystem::create_symlink("/proc/self/mem", resources.path("help.html"));
    const auto controller = make<OpenHelp>();
    controller->loadViewIfNeeded();
    controller->loadHelpHtml();
    EXPECT_THAT(printed.lines(), ElementsAre(HasSubstr(resources.path("help.html"))));
    EXPECT_EQ(controller->webView->url(), std::nullopt);
}

TEST_F(HelpViewControllerTest, AllowsEveryAction)
{
    const auto controller = make<OpenHelp>();
    controller->loadViewIfNeeded();
    for (const std::string address :
         {"https://elsewhere.example/a.zip", "mailto:someone@qrvx.example", "about:blank"}) {
        std::optional<WKNavigationActionPolicy> answer;
        EXPECT_THAT(test::linesOf([&] {
                        controller->webViewDecidePolicyFor(
                            *controller->webView, actionTo(address),
                            [&](WKNavigationActionPolicy policy) { answer = policy; });
                    }),
                    ElementsAre("navigationAction: ", address));
        EXPECT_EQ(answer, WKNavigationActionPolicy::allow);
    }
}

TEST_F(HelpViewControllerTest, LeavesUnansweredWhatHasNoLocation)
{
    const auto controller = make<OpenHelp>();
    controller->loadViewIfNeeded();
    controller->webViewDecidePolicyFor(*controller->webView, actionTo(std::nullopt),
                                       [](WKNavigationActionPolicy) { FAIL(); });
    controller->webViewDecidePolicyFor(*controller->webView, responseFrom(std::nullopt),
                                       [](WKNavigationResponsePolicy) { FAIL(); });
    EXPECT_THAT(printed.lines(), ElementsAre("navigationAction: ", "navigationResponse: "));
}

TEST_F(HelpViewControllerTest, AllowsPDFHTMLAndWhatHasNoExtension)
{
    const auto controller = make<OpenHelp>();
    controller->loadViewIfNeeded();
    const auto allows = [&](const std::string &address) {
        std::optional<WKNavigationResponsePolicy> answer;
        EXPECT_THAT(test::linesOf([&] {
                        controller->webViewDecidePolicyFor(
                            *controller->webView, responseFrom(address),
                            [&](WKNavigationResponsePolicy policy) { answer = policy; });
                    }),
                    ElementsAre("navigationResponse: ", address));
        EXPECT_TRUE(answer.has_value());
        return answer == WKNavigationResponsePolicy::allow;
    };
    for (const std::string name : {"page.html", "page.HTML", "page.Html", "file.PDF", "file.pdf",
                                   "file.Pdf", "folder/", "", "name", "a.b/", ".html"})
        EXPECT_EQ(allows("https://qrvx.example/" + name), name != "a.b/") << name;
    for (const std::string name : {"page.htm", "image.png", "index.php", "image.jpg", "all.zip",
                                   "page.html.gz", "page.xhtml", "stra%C3%9Fe.pd%C3%B6"})
        EXPECT_FALSE(allows("https://qrvx.example/" + name)) << name;
    EXPECT_TRUE(allows("https://qrvx.example/page.html?name=a.zip#b.jpg"));
    EXPECT_TRUE(allows("https://qrvx.example"));
}

TEST_F(HelpViewControllerTest, OpensNoWindow)
{
    const auto controller = make<OpenHelp>();
    controller->loadViewIfNeeded();
    const std::string address = "https://elsewhere.example/";
    EXPECT_EQ(controller->webViewCreateWebViewWith(*controller->webView, {}, actionTo(address), {}),
              nullptr);
    EXPECT_EQ(
        controller->webViewCreateWebViewWith(*controller->webView, {}, actionTo(std::nullopt), {}),
        nullptr);
    EXPECT_THAT(printed.lines(), ElementsAre("createWebViewWith:", address, "createWebViewWith:"));
}

TEST_F(HelpViewControllerTest, ShowsAndRefusesWhatAServerAnswers)
{
    const test::HTTPServer server({{"/", {.body = "<title>Start</title>"}},
                                   {"/page.html", {.body = "<title>Page</title>"}},
                                   {"/image.png", {.type = "image/png", .body = "not looked at"}}});
    const auto controller = make<OpenHelp>();
    controller->prepareInfo("ShowNothing");
    const ShownScreen screen(controller);
    for (const std::string name : {"/", "/page.html", "/image.png"}) {
        const std::size_t before = printed.lines().size();
        controller->webView->load(URLRequest(URL::fromString(server.address(name))));
        ASSERT_TRUE(serveMainThreadUntil([&] {
            return printed.lines().size() >= before + 4 && !controller->webView->isLoading();
        }));
    }
    EXPECT_EQ(controller->webView->title(), "Page");
    EXPECT_EQ(printed.lines().back(), server.address("/image.png"));
}

TEST_F(HelpViewControllerTest, LeavesThroughItsButton)
{
    const auto below = std::make_shared<test::PlainScreen>();
    const ShownScreen screen(below);
    const auto controller = make<CountingHelp>();
    bool there = false;
    below->present(controller, true, [&] { there = true; });
    ASSERT_TRUE(serveMainThreadUntil([&] { return there; }));
    EXPECT_THAT(controller->loads, ElementsAre("manual"));
    controller->buttonExit->sendActions();
    ASSERT_TRUE(serveMainThreadUntil([&] { return !below->presentedViewController(); }));
    EXPECT_EQ(controller->view()->window(), nullptr);
}

class HelpViewControllerDeathTest : public ::testing::Test
{
protected:
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

    /// A screen with an outlet for the page, on resources that hold the screen alone.
    static std::shared_ptr<OpenHelp> makeBare()
    {
        startInterface();
        const auto controller = std::make_shared<OpenHelp>(
            "Help",
            std::make_shared<Bundle>(URL::fileURLWithPath(test::buildPath("share/parvane-host"))));
        Bundle::setMain(std::make_shared<Bundle>(URL::fileURLWithPath("/nonexistent")));
        controller->loadViewIfNeeded();
        return controller;
    }
};

TEST_F(HelpViewControllerDeathTest, NeedsTheManual)
{
    EXPECT_DEATH(makeBare()->loadHelpPdf(),
                 "Fatal error: Unexpectedly found nil while unwrapping an Optional value");
}

TEST_F(HelpViewControllerDeathTest, NeedsTheHelpPage)
{
    EXPECT_DEATH(makeBare()->loadHelpHtml(),
                 "Fatal error: Unexpectedly found nil while unwrapping an Optional value");
}

TEST_F(HelpViewControllerDeathTest, NeedsItsOutlet)
{
    const auto load = [] {
        startInterface();
        std::make_shared<OpenHelp>(std::nullopt, nullptr)->loadViewIfNeeded();
    };
    EXPECT_DEATH(load(), "Fatal error: Unexpectedly found nil while implicitly unwrapping an "
                         "Optional value");
}
