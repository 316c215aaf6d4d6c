#include "Platform/Audio/BundleManifest.hpp"

#include "Platform/Audio/RDFVocabulary.hpp"
#include "Platform/Audio/TextFile.hpp"
#include "Platform/Audio/Turtle.hpp"
#include "Platform/Foundation/Print.hpp"

#include <fmt/format.h>
#include <lv2/core/lv2.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <map>

namespace platform::audio
{

namespace
{

constexpr std::size_t largestManifest = 1'000'000;

struct Subject {
    std::string uri;
    bool isPlugin = false;
    std::vector<std::string> dataFiles;
    std::optional<std::uint32_t> type;
    std::optional<std::uint32_t> subtype;
    std::optional<std::uint32_t> manufacturer;
    std::uint32_t flags = 0;
    bool saysSomething = false;
};

std::optional<std::uint32_t> codeOf(std::string_view text)
{
    if (text.size() != 4 || std::any_of(text.begin(), text.end(), [](char character) {
            return character < 0x20 || character > 0x7E;
        }))
        return std::nullopt;
    const char characters[5] = {text[0], text[1], text[2], text[3], '\0'};
    return fourCharacterCode(characters);
}

std::uint32_t numberOf(std::string_view text)
{
    std::uint32_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

void noteComponentKey(Subject &subject, std::string_view property, std::string_view value)
{
    subject.saysSomething = true;
    if (property == "type")
        subject.type = codeOf(value);
    else if (property == "subtype")
        subject.subtype = codeOf(value);
    else if (property == "manufacturer")
        subject.manufacturer = codeOf(value);
    else if (property == "flags")
        subject.flags = numberOf(value);
}

void noteStatement(Subject &subject, const TurtleStatement &statement)
{
    if (statement.predicate == rdfType)
        subject.isPlugin |= statement.object == LV2_CORE__Plugin;
    else if (statement.predicate == rdfsSeeAlso) {
        if (auto path = pathOfFileLocation(statement.object))
            subject.dataFiles.push_back(std::move(*path));
    } else if (statement.predicate.substr(0, componentVocabulary.size()) == componentVocabulary)
        noteComponentKey(subject, statement.predicate.substr(componentVocabulary.size()),
                         statement.object);
}

ManifestPlugin pluginOf(Subject &subject, const std::string &bundle)
{
    ManifestPlugin plugin{subject.uri, std::move(subject.dataFiles), std::nullopt};
    if (plugin.dataFiles.empty())
        plugin.dataFiles.push_back(bundle + "/manifest.ttl");
    if (subject.type && subject.subtype && subject.manufacturer)
        plugin.description = AudioComponentDescription{*subject.type, *subject.subtype,
                                                       *subject.manufacturer, subject.flags, 0};
    else if (subject.saysSomething)
        printError(fmt::format("The component key of <{}> in {} is not whole and does not count.",
                               subject.uri, bundle));
    return plugin;
}

} // namespace

std::optional<std::string> readManifestText(const std::string &bundle)
{
    std::size_t tooLarge = 0;
    auto text = readTextFile(bundle + "/manifest.ttl", largestManifest, tooLarge);
    if (tooLarge > 0)
        printError(fmt::format("The bundle {} is passed over: its manifest has {} bytes, more "
                               "than {}.",
                               bundle, tooLarge, largestManifest));
    return text;
}

std::optional<BundleManifest> parseManifest(const std::string &bundle, const std::string &text)
{
    // In the order in which the manifest first names them.
    std::vector<Subject> subjects;
    std::map<std::string, std::size_t, std::less<>> places;
    BundleManifest manifest;
    const bool isWhole = readTurtle(text, bundle, [&](const TurtleStatement &statement) {
        auto place = places.find(statement.subject);
        if (place == places.end()) {
            place = places.emplace(statement.subject, subjects.size()).first;
            subjects.emplace_back().uri = statement.subject;
        }
        noteStatement(subjects[place->second], statement);
        if (statement.predicate == LV2_CORE__appliesTo)
            manifest.appliesTo.emplace_back(statement.object);
    });
    if (!isWhole) {
        printError(fmt::format("The bundle {} is passed over: its manifest is broken.", bundle));
        return std::nullopt;
    }
    for (Subject &subject : subjects)
        if (subject.isPlugin)
            manifest.plugins.push_back(pluginOf(subject, bundle));
    return manifest;
}

} // namespace platform::audio
