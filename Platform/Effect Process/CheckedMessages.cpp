#include "Platform/Effect Process/CheckedMessages.hpp"

#include "Platform/Foundation/UTF8.hpp"

#include <algorithm>
#include <cmath>

namespace platform::effect
{

namespace
{

// More than any plug-in has.
constexpr std::uint32_t mostChannels = 256;
constexpr std::size_t mostNames = 100000;
constexpr std::size_t longestName = 4096;

void checkName(const std::string &name)
{
    if (name.size() > longestName)
        throw ProtocolBreach("a name is too long");
    if (!foundation::isUTF8(name))
        throw ProtocolBreach("a name is not text");
}

void checkNames(const std::vector<std::string> &names)
{
    if (names.size() > mostNames)
        throw ProtocolBreach("there are too many names");
    std::for_each(names.begin(), names.end(), checkName);
}

} // namespace

Description checkedDescription(std::span<const std::byte> body)
{
    auto description = MessageReader::read<Description>(body);
    checkName(description.name);
    checkNames(description.midiOutputNames);
    if (description.inputs > mostChannels || description.outputs > mostChannels ||
        description.midiOutputNames.size() > mostChannels)
        throw ProtocolBreach("it has too many channels");
    return description;
}

std::vector<std::string> checkedNames(std::span<const std::byte> body)
{
    auto names = MessageReader::read<std::vector<std::string>>(body);
    checkNames(names);
    return names;
}

std::string checkedText(std::span<const std::byte> body)
{
    auto text = MessageReader::read<std::string>(body);
    checkName(text);
    return text;
}

ViewShape checkedViewShape(std::span<const std::byte> body)
{
    const auto shape = MessageReader::read<ViewShape>(body);
    const auto isLength = [](std::uint32_t length) {
        return length >= 1 && length <= lv2::ViewSize::largest;
    };
    if (!isLength(shape.size.width) || !isLength(shape.size.height))
        throw ProtocolBreach("its view has no possible size");
    return shape;
}

bool hasSameShape(const Description &one, const Description &other)
{
    return one.inputs == other.inputs && one.outputs == other.outputs &&
           one.takesMIDI == other.takesMIDI &&
           one.midiOutputNames.size() == other.midiOutputNames.size();
}

} // namespace platform::effect
