#include "Animation/Gallery/Drawing.hpp"
#include "Animation/Gallery/Recording.hpp"
#include "Tests/Utilities/Places.hpp"
#include "Tests/Utilities/TemporaryFolder.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

namespace
{

using namespace animation::gallery;

std::string contents(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

TEST(Gallery, RecordsEveryCurveFromEndToEnd)
{
    const auto curves = recordCurves(100);
    ASSERT_EQ(curves.size(), 42U);
    EXPECT_EQ(curves[0].name, "easeNone");
    EXPECT_EQ(curves[3].name, "easeInOutQuad");
    EXPECT_EQ(curves[40].name, "easeOutInBounce");
    EXPECT_EQ(curves[41].name, "easeLast");
    for (const auto &curve : curves) {
        EXPECT_EQ(curve.values.size(), 101U);
        EXPECT_NEAR(curve.values.back(), 1, 1e-6) << curve.name;
    }
}

TEST(Gallery, RecordsWhatTheContainersDo)
{
    const auto timelines = recordTimelines();
    ASSERT_EQ(timelines.size(), 4U);
    for (const Lane &lane : timelines[0].lanes)
        EXPECT_EQ(lane.firstTick, 1) << "the stack's animators start together";
    const auto &chain = timelines[1].lanes;
    for (std::size_t i = 1; i < chain.size(); ++i)
        EXPECT_EQ(chain[i].firstTick, chain[i - 1].marks.back() + 1);
    EXPECT_EQ(timelines[2].lanes[2].firstTick, 35);
    EXPECT_EQ(timelines[2].ticks, 110);
    EXPECT_EQ(timelines[3].lanes[1].marks.size(), 2U) << "two bounces";
}

TEST(Gallery, ThePictureInTheReadmeIsTheOneThatItDraws)
{
    EXPECT_TRUE(drawCurves(recordCurves(100)) ==
                contents(test::sourcePath("Documentation/Pictures/curves.svg")))
        << "draw it again: parvane-curves";
}

TEST(Gallery, PicturesAreWellFormed)
{
    const test::TemporaryFolder folder;
    const std::string path = folder.path() / "timeline.svg";
    for (const auto &timeline : recordTimelines()) {
        std::ofstream(path) << drawTimeline(timeline);
        EXPECT_EQ(std::system(("python3 -c 'import xml.dom.minidom, sys; "
                               "xml.dom.minidom.parse(sys.argv[1])' " +
                               path)
                                  .c_str()),
                  0)
            << timeline.title;
    }
}

TEST(Gallery, ThePageShowsEveryCurveAndTimeline)
{
    const auto curves = recordCurves(100);
    const auto timelines = recordTimelines();
    const std::string page = writePage(curves, timelines);
    for (const auto &curve : curves)
        EXPECT_NE(page.find(">" + curve.name + "</text>"), std::string::npos) << curve.name;
    for (const auto &timeline : timelines)
        EXPECT_NE(page.find(">" + timeline.title + "</text>"), std::string::npos);
    EXPECT_EQ(page.substr(page.size() - 8), "</html>\n");
}

} // namespace
