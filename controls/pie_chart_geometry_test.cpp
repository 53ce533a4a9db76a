#include "controls/pie_chart_geometry.h"

#include <gtest/gtest.h>

#include <climits>

namespace velk::controls {
namespace {

TEST(PieChartGeometry, EdgePointsKeepTheShortPiAndTheFlattenedSecondCoordinate) {
    // Computed by hand from the formula; a "proper" pi or a rounding instead
    // of the truncation moves several of them by one.
    const struct {
        int percent;
        ChartPoint point;
    } cases[] = {{0, {0, -749}}, {10, {-587, -606}}, {25, {-999, 0}}, {50, {0, 749}},
                 {75, {999, 0}}, {90, {587, -606}},  {100, {0, -749}}};
    for (const auto& c : cases) {
        EXPECT_EQ(c.point, SliceEndPoint(c.percent)) << c.percent << "%";
    }
}

TEST(PieChartGeometry, StrictModeDrawsOnlyAnExactHundredAndSkipsEmptySlices) {
    const auto wedges = SliceWedges({25, 50, 25}, true);
    ASSERT_EQ(3u, wedges.size());
    EXPECT_EQ(kFirstSliceStart, wedges[0].start);
    EXPECT_EQ(SliceEndPoint(25), wedges[0].end);
    EXPECT_EQ(wedges[0].end, wedges[1].start);
    EXPECT_EQ(SliceEndPoint(75), wedges[1].end);
    EXPECT_EQ(SliceEndPoint(100), wedges[2].end);

    // One full slice between empty ones: a single wedge whose ends point the
    // same way, which GDI draws as the whole circle.
    const auto full = SliceWedges({100, 0, 0}, true);
    ASSERT_EQ(1u, full.size());
    EXPECT_EQ(0u, full[0].slice);
    EXPECT_EQ(0, full[0].end.x);
    EXPECT_LT(full[0].end.y, 0);

    EXPECT_TRUE(SliceWedges({50, 40}, true).empty());
    EXPECT_TRUE(SliceWedges({}, true).empty());
    // 100 only after a 32-bit wrap is not 100.
    EXPECT_FALSE(AddsUpToHundred({INT_MAX, INT_MAX, 102}));
    EXPECT_TRUE(SliceWedges({INT_MAX, INT_MAX, 102}, true).empty());
    EXPECT_TRUE(AddsUpToHundred({150, -50}));

    // Outside strict mode the last slice closes the pie.
    const auto loose = SliceWedges({30, 30}, false);
    ASSERT_EQ(2u, loose.size());
    EXPECT_EQ(SliceEndPoint(30), loose[0].end);
    EXPECT_EQ(SliceEndPoint(100), loose[1].end);
}

TEST(PieChartGeometry, LegendRowsSitRightOfTheCircleCentredButNeverAboveItsTop) {
    const ChartPoint centre{100, 200};
    const auto rows = LegendRows(centre, 50, {25, 50, 25}, true);
    ASSERT_EQ(3u, rows.size());
    // Left edge at 100 + 50 + 30 = 180; three rows centred: 200 - 30.
    EXPECT_EQ(165, rows[0].box_left);
    EXPECT_EQ(185, rows[0].box_right);
    EXPECT_EQ(170, rows[0].box_top);
    EXPECT_EQ(185, rows[0].box_bottom);
    EXPECT_EQ(190, rows[0].text_x);
    EXPECT_EQ(210, rows[2].box_top);
    EXPECT_EQ(L"Detected spam (50%)", LegendText(L"Detected spam", rows[1]));

    // Eight rows would start above the circle: they start at its top.
    const auto many = LegendRows(centre, 50, std::vector<std::int32_t>(8, 12), true);
    EXPECT_EQ(150, many[0].box_top);

    // Outside strict mode the last row shows the rest of 100, without the blank.
    const auto loose = LegendRows(centre, 50, {30, 30, 5}, false);
    EXPECT_EQ(40, loose[2].percent);
    EXPECT_EQ(L"Other(40%)", LegendText(L"Other", loose[2]));
    EXPECT_EQ(L"A (30%)", LegendText(L"A", loose[0]));

    EXPECT_EQ((ChartPoint{100, 130}), TitleAnchor(centre, 50));
}

}  // namespace
}  // namespace velk::controls
