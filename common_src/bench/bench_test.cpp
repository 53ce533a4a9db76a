#include "common_src/bench/bench.h"

#include <gtest/gtest.h>

namespace velk::bench {
namespace {

TEST(BenchSummary, MedianOfOddAndEvenCountsAndTheSlowOutlierInTheP99) {
    std::vector<double> odd{5, 1, 3}, even{4, 1, 3, 2}, many;
    EXPECT_DOUBLE_EQ(3, Summarise(odd).median_us);
    EXPECT_DOUBLE_EQ(2.5, Summarise(even).median_us);
    // p99 of 1..200 is the 198th value: one slow outlier in a hundred is seen.
    for (int i = 200; i >= 1; --i)
        many.push_back(i);
    EXPECT_DOUBLE_EQ(198, Summarise(many).p99_us);
}

}  // namespace
}  // namespace velk::bench
