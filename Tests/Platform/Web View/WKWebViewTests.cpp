#include "Platform/Interface/WKWebView.hpp"
#include "Tests/Platform/Interface/Display.hpp"
#include "Tests/Platform/Interface/ShownScreen.hpp"
#include "Tests/Utilities/EnvironmentVariable.hpp"
#include "Tests/Utilities/HTTPServer.hpp"
#include "Tests/Utilities/MainThread.hpp"
#include "Tests/Utilities/PDFDocument.hpp"
#include "Tests/Utilities/TemporaryFolder.hpp"

#include <gtk/gtk.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>

using test::HTTPServer;
using test::PlainScreen;
using test::serveMainThreadUntil;
using test::ShownScreen;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSubsetOf;
using ::testing::Not;

namespace
{

/// Allows all but what a test forbids, and notes everything.
class Guard : public WKNavigationDelegate, public WKUIDelegate
{
public:
    void webViewDecidePolicyFor(
        WKWebView & /*webView*/, const WKNavigationAction &action,
        const std::function<void(WKNavigationActionPolicy)> &decisionHandler) override
    {
        const std::string address = action.request.url ? action.request.url->absoluteString() : "";
        events.push_back("action " + address);
        if (unanswered.count(address) > 0)
            kept.push_back(decisionHandler);
        else
            decisionHandler(forbidden.count(address) > 0 ? WKNavigationActionPolicy::cancel
                                                         : WKNavigationActionPolicy::allow);
    }

    void webViewDecidePolicyFor(
        WKWebView & /*webView*/, const WKNavigationResponse &response,
        const std::function<void(WKNavigationResponsePolicy)> &decisionHandler) override
    {
        const std::string address = response.response->url()->absoluteString();
        types.push_back(response.response->mimeType().value_or("none"));
        events.push_back("response " + address);
        decisionHandler(forbiddenResponses.count(address) > 0 ? WKNavigationResponsePolicy::cancel
                                                              : WKNavigationResponsePolicy::allow);
    }

    std::shared_ptr<WKWebView>
    webViewCreateWebViewWith(WKWebView & /*webView*/, const WKWebViewConfiguration & /*how*/,
                             const WKNavigationAction &action,
                             const WKWindowFeatures & /*features*/) override
    {
        events.push_back("window " + action.request.url->absoluteString());
        return nullptr;
    }

    void webViewDidFinish(WKWebView & /*webView*/) override { ++finished; }

    std::vector<std::string> events;
    std::vector<std::string> types;
    std::set<std::string> forbidden;
    std::set<std::string> forbiddenResponses;
    std::set<std::string> unanswered;
    std::vector<std::function<void(WKNavigationActionPolicy)>> kept;
    int finished = 0;
};

std::string page(const std::string &title, const std::string &body = "")
{
    return "<!DOCTYPE html><title>" + title + "</title>" + body;
}

/// A server on 127.0.0.1 whose certificate nobody has vouched for.
class UnprovenServer
{
public:
    UnprovenServer()
    {
        const std::string key = (folder_.path() / "key.pem").string();
        const std::string certificate = (folder_.path() / "certificate.pem").string();
        const std::string make = "openssl req -x509 -newkey ec -pkeyopt "
                                 "ec_paramgen_curve:P-256 -nodes -days 1 -subj /CN=127.0.0.1 "
                                 "-addext subjectAltName=IP:127.0.0.1 -keyout " +
                                 key + " -out " + certificate + " 2>/dev/null";
        if (std::system(make.c_str()) != 0)
            throw std::runtime_error("There is no certificate.");
        const std::string serve = "echo $$; exec openssl s_server -www -accept 127.0.0.1:0 -key " +
                                  key + " -cert " + certificate + " </dev/null 2>&1";
        output_.reset(popen(serve.c_str(), "r"));
        process_ = std::stoi(line());
        const std::string accepts = "ACCEPT ";
        std::string text = line();
        while (!text.starts_with(accepts))
            text = line();
        address_ = "https://" + text.substr(accepts.size()) + "/";
    }
    ~UnprovenServer() { kill(process_, SIGTERM); }
    UnprovenServer(const UnprovenServer &) = delete;
    UnprovenServer &operator=(const UnprovenServer &) = delete;

    const std::string &address() const { return address_; }

private:
    struct Close {
        void operator()(FILE *file) const { pclose(file); }
    };

    std::string line()
    {
        std::array<char, 256> text{};
        if (!fgets(text.data(), static_cast<int>(text.size()), output_.get()))
            throw std::runtime_error("The server does not start.");
        const std::string whole = text.data();
        return whole.substr(0, whole.find('\n'));
    }

    const test::TemporaryFolder folder_;
    std::unique_ptr<FILE, Close> output_;
    pid_t process_ = 0;
    std::string address_;
};

/// Processes of the web engine below this one.
std::vector<pid_t> webProcesses()
{
    std::map<pid_t, pid_t> parents;
    std::vector<pid_t> engines;
    for (const auto &entry : std::filesystem::directory_iterator("/proc")) {
        std::ifstream file(entry.path() / "stat");
        pid_t process = 0;
        std::string name;
        char state = 0;
        pid_t parent = 0;
        if (!(file >> process >> name >> state >> parent))
            continue;
        parents[process] = parent;
        if (name == "(WebKitWebProces)")
            engines.push_back(process);
    }
    std::erase_if(engines, [&](pid_t process) {
        while (process > 1 && process != getpid())
            process = parents[process];
        return process != getpid();
    });
    return engines;
}

/// The widget inside `widget` of GTK type `type` that shows `text` and can be seen.
GtkWidget *findShown(GtkWidget *widget, const std::string &text)
{
    const char *shown = GTK_IS_LABEL(widget) ? gtk_label_get_text(GTK_LABEL(widget)) : nullptr;
    if (shown && text == shown && gtk_widget_get_mapped(widget))
        return widget;
    for (auto *child = gtk_widget_get_first_child(widget); child;
         child = gtk_widget_get_next_sibling(child)) {
        if (auto *found = findShown(child, text))
            return found;
    }
    return nullptr;
}

/// The widget inside `widget` with that class of the style sheet.
GtkWidget *findOfClass(GtkWidget *widget, const char *name)
{
    if (gtk_widget_has_css_class(widget, name))
        return widget;
    for (auto *child = gtk_widget_get_first_child(widget); child;
         child = gtk_widget_get_next_sibling(child)) {
        if (auto *found = findOfClass(child, name))
            return found;
    }
    return nullptr;
}

} // namespace

class WKWebViewTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        webView->navigationDelegate = guard;
        webView->uiDelegate = guard;
        screen.window->rootViewController()->view()->addSubview(webView);
    }

    void load(const std::string &address) const
    {
        webView->load(URLRequest(URL::fromString(address)));
    }

    bool showsPage(const std::string &title) const
    {
        return serveMainThreadUntil(
            [&] { return webView->title() == title && !webView->isLoading(); });
    }

    bool showsText(const std::string &text) const
    {
        return serveMainThreadUntil(
            [&] { return findShown(webView->widget().get().gobj(), text) != nullptr; });
    }

    /// Loads and waits for the end of it, good or bad.
    void loadToTheEnd(const std::string &address) const
    {
        const int before = guard->finished;
        load(address);
        ASSERT_TRUE(serveMainThreadUntil([&] { return guard->finished > before; }));
    }

    std::shared_ptr<Guard> guard = std::make_shared<Guard>();
    ShownScreen screen{std::make_shared<PlainScreen>()};
    std::shared_ptr<WKWebView> webView = [] {
        auto view = std::make_shared<WKWebView>();
        view->setFrame(CGRect(0, 0, 400, 300));
        return view;
    }();
};

TEST_F(WKWebViewTest, AsksForTheActionAndForTheResponse)
{
    const HTTPServer server({{"/", {.body = page("First")}}});
    EXPECT_EQ(webView->url(), std::nullopt);
    load(server.address("/"));
    EXPECT_TRUE(showsPage("First"));
    EXPECT_THAT(guard->events,
                ElementsAre("action " + server.address("/"), "response " + server.address("/")));
    EXPECT_THAT(guard->types, ElementsAre("text/html"));
    EXPECT_EQ(webView->url(), URL::fromString(server.address("/")));
}

TEST_F(WKWebViewTest, AsksForEachStepOfARedirection)
{
    const HTTPServer server({{"/old", {.status = 302, .headers = {"Location: /new"}}},
                             {"/new", {.body = page("New")}}});
    load(server.address("/old"));
    EXPECT_TRUE(showsPage("New"));
    EXPECT_THAT(guard->events,
                ElementsAre("action " + server.address("/old"), "action " + server.address("/new"),
                            "response " + server.address("/new")));
}

TEST_F(WKWebViewTest, DoesNotGoWhereItMayNot)
{
    const HTTPServer server({{"/a", {.body = page("A")}}, {"/b", {.body = page("B")}}});
    guard->forbidden = {server.address("/b")};
    load(server.address("/a"));
    ASSERT_TRUE(showsPage("A"));
    load(server.address("/b"));
    load(server.address("/a"));
    ASSERT_TRUE(serveMainThreadUntil([&] { return guard->finished >= 2; }));
    EXPECT_THAT(server.requests(), Not(Contains("/b")));
}

TEST_F(WKWebViewTest, DoesNotShowWhatItMayNot)
{
    const HTTPServer server({{"/a", {.body = page("A")}}, {"/b.htm", {.body = page("B")}}});
    guard->forbiddenResponses = {server.address("/b.htm")};
    load(server.address("/a"));
    ASSERT_TRUE(showsPage("A"));
    loadToTheEnd(server.address("/b.htm"));
    EXPECT_THAT(server.requests(), Contains("/b.htm"));
    EXPECT_EQ(webView->title(), "A");
    EXPECT_EQ(findShown(webView->widget().get().gobj(), "This page cannot be shown."), nullptr);
}

TEST_F(WKWebViewTest, WaitsForAnAnswerToTheEnd)
{
    const HTTPServer server({{"/", {.body = page("Late")}}});
    guard->unanswered = {server.address("/")};
    load(server.address("/"));
    ASSERT_TRUE(serveMainThreadUntil([&] { return !guard->kept.empty(); }));
    EXPECT_THAT(server.requests(), IsEmpty());

    guard->kept.front()(WKNavigationActionPolicy::allow);
    guard->kept.front()(WKNavigationActionPolicy::cancel);
    EXPECT_TRUE(showsPage("Late")) << "The first answer counts.";
}

TEST_F(WKWebViewTest, CanGoWithAQuestionOpen)
{
    const HTTPServer server({{"/", {.body = page("Late")}}});
    guard->unanswered = {server.address("/")};
    load(server.address("/"));
    ASSERT_TRUE(serveMainThreadUntil([&] { return !guard->kept.empty(); }));
    webView->removeFromSuperview();
    webView.reset();
    guard->kept.front()(WKNavigationActionPolicy::allow);
    test::drainMainQueue();
    EXPECT_THAT(server.requests(), IsEmpty());
}

TEST_F(WKWebViewTest, OpensNoWindow)
{
    // It says when it has been drawn, and can be clicked.
    const std::string body =
        "<a style='position: fixed; inset: 0' target='_blank' href='/other'>Other</a>"
        "<script>requestAnimationFrame(() => requestAnimationFrame(() => "
        "document.title = 'Links'))</script>";
    const HTTPServer server({{"/", {.body = page("Empty", body)}}});
    load(server.address("/"));
    ASSERT_TRUE(showsPage("Links"));
    // A window is for nobody but a person to ask for.
    ASSERT_EQ(std::system("xdotool mousemove 200 150 click 1"), 0);
    const std::string window = "window " + server.address("/other");
    ASSERT_TRUE(serveMainThreadUntil([&] {
        return std::find(guard->events.begin(), guard->events.end(), window) != guard->events.end();
    }));
    EXPECT_THAT(guard->events,
                ElementsAre("action " + server.address("/"), "response " + server.address("/"),
                            "action " + server.address("/other"), window));
    EXPECT_TRUE(showsPage("Links"));
    EXPECT_THAT(server.requests(), Not(Contains("/other")));
}

TEST_F(WKWebViewTest, ShowsTextWithItsBase)
{
    const HTTPServer server({{"/help/style.css", {.type = "text/css", .body = "p {}"}}});
    webView->loadHTMLString(page("Text", "<link rel=stylesheet href=style.css><p>Hello"),
                            URL::fromString(server.address("/help/index.html")));
    EXPECT_TRUE(showsPage("Text"));
    EXPECT_TRUE(serveMainThreadUntil([&] { return !server.requests().empty(); }));
    EXPECT_THAT(server.requests(), ElementsAre("/help/style.css"));
}

TEST_F(WKWebViewTest, ShowsAPDFAndKeepsItsViewerToItself)
{
    const test::TemporaryFolder folder;
    const auto path = folder.path() / "manual.pdf";
    std::ofstream(path) << test::pdfDocument("The Manual");
    const std::string address = URL::fileURLWithPath(path.string()).absoluteString();
    loadToTheEnd(address);
    EXPECT_THAT(guard->events, ElementsAre("action " + address, "response " + address));
    EXPECT_THAT(guard->types, ElementsAre("application/pdf"));
    EXPECT_EQ(webView->url(), URL::fromString(address));
}

TEST_F(WKWebViewTest, TellsOfASiteThatDoesNotExist)
{
    load("http://nowhere.invalid/");
    EXPECT_TRUE(showsText("This page cannot be shown."));
}

TEST_F(WKWebViewTest, RefusesASiteThatDoesNotProveItself)
{
    const UnprovenServer server;
    load(server.address());
    EXPECT_TRUE(showsText("This page cannot be shown."));
    EXPECT_TRUE(showsText("The site does not prove that it is the one that is meant."));
    EXPECT_THAT(guard->events, ElementsAre("action " + server.address()));
    EXPECT_EQ(webView->title(), "");
}

TEST_F(WKWebViewTest, SaysThatItIsLoadingWhenThatTakesLonger)
{
    HTTPServer server({{"/", {.body = page("Slow"), .isHeld = true}}});
    load(server.address("/"));
    EXPECT_TRUE(showsText("Loading…"));
    server.release();
    EXPECT_TRUE(showsPage("Slow"));
    EXPECT_EQ(findShown(webView->widget().get().gobj(), "Loading…"), nullptr);
}

TEST_F(WKWebViewTest, UncoversThePageThatMayNotBeLeft)
{
    const HTTPServer server({{"/a", {.body = page("A")}}, {"/b.htm", {.body = page("B")}}});
    guard->forbiddenResponses = {server.address("/b.htm")};
    load(server.address("/a"));
    ASSERT_TRUE(showsPage("A"));
    loadToTheEnd(server.address("/b.htm"));
    GtkWidget *cover = findOfClass(webView->widget().get().gobj(), "page-cover");
    ASSERT_NE(cover, nullptr);
    EXPECT_FALSE(gtk_widget_get_visible(cover));
}

TEST_F(WKWebViewTest, TellsOfAFileThatIsMissing)
{
    load("file:///nonexistent/manual.pdf");
    EXPECT_TRUE(showsText("This page cannot be shown."));
}

TEST_F(WKWebViewTest, LivesOnWhenThePagesProcessDies)
{
    const HTTPServer server({{"/", {.body = page("Page")}}});
    load(server.address("/"));
    ASSERT_TRUE(showsPage("Page"));
    for (const pid_t process : webProcesses())
        kill(process, SIGKILL);
    ASSERT_TRUE(showsText("This page has stopped working."));

    GtkWidget *label = findShown(webView->widget().get().gobj(), "Load Again");
    ASSERT_NE(label, nullptr);
    const int before = guard->finished;
    g_signal_emit_by_name(gtk_widget_get_ancestor(label, GTK_TYPE_BUTTON), "clicked");
    ASSERT_TRUE(serveMainThreadUntil([&] { return guard->finished > before; }));
    EXPECT_EQ(findShown(webView->widget().get().gobj(), "This page has stopped working."), nullptr);
    EXPECT_THAT(server.requests(), ElementsAre("/", "/"));
}

TEST_F(WKWebViewTest, LoadsNothingWithoutALocation)
{
    webView->load(URLRequest(std::nullopt));
    EXPECT_FALSE(webView->isLoading());
    EXPECT_THAT(guard->events, IsEmpty());
}

TEST_F(WKWebViewTest, ShowsAllWithoutDelegates)
{
    const HTTPServer server({{"/", {.body = page("Free")}}});
    webView->navigationDelegate.reset();
    webView->uiDelegate.reset();
    load(server.address("/"));
    EXPECT_TRUE(showsPage("Free"));
}

TEST_F(WKWebViewTest, UnderstandsAddressesThatAreNotStrict)
{
    const HTTPServer server({{"/a|b?c=%5E", {.body = page("Pipe")}},
                             {"/",
                              {.body = page("Links", "<script>onload = () => "
                                                     "location.href = '/a|b?c=%5E'</script>")}}});
    load(server.address("/"));
    EXPECT_TRUE(showsPage("Pipe"));
    EXPECT_THAT(guard->events, Contains("action " + server.address("/a%7Cb?c=%5E")));
}

TEST(WKWebView, SaysSoWherePagesCannotBeHeldInASandbox)
{
    const std::vector<pid_t> before = webProcesses();
    const test::TemporaryFolder withoutBubblewrap;
    const test::EnvironmentVariable path{"PATH", withoutBubblewrap.path().string()};
    const ShownScreen screen{std::make_shared<PlainScreen>()};
    const auto webView = std::make_shared<WKWebView>();
    webView->setFrame(CGRect(0, 0, 400, 300));
    screen.window->rootViewController()->view()->addSubview(webView);
    EXPECT_TRUE(serveMainThreadUntil([&] {
        return findShown(webView->widget().get().gobj(),
                         "Pages cannot be shown, since this system does not let them run in a "
                         "sandbox.") != nullptr;
    }));
    webView->load(URLRequest(URL::fromString("about:blank")));
    EXPECT_FALSE(webView->isLoading());
    EXPECT_THAT(webProcesses(), IsSubsetOf(before));
}
