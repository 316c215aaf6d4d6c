#include "Animation/Gallery/Drawing.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include <fmt/format.h>

namespace animation::gallery
{

namespace
{

/// Colours and type of a picture, in light and in dark.
constexpr auto pictureStyle = R"(<style>
text { font-family: Cantarell, Inter, system-ui, sans-serif; fill: #24292f; }
.ground { fill: #ffffff; }
.cell { fill: #f4f6f8; }
.name { font-size: 13px; font-weight: 600; }
.title { font-size: 17px; font-weight: 700; }
.note { font-size: 11.5px; fill: #5d6975; }
.guide { stroke: #c3ccd5; stroke-width: 1; }
.end { stroke-dasharray: 3 3; }
.curve { fill: none; stroke: #1f6feb; stroke-width: 2; stroke-linejoin: round; stroke-linecap: round; }
.area { fill: #1f6feb; fill-opacity: 0.14; }
.mark { fill: #d4572a; }
@media (prefers-color-scheme: dark) {
text { fill: #e6edf3; }
.ground { fill: #10151b; }
.cell { fill: #1a212a; }
.note { fill: #95a3b1; }
.guide { stroke: #3a4653; }
.curve { stroke: #6cb0ff; }
.area { fill: #6cb0ff; fill-opacity: 0.18; }
.mark { fill: #ff9a6b; }
}
</style>
)";

struct Rectangle {
    double x;
    double y;
    double width;
    double height;
};

struct Range {
    double least;
    double greatest;

    void include(float value)
    {
        least = std::min(least, static_cast<double>(value));
        greatest = std::max(greatest, static_cast<double>(value));
    }
    void widen(double share)
    {
        const double margin = share * (greatest - least);
        least -= margin;
        greatest += margin;
    }
};

std::string beginPicture(double width, double height, const std::string &label)
{
    return fmt::format(R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {0:g} {1:g}" )"
                       R"(width="{0:g}" height="{1:g}" role="img" aria-label="{2}">)"
                       "\n{3}"
                       R"(<rect class="ground" width="{0:g}" height="{1:g}" rx="10"/>)"
                       "\n",
                       width, height, label, pictureStyle);
}

std::string text(double x, double y, const std::string &kind, const std::string &content)
{
    return fmt::format("<text x=\"{:g}\" y=\"{:g}\" class=\"{}\">{}</text>\n", x, y, kind, content);
}

double heightOf(double value, const Rectangle &place, const Range &range)
{
    return place.y + place.height * (range.greatest - value) / (range.greatest - range.least);
}

/// A line across `place` at `value`.
std::string guide(double value, const Rectangle &place, const Range &range, const std::string &kind)
{
    return fmt::format(R"(<line class="{}" x1="{:g}" x2="{:g}" y1="{:.1f}" y2="{:.1f}"/>)"
                       "\n",
                       kind, place.x, place.x + place.width, heightOf(value, place, range),
                       heightOf(value, place, range));
}

/// The values from `x` on, `step` apart, as the points of a line.
std::string points(const std::vector<float> &values, double x, double step, const Rectangle &place,
                   const Range &range)
{
    std::string points;
    for (const float value : values) {
        points += fmt::format("{}{:.1f},{:.1f}", points.empty() ? "" : " ", x,
                              heightOf(static_cast<double>(value), place, range));
        x += step;
    }
    return points;
}

std::string drawCurve(const CurveRecording &curve, const Rectangle &cell, const Range &range)
{
    const Rectangle plot{cell.x + 14, cell.y + 34, cell.width - 28, cell.height - 46};
    std::string picture =
        fmt::format(R"(<rect class="cell" x="{:g}" y="{:g}" width="{:g}" height="{:g}" rx="8"/>)"
                    "\n",
                    cell.x, cell.y, cell.width, cell.height);
    picture += text(cell.x + 14, cell.y + 22, "name", curve.name);
    picture += guide(0, plot, range, "guide");
    picture += guide(1, plot, range, "guide end");
    const double step = plot.width / static_cast<double>(curve.values.size() - 1);
    picture += fmt::format("<polyline class=\"curve\" points=\"{}\"/>\n",
                           points(curve.values, plot.x, step, plot, range));
    return picture;
}

std::string drawLane(const Lane &lane, const Rectangle &place, const Range &range, double tick)
{
    std::string picture =
        fmt::format(R"(<rect class="cell" x="{:g}" y="{:g}" width="{:g}" height="{:g}" rx="6"/>)"
                    "\n",
                    place.x, place.y, place.width, place.height);
    const Rectangle plot{place.x, place.y + 8, place.width, place.height - 16};
    picture += guide(0, plot, range, "guide");
    const double x = place.x + tick * static_cast<double>(lane.firstTick);
    const double end = x + tick * static_cast<double>(lane.values.size() - 1);
    const std::string line = points(lane.values, x, tick, plot, range);
    const double base = heightOf(0, plot, range);
    picture += fmt::format("<polygon class=\"area\" points=\"{:.1f},{:.1f} {} {:.1f},{:.1f}\"/>\n",
                           x, base, line, end, base);
    picture += fmt::format("<polyline class=\"curve\" points=\"{}\"/>\n", line);
    for (const std::int64_t mark : lane.marks) {
        const auto value = lane.values[static_cast<std::size_t>(mark - lane.firstTick)];
        picture += fmt::format("<circle class=\"mark\" cx=\"{:.1f}\" cy=\"{:.1f}\" r=\"3.5\"/>\n",
                               place.x + tick * static_cast<double>(mark),
                               heightOf(static_cast<double>(value), plot, range));
    }
    return picture;
}

/// A scale of ticks below the lanes.
std::string drawScale(const Rectangle &place, std::int64_t ticks, double tick)
{
    constexpr std::int64_t every = 20;
    std::string picture;
    for (std::int64_t at = 0; at <= ticks; at += every) {
        const double x = place.x + tick * static_cast<double>(at);
        picture += fmt::format(R"(<line class="guide" x1="{0:.1f}" x2="{0:.1f}" y1="{1:g}" )"
                               R"(y2="{2:g}"/>)"
                               "\n",
                               x, place.y, place.y + 5);
        picture +=
            fmt::format(R"(<text class="note" x="{:.1f}" y="{:g}" text-anchor="middle">{}</text>)"
                        "\n",
                        x, place.y + 19, at);
    }
    return picture;
}

constexpr auto pageStart = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<title>Parvane: easing curves</title>
<style>
body { margin: 0 auto; padding: 3rem 1.5rem 5rem; max-width: 880px;
  font: 17px/1.55 Cantarell, Inter, system-ui, sans-serif; color: #24292f; background: #fff; }
h1 { font-size: 2rem; line-height: 1.2; margin: 0 0 0.4em; }
h2 { font-size: 1.25rem; margin: 2.6em 0 0.3em; }
p { margin: 0 0 1.1em; max-width: 40em; }
svg { display: block; width: 100%; height: auto; }
code { font-size: 0.92em; }
@media (prefers-color-scheme: dark) { body { color: #e6edf3; background: #10151b; } }
</style>
</head>
<body>
)";

} // namespace

std::string drawCurves(const std::vector<CurveRecording> &curves)
{
    constexpr std::size_t columns = 4;
    constexpr double margin = 20;
    constexpr double gap = 10;
    const Rectangle cell{0, 0, 200, 132};
    // The two curves that belong to no family share the first row.
    const std::size_t rows = 1 + (curves.size() - 2) / columns;
    const auto placeOf = [&](std::size_t row, std::size_t column) {
        return Rectangle{margin + static_cast<double>(column) * (cell.width + gap),
                         margin + static_cast<double>(row) * (cell.height + gap), cell.width,
                         cell.height};
    };
    const Rectangle last = placeOf(rows - 1, columns - 1);
    std::string picture = beginPicture(last.x + last.width + margin, last.y + last.height + margin,
                                       "The 42 easing curves");

    constexpr Range whole{-0.08, 1.08};
    picture += drawCurve(curves.front(), placeOf(0, 0), whole);
    picture += drawCurve(curves.back(), placeOf(0, 1), whole);
    const Rectangle words = placeOf(0, 2);
    picture += text(words.x + 14, words.y + 40, "title", "42 easing curves");
    picture += text(words.x + 14, words.y + 64, "note",
                    "from the source (line) to the destination (dashes).");
    picture +=
        text(words.x + 14, words.y + 82, "note", "A row has the scale that its family needs.");

    for (std::size_t row = 1; row < rows; ++row) {
        const auto first = curves.begin() + static_cast<std::ptrdiff_t>((row - 1) * columns + 1);
        Range range{0, 1};
        std::for_each(first, first + columns, [&](const CurveRecording &curve) {
            for (const float value : curve.values)
                range.include(value);
        });
        range.widen(0.06);
        for (std::size_t column = 0; column < columns; ++column)
            picture +=
                drawCurve(first[static_cast<std::ptrdiff_t>(column)], placeOf(row, column), range);
    }
    return picture + "</svg>\n";
}

std::string drawTimeline(const TimelineRecording &timeline)
{
    constexpr double margin = 20;
    constexpr double names = 210;
    constexpr double laneHeight = 76;
    constexpr double gap = 8;
    constexpr double width = 870;
    constexpr double heading = 74;
    const auto lanes = static_cast<double>(timeline.lanes.size());
    const double scale = heading + lanes * (laneHeight + gap);
    const Rectangle plot{margin + names, heading, width - names - 2 * margin, laneHeight};
    const double tick = plot.width / static_cast<double>(timeline.ticks);

    std::string picture = beginPicture(width, scale + 34, timeline.title);
    picture += text(margin, 34, "title", timeline.title);
    picture += text(margin, 56, "note", timeline.caption);
    Range range{0, 0};
    for (const Lane &lane : timeline.lanes) {
        for (const float value : lane.values)
            range.include(value);
    }
    range.widen(0.04);
    Rectangle place = plot;
    for (const Lane &lane : timeline.lanes) {
        picture += text(margin, place.y + 32, "name", lane.name);
        picture += text(margin, place.y + 50, "note", lane.note);
        picture += drawLane(lane, place, range, tick);
        place.y += laneHeight + gap;
    }
    picture += text(margin, scale + 19, "note", "ticks");
    picture += drawScale({plot.x, scale, plot.width, 0}, timeline.ticks, tick);
    return picture + "</svg>\n";
}

std::string writePage(const std::vector<CurveRecording> &curves,
                      const std::vector<TimelineRecording> &timelines)
{
    std::string page = pageStart;
    page += "<h1>How values move</h1>\n"
            "<p>What the animation kit computes: every easing curve over 100 frames, and its "
            "containers from their first tick to their last. <code>parvane-curves</code> draws "
            "this page with the kit itself.</p>\n";
    page += drawCurves(curves);
    page += "<p>Departures from the textbook are meant: <code>easeOutQuart</code> falls from "
            "twice the distance, <code>easeInOutQuart</code> jumps half-way, and "
            "<code>easeInOutExpo</code> stays low until its last frame.</p>\n";
    page += "<h2>Many values at once</h2>\n"
            "<p>Dots are ends and bounces.</p>\n";
    for (const TimelineRecording &timeline : timelines)
        page += drawTimeline(timeline);
    return page + "</body>\n</html>\n";
}

} // namespace animation::gallery
