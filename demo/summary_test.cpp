#include "demo/summary.h"

#include <gtest/gtest.h>

namespace velk::demo {
namespace {

class DemoSummary : public ::testing::Test {
protected:
    void SetUp() override {
        std::string error;
        ASSERT_TRUE(
            ParseScenario("folder 1 Inbox\nfolder 2 Junk\nmessage Inbox 1 spam.eml\n"
                          "move spam.eml to Junk\nexpect spam.eml in Junk\n",
                          scenario_, error))
            << error;
        run_.scenario = &scenario_;
        run_.identity = "{ID}";
        run_.client_events =
            "0.2 start mode=oe\n"
            "60.0 load Z:\\d\\install\\bin\\VELK_OEA.dll ok ms=12.54\n"
            "900.0 wm-close band=0 hooked=0\n"
            "930.0 free Z:\\d\\install\\bin\\VELK_OEA.dll ms=3.02\n";
        run_.scanner_report = "send 1 dwData=1077 cbData=2072 result=0 us=250.0\n";
        run_.scanner_log =
            "posted WM_USER+17 wParam=0x0 lParam=0x0\nposted WM_USER+9 wParam=0x0 lParam=0x0\n";
        run_.journal = "MoveMessage(1, 2, 1) @- -> 0x00000000\n";
        run_.mailbox_read = true;
        run_.before = {{1, 1, "Message-ID: <s@x>\r\nSubject: hi\r\n\r\n"}};
        run_.after = {{2, 1, run_.before[0].bytes}};
        run_.addin_logs = {{"VELKAgent.20240611.log", "0001:0002 2024/06/11 10:00:00 @@@ x\r\n"}};
        run_.band_seen = true;
        run_.band_seconds = 0.4;
        run_.clicked = true;
        run_.close_seconds = 0.03;
        run_.screenshot = "900x560";
        run_.statistics = {"1", "1", "1", "0", "50.000%", "0.000%"};
        run_.statistics_screenshot = "636x314";
        run_.sheet_confirmed = true;
        run_.blocked_sender = "offers@deals.example";
        run_.blocked_list_read = true;
        run_.blocked_list = {"a@b.example", "Offers@Deals.example"};
    }

    Scenario scenario_;
    RunRecords run_;
};

TEST_F(DemoSummary, AGoodRunPassesWithTheSenderOnDiskAndTheScannerTold) {
    const Summary s = Summarize(run_);
    EXPECT_TRUE(s.failures.empty()) << s.Text();
    EXPECT_NE(std::string::npos,
              s.Text().find("BlackList.dat: holds offers@deals.example among its 2 sender(s) "
                            "[pass]\n"));
    // Posted, not sent, of that number, and only once the sheet's OK went through.
    run_.scanner_log = "posted WM_USER+17 x\nsent WM_USER+9 x\nposted WM_USER+91 x\n";
    run_.sheet_confirmed = false;
    run_.blocked_list = {"x@y.example"};
    const std::vector<std::string> expected = {
        "the filtering sheet was not worked through to its OK",
        "the scanning process was not told that the sender lists changed",
        "BlackList.dat does not hold the blocked sender"};
    EXPECT_EQ(expected, Summarize(run_).failures);
}

TEST_F(DemoSummary, WhatTheRunMissedFailsIt) {
    run_.client_events =
        "0.2 start mode=oe\n"
        "60.0 load Z:\\d\\VELK_OEA.dll failed error=126 ms=1.00\n"
        "900.0 wm-close band=1 hooked=0\n";
    run_.scanner_log = "sent WM_USER+17 wParam=0x0 lParam=0x0\nposted WM_USER+9 wParam=0x0\n";
    run_.after = run_.before;
    run_.addin_logs.clear();
    run_.problems = {"no screenshot of the client"};
    run_.statistics[0] = "0";
    const Summary s = Summarize(run_);
    EXPECT_EQ(
        "start-up: the add-in failed to load (load Z:\\d\\VELK_OEA.dll failed error=126 "
        "ms=1.00); band with Report Spam in the client's rebar 0.40 s after the client "
        "process started",
        s.lines[1]);
    const std::vector<std::string> expected = {
        "line 5: spam.eml: expected in Junk, found in Inbox",
        "Report Spam did not reach the scanning process",
        "the add-in had not detached when the client got WM_CLOSE",
        "the add-in wrote no log",
        "the statistics dialog showed 0/1/1/0, the session counted 1/1/0/0",
        "no screenshot of the client"};
    EXPECT_EQ(expected, s.failures);
    EXPECT_NE(std::string::npos, s.Text().find("check: FAILED\n  line 5: spam.eml"));
}

TEST_F(DemoSummary, OnlyOutlookExpressMustDetachBeforeItsOwnClose) {
    // The band still in the rebar when Outlook Express's own handler runs
    // fails the run (the hook's subclass itself only comes off inside
    // WM_CLOSE, so `hooked` says nothing there).
    run_.client_events = "0.2 start mode=oe\n900.0 wm-close band=1 hooked=1\n";
    EXPECT_EQ(1u, Summarize(run_).failures.size());
    run_.client_events = "0.2 start mode=oe\n900.0 wm-close band=0 hooked=1\n";
    EXPECT_TRUE(Summarize(run_).failures.empty());
    // Windows Mail tears the band down from outside; its close finds it.
    run_.client_events = "0.2 start mode=wmail\n900.0 wm-close band=1 hooked=1\n";
    EXPECT_TRUE(Summarize(run_).failures.empty());
    run_.client_events = "0.2 start mode=wmail\n";
    EXPECT_EQ(std::vector<std::string>{"the client's window never got WM_CLOSE"},
              Summarize(run_).failures);
}

}  // namespace
}  // namespace velk::demo
