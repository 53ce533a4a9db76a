#include "controls/bitmap_slider_geometry.h"

#include <gtest/gtest.h>

namespace velk::controls {
namespace {

bool Inside(const SliderRect& inner, int width, int height) {
    return inner.left >= 0 && inner.top >= 0 && inner.right <= width && inner.bottom <= height &&
           inner.width() >= 0 && inner.height() >= 0;
}

TEST(SliderGeometry, StopsAreEvenlySpreadAndTheThumbStaysInsideInBothOrientations) {
    const SliderGeometry vertical(60, 150, 3, 15, 15, 40);
    const SliderGeometry horizontal(150, 30, 3, 15, 15);
    ASSERT_TRUE(vertical.vertical());
    ASSERT_FALSE(horizontal.vertical());
    for (const SliderGeometry* g : {&vertical, &horizontal}) {
        const int w = g->vertical() ? 60 : 150, h = g->vertical() ? 150 : 30;
        EXPECT_LT(g->StopCentre(0), g->StopCentre(1));
        EXPECT_LT(g->StopCentre(1), g->StopCentre(2));
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
        EXPECT_EQ(60, label.right);
        EXPECT_EQ(vertical.StopCentre(stop), (label.top + label.bottom) / 2);
        EXPECT_GE(label.height(), 16);
    }
    EXPECT_EQ(0, horizontal.Label(1).width());  // asked for none
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

}  // namespace
}  // namespace velk::controls
