#include "Platform/Audio/DerivedDescription.hpp"

#include "Platform/Audio/RDFVocabulary.hpp"
#include "Platform/Audio/TextFile.hpp"
#include "Platform/Audio/Turtle.hpp"

#include <lv2/atom/atom.h>
#include <lv2/core/lv2.h>
#include <lv2/event/event.h>
#include <lv2/midi/midi.h>

#include <algorithm>
#include <filesystem>
#include <unordered_map>
#include <utility>

namespace platform::audio
{

namespace
{

constexpr std::string_view subtypeAlphabet =
    "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
constexpr std::string_view capitalLetters = subtypeAlphabet.substr(10, 26);
constexpr std::string_view smallLetters = subtypeAlphabet.substr(36, 26);

// The data of one plug-in; the largest known files have 3 MB.
constexpr std::size_t largestDataFile = 16'000'000;

// http://www.isthe.com/chongo/tech/comp/fnv/
constexpr std::uint64_t fnv1a(std::string_view text)
{
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const char character : text)
        hash = (hash ^ static_cast<unsigned char>(character)) * 0x100000001B3U;
    return hash;
}

std::string_view authorityOf(std::string_view uri)
{
    if (const std::size_t slashes = uri.find("://"); slashes != std::string_view::npos)
        return uri.substr(0, uri.find('/', slashes + 3));
    const std::size_t firstColon = uri.find(':');
    if (firstColon == std::string_view::npos)
        return uri;
    return uri.substr(0, uri.find(':', firstColon + 1));
}

std::string_view manufacturerAlphabet(int place)
{
    return place == 0 ? capitalLetters : smallLetters;
}

std::uint32_t subtypeOf(std::string_view uri)
{
    std::uint64_t rest = fnv1a(uri);
    std::uint32_t code = 0;
    for (unsigned place = 0; place < 4; ++place, rest /= subtypeAlphabet.size())
        code |= static_cast<std::uint32_t>(
                    static_cast<unsigned char>(subtypeAlphabet[rest % subtypeAlphabet.size()]))
                << (8U * place);
    return code;
}

std::uint32_t manufacturerOf(std::string_view authority)
{
    std::uint64_t rest = fnv1a(authority);
    std::uint32_t code = 0;
    for (int place = 3; place >= 0; --place, rest /= capitalLetters.size()) {
        const char letter = manufacturerAlphabet(place)[rest % capitalLetters.size()];
        code |= static_cast<std::uint32_t>(static_cast<unsigned char>(letter))
                << (8U * static_cast<unsigned>(3 - place));
    }
    return code;
}

char characterAt(std::uint32_t code, int place)
{
    return static_cast<char>((code >> (8U * static_cast<unsigned>(3 - place))) & 0xFFU);
}

bool contains(std::string_view alphabet, char character)
{
    return alphabet.find(character) != std::string_view::npos;
}

// What a port is, gathered from separate statements.
struct Kinds {
    bool input = false;
    bool output = false;
    bool audio = false;
    bool midi = false;
};

void noteType(Kinds &kinds, std::string_view type)
{
    kinds.input |= type == LV2_CORE__InputPort;
    kinds.output |= type == LV2_CORE__OutputPort;
    kinds.audio |= type == LV2_CORE__AudioPort;
}

} // namespace

AudioComponentDescription derivedDescription(std::string_view pluginURI)
{
    AudioComponentDescription description;
    description.componentSubType = subtypeOf(pluginURI);
    description.componentManufacturer = manufacturerOf(authorityOf(pluginURI));
    return description;
}

bool mayBeDerived(const AudioComponentDescription &key)
{
    for (int place = 0; place < 4; ++place) {
        if (key.componentSubType != 0 &&
            !contains(subtypeAlphabet, characterAt(key.componentSubType, place)))
            return false;
        if (key.componentManufacturer != 0 &&
            !contains(manufacturerAlphabet(place), characterAt(key.componentManufacturer, place)))
            return false;
    }
    return (key.componentFlags & key.componentFlagsMask) == 0;
}

DerivedTypes::PortsByPlugin DerivedTypes::readFile(const std::string &path)
{
    PortsByPlugin result;
    std::size_t tooLarge = 0;
    const auto text = readTextFile(path, largestDataFile, tooLarge);
    if (!text)
        return result;

    std::unordered_map<std::string, Kinds> kinds;
    std::vector<std::pair<std::string, std::string>> portsOfPlugins;
    const std::string folder = std::filesystem::path(path).parent_path().string();
    // What a broken file says before it breaks still counts: it is only a hint.
    readTurtle(*text, folder, [&](const TurtleStatement &statement) {
        if (statement.predicate == LV2_CORE__port)
            portsOfPlugins.emplace_back(statement.subject, statement.object);
        else if (statement.predicate == rdfType)
            noteType(kinds[std::string(statement.subject)], statement.object);
        else if ((statement.predicate == LV2_ATOM__supports ||
                  statement.predicate == LV2_EVENT__supportsEvent) &&
                 statement.object == LV2_MIDI__MidiEvent)
            kinds[std::string(statement.subject)].midi = true;
    });
    for (const auto &[plugin, port] : portsOfPlugins) {
        Ports &ports = result[plugin];
        const Kinds &kind = kinds[port];
        ports.audioIn |= kind.audio && kind.input;
        ports.audioOut |= kind.audio && kind.output;
        ports.midiIn |= kind.midi && kind.input;
        ports.midiOut |= kind.midi && kind.output;
    }
    return result;
}

const DerivedTypes::PortsByPlugin &DerivedTypes::file(const std::string &path)
{
    const auto known = files_.find(path);
    return known != files_.end() ? known->second
                                 : files_.emplace(path, readFile(path)).first->second;
}

std::uint32_t DerivedTypes::typeOf(const std::string &pluginURI,
                                   const std::vector<std::string> &dataFiles)
{
    Ports all;
    for (const std::string &path : dataFiles) {
        const PortsByPlugin &plugins = file(path);
        const auto found = plugins.find(pluginURI);
        if (found == plugins.end())
            continue;
        all.audioIn |= found->second.audioIn;
        all.audioOut |= found->second.audioOut;
        all.midiIn |= found->second.midiIn;
        all.midiOut |= found->second.midiOut;
    }
    if (all.audioIn && all.audioOut)
        return all.midiIn ? fourCharacterCode("aumf") : fourCharacterCode("aufx");
    if (all.audioOut)
        return all.midiIn ? fourCharacterCode("aumu") : fourCharacterCode("augn");
    if (!all.audioIn && (all.midiIn || all.midiOut))
        return fourCharacterCode("aumi");
    return fourCharacterCode("aufx");
}

} // namespace platform::audio
