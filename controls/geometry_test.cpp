// The platform-free geometry of the level slider and the pie chart.
#include <gtest/gtest.h>

#include <climits>

#include "controls/bitmap_slider_geometry.h"
#include "controls/pie_chart_geometry.h"

namespace velk::controls {
namespace {

bool Inside(const SliderRect& inner, int width, int height) {
    return inner.left >= 0 && inner.top >= 0 && inner.right <= width && inner.bottom <= height &&
           inner.width() >= 0 && inner.height() >= 0;
}

TEST(SliderGeometry, StopsAreEvenlySpreadAndTheThumbStaysInsideInBothOrientations) {
    const SliderGeometry vertical(60, 150, 3, 15, 15, 40);
    const SliderGeometry horizontal(150, 30, 3, 15, 15);
    for (const SliderGeometry* g : {&vertical, &horizontal}) {
        const int w = g->vertical() ? 60 : 150, h = g->vertical() ? 150 : 30;
        EXPECT_LT(g->StopCentre(0), g->StopCentre(1));
        EXPECT_NEAR(g->StopCentre(1) - g->StopCentre(0), g->StopCentre(2) - g->StopCentre(1), 1);
        for (int stop = 0; stop < 3; ++stop) {
            EXPECT_TRUE(Inside(g->Thumb(stop), w, h)) << stop;
            EXPECT_TRUE(Inside(g->Tick(stop), w, h)) << stop;
        }
        EXPECT_TRUE(Inside(g->Track(), w, h));
        // Out-of-range stops are drawn at the ends, never outside.
        EXPECT_EQ(g->StopCentre(0), g->StopCentre(-5));
        EXPECT_EQ(g->StopCentre(2), g->StopCentre(9));
    }
    // The names go right of a vertical track, clear of the thumb and level
    // with their stops.
    for (int stop = 0; stop < 3; ++stop) {
        const SliderRect label = vertical.Label(stop);
        EXPECT_GE(label.left, vertical.Thumb(stop).right);
        EXPECT_EQ(vertical.StopCentre(stop), (label.top + label.bottom) / 2);
        EXPECT_GE(label.height(), 16);
    }
}

TEST(SliderGeometry, APointLeadsToTheNearestStopAndZonesTileTheControl) {
    const SliderGeometry g(40, 121, 3, 15, 11);
    for (int stop = 0; stop < 3; ++stop) {
        EXPECT_EQ(stop, g.StopAt(20, g.StopCentre(stop)));
        // Every point of a stop's zone leads to that stop.
        const SliderRect zone = g.Zone(stop);
        EXPECT_EQ(stop, g.StopAt(5, zone.top));
        EXPECT_EQ(stop, g.StopAt(5, zone.bottom - 1));
        EXPECT_EQ(40, zone.width());
    }
    EXPECT_EQ(0, g.Zone(0).top);
    EXPECT_EQ(g.Zone(0).bottom, g.Zone(1).top);
    EXPECT_EQ(g.Zone(1).bottom, g.Zone(2).top);
    EXPECT_EQ(121, g.Zone(2).bottom);
}

TEST(SliderGeometry, DegenerateSizesStayWithinTheControl) {
    struct Case {
        int w, h, stops, tw, th, labels;
    } cases[] = {{0, 0, 3, 15, 15, 0},
                 {10, 12, 3, 15, 15, 30},
                 {-5, -5, 0, -1, -1, -9},
                 {5000000, 40, 3, 15, 15, 0},
                 {40, 1, 1, 100, 100, 0}};
    for (const Case& c : cases) {
        const SliderGeometry g(c.w, c.h, c.stops, c.tw, c.th, c.labels);
        EXPECT_GE(g.stops(), 2);
        for (int stop = -1; stop <= g.stops(); ++stop) {
            EXPECT_GE(g.StopCentre(stop), 0);
            EXPECT_GE(g.Zone(stop).width(), 0);
            EXPECT_GE(g.Zone(stop).height(), 0);
        }
        const int at = g.StopAt(c.w / 2, c.h / 2);
        EXPECT_TRUE(at >= 0 && at < g.stops());
    }
}

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
    // 100 only after a 32-bit wrap is not 100.
    EXPECT_TRUE(SliceWedges({INT_MAX, INT_MAX, 102}, true).empty());

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
