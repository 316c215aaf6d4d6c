#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/Foundation/URLSession.hpp"
#include "Tests/Utilities/HTTPServer.hpp"
#include "Tests/Utilities/MainThread.hpp"
#include "Tests/Utilities/TemporaryFolder.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <thread>

using test::HTTPServer;
using test::serveMainThreadUntil;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace
{

std::string textOf(const Data &data)
{
    return {reinterpret_cast<const char *>(data.bytes().data()), data.bytes().size()};
}

URL urlOf(const std::string &text)
{
    return *URL::fromString(text);
}

std::string whyNot(const URL &url)
{
    try {
        Data::contentsOf(url);
    } catch (const PlatformError &error) {
        return error.what();
    }
    return "It was read.";
}

/// What a load ended with.
struct Result {
    std::string text;
    std::shared_ptr<URLResponse> response;
    std::string error;
};

Result load(const URLRequest &request)
{
    std::optional<Result> result;
    URLSession::shared().data(request,
                              [&](const Data &data, const std::shared_ptr<URLResponse> &response,
                                  const std::exception_ptr &error) {
                                  EXPECT_FALSE(result.has_value()) << "It is told twice.";
                                  result = Result{textOf(data), response, ""};
                                  try {
                                      if (error)
                                          std::rethrow_exception(error);
                                  } catch (const PlatformError &fault) {
                                      result->error = fault.what();
                                  }
                              });
    EXPECT_FALSE(result.has_value()) << "It is told before the call has returned.";
    EXPECT_TRUE(serveMainThreadUntil([&] { return result.has_value(); }));
    return result.value_or(Result{});
}

int statusOf(const Result &result)
{
    const auto response = std::dynamic_pointer_cast<HTTPURLResponse>(result.response);
    return response ? response->statusCode() : 0;
}

} // namespace

class FromTheWeb : public ::testing::Test
{
protected:
    const std::string whole = std::string(100'000, 'x') + "end";
    const HTTPServer server{{{"/text", {.type = "text/plain", .body = whole}},
                             {"/empty", {.type = "text/plain"}},
                             {"/missing", {.status = 404, .body = "Not here"}},
                             {"/broken", {.status = 500, .body = "Sorry"}},
                             {"/elsewhere", {.status = 302, .headers = {"Location: /text"}}},
                             {"/round", {.status = 302, .headers = {"Location: /round"}}},
                             {"/slow", {.body = "late", .delay = std::chrono::milliseconds(1500)}},
                             {"/half", {.body = whole, .closesAfter = 50'000}}}};

    URL url(const std::string &path) const { return urlOf(server.address(path)); }
};

TEST_F(FromTheWeb, DataIsReadWhole)
{
    EXPECT_EQ(textOf(Data::contentsOf(url("/text"))), whole);
    EXPECT_EQ(textOf(Data::contentsOf(url("/elsewhere"))), whole);
    EXPECT_EQ(textOf(Data::contentsOf(url("/slow"))), "late");
    EXPECT_THAT(Data::contentsOf(url("/empty")).bytes(), IsEmpty());
}

TEST_F(FromTheWeb, DataIsReadOnAnyThread)
{
    std::thread([&] { EXPECT_EQ(textOf(Data::contentsOf(url("/text"))), whole); }).join();
}

TEST_F(FromTheWeb, DataIsNotWhatAServerSaysOfAFault)
{
    EXPECT_EQ(whyNot(url("/missing")), "The server answered with the status 404.");
    EXPECT_EQ(whyNot(url("/broken")), "The server answered with the status 500.");
}

TEST_F(FromTheWeb, DataIsAllOrNothing)
{
    EXPECT_NE(whyNot(url("/half")), "It was read.");
    EXPECT_NE(whyNot(url("/round")), "It was read.");
}

TEST_F(FromTheWeb, AnAnswerComesWithItsResponse)
{
    const Result result = load(URLRequest(url("/text")));
    EXPECT_EQ(result.error, "");
    EXPECT_EQ(result.text, whole);
    EXPECT_EQ(statusOf(result), 200);
    EXPECT_EQ(result.response->url(), url("/text"));
    EXPECT_EQ(result.response->mimeType(), "text/plain");
}

TEST_F(FromTheWeb, AFaultOfTheServerIsAnAnswer)
{
    EXPECT_EQ(statusOf(load(URLRequest(url("/missing")))), 404);
    EXPECT_EQ(load(URLRequest(url("/broken"))).text, "Sorry");
}

TEST_F(FromTheWeb, ARedirectionIsFollowed)
{
    const Result result = load(URLRequest(url("/elsewhere")));
    EXPECT_EQ(statusOf(result), 200);
    EXPECT_EQ(result.response->url(), url("/text"));
}

TEST_F(FromTheWeb, ATransferThatBreaksOffIsAnError)
{
    const Result result = load(URLRequest(url("/half")));
    EXPECT_NE(result.error, "");
    EXPECT_EQ(result.response, nullptr);
}

TEST_F(FromTheWeb, PatienceEnds)
{
    const auto policy = URLRequestCachePolicy::useProtocolCachePolicy;
    EXPECT_NE(load(URLRequest(url("/slow"), policy, 0.5)).error, "");
    EXPECT_EQ(load(URLRequest(url("/slow"), policy, 20)).text, "late");
}

TEST_F(FromTheWeb, LoadsRunSideBySide)
{
    int finished = 0;
    std::string order;
    for (const std::string path : {"/slow", "/text"}) {
        URLSession::shared().data(URLRequest(url(path)),
                                  [&, path](const Data &, const std::shared_ptr<URLResponse> &,
                                            const std::exception_ptr &) {
                                      order += path;
                                      ++finished;
                                  });
    }
    ASSERT_TRUE(serveMainThreadUntil([&] { return finished == 2; }));
    EXPECT_EQ(order, "/text/slow");
}

TEST(URLSession, SaysThatNobodyAnswers)
{
    std::string address;
    {
        const HTTPServer server({});
        address = server.address("/");
    }
    EXPECT_NE(load(URLRequest(urlOf(address))).error, "");
    EXPECT_NE(whyNot(urlOf(address)), "It was read.");
    EXPECT_THAT(load(URLRequest(urlOf("http://nowhere.invalid/"))).error,
                HasSubstr("nowhere.invalid"));
}

TEST(URLSession, ReadsFiles)
{
    const test::TemporaryFolder folder;
    const auto path = (folder.path() / "a file").string();
    std::ofstream(path) << "content";
    const Result result = load(URLRequest(URL::fileURLWithPath(path)));
    EXPECT_EQ(result.text, "content");
    ASSERT_NE(result.response, nullptr);
    EXPECT_EQ(statusOf(result), 0) << "A file gives no status.";
    EXPECT_EQ(textOf(Data::contentsOf(URL::fileURLWithPath(path))), "content");
}

TEST(URLSession, SaysWhatCannotBeRead)
{
    const auto missing = URL::fileURLWithPath("/nonexistent/file");
    EXPECT_THAT(load(URLRequest(missing)).error, HasSubstr("/nonexistent/file"));
    EXPECT_THAT(whyNot(missing), HasSubstr("/nonexistent/file"));
    EXPECT_THAT(whyNot(URL::fileURLWithPath("/")), HasSubstr("/"));
    for (const std::string address : {"mailto:someone@qrvx.example", "x:", "relative", "http:"}) {
        EXPECT_EQ(whyNot(urlOf(address)), "The address is none of the web.") << address;
        EXPECT_EQ(load(URLRequest(urlOf(address))).error, "The address is none of the web.");
    }
    EXPECT_EQ(load(URLRequest(std::nullopt)).error, "There is no address.");
}
