#include "tools/scanner_stub/scanner_statistics.h"

#include <gtest/gtest.h>

#include <climits>

namespace velk::tools::scanner {
namespace {

TEST(ScannerStatistics, ASessionCountsWhatItDidAndTheUsersReports) {
    std::vector<Command> session;
    std::string error;
    ASSERT_TRUE(
        ParseScript("purge --folder 2\n"
                    "clone --folder 1 --msg 1\n"
                    "move --src 1 --dst 2 --msg 2 --verdict 1\n"
                    "move --src 1 --dst 3 --msg 3 --verdict 2\n"
                    "delete --folder 1 --msg 4\n"
                    "sleep 5\n",
                    session, error))
        << error;
    StatisticsCounters counters;
    counters.running_since = 1700000000;
    for (const Command& c : session)
        counters.CountRequest(c);
    counters.CountMessage(17);
    counters.CountMessage(17);
    counters.CountMessage(18);
    counters.CountMessage(21);  // a flush counts nothing
    EXPECT_EQ(4, counters.processed);
    EXPECT_EQ(2, counters.detected);
    EXPECT_EQ(2, counters.reported_spam);
    EXPECT_EQ(1, counters.reported_fp);

    counters.processed = INT_MAX;
    counters.CountRequest(session[1]);
    EXPECT_EQ(INT_MIN, counters.processed) << "32-bit, wrapping";

    counters.Reset(1800000000);
    EXPECT_EQ(0, counters.processed);
    EXPECT_EQ(0, counters.reported_fp);
    EXPECT_EQ("1800000000", counters.Entries().back().second);
}

}  // namespace
}  // namespace velk::tools::scanner
