#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace platform::audio
{

/// One statement of a Turtle text, with every name in full. Blank nodes have the
/// names that the text gives them or the reader makes up.
struct TurtleStatement {
    std::string_view subject;
    std::string_view predicate;
    std::string_view object;
    bool objectIsLiteral;
};

/// Reads Turtle, resolving relative locations against the folder `folder`, and
/// calls `visit` for each statement. Answers false when the text is no Turtle or
/// is nested too deeply to be meant seriously; statements before the fault have
/// been visited then.
bool readTurtle(const std::string &text, const std::string &folder,
                const std::function<void(const TurtleStatement &)> &visit);

/// The path of a file location; none for any other.
std::optional<std::string> pathOfFileLocation(std::string_view location);

} // namespace platform::audio
