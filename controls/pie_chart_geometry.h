// Where the pie chart puts its slices, title and legend rows, in device
// units, without drawing anything: the chart control turns these into GDI
// calls, the tests and the fuzz target check them natively.
//
// The look is fixed and users know it: slice edges come from a pi cut to
// seven decimals and the second coordinate of each edge point is scaled by
// 3/4 (so slice edges are not quite where a true pie would put them, and a
// 100% slice ends exactly on its start). Do not "correct" either.
//
// Platform-free.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace velk::controls {

inline constexpr double kChartPi = 3.1415926;

// Distance of the edge points from the centre: GDI's Pie only takes their
// direction, so they lie far outside any real radius.
inline constexpr int kEdgeReach = 1000;

// Legend geometry, in device units.
inline constexpr int kLegendGap = 30;      // circle to the legend's left edge
inline constexpr int kLegendRowStep = 20;  // from one row to the next
inline constexpr int kLegendBoxWidth = 20;
inline constexpr int kLegendBoxHeight = 15;
inline constexpr int kLegendBoxIndent = 15;  // the box starts this far left of the edge
inline constexpr int kLegendTextGap = 5;     // box to label
inline constexpr int kTitleRise = 20;        // title baseline above the circle's top

struct ChartPoint {
    int x = 0;
    int y = 0;
    bool operator==(const ChartPoint& o) const { return x == o.x && y == o.y; }
};

// The first slice starts straight up.
inline constexpr ChartPoint kFirstSliceStart{0, -kEdgeReach};

// Edge point, relative to the centre, after `running_percent` of the pie.
ChartPoint SliceEndPoint(int running_percent);

// Strict mode draws only when the percentages add up to exactly 100 (in
// true arithmetic: slices that wrap a 32-bit sum to 100 do not count).
bool AddsUpToHundred(const std::vector<std::int32_t>& percents);

// One GDI Pie call: the slice, its start and end edge points relative to
// the centre (counter-clockwise from start to end).
struct SliceWedge {
    std::size_t slice = 0;
    ChartPoint start;
    ChartPoint end;
};

// The wedges to draw, in slice order; empty when strict mode refuses.
// Slices of 0 percent are skipped. Outside strict mode the last slice closes
// the pie, whatever its own percent.
std::vector<SliceWedge> SliceWedges(const std::vector<std::int32_t>& percents, bool strict);

// The title's anchor: centred on it horizontally, text bottom on it.
ChartPoint TitleAnchor(ChartPoint centre, int radius);

struct LegendRow {
    std::size_t slice = 0;
    int box_left = 0, box_top = 0, box_right = 0, box_bottom = 0;
    int text_x = 0, text_y = 0;  // top-left of the label
    std::int32_t percent = 0;    // the percent the label shows
    bool blank_before_percent = true;
};

// One row per slice, to the right of the circle, centred on the circle's
// middle but never starting above its top. Outside strict mode the last row
// shows what the other rows leave of 100.
std::vector<LegendRow> LegendRows(ChartPoint centre, int radius,
                                  const std::vector<std::int32_t>& percents, bool strict);

// "Normal mail (25%)"; without the blank: "Normal mail(25%)".
std::wstring LegendText(const std::wstring& label, const LegendRow& row);

}  // namespace velk::controls
