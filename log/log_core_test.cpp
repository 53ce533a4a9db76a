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

TEST_F(DiagLogTest, LinesGoToTheDatedFileAndTheDebuggerUnderTheLock) {
    log.Open(kBase);
    EXPECT_EQ(log.CurrentPath(), kFile);
    log.Write(L"@@@ %ls IN %d", L"Move", 7);
    platform.thread_id = 0xBEEF0A0B;
    log.SetSecondEcho(true);  // the second echo repeats a line on the debugger only
    // Far past the 1024-character message buffer: cut, never overrun.
    log.Write(L"%ls", std::wstring(5000, L'y').c_str());
    const std::wstring cut = L"beef:0a0b 2009/05/03 10:11:12 " + std::wstring(465, L'y') + L"...n";
    EXPECT_EQ(platform.files[kFile], kPrefix + L"@@@ Move IN 7\n" + cut);
    EXPECT_EQ(platform.debugger,
              (std::vector<std::wstring>{kPrefix + L"@@@ Move IN 7\n", cut, cut}));
    EXPECT_EQ(platform.open_attempts, std::vector<std::wstring>{kFile});
    EXPECT_FALSE(platform.unlocked_output);
    EXPECT_EQ(platform.max_lock_depth, 1);
}

TEST_F(DiagLogTest, FirstLineAfterMidnightGoesIntoTheNewDaysFileWhenItOpens) {
    platform.now = LocalTime{2009, 5, 3, 23, 59, 59};
    log.Open(kBase);
    log.Write(L"before");
    platform.now = LocalTime{2009, 5, 4, 0, 0, 0};
    log.Write(L"after");
    const std::wstring new_file = L"C:\\Data\\Users\\{U}\\log\\VELKAgent.20090504.log";
    EXPECT_EQ(platform.files[kFile], L"0001:0002 2009/05/03 23:59:59 before\n");
    EXPECT_EQ(platform.files[new_file], L"0001:0002 2009/05/04 00:00:00 after\n");
    EXPECT_EQ(log.CurrentPath(), new_file);
    // A next day whose file cannot be opened: the line still reaches the
    // debugger, and the log falls silent.
    platform.now.day = 5;
    platform.unopenable.insert(L"C:\\Data\\Users\\{U}\\log\\VELKAgent.20090505.log");
    log.Write(L"at the turn");
    log.Write(L"silent");
    EXPECT_EQ(platform.debugger.back(), L"0001:0002 2009/05/05 00:00:00 at the turn\n");
    EXPECT_EQ(platform.debugger.size(), 3u);
    EXPECT_FALSE(log.IsOpen());
}

TEST_F(DiagLogTest, ClosedOrUnopenableLogFormatsNothingUntilTheNextOpen) {
    log.Write(L"never %ls", L"shown");
    EXPECT_EQ(platform.locks_created, 0);
    platform.unopenable.insert(kFile);
    log.Open(kBase);
    platform.unopenable.clear();
    log.Write(L"lost");
    platform.now.day = 4;  // not even a new day brings it back
    log.Write(L"lost too");
    EXPECT_EQ(platform.open_attempts.size(), 1u);
    log.Open(L"D:\\other.txt");  // a fresh start, at the new place
    log.Write(L"back");
    log.Close();
    log.Write(L"after close");
    EXPECT_EQ(platform.format_calls, 1);
    EXPECT_EQ(platform.debugger.size(), 1u);
    EXPECT_EQ(platform.files[L"D:\\other.20090504.txt"], L"0001:0002 2009/05/04 10:11:12 back\n");
}

}  // namespace
}  // namespace velk::log
