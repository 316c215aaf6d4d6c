#pragma once

#include <string>

namespace platform::lv2
{

/// A plug-in's own view for the X Window System as its data describes it.
struct ViewDescription {
    std::string uri; ///< what the view is known by
    /// Paths; the bundle's ends with a slash.
    ///@{
    /// Paths; the bundle's ends with a slash.
    std::string binary;
    std::string bundle;
    ///@}
    /// How often it is to be kept going, in Hz: 1 to 60.
    float updateRate = 30.0F;
    /// Whether a person may give it another size.
    bool isResizable = true;
};

} // namespace platform::lv2
