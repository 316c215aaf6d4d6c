#include "Platform/Foundation/UTF8.hpp"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

using platform::foundation::isUTF8;
using namespace std::string_view_literals;

TEST(UTF8, IsTextOfAllLengths)
{
    for (const std::string_view text :
         {""sv, "a"sv, "\0"sv, "\x7F"sv, "\u0080"sv, "\u07FF"sv, "\u0800"sv, "\uFFFF"sv,
          "\U00010000"sv, "\U0010FFFF"sv, "Grüße, 世界 🎛"sv})
        EXPECT_TRUE(isUTF8(text)) << text;
}

TEST(UTF8, IsNothingElse)
{
    for (const std::string_view text :
         {"\x80"sv, "\xC0\x80"sv, "\xC1\xBF"sv, "\xC2"sv, "\xC2\x41"sv, "\xE0\x9F\xBF"sv,
          "\xED\xA0\x80"sv, "\xE4\xB8"sv, "\xF0\x8F\xBF\xBF"sv, "\xF4\x90\x80\x80"sv, "\xF5"sv,
          "\xFF"sv, "ab\xE4"sv, "\xE4\xB8\x41"sv})
        EXPECT_FALSE(isUTF8(text)) << testing::PrintToString(std::string(text));
}
