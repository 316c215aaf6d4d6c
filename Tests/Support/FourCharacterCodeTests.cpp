#include "Support/FourCharacterCode.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>

#include <iconv.h>

namespace
{

using std::string_literals::operator""s;

/// One byte of Mac OS Roman in UTF-8, by the system's own tables.
std::string convertedBySystem(std::uint8_t byte)
{
    const iconv_t converter = iconv_open("UTF-8", "MACINTOSH");
    if (converter == reinterpret_cast<iconv_t>(-1)) // NOLINT: what iconv_open answers
        return "no converter";
    std::array<char, 1> input{static_cast<char>(byte)};
    std::array<char, 8> output{};
    char *in = input.data();
    char *out = output.data();
    std::size_t inLeft = input.size();
    std::size_t outLeft = output.size();
    const auto result = iconv(converter, &in, &inLeft, &out, &outLeft);
    iconv_close(converter);
    return result == 0 ? std::string(output.data(), out) : "refused";
}

TEST(FourCharacterCode, ReadsFromTheHighestByte)
{
    EXPECT_EQ(stringValue(0x61756678), "aufx");
    EXPECT_EQ(stringValue(0x41424344), "ABCD");
    EXPECT_EQ(stringValue(0x7A767172), "zvqr");
}

TEST(FourCharacterCode, FiltersNothing)
{
    EXPECT_EQ(stringValue(0), "\0\0\0\0"s);
    EXPECT_EQ(stringValue(0x010A1F7F), "\x01\x0A\x1F\x7F");
}

TEST(FourCharacterCode, AgreesWithTheSystemsConverterOnEveryByte)
{
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::string expected = convertedBySystem(static_cast<std::uint8_t>(byte));
        // Two characters on which the system's table departs from the published
        // one: a Greek letter for the increment sign, and another private
        // code point.
        if (byte == 0xC6) {
            EXPECT_EQ(expected, "\xCE\x94");
            expected = "\xE2\x88\x86";
        }
        if (byte == 0xF0) {
            EXPECT_EQ(expected, "\xEE\x80\x9E");
            expected = "\xEF\xA3\xBF";
        }
        EXPECT_EQ(stringValue(0x41414100 | byte), "AAA" + expected) << byte;
        EXPECT_EQ(stringValue(byte << 24U | 0x414141), expected + "AAA") << byte;
    }
}

TEST(FourCharacterCode, GivesFourCharactersForBytesOutsideASCII)
{
    EXPECT_EQ(stringValue(0x80A5DBCA), "\xC3\x84\xE2\x80\xA2\xE2\x82\xAC\xC2\xA0");
}

} // namespace
