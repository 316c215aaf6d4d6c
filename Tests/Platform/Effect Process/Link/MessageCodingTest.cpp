#include "Platform/Effect Process/MessageCoding.hpp"
#include "Platform/Effect Process/CheckedMessages.hpp"
#include "Platform/Effect Process/Messages.hpp"

#include <gmock/gmock.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

using namespace platform::effect;
using platform::lv2::State;

namespace
{

Instantiation sampleInstantiation()
{
    Instantiation sample;
    sample.uri = "urn:test:something";
    sample.bundles = {"/a", "", "/with blank"};
    sample.scratchFolder = "/tmp/x";
    sample.contextName = "a host";
    State state;
    state.properties["urn:key"] = {"urn:type", 3, {1, 0, '\xFF'}};
    state.controls["gain"] = 0.5F;
    sample.state = state;
    sample.midi = {{0xB0, 1, 2}, {0xC0, 3}};
    sample.preparation = {44100.0, 512, true, {2, 1, 512, 1}};
    sample.hasLink = true;
    return sample;
}

Description sampleDescription()
{
    return {"Effect", 2, 2, true, {"Out", "Thru"}};
}

} // namespace

TEST(MessageCoding, BringsRecordsAcrossUnchanged)
{
    const Instantiation sent = sampleInstantiation();
    const auto got = MessageReader::read<Instantiation>(MessageWriter::message(sent));
    EXPECT_EQ(got.uri, sent.uri);
    EXPECT_EQ(got.bundles, sent.bundles);
    EXPECT_EQ(got.scratchFolder, sent.scratchFolder);
    EXPECT_EQ(got.contextName, sent.contextName);
    ASSERT_TRUE(got.state);
    EXPECT_EQ(got.state->controls, sent.state->controls);
    const State::Property &property = got.state->properties.at("urn:key");
    EXPECT_EQ(property.type, "urn:type");
    EXPECT_EQ(property.flags, 3U);
    EXPECT_EQ(property.value, sent.state->properties.at("urn:key").value);
    EXPECT_EQ(got.midi, sent.midi);
    EXPECT_EQ(got.preparation.sampleRate, 44100.0);
    EXPECT_EQ(got.preparation.maximumFrames, 512U);
    EXPECT_TRUE(got.preparation.isOffline);
    EXPECT_EQ(got.preparation.shape.outputs, 1U);
    EXPECT_TRUE(got.hasLink);
}

TEST(MessageCoding, BringsEmptyRunsOfBytesAcross)
{
    const std::vector<std::vector<std::uint8_t>> none(3);
    EXPECT_EQ(
        MessageReader::read<std::vector<std::vector<std::uint8_t>>>(MessageWriter::message(none)),
        none);
    State state;
    state.properties["urn:key"];
    EXPECT_EQ(MessageReader::read<State>(MessageWriter::message(state)).properties.size(), 1U);
}

TEST(MessageCoding, FindsEveryTruncation)
{
    const auto whole = MessageWriter::message(sampleInstantiation());
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_THROW(MessageReader::read<Instantiation>({whole.data(), size}), ProtocolBreach)
            << size;
    auto longer = whole;
    longer.push_back(std::byte{0});
    EXPECT_THROW(MessageReader::read<Instantiation>(longer), ProtocolBreach);
}

TEST(MessageCoding, SurvivesEveryFlippedByte)
{
    const auto whole = MessageWriter::message(sampleInstantiation());
    for (std::size_t i = 0; i < whole.size(); ++i) {
        for (const std::byte flip : {std::byte{0x01}, std::byte{0x80}, std::byte{0xFF}}) {
            auto damaged = whole;
            damaged[i] ^= flip;
            try {
                MessageReader::read<Instantiation>(damaged);
            } catch (const ProtocolBreach &) {
                continue; // one of the two
            }
        }
    }
}

TEST(MessageCoding, BelievesNoCount)
{
    const std::uint64_t huge = ~std::uint64_t{0};
    EXPECT_THROW(MessageReader::read<std::string>(MessageWriter::message(huge)), ProtocolBreach);
    EXPECT_THROW(MessageReader::read<std::vector<std::string>>(MessageWriter::message(huge)),
                 ProtocolBreach);
    EXPECT_THROW(MessageReader::read<State>(MessageWriter::message(huge)), ProtocolBreach);
}

TEST(MessageCoding, SurvivesNoise)
{
    std::mt19937 random(1);
    for (int round = 0; round < 20000; ++round) {
        std::vector<std::byte> noise(random() % 64);
        for (std::byte &byte : noise)
            byte = static_cast<std::byte>(random() % 4);
        try {
            MessageReader::read<Description>(noise);
        } catch (const ProtocolBreach &) {
            continue;
        }
    }
}

TEST(CheckedMessages, LetPassWhatIsRight)
{
    const Description got = checkedDescription(MessageWriter::message(sampleDescription()));
    EXPECT_EQ(got.name, "Effect");
    EXPECT_THAT(got.midiOutputNames, testing::ElementsAre("Out", "Thru"));
    EXPECT_TRUE(hasSameShape(got, sampleDescription()));
    EXPECT_EQ(checkedText(MessageWriter::message(std::string("räsön"))), "räsön");
}

TEST(CheckedMessages, FindWhatIsNoText)
{
    Description description = sampleDescription();
    description.name = "\xC0\xAF";
    EXPECT_THROW(checkedDescription(MessageWriter::message(description)), ProtocolBreach);
    description = sampleDescription();
    description.midiOutputNames[1] = "\xFF";
    EXPECT_THROW(checkedDescription(MessageWriter::message(description)), ProtocolBreach);
    EXPECT_THROW(checkedText(MessageWriter::message(std::string("\x80"))), ProtocolBreach);
    EXPECT_THROW(checkedText(MessageWriter::message(std::string(5000, 'a'))), ProtocolBreach);
}

TEST(CheckedMessages, FindChannelsBeyondReason)
{
    Description description = sampleDescription();
    description.outputs = 100000;
    EXPECT_THROW(checkedDescription(MessageWriter::message(description)), ProtocolBreach);
    description = sampleDescription();
    description.midiOutputNames.assign(300, "Out");
    EXPECT_THROW(checkedDescription(MessageWriter::message(description)), ProtocolBreach);
}

TEST(CheckedMessages, FindViewsThatCannotBe)
{
    const auto checked = [](std::uint32_t width, std::uint32_t height) {
        const ViewShape shape{{width, height}, true};
        return checkedViewShape(MessageWriter::message(shape));
    };
    constexpr std::uint32_t largest = platform::lv2::ViewSize::largest;
    EXPECT_EQ(checked(1, largest).size, (platform::lv2::ViewSize{1, largest}));
    EXPECT_TRUE(checked(largest, 1).isResizable);
    EXPECT_THROW(checked(0, 100), ProtocolBreach);
    EXPECT_THROW(checked(100, 0), ProtocolBreach);
    EXPECT_THROW(checked(largest + 1, 100), ProtocolBreach);
    EXPECT_THROW(checked(100, UINT32_MAX), ProtocolBreach);
    EXPECT_THROW(checkedViewShape({}), ProtocolBreach);
    EXPECT_THROW(checkedViewShape(MessageWriter::message(100U, 100U)), ProtocolBreach);
}

TEST(CheckedMessages, TellEffectsOfAnotherShapeApart)
{
    Description other = sampleDescription();
    other.inputs = 1;
    EXPECT_FALSE(hasSameShape(other, sampleDescription()));
    other = sampleDescription();
    other.midiOutputNames.pop_back();
    EXPECT_FALSE(hasSameShape(other, sampleDescription()));
}
