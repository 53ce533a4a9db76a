// The Windows adapter against real files under Wine: the bytes support staff
// and their tools read, concurrent writers and the process-wide log.
#include <windows.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "common_src/QzCommon/QzComn_test_util.h"
#include "log/diag_log.h"
#include "log/log_core.h"
#include "log/log_platform_win.h"

namespace velk::log {
namespace {

using QzCommon::testing_util::TempFolder;

// The real adapter with the clock pinned.
class PinnedClockPlatform : public WinLogPlatform {
public:
    bool LocalNow(LocalTime& out) noexcept override {
        out = LocalTime{2009, 5, 3, 10, 11, 12};
        return true;
    }
};

std::string ThreadPrefix() {
    char tid[16];
    const DWORD id = ::GetCurrentThreadId();
    std::snprintf(tid, sizeof(tid), "%04x:%04x", unsigned(id >> 16), unsigned(id & 0xFFFF));
    return tid;
}

// "tttt:tttt YYYY/MM/DD hh:mm:ss message", appended to what is there, CR LF
// line ends, the ANSI code page, a cut line continued by the next one; a
// missing log folder is not created.
TEST(WinDiagLog, AppendsCrLfLinesInTheAnsiCodePageToTheDatedFile) {
    ASSERT_EQ(::GetACP(), 1252u) << "the expected bytes below are code page 1252";
    TempFolder folder;
    folder.WriteFile(L"VELKAgent.20090503.log", "kept\r\n");
    PinnedClockPlatform platform;
    DiagLog log(platform);
    log.Open(folder.path() + L"VELKAgent.log");
    // "%s" is a wide string: the CRT's printf, not C99's.
    log.Write(L"@@@ %s IN caf\x00e9 %d \x20ac", L"Stor\x00e9", 42);
    log.Write(L"%s", std::wstring(600, L'z').c_str());
    log.Write(L"next");
    log.Open(folder.path() + L"log\\VELKAgent.log");
    log.Write(L"nowhere");
    EXPECT_FALSE(log.IsOpen());
    EXPECT_FALSE(folder.Exists(L"log"));

    const std::string prefix = ThreadPrefix() + " 2009/05/03 10:11:12 ";
    EXPECT_EQ(folder.ReadFile(L"VELKAgent.20090503.log"),
              "kept\r\n" + prefix + "@@@ Stor\xe9 IN caf\xe9 42 \x80\r\n" + prefix +
                  std::string(465, 'z') + "...n" + prefix + "next\r\n");
}

// Writers on four threads while the day flips back and forth every few
// lines, so the file is replaced under them again and again: every line
// arrives whole in one of the two files.
TEST(WinDiagLog, ConcurrentWritersAcrossFileChangesLoseNoLineAndNeverInterleave) {
    struct FlippingClock : WinLogPlatform {
        std::atomic<int> calls{0};
        bool LocalNow(LocalTime& out) noexcept override {
            out = LocalTime{2009, 5, 3 + calls++ / 20 % 2, 10, 11, 12};
            return true;
        }
    } platform;
    TempFolder folder;
    DiagLog log(platform);
    log.Open(folder.path() + L"VELKAgent.log");
    std::vector<std::thread> writers;
    for (int t = 0; t < 4; ++t) {
        writers.emplace_back([&log, t] {
            for (int i = 0; i < 200; ++i)
                log.Write(L"writer %d line %d %s", t, i, L"end");
        });
    }
    for (auto& w : writers)
        w.join();
    log.Close();
    std::istringstream lines(folder.ReadFile(L"VELKAgent.20090503.log") +
                             folder.ReadFile(L"VELKAgent.20090504.log"));
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        ASSERT_GE(line.size(), 31u);
        EXPECT_EQ(line.substr(30, 7), "writer ") << line;
        EXPECT_EQ(line.substr(line.size() - 5), " end\r") << line;
    }
    EXPECT_EQ(count, 800);
}

// The process-wide log through the macro every part of the add-in uses,
// with the real clock.
TEST(WinDiagLog, ProcessLogIsSilentUntilOpenedAndWritesTodaysFile) {
    int evaluated = 0;
    VELK_LOG(L"closed %d", ++evaluated);
    TempFolder folder;
    SYSTEMTIME st;
    ::GetLocalTime(&st);
    wchar_t name[32];
    std::swprintf(name, 32, L"VELKAgent.%04u%02u%02u.log", st.wYear, st.wMonth, st.wDay);
    Open(folder.path() + L"VELKAgent.log");
    EXPECT_EQ(CurrentPath(), folder.path() + name);
    VELK_LOG(L"open %d %s", ++evaluated, L"wide");
    AssertReport(L"mover.cpp", 12, L"Move", L"bad folder");
    Close();
    VELK_LOG(L"closed again %d", ++evaluated);
    EXPECT_EQ(evaluated, 1);

    std::istringstream lines(folder.ReadFile(name));
    std::vector<std::string> messages;
    for (std::string line; std::getline(lines, line);) {
        EXPECT_EQ(line.substr(0, 10), ThreadPrefix() + " ");
        messages.push_back(line.substr(30));
    }
    EXPECT_EQ(messages,
              (std::vector<std::string>{
                  "open 1 wide\r", "@@@ Assertion failed : mover.cpp(12) Move : bad folder\r"}));
}

}  // namespace
}  // namespace velk::log
