#include "controls/pie_chart_geometry.h"

#include <algorithm>
#include <cmath>

namespace velk::controls {

namespace {

// Running sums wrap as the 32-bit integers they are; only out-of-range
// input gets here (strict mode never draws it), and it must not be
// undefined behaviour.
std::int32_t WrappingAdd(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

}  // namespace

ChartPoint SliceEndPoint(int running_percent) {
    const double x = 2.0 * static_cast<double>(running_percent) * kChartPi / 100 + kChartPi;
    ChartPoint p;
    p.x = static_cast<int>(std::sin(x) * kEdgeReach);
    p.y = static_cast<int>(std::cos(x) * kEdgeReach * 3) / 4;
    return p;
}

bool AddsUpToHundred(const std::vector<std::int32_t>& percents) {
    std::int64_t sum = 0;
    for (std::int32_t p : percents)
        sum += p;
    return sum == 100;
}

std::vector<SliceWedge> SliceWedges(const std::vector<std::int32_t>& percents, bool strict) {
    std::vector<SliceWedge> wedges;
    if (strict && !AddsUpToHundred(percents))
        return wedges;
    std::int32_t sum = 0;
    ChartPoint start = kFirstSliceStart;
    for (std::size_t i = 0; i < percents.size(); ++i) {
        if (percents[i] == 0)
            continue;
        sum = WrappingAdd(sum, percents[i]);
        if (!strict && i + 1 == percents.size())
            sum = 100;
        const ChartPoint end = SliceEndPoint(sum);
        wedges.push_back({i, start, end});
        start = end;
    }
    return wedges;
}

ChartPoint TitleAnchor(ChartPoint centre, int radius) {
    return {centre.x, centre.y - radius - kTitleRise};
}

std::vector<LegendRow> LegendRows(ChartPoint centre, int radius,
                                  const std::vector<std::int32_t>& percents, bool strict) {
    std::vector<LegendRow> rows;
    // A chart has a handful of slices; the bound only keeps the row
    // arithmetic inside int for any input.
    const int count = static_cast<int>(std::min<std::size_t>(percents.size(), 100000));
    const int left = centre.x + radius + kLegendGap;
    int y = std::max(centre.y - (count * kLegendRowStep) / 2, centre.y - radius);
    std::int32_t others = 0;
    for (int i = 0; i < count; ++i, y += kLegendRowStep) {
        LegendRow row;
        row.slice = static_cast<std::size_t>(i);
        row.box_left = left - kLegendBoxIndent;
        row.box_top = y;
        row.box_right = row.box_left + kLegendBoxWidth;
        row.box_bottom = y + kLegendBoxHeight;
        row.text_x = row.box_right + kLegendTextGap;
        row.text_y = y;
        row.percent = percents[i];
        if (!strict && i + 1 == count) {
            row.percent = static_cast<std::int32_t>(100u - static_cast<std::uint32_t>(others));
            row.blank_before_percent = false;
        }
        others = WrappingAdd(others, percents[i]);
        rows.push_back(row);
    }
    return rows;
}

std::wstring LegendText(const std::wstring& label, const LegendRow& row) {
    return label + (row.blank_before_percent ? L" (" : L"(") + std::to_wstring(row.percent) + L"%)";
}

}  // namespace velk::controls
