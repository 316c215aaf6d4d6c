#pragma once

#include "Animation/Gallery/Recording.hpp"

#include <string>
#include <vector>

namespace animation::gallery
{

/// A picture of all curves, one family a row, that follows the reader's light or dark
/// appearance. A complete SVG document.
std::string drawCurves(const std::vector<CurveRecording> &curves);

/// A picture of a timeline, one lane below the other. A complete SVG document.
std::string drawTimeline(const TimelineRecording &timeline);

/// A page with all of them. A complete HTML document.
std::string writePage(const std::vector<CurveRecording> &curves,
                      const std::vector<TimelineRecording> &timelines);

} // namespace animation::gallery
