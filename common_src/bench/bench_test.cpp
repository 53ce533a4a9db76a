#include "common_src/bench/bench.h"

#include <gtest/gtest.h>

namespace velk::bench {
namespace {

TEST(BenchSummary, MedianAndPercentilesOfOddAndEvenSampleCounts) {
    std::vector<double> odd{5, 1, 3};
    Stats s = Summarise(odd);
    EXPECT_EQ(3u, s.samples);
    EXPECT_DOUBLE_EQ(3, s.median_us);
    EXPECT_DOUBLE_EQ(1, s.min_us);
    EXPECT_DOUBLE_EQ(5, s.max_us);

    std::vector<double> even{4, 1, 3, 2};
    EXPECT_DOUBLE_EQ(2.5, Summarise(even).median_us);

    // p99 of 1..200 is the 198th value: one slow outlier in a hundred is seen.
    std::vector<double> many;
    for (int i = 200; i >= 1; --i) many.push_back(i);
    EXPECT_DOUBLE_EQ(198, Summarise(many).p99_us);

    std::vector<double> none;
    EXPECT_EQ(0u, Summarise(none).samples);
}

}  // namespace
}  // namespace velk::bench
