#include "controls/pie_chart_geometry.h"

#include <gtest/gtest.h>

#include <climits>

namespace velk::controls {
namespace {

// The pie starts at the top and runs towards the left; the chart is drawn
// flattened to three quarters of its height.
TEST(PieChartGeometry, EdgePointsRunFromTheTopAroundAFlattenedCircle) {
    EXPECT_EQ(SliceEndPoint(0), SliceEndPoint(100));
    EXPECT_EQ(0, SliceEndPoint(0).x);
    EXPECT_LT(SliceEndPoint(0).y, 0);
    EXPECT_LT(SliceEndPoint(25).x, -990);
    EXPECT_GT(SliceEndPoint(75).x, 990);
    EXPECT_EQ(-SliceEndPoint(0).y, SliceEndPoint(50).y);
    EXPECT_NEAR(SliceEndPoint(50).y, 750, 1);
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
    EXPECT_GT(rows[0].box_left, centre.x + 50);
    EXPECT_GT(rows[0].text_x, rows[0].box_right);
    const int pitch = rows[1].box_top - rows[0].box_top;
    EXPECT_EQ(pitch, rows[2].box_top - rows[1].box_top);
    EXPECT_EQ(centre.y, rows[0].box_top + 3 * pitch / 2);  // the three rows centred
    EXPECT_EQ(L"Detected spam (50%)", LegendText(L"Detected spam", rows[1]));

    // Eight rows would start above the circle: they start at its top.
    const auto many = LegendRows(centre, 50, std::vector<std::int32_t>(8, 12), true);
    EXPECT_EQ(centre.y - 50, many[0].box_top);

    // Outside strict mode the last row shows the rest of 100, without the blank.
    const auto loose = LegendRows(centre, 50, {30, 30, 5}, false);
    EXPECT_EQ(40, loose[2].percent);
    EXPECT_EQ(L"Other(40%)", LegendText(L"Other", loose[2]));
    EXPECT_EQ(L"A (30%)", LegendText(L"A", loose[0]));
}

}  // namespace
}  // namespace velk::controls
