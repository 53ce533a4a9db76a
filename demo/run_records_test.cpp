#include "demo/run_records.h"

#include <gtest/gtest.h>

namespace velk::demo {
namespace {

TEST(DemoRunRecords, ClientEventsGiveLoadTimesAndTheCloseFindings) {
    const std::vector<ClientEvent> events = ParseClientEvents(
        "0.3 start mode=wmail\r\n"
        "110.7 window created rebars=2\r\n"
        "112.9 load Z:\\demo\\bin\\demo_probe.dll ok ms=0.40\r\n"
        "113.5 load Z:\\demo\\install\\bin\\VELK_OEA.DLL ok ms=12.25\r\n"
        "garbage line\r\n"
        "147.3 wm-close band=0 hooked=1\r\n");
    ASSERT_EQ(5u, events.size());
    const ClientEvent* load = FindLoad(events, "velk_oea.dll");
    ASSERT_NE(nullptr, load);
    EXPECT_EQ(12.25, EventValue(*load, "ms"));
    const ClientEvent* close = FindEvent(events, "wm-close");
    ASSERT_NE(nullptr, close);
    EXPECT_EQ(1.0, EventValue(*close, "hooked"));
    EXPECT_EQ(nullptr, FindLoad(events, "other.dll"));
}

TEST(DemoRunRecords, SendReportAndAddinLogProblems) {
    SendReport report = ParseSendReport(
        "send 1 dwData=1078 cbData=12 result=0 us=812.5\n"
        "send 2 dwData=1077 cbData=2072 result=0 us=97.0\n"
        "summary sends=2 median_us=454.7 p99_us=812.5 max_us=812.5\n"
        "error: target window not found\n");
    EXPECT_EQ((std::vector<double>{812.5, 97.0}), report.us);
    EXPECT_EQ(1u, report.errors.size());

    AddinLogStats stats = ReadAddinLog(
        "0000:0010 2024/06/11 10:00:00 @@@ OnHookOE IN\r\n"
        "0000:0011 2024/06/11 10:00:01 @@@ Exception Catched in Function: "
        "CToolBarWnd::ProcMoveMsg\r\n"
        "0000:0011 2024/06/11 10:00:01 !!! the action of move item is not complete\r\n"
        "0000:0010 2024/06/11 10:00:02 !!! m_nMinCY is [24] unreasonable high\r\n"
        "0000:0010 2024/06/11 10:00:03 @@@ Error : set the old oe winproc failed\r\n");
    EXPECT_EQ(5u, stats.lines);
    ASSERT_EQ(3u, stats.problems.size());
    EXPECT_NE(std::string::npos, stats.problems[1].find("move item"));
}

}  // namespace
}  // namespace velk::demo
