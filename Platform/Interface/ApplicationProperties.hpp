#pragma once

#include "Platform/Foundation/Bundle.hpp"

#include <string>

namespace platform::interface
{

/// What a program says of itself in the resource `Application.ini`, group
/// `Application`.
struct ApplicationProperties {
    /// Reverse-DNS name of the program, under which the desktop knows it.
    std::string identifier;
    /// The name that people read.
    std::string name;
    /// The storyboard whose initial view controller the window shows.
    std::string mainStoryboard;
    /// The style sheet's name, without its extension css.
    std::string styleSheet;
    /// Size in points that the window opens with.
    int windowWidth = 0;
    int windowHeight = 0;

    /// Reads the resource. A `PlatformError` when it is missing, malformed or
    /// lacks a key.
    static ApplicationProperties load(const Bundle &bundle);
};

} // namespace platform::interface
