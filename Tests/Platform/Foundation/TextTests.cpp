#include "Platform/Foundation/Module.hpp"
#include "Platform/Foundation/NSString.hpp"
#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/Foundation/ProcessInfo.hpp"
#include "Platform/Foundation/URL.hpp"
#include "Platform/Foundation/URLText.hpp"
#include "Tests/Utilities/TemporaryFolder.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>

using platform::foundation::encodeForbidden;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::StartsWith;

namespace
{

std::string reasonOf(const std::function<void()> &action)
{
    try {
        action();
    } catch (const PlatformError &error) {
        return error.what();
    }
    return "";
}

} // namespace

TEST(StringWithContentsOfFile, IsTheWholeText)
{
    const test::TemporaryFolder folder;
    const auto path = (folder.path() / "text").string();
    const std::string text("Ein gr\xC3\xBC\xC3\x9F"
                           "ender\0Text\n",
                           20);
    std::ofstream(path) << text;
    EXPECT_EQ(stringWithContentsOfFile(path), text);
}

TEST(StringWithContentsOfFile, IsUTF8OrNothing)
{
    const test::TemporaryFolder folder;
    const auto path = (folder.path() / "bytes").string();
    std::ofstream(path) << "gr\xFC\xDF";
    EXPECT_EQ(reasonOf([&] { stringWithContentsOfFile(path); }),
              "The file '" + path + "' is not text in UTF-8.");
    EXPECT_THAT(reasonOf([] { stringWithContentsOfFile("/nonexistent"); }),
                HasSubstr("/nonexistent"));
}

TEST(EncodeForbidden, LeavesWhatIsAllowed)
{
    const std::string strict = "https://user@[::1]:80/a%20b/c;d=e,f?g=h/i?j&k=l#m?n/o";
    EXPECT_EQ(encodeForbidden(strict), strict);
}

TEST(EncodeForbidden, EncodesTheRest)
{
    EXPECT_EQ(encodeForbidden("http://h/a b|c\\d^e`f{g}\"<>"),
              "http://h/a%20b%7Cc%5Cd%5Ee%60f%7Bg%7D%22%3C%3E");
    EXPECT_EQ(encodeForbidden("http://h/[a]#b#c"), "http://h/%5Ba%5D#b%23c");
    EXPECT_EQ(encodeForbidden("http://h/%zz%4"), "http://h/%25zz%254");
    EXPECT_EQ(encodeForbidden("http://h/\xC3\xBC"), "http://h/%C3%BC");
    EXPECT_TRUE(URL::fromString(encodeForbidden("http://h/?[|]#{#}")).has_value());
}

TEST(ModuleSymbol, SaysWhatIsMissing)
{
    EXPECT_THAT(reasonOf([] {
                    platform::foundation::moduleSymbol("nothing.so", "nothing", "does nothing");
                }),
                StartsWith("The module that does nothing cannot be loaded: "));
    EXPECT_EQ(reasonOf([] {
                  platform::foundation::moduleSymbol("http_transfer.so", "nothing", "fetches");
              }),
              "The module that fetches is not of this program");
}

TEST(GloballyUniqueString, IsMadeOfRandomProcessAndCount)
{
    const auto &process = ProcessInfo::processInfo();
    const std::string first = process.globallyUniqueString();
    EXPECT_THAT(first, MatchesRegex("[0-9a-f-]{36}-[0-9]+-[0-9A-F]{16}"));
    EXPECT_THAT(first, HasSubstr("-" + std::to_string(process.processIdentifier()) + "-"));
    EXPECT_NE(first.substr(0, 36), process.globallyUniqueString().substr(0, 36));
}
