// The Windows adapter against real files under Wine: the bytes on disk, the
// file name, the CRT's formatting and the process-wide log.
#include <windows.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "log/diag_log.h"
#include "log/log_core.h"
#include "log/log_platform_win.h"

namespace velk::log {
namespace {

// The real adapter with the clock pinned and the debugger output recorded.
class PinnedClockPlatform : public WinLogPlatform {
public:
    LocalTime now{2009, 5, 3, 10, 11, 12};
    std::vector<std::wstring> debugger;

    bool LocalNow(LocalTime& out) noexcept override {
        out = now;
        return true;
    }
    void DebugOutput(const wchar_t* line) noexcept override {
        debugger.push_back(line);
        WinLogPlatform::DebugOutput(line);
    }
};

class TempFolder {
public:
    TempFolder() {
        wchar_t temp[MAX_PATH];
        ::GetTempPathW(MAX_PATH, temp);
        path_ = std::wstring(temp) + L"velk_log_test_" + std::to_wstring(::GetCurrentProcessId()) +
                L"_" + std::to_wstring(counter_++) + L"\\";
        ::CreateDirectoryW(path_.c_str(), nullptr);
    }
    ~TempFolder() {
        WIN32_FIND_DATAW found;
        HANDLE find = ::FindFirstFileW((path_ + L"*").c_str(), &found);
        if (find != INVALID_HANDLE_VALUE) {
            do {
                ::DeleteFileW((path_ + found.cFileName).c_str());
            } while (::FindNextFileW(find, &found));
            ::FindClose(find);
        }
        ::RemoveDirectoryW(path_.c_str());
    }
    const std::wstring& path() const { return path_; }

private:
    static inline int counter_ = 0;
    std::wstring path_;
};

std::string ReadBytes(const std::wstring& path) {
    std::string bytes;
    HANDLE file = ::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return "<missing>";
    char chunk[4096];
    DWORD got = 0;
    while (::ReadFile(file, chunk, sizeof(chunk), &got, nullptr) && got > 0)
        bytes.append(chunk, got);
    ::CloseHandle(file);
    return bytes;
}

bool Exists(const std::wstring& path) {
    return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::string ThreadPrefix() {
    char tid[16];
    DWORD id = ::GetCurrentThreadId();
    std::snprintf(tid, sizeof(tid), "%04x:%04x", static_cast<unsigned>(id >> 16),
                  static_cast<unsigned>(id & 0xFFFF));
    return tid;
}

std::wstring WidePrefix() {
    std::string narrow = ThreadPrefix();
    return std::wstring(narrow.begin(), narrow.end());
}

TEST(WinDiagLog, WritesCrLfLinesInTheAnsiCodePageToTheDatedFile) {
    ASSERT_EQ(::GetACP(), 1252u) << "the expected bytes below are code page 1252";
    TempFolder folder;
    PinnedClockPlatform platform;
    DiagLog log(platform);
    log.Open(folder.path() + L"VELKAgent.log");
    ASSERT_TRUE(log.IsOpen());
    // "%s" is a wide string: the CRT's printf, not C99's.
    log.Write(L"@@@ %s IN caf\x00e9 %d \x20ac", L"Stor\x00e9", 42);
    log.Write(L"plain");
    log.Close();

    const std::string expected = ThreadPrefix() +
                                 " 2009/05/03 10:11:12 @@@ Stor\xe9 IN caf\xe9 42 \x80\r\n" +
                                 ThreadPrefix() + " 2009/05/03 10:11:12 plain\r\n";
    EXPECT_EQ(ReadBytes(folder.path() + L"VELKAgent.20090503.log"), expected);
    ASSERT_EQ(platform.debugger.size(), 2u);
    EXPECT_EQ(platform.debugger[1], WidePrefix() + L" 2009/05/03 10:11:12 plain\n");
}

TEST(WinDiagLog, AppendsToAnExistingFileAndCutLinesHaveNoLineBreak) {
    TempFolder folder;
    const std::wstring file = folder.path() + L"VELKAgent.20090503.log";
    {
        std::ofstream seed(std::string(file.begin(), file.end()), std::ios::binary);
        seed << "kept\r\n";
    }
    PinnedClockPlatform platform;
    DiagLog log(platform);
    log.Open(folder.path() + L"VELKAgent.log");
    log.Write(L"%s", std::wstring(600, L'z').c_str());
    log.Write(L"next");
    log.Close();

    const std::string prefix = ThreadPrefix() + " 2009/05/03 10:11:12 ";
    EXPECT_EQ(ReadBytes(file),
              "kept\r\n" + prefix + std::string(465, 'z') + "...n" + prefix + "next\r\n");
}

TEST(WinDiagLog, MissingLogFolderIsNotCreatedAndTheLogStaysSilent) {
    TempFolder folder;
    PinnedClockPlatform platform;
    DiagLog log(platform);
    log.Open(folder.path() + L"log\\VELKAgent.log");
    log.Write(L"nowhere");
    EXPECT_FALSE(log.IsOpen());
    EXPECT_FALSE(Exists(folder.path() + L"log"));
    EXPECT_TRUE(platform.debugger.empty());
}

TEST(WinDiagLog, ConcurrentWritersNeverInterleaveWithinALine) {
    TempFolder folder;
    WinLogPlatform platform;
    DiagLog log(platform);
    log.Open(folder.path() + L"VELKAgent.log");
    const std::wstring path = log.CurrentPath();
    constexpr int kThreads = 4;
    constexpr int kLines = 200;
    std::vector<std::thread> writers;
    for (int t = 0; t < kThreads; ++t) {
        writers.emplace_back([&log, t] {
            for (int i = 0; i < kLines; ++i)
                log.Write(L"writer %d line %d %s", t, i, L"end");
        });
    }
    for (auto& w : writers)
        w.join();
    log.Close();

    std::istringstream lines(ReadBytes(path));
    std::string line;
    int count = 0;
    while (std::getline(lines, line)) {
        ++count;
        ASSERT_GE(line.size(), 31u);
        EXPECT_EQ(line.substr(line.size() - 5), " end\r") << line;
        EXPECT_EQ(line.find("writer"), 30u) << line;
    }
    EXPECT_EQ(count, kThreads * kLines);
}

// The process-wide log, through the macro every part of the add-in uses.
TEST(WinDiagLog, ProcessLogIsSilentUntilOpenedAndWritesTodaysFile) {
    int evaluated = 0;
    auto touch = [&evaluated] { return ++evaluated; };
    ASSERT_FALSE(IsOpen());
    VELK_LOG(L"closed %d", touch());
    EXPECT_EQ(evaluated, 0);

    TempFolder folder;
    SYSTEMTIME st;
    ::GetLocalTime(&st);
    wchar_t stamp[16];
    std::swprintf(stamp, 16, L".%04u%02u%02u", st.wYear, st.wMonth, st.wDay);
    const std::wstring expected_file = folder.path() + L"VELKAgent" + stamp + L".log";

    Open(folder.path() + L"VELKAgent.log");
    EXPECT_EQ(CurrentPath(), expected_file);
    VELK_LOG(L"open %d %s", touch(), L"wide");
    AssertReport(L"mover.cpp", 12, L"Move", L"bad folder");
    Close();
    VELK_LOG(L"closed again %d", touch());
    EXPECT_EQ(evaluated, 1);
    EXPECT_FALSE(IsOpen());

    std::string text = ReadBytes(expected_file);
    // "tttt:tttt YYYY/MM/DD hh:mm:ss " then the message, every line.
    std::istringstream lines(text);
    std::string line;
    std::vector<std::string> messages;
    while (std::getline(lines, line)) {
        ASSERT_GE(line.size(), 30u);
        EXPECT_EQ(line.substr(0, 10), ThreadPrefix() + " ");
        EXPECT_EQ(line[14], '/');
        EXPECT_EQ(line[17], '/');
        EXPECT_EQ(line[23], ':');
        EXPECT_EQ(line[26], ':');
        messages.push_back(line.substr(30));
    }
    EXPECT_EQ(messages,
              (std::vector<std::string>{
                  "open 1 wide\r", "@@@ Assertion failed : mover.cpp(12) Move : bad folder\r"}));
}

}  // namespace
}  // namespace velk::log
