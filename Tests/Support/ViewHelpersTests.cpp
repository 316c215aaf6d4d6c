#include "Support/ViewHelpers.hpp"
#include "Tests/Platform/Interface/Display.hpp"
#include "Tests/Utilities/HTTPServer.hpp"
#include "Tests/Utilities/MainThread.hpp"
#include "Tests/Utilities/Places.hpp"
#include "Tests/Utilities/PrintedLines.hpp"
#include "Tests/Utilities/TemporaryFolder.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <fstream>
#include <set>

using test::drainMainQueue;
using test::HTTPServer;
using test::serveMainThreadUntil;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

namespace
{

/// A PNG of 2 by 3 red pixels.
std::string picture()
{
    static constexpr std::array<unsigned char, 73> bytes{
        // clang-format off
        0x89, 0x50, 0x4E, 0x47, 0x0D, 0x0A, 0x1A, 0x0A, 0x00, 0x00, 0x00, 0x0D, 0x49, 0x48, 0x44, 0x52,
        0x00, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0x03, 0x08, 0x02, 0x00, 0x00, 0x00, 0x36, 0x88, 0x49,
        0xD6, 0x00, 0x00, 0x00, 0x10, 0x49, 0x44, 0x41, 0x54, 0x78, 0xDA, 0x63, 0xB8, 0xA0, 0xA0, 0x00,
        0x44, 0x0C, 0x28, 0x14, 0x00, 0x47, 0x25, 0x06, 0x61, 0x61, 0x1C, 0xB2, 0xA9, 0x00, 0x00, 0x00,
        0x00, 0x49, 0x45, 0x4E, 0x44, 0xAE, 0x42, 0x60, 0x82,
        // clang-format on
    };
    return {reinterpret_cast<const char *>(bytes.data()), bytes.size()};
}

constexpr const char *noData = "UIImageView::loadFrom() : Could not encode image data.";
constexpr const char *noImage = "UIImageView::loadFrom() : Could not assign image.";
constexpr const char *fetched = "Fetched image successfully";

} // namespace

TEST(UniqueName, IsUnique)
{
    std::set<std::string> names;
    for (int count = 0; count < 1000; ++count)
        names.insert(uniqueName());
    EXPECT_EQ(names.size(), 1000U);
}

TEST(UniqueName, BeginsWithItsPrefix)
{
    EXPECT_THAT(uniqueName("tmp"), StartsWith("tmp-"));
    EXPECT_THAT(uniqueName(""), StartsWith("-"));
    EXPECT_EQ(uniqueName("tmp").size(), uniqueName().size() + 4);
    EXPECT_NE(uniqueName("tmp"), uniqueName("tmp"));
}

TEST(PinToSuperviewEdges, TiesAllEdgesInOrder)
{
    const auto owner = std::make_shared<UIView>();
    owner->setFrame(CGRect(0, 0, 300, 200));
    const auto view = std::make_shared<UIView>();
    owner->addSubview(view);
    pinToSuperviewEdges(*view);
    EXPECT_FALSE(view->translatesAutoresizingMaskIntoConstraints);
    EXPECT_EQ(view->frame(), owner->bounds());
    std::vector<NSLayoutAttribute> edges;
    for (const auto &constraint : owner->constraints()) {
        EXPECT_TRUE(constraint->isActive());
        EXPECT_EQ(constraint->firstItem(), view);
        EXPECT_EQ(constraint->secondItem(), owner);
        EXPECT_EQ(constraint->firstAttribute(), constraint->secondAttribute());
        edges.push_back(constraint->firstAttribute());
    }
    EXPECT_THAT(edges, ElementsAre(NSLayoutAttribute::top, NSLayoutAttribute::leading,
                                   NSLayoutAttribute::bottom, NSLayoutAttribute::trailing));
}

TEST(PinToSuperviewEdges, DoesNothingWithoutASuperview)
{
    const auto view = std::make_shared<UIView>();
    pinToSuperviewEdges(*view);
    EXPECT_TRUE(view->translatesAutoresizingMaskIntoConstraints);
}

TEST(ColorComponents, AreThoseOfTheColour)
{
    const UIColor color(0.25, 0.5, 0.75, 0.125);
    EXPECT_EQ(redValue(color), 0.25);
    EXPECT_EQ(greenValue(color), 0.5);
    EXPECT_EQ(blueValue(color), 0.75);
    EXPECT_EQ(alphaValue(color), 0.125);
}

TEST(ColorComponents, StayFromZeroToOne)
{
    const UIColor color(-1, 2, std::nan(""), 1);
    EXPECT_EQ(redValue(color), 0);
    EXPECT_EQ(greenValue(color), 1);
    EXPECT_EQ(blueValue(color), 0);
    EXPECT_EQ(alphaValue(color), 1);
}

TEST(ColorComponents, AreEqualInAGrey)
{
    const UIColor grey(0.5, 1);
    EXPECT_EQ(redValue(grey), 0.5);
    EXPECT_EQ(greenValue(grey), 0.5);
    EXPECT_EQ(blueValue(grey), 0.5);
}

/// A view to show pictures in, and a server that has some and does not have others.
class ImageHelper : public ::testing::Test
{
protected:
    HTTPServer server{
        {{"/image", {.type = "image/png", .body = picture()}},
         {"/created", {.status = 201, .type = "image/png", .body = picture()}},
         {"/text", {.type = "image/png", .body = "This is no image."}},
         {"/broken", {.status = 500, .type = "image/png", .body = picture()}},
         {"/moved", {.status = 301, .headers = {"Location: /image"}}},
         {"/slow",
          {.type = "image/png", .body = picture(), .delay = std::chrono::milliseconds(100)}},
         {"/held", {.type = "image/png", .body = picture(), .isHeld = true}},
         {"/half", {.type = "image/png", .body = picture(), .closesAfter = 40}}}};
    const std::shared_ptr<UIImage> former = UIImage::create(dataOf(picture()));
    std::shared_ptr<UIImageView> view = std::make_shared<UIImageView>(former);
    test::PrintedLines printed;

    static Data dataOf(const std::string &text)
    {
        const auto *bytes = reinterpret_cast<const std::byte *>(text.data());
        return Data({bytes, bytes + text.size()});
    }

    bool showsANewImage() const
    {
        return view->image() && view->image() != former && view->image()->size() == CGSize{2, 3};
    }
};

class LoadFrom : public ImageHelper
{
protected:
    void load(const std::string &path)
    {
        loadFrom(*view, server.address(path));
        EXPECT_EQ(view->image(), former) << "It is read later.";
        // The block, then the line that it may print.
        drainMainQueue();
        drainMainQueue();
    }
};

TEST_F(LoadFrom, ShowsAPictureOfTheWeb)
{
    load("/image");
    EXPECT_TRUE(showsANewImage());
    EXPECT_THAT(printed.lines(), IsEmpty());
}

TEST_F(LoadFrom, WaitsForASlowServer)
{
    load("/slow");
    EXPECT_TRUE(showsANewImage());
}

TEST_F(LoadFrom, FollowsARedirection)
{
    load("/moved");
    EXPECT_TRUE(showsANewImage());
}

TEST_F(LoadFrom, ShowsAPictureInAFile)
{
    const test::TemporaryFolder folder;
    const auto path = (folder.path() / "picture").string();
    std::ofstream(path) << picture();
    loadFrom(*view, URL::fileURLWithPath(path).absoluteString());
    drainMainQueue();
    EXPECT_TRUE(showsANewImage());
}

TEST_F(LoadFrom, TellsWhatIsNoAddressAndQueuesNothing)
{
    loadFrom(*view, "not an address");
    EXPECT_THAT(printed.lines(), IsEmpty()) << "The line itself goes through the main queue.";
    drainMainQueue();
    EXPECT_THAT(printed.lines(), ElementsAre("UIImageView::loadFrom() : Could not encode url "
                                             "string : not an address"));
    drainMainQueue();
    EXPECT_EQ(printed.lines().size(), 1U);
}

TEST_F(LoadFrom, TellsWhatCannotBeRead)
{
    for (const char *path : {"/missing", "/broken", "/half"})
        load(path);
    EXPECT_THAT(printed.lines(), ElementsAre(noData, noData, noData));
    EXPECT_EQ(view->image(), former);
}

TEST_F(LoadFrom, TellsWhatIsNoPicture)
{
    load("/text");
    EXPECT_THAT(printed.lines(), ElementsAre(noImage));
    EXPECT_EQ(view->image(), former);
}

TEST_F(LoadFrom, DoesNotKeepTheView)
{
    loadFrom(*view, server.address("/image"));
    view.reset();
    drainMainQueue();
    drainMainQueue();
    EXPECT_THAT(printed.lines(), ElementsAre(noImage));
}

class GetImage : public ImageHelper
{
protected:
    void request(const std::string &path) const
    {
        getImageFromURLString(*view, server.address(path));
    }

    /// Requests run side by side; one that is answered when all others have been ends
    /// after them.
    void waitForAll(std::size_t others)
    {
        const auto last = std::make_shared<UIImageView>();
        getImageFromURLString(*last, server.address("/held"));
        ASSERT_TRUE(serveMainThreadUntil(
            [&] { return server.answered() == others && server.requests().size() == others + 1; }));
        server.release();
        ASSERT_TRUE(serveMainThreadUntil([&] { return last->image() != nullptr; }));
    }
};

TEST_F(GetImage, ShowsAPictureOfTheWeb)
{
    request("/image");
    ASSERT_TRUE(serveMainThreadUntil([&] { return showsANewImage(); }));
    EXPECT_THAT(printed.lines(), ElementsAre(fetched));
}

TEST_F(GetImage, FollowsARedirection)
{
    request("/moved");
    ASSERT_TRUE(serveMainThreadUntil([&] { return showsANewImage(); }));
}

TEST_F(GetImage, DoesNotMakeTheMainThreadWait)
{
    request("/held");
    ASSERT_TRUE(serveMainThreadUntil([&] { return !server.requests().empty(); }));
    EXPECT_EQ(view->image(), former);
    server.release();
    ASSERT_TRUE(serveMainThreadUntil([&] { return showsANewImage(); }));
}

TEST_F(GetImage, ShowsNothingWhereThereIsNoPicture)
{
    request("/text");
    ASSERT_TRUE(serveMainThreadUntil([&] { return view->image() == nullptr; }));
    EXPECT_THAT(printed.lines(), ElementsAre(fetched));
}

TEST_F(GetImage, IgnoresOtherAnswers)
{
    for (const char *path : {"/missing", "/broken", "/created"})
        request(path);
    waitForAll(3);
    EXPECT_THAT(printed.lines(), ElementsAre(fetched)) << "That is of the last one.";
    EXPECT_EQ(view->image(), former);
}

TEST_F(GetImage, IgnoresAFile)
{
    getImageFromURLString(
        *view, URL::fileURLWithPath(test::sourcePath("CMakeLists.txt")).absoluteString());
    waitForAll(0);
    EXPECT_THAT(printed.lines(), ElementsAre(fetched)) << "That is of the last one.";
    EXPECT_EQ(view->image(), former);
}

TEST_F(GetImage, TellsOfATransferThatBreaksOff)
{
    request("/half");
    ASSERT_TRUE(serveMainThreadUntil([&] { return !printed.lines().empty(); }));
    EXPECT_EQ(printed.lines().size(), 1U);
    EXPECT_NE(printed.lines().front(), fetched);
    EXPECT_EQ(view->image(), former);
}

TEST_F(GetImage, SaysNothingOfWhatIsNoAddress)
{
    getImageFromURLString(*view, "not an address");
    waitForAll(0);
    EXPECT_THAT(printed.lines(), ElementsAre(fetched));
    EXPECT_THAT(server.requests(), ElementsAre("/held"));
}

TEST_F(GetImage, KeepsTheViewUntilItsEnd)
{
    request("/image");
    const std::weak_ptr<UIImageView> weakView = view;
    view.reset();
    EXPECT_FALSE(weakView.expired());
    ASSERT_TRUE(serveMainThreadUntil([&] { return weakView.expired(); }));
    EXPECT_THAT(printed.lines(), ElementsAre(fetched));
}
