#include "statistics/statistics_core.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>

namespace velk::statistics {
namespace {

Counters Make(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d) {
    Counters k;
    k.processed = a;
    k.detected = b;
    k.reported_spam = c;
    k.reported_fp = d;
    return k;
}

TEST(StatisticsCore, RatesDivideByBPlusCAndByB) {
    // 4 processed, 2 detected, 1 reported by the user: (2 - 0) / (2 + 1).
    EXPECT_EQ(L"66.667%", FormatRate(ClampPercent(Derive(Make(4, 2, 1, 0)).detect_rate)));
    // The false-positive rate is D / B, not D / F.
    EXPECT_DOUBLE_EQ(25.0, Derive(Make(100, 8, 0, 2)).fp_rate);
}

TEST(StatisticsCore, AllZeroShowsZeroRatesAndOneFullSliceOfNormalMail) {
    const Counters c = Make(0, 0, 0, 0);
    const Derived d = Derive(c);
    EXPECT_EQ(L"0.000%", FormatRate(ClampPercent(d.detect_rate)));
    EXPECT_EQ(L"0.000%", FormatRate(ClampPercent(d.fp_rate)));
    const Shares s = ChartShares(c, d);
    EXPECT_EQ(100, s.normal);
    EXPECT_EQ(0, s.detected);
    EXPECT_EQ(0, s.reported);
    // A reset after invalid data makes the chart valid again.
    EXPECT_TRUE(ChartValidAfter(false, c));
}

TEST(StatisticsCore, ReportsWithoutDetectionsClampTheFalsePositiveRateTo100) {
    const Derived d = Derive(Make(10, 0, 2, 1));
    EXPECT_TRUE(std::isinf(d.fp_rate));
    EXPECT_EQ(100.0, ClampPercent(d.fp_rate));
    EXPECT_EQ(0.0, d.detect_rate) << "B - D below 1";
    EXPECT_EQ(0.0, ClampPercent(-12.5));
    EXPECT_EQ(L"100.000%", FormatRate(ClampPercent(d.fp_rate)));
}

TEST(StatisticsCore, ANegativeCounterInvalidatesTheChartUntilAllAreZero) {
    EXPECT_TRUE(AnyNegative(Make(5, 0, 0, -1)));
    EXPECT_FALSE(ChartValidAfter(true, Make(5, 0, 0, -1)));
    // Valid counters later do not bring it back; only a fresh start does.
    EXPECT_FALSE(ChartValidAfter(false, Make(5, 1, 0, 0)));
    EXPECT_TRUE(ChartValidAfter(true, Make(5, 1, 0, 0)));
}

TEST(StatisticsCore, SharesRoundHalfUpAtExactlyOneHalf) {
    // T = 8: one detection is 12.5% -> 13, normal mail takes the rest.
    Counters c = Make(8, 1, 0, 0);
    Shares s = ChartShares(c, Derive(c));
    EXPECT_EQ(13, s.detected);
    EXPECT_EQ(87, s.normal);
    c = Make(8, 0, 1, 0);
    s = ChartShares(c, Derive(c));
    EXPECT_EQ(13, s.reported);
    // T = 3: 33.33 -> 33 each, 34 left for normal mail.
    c = Make(3, 1, 1, 0);
    s = ChartShares(c, Derive(c));
    EXPECT_EQ(34, s.normal);
    EXPECT_EQ(33, s.detected);

    EXPECT_EQ(3, RoundHalfUp(2.5));
    EXPECT_EQ(2, RoundHalfUp(2.4999));
    EXPECT_EQ(-2, RoundHalfUp(-2.5)) << "truncation first, towards zero";
    EXPECT_EQ(INT_MAX, RoundHalfUp(1e12));
    EXPECT_EQ(INT_MIN, RoundHalfUp(-1e12));
}

TEST(StatisticsCore, ProductsAndSumsWrapAt32Bits) {
    // C x 100 = 3,000,000,000 wraps to -1,294,967,296: R = -32.37 -> -32.
    const Counters c = Make(40000000, 0, 30000000, 0);
    const Shares s = ChartShares(c, Derive(c));
    EXPECT_EQ(-32, s.reported);
    EXPECT_EQ(0, s.detected);
    EXPECT_EQ(132, s.normal);

    // E = B + C - D wraps too.
    const Derived d = Derive(Make(0, INT_MAX, 1, 0));
    EXPECT_EQ(INT_MIN, d.real_spam);
    EXPECT_EQ(INT_MIN, d.normal);
}

}  // namespace
}  // namespace velk::statistics
