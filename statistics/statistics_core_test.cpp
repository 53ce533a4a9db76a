#include "statistics/statistics_core.h"

#include <gtest/gtest.h>

#include <climits>

namespace velk::statistics {
namespace {

TEST(StatisticsCore, RatesAsShownAndTheChartsShares) {
    const struct {
        std::int32_t a, b, c, d;  // processed, detected, reported spam, reported not spam
        const wchar_t* detect_rate;
        const wchar_t* fp_rate;
        std::int32_t normal, detected, reported;
    } cases[] = {
        {0, 0, 0, 0, L"0.000%", L"0.000%", 100, 0,
         0},  // nothing yet: one full slice of normal mail
        {4, 2, 1, 0, L"66.667%", L"0.000%", 25, 50, 25},   // (B - D) / (B + C)
        {100, 8, 0, 2, L"75.000%", L"25.000%", 92, 8, 0},  // the false-positive rate is D / B
        {10, 0, 2, 1, L"0.000%", L"100.000%", 82, 0, 18},  // D without B: infinite, shown as 100
        {8, 1, 0, 0, L"100.000%", L"0.000%", 87, 13, 0},   // 12.5 rounds half up
        {8, 0, 1, 0, L"0.000%", L"0.000%", 87, 0, 13},
        {3, 1, 1, 0, L"50.000%", L"0.000%", 34, 33, 33},  // normal mail takes the rest
        // C x 100 = 3,000,000,000 wraps to -1,294,967,296: R = -32.37 -> -32.
        {40000000, 0, 30000000, 0, L"0.000%", L"0.000%", 132, 0, -32},
    };
    for (const auto& t : cases) {
        Counters c;
        c.processed = t.a;
        c.detected = t.b;
        c.reported_spam = t.c;
        c.reported_fp = t.d;
        const Derived d = Derive(c);
        EXPECT_EQ(t.detect_rate, FormatRate(ClampPercent(d.detect_rate))) << t.a << " " << t.b;
        EXPECT_EQ(t.fp_rate, FormatRate(ClampPercent(d.fp_rate))) << t.a << " " << t.b;
        const Shares s = ChartShares(c, d);
        EXPECT_EQ(t.normal, s.normal) << t.a << " " << t.b;
        EXPECT_EQ(t.detected, s.detected) << t.a << " " << t.b;
        EXPECT_EQ(t.reported, s.reported) << t.a << " " << t.b;
    }
}

TEST(StatisticsCore, EdgesOfRoundingClampingWrappingAndTheChartsValidity) {
    EXPECT_EQ(-2, RoundHalfUp(-2.5)) << "truncation first, towards zero";
    EXPECT_EQ(INT_MAX, RoundHalfUp(1e12));
    EXPECT_EQ(INT_MIN, RoundHalfUp(-1e12));
    EXPECT_EQ(0.0, ClampPercent(-12.5));
    Counters c;
    c.detected = INT_MAX;
    c.reported_spam = 1;
    EXPECT_EQ(INT_MIN, Derive(c).real_spam) << "E = B + C - D wraps too";

    // A negative counter invalidates the chart; valid counters later do not
    // bring it back, only all of them zero (a reset) does.
    c = Counters();
    c.processed = 5;
    c.reported_fp = -1;
    EXPECT_FALSE(ChartValidAfter(true, c));
    c.reported_fp = 0;
    EXPECT_FALSE(ChartValidAfter(false, c));
    EXPECT_TRUE(ChartValidAfter(true, c));
    EXPECT_TRUE(ChartValidAfter(false, Counters()));
}

}  // namespace
}  // namespace velk::statistics
