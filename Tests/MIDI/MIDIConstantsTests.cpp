#include "MIDI/MIDIConstants.hpp"
#include "Tests/Utilities/Places.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>
#include <type_traits>
#include <vector>

namespace
{

struct Constant {
    const char *name;
    std::uint8_t value;
    int expected;
};

#define ROW(name, expected)                                                                        \
    Constant                                                                                       \
    {                                                                                              \
#name, ::name, expected                                                                    \
    }

// clang-format off
const std::vector<Constant> constants{
    ROW(STATUS_NOTEOFF, 0x80),
    ROW(STATUS_NOTEON, 0x90),
    ROW(STATUS_PPRESSURE, 0xA0),
    ROW(STATUS_CONTROLLER, 0xB0),
    ROW(STATUS_PROGRAM, 0xC0),
    ROW(STATUS_CPRESSURE, 0xD0),
    ROW(STATUS_PITCHBEND, 0xE0),
    ROW(STATUS_SYSEX, 0xF0),
    ROW(STATUS_TIMECODE, 0xF1),
    ROW(STATUS_SONGPOSITION, 0xF2),
    ROW(STATUS_SONGSELECT, 0xF3),
    ROW(STATUS_RESERVED1, 0xF4),
    ROW(STATUS_RESERVED2, 0xF5),
    ROW(STATUS_TUNEREQUEST, 0xF6),
    ROW(STATUS_EOX, 0xF7),
    ROW(STATUS_TIMINGCLOCK, 0xF8),
    ROW(STATUS_RESERVED3, 0xF9),
    ROW(STATUS_START, 0xFA),
    ROW(STATUS_CONTINUE, 0xFB),
    ROW(STATUS_STOP, 0xFC),
    ROW(STATUS_RESERVED4, 0xFD),
    ROW(STATUS_ACTIVESENSING, 0xFE),
    ROW(STATUS_RESET, 0xFF),
    ROW(STATUS_META, 0xFD),
    ROW(CONTROLLER_BANKSELECT_MSB, 0x00),
    ROW(CONTROLLER_MODWHEEL, 0x01),
    ROW(CONTROLLER_003, 0x03),
    ROW(CONTROLLER_DATA_MSB, 0x06),
    ROW(CONTROLLER_VOLUME, 0x07),
    ROW(CONTROLLER_008, 0x08),
    ROW(CONTROLLER_009, 0x09),
    ROW(CONTROLLER_PAN, 0x0A),
    ROW(CONTROLLER_EXPRESSION, 0x0B),
    ROW(CONTROLLER_016, 0x10),
    ROW(CONTROLLER_017, 0x11),
    ROW(CONTROLLER_018, 0x12),
    ROW(CONTROLLER_019, 0x13),
    ROW(CONTROLLER_020, 0x14),
    ROW(CONTROLLER_021, 0x15),
    ROW(CONTROLLER_022, 0x16),
    ROW(CONTROLLER_023, 0x17),
    ROW(CONTROLLER_024, 0x18),
    ROW(CONTROLLER_025, 0x19),
    ROW(CONTROLLER_026, 0x1A),
    ROW(CONTROLLER_027, 0x1B),
    ROW(CONTROLLER_028, 0x1C),
    ROW(CONTROLLER_029, 0x1D),
    ROW(CONTROLLER_030, 0x1E),
    ROW(CONTROLLER_031, 0x1F),
    ROW(CONTROLLER_BANKSELECT_LSB, 0x20),
    ROW(CONTROLLER_SUSTAIN, 0x40),
    ROW(CONTROLLER_PORTA, 0x41),
    ROW(CONTROLLER_HOLD2, 0x45),
    ROW(CONTROLLER_RESONANCE, 0x47),
    ROW(CONTROLLER_RELEASE, 0x48),
    ROW(CONTROLLER_ATTACK, 0x49),
    ROW(CONTROLLER_CUTOFF, 0x4A),
    ROW(CONTROLLER_DECAY, 0x4B),
    ROW(CONTROLLER_SUSTAIN2, 0x4C),
    ROW(CONTROLLER_102, 0x66),
    ROW(CONTROLLER_103, 0x67),
    ROW(CONTROLLER_104, 0x68),
    ROW(CONTROLLER_105, 0x69),
    ROW(CONTROLLER_106, 0x6A),
    ROW(CONTROLLER_107, 0x6B),
    ROW(CONTROLLER_108, 0x6C),
    ROW(CONTROLLER_109, 0x6D),
    ROW(CONTROLLER_110, 0x6E),
    ROW(CONTROLLER_111, 0x6F),
    ROW(CONTROLLER_112, 0x70),
    ROW(CONTROLLER_RESET_CONTROLLERS, 0x79),
    ROW(CONTROLLER_NOTES_OFF, 0x7B),
    ROW(CONTROLLER_SOUNDS_OFF, 0x7B),
    ROW(META_SEQUENCENUMBER, 0x00),
    ROW(META_TEXT, 0x01),
    ROW(META_COPYRIGHT, 0x02),
    ROW(META_TRACKNAME, 0x03),
    ROW(META_INSTRUMENTNAME, 0x04),
    ROW(META_LYRICS, 0x05),
    ROW(META_MARKER, 0x06),
    ROW(META_CUEPOINT, 0x07),
    ROW(META_PROGRAMNAME, 0x08),
    ROW(META_DEVICENAME, 0x09),
    ROW(META_CHANNELPREFIX, 0x20),
    ROW(META_MIDIPORT, 0x21),
    ROW(META_EOT, 0x2F),
    ROW(META_SETTEMPO, 0x51),
    ROW(META_SMTPOFFSET, 0x54),
    ROW(META_TIMESIGNATURE, 0x58),
    ROW(META_KEYSIGNATURE, 0x59),
    ROW(META_SPECIFIC, 0x7F),
    ROW(META_SYSEX, 0xF0),
    ROW(META_UNKNOWN, 0xFF),
    ROW(META_EXTENDEDNOTE, 0xFF),
    ROW(META_AUPARAMETER, 0xFF),
    ROW(META_AUPRESET, 0xFF),
};
// clang-format on

TEST(MIDIConstants, HaveTheirValues)
{
    EXPECT_EQ(constants.size(), 96U);
    for (const Constant &constant : constants)
        EXPECT_EQ(constant.value, constant.expected) << constant.name;
}

TEST(MIDIConstants, AreAllThatTheHeaderDeclares)
{
    std::ifstream header(test::sourcePath("MIDI/MIDIConstants.hpp"));
    const std::string text{std::istreambuf_iterator<char>(header), {}};
    const std::regex declaration(R"(\ninline constexpr std::uint8_t (\w+) = \w+;)");
    std::vector<std::string> declared;
    for (std::sregex_iterator match(text.begin(), text.end(), declaration), end; match != end;
         ++match)
        declared.push_back((*match)[1]);
    std::vector<std::string> names;
    for (const Constant &constant : constants)
        names.emplace_back(constant.name);
    EXPECT_THAT(declared, ::testing::UnorderedElementsAreArray(names));
    // Nothing is declared in any other way.
    EXPECT_EQ(std::count(text.begin(), text.end(), ';'), std::ssize(declared));
    EXPECT_EQ(text.find("#define"), std::string::npos);
}

TEST(MIDIConstants, AreBytesKnownToTheCompiler)
{
    static_assert(std::is_same_v<decltype(STATUS_NOTEON), const std::uint8_t>);
    static_assert(std::is_same_v<decltype(CONTROLLER_SUSTAIN), const std::uint8_t>);
    static_assert(std::is_same_v<decltype(META_SETTEMPO), const std::uint8_t>);
    static_assert(std::array<int, CONTROLLER_003>().size() == 3);
}

TEST(MIDIConstants, ShareValuesOnPurpose)
{
    EXPECT_EQ(STATUS_META, STATUS_RESERVED4);
    EXPECT_NE(STATUS_META, STATUS_RESET);
    EXPECT_EQ(CONTROLLER_SOUNDS_OFF, CONTROLLER_NOTES_OFF);
    for (const std::uint8_t marker :
         {META_UNKNOWN, META_EXTENDEDNOTE, META_AUPARAMETER, META_AUPRESET})
        EXPECT_EQ(marker, 0xFF);
}

} // namespace
