// The log's state machine over a fake system: what reaches the dated file
// and the debugger, when files open, and what a failure costs.
#include "log/log_core.h"

#include <gtest/gtest.h>

#include "log/fake_log_platform.h"

namespace velk::log {
namespace {

using testing::FakeLogPlatform;

const std::wstring kBase = L"C:\\Data\\Users\\{U}\\log\\VELKAgent.log";
const std::wstring kFile = L"C:\\Data\\Users\\{U}\\log\\VELKAgent.20090503.log";
const std::wstring kPrefix = L"0001:0002 2009/05/03 10:11:12 ";

class DiagLogTest : public ::testing::Test {
protected:
    FakeLogPlatform platform;
    DiagLog log{platform};
};

TEST_F(DiagLogTest, ClosedLogFormatsNothingAndOutputsNothing) {
    log.Write(L"never %ls", L"shown");
    EXPECT_EQ(platform.locks_created, 0);
    log.Open(kBase);
    log.Close();
    log.Write(L"after close");
    EXPECT_FALSE(log.IsOpen());
    EXPECT_EQ(platform.format_calls, 0);
    EXPECT_TRUE(platform.debugger.empty());
    EXPECT_EQ(platform.files[kFile], L"");
}

TEST_F(DiagLogTest, LinesGoToTheDatedFileAndTheDebuggerUnderTheLock) {
    log.Open(kBase);
    EXPECT_EQ(log.CurrentPath(), kFile);
    log.Write(L"@@@ %ls IN %d", L"Move", 7);
    platform.thread_id = 0xBEEF0A0B;
    platform.now.second = 13;
    log.SetSecondEcho(true);  // the second echo repeats a line on the debugger only
    log.Write(L"twice");
    const std::wstring second = L"beef:0a0b 2009/05/03 10:11:13 twice\n";
    EXPECT_EQ(platform.files[kFile], kPrefix + L"@@@ Move IN 7\n" + second);
    EXPECT_EQ(platform.debugger,
              (std::vector<std::wstring>{kPrefix + L"@@@ Move IN 7\n", second, second}));
    EXPECT_EQ(platform.open_attempts, std::vector<std::wstring>{kFile});
    EXPECT_FALSE(platform.unlocked_output);
    EXPECT_EQ(platform.max_lock_depth, 1);
}

TEST_F(DiagLogTest, LongMessageBecomesA499CharacterLineThatTheNextLineContinues) {
    log.Open(kBase);
    // Far past the 1024-character message buffer: cut, never overrun.
    log.Write(L"%ls", std::wstring(5000, L'y').c_str());
    log.Write(L"tail");
    EXPECT_EQ(platform.files[kFile],
              kPrefix + std::wstring(465, L'y') + L"...n" + kPrefix + L"tail\n");
}

TEST_F(DiagLogTest, FirstLineAfterMidnightGoesIntoTheNewDaysFile) {
    platform.now = LocalTime{2009, 12, 31, 23, 59, 59};
    log.Open(kBase);
    log.Write(L"before");
    platform.now = LocalTime{2010, 1, 1, 0, 0, 0};
    log.Write(L"after");
    const std::wstring old_file = L"C:\\Data\\Users\\{U}\\log\\VELKAgent.20091231.log";
    const std::wstring new_file = L"C:\\Data\\Users\\{U}\\log\\VELKAgent.20100101.log";
    EXPECT_EQ(platform.files[old_file], L"0001:0002 2009/12/31 23:59:59 before\n");
    EXPECT_EQ(platform.files[new_file], L"0001:0002 2010/01/01 00:00:00 after\n");
    EXPECT_EQ(log.CurrentPath(), new_file);
}

TEST_F(DiagLogTest, FailedOpenLeavesTheLogSilentUntilTheNextOpen) {
    platform.unopenable.insert(kFile);
    log.Open(kBase);
    platform.unopenable.clear();
    log.Write(L"lost");
    platform.now.day = 4;  // not even a new day brings it back
    log.Write(L"lost too");
    EXPECT_EQ(platform.open_attempts.size(), 1u);
    EXPECT_TRUE(platform.debugger.empty());
    EXPECT_EQ(platform.format_calls, 0);

    log.Open(L"D:\\other.txt");  // a fresh start, at the new place
    log.Write(L"back");
    EXPECT_EQ(platform.files[L"D:\\other.20090504.txt"], L"0001:0002 2009/05/04 10:11:12 back\n");
}

TEST_F(DiagLogTest, FailedRolloverLosesTheLineFromTheFileButNotFromTheDebugger) {
    log.Open(kBase);
    platform.now.day = 4;
    platform.unopenable.insert(L"C:\\Data\\Users\\{U}\\log\\VELKAgent.20090504.log");
    log.Write(L"at the turn");
    log.Write(L"silent");
    EXPECT_EQ(platform.files[kFile], L"");
    EXPECT_EQ(platform.debugger,
              std::vector<std::wstring>{L"0001:0002 2009/05/04 10:11:12 at the turn\n"});
    EXPECT_FALSE(log.IsOpen());
}

TEST_F(DiagLogTest, UnknownClockGivesMinusOneDatesAndNoSpuriousRollover) {
    platform.clock_works = false;
    log.Open(L"VELKAgent.log");
    log.Write(L"no clock");
    log.Write(L"still none");
    EXPECT_EQ(platform.open_attempts, std::vector<std::wstring>{L"VELKAgent.-001-1-1.log"});
    EXPECT_EQ(platform.files[L"VELKAgent.-001-1-1.log"],
              L"0001:0002 -001/-1/-1 -1:-1:-1 no clock\n"
              L"0001:0002 -001/-1/-1 -1:-1:-1 still none\n");
}

}  // namespace
}  // namespace velk::log
