// scanner_stub.exe as a second process, as the add-in meets it: records
// arrive byte for byte (malformed ones as asked) at a hidden window of this
// test, and its listening window records what is posted and sent to it.
#include <windows.h>

#include "actions/copydata_records.h"
#include "common_src/win32/handles.h"

#include <gtest/gtest.h>

#include <cstring>
#include <regex>
#include <string>
#include <vector>

namespace velk::tools::scanner {
namespace {

namespace rec = velk::actions;
using velk::win32::unique_file;
using velk::win32::unique_handle;

constexpr wchar_t kTargetClass[] = L"VelkScannerStubTestTarget";

struct Received {
    ULONG_PTR dwdata;
    WPARAM from;
    std::vector<std::uint8_t> bytes;
};

// A hidden top-level window that keeps every WM_COPYDATA and answers FALSE,
// as the add-in's receiver does.
class TargetWindow {
public:
    TargetWindow() {
        WNDCLASSEXW wc{};
        wc.cbSize = sizeof wc;
        wc.lpfnWndProc = &TargetWindow::Proc;
        wc.hInstance = ::GetModuleHandleW(nullptr);
        wc.lpszClassName = kTargetClass;
        ::RegisterClassExW(&wc);
        hwnd_ = ::CreateWindowExW(0, kTargetClass, L"", WS_OVERLAPPED, 0, 0, 10, 10, nullptr,
                                  nullptr, wc.hInstance, nullptr);
        ::SetWindowLongPtrW(hwnd_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    }
    ~TargetWindow() { ::DestroyWindow(hwnd_); }
    HWND hwnd() const { return hwnd_; }
    std::wstring handle_text() const { return std::to_wstring(reinterpret_cast<UINT_PTR>(hwnd_)); }
    const std::vector<Received>& received() const { return received_; }

private:
    static LRESULT CALLBACK Proc(HWND hwnd, UINT msg, WPARAM wparam, LPARAM lparam) {
        auto* self = reinterpret_cast<TargetWindow*>(::GetWindowLongPtrW(hwnd, GWLP_USERDATA));
        if (msg == WM_COPYDATA && self) {
            const auto* cds = reinterpret_cast<const COPYDATASTRUCT*>(lparam);
            const auto* data = static_cast<const std::uint8_t*>(cds->lpData);
            self->received_.push_back({cds->dwData, wparam,
                                       data ? std::vector<std::uint8_t>(data, data + cds->cbData)
                                            : std::vector<std::uint8_t>()});
            if (!data) {
                EXPECT_EQ(0u, cds->cbData);
            }
            return FALSE;
        }
        return ::DefWindowProcW(hwnd, msg, wparam, lparam);
    }

    HWND hwnd_ = nullptr;
    std::vector<Received> received_;
};

// Dispatches this thread's messages until `handle` is signalled.
bool PumpUntil(HANDLE handle, DWORD timeout_ms) {
    DWORD start = ::GetTickCount();
    for (;;) {
        DWORD elapsed = ::GetTickCount() - start;
        if (elapsed >= timeout_ms)
            return false;
        DWORD r = ::MsgWaitForMultipleObjects(1, &handle, FALSE, timeout_ms - elapsed, QS_ALLINPUT);
        if (r == WAIT_OBJECT_0)
            return true;
        MSG msg;
        while (::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE))
            ::DispatchMessageW(&msg);
    }
}

// The stand-in as a child process with its standard streams on NUL: a Wine
// child holding the runner's pipes would hang the test run.
class ScannerProcess {
public:
    explicit ScannerProcess(const std::wstring& args) {
        SECURITY_ATTRIBUTES sa{sizeof sa, nullptr, TRUE};
        nul_.reset(::CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE,
                                 FILE_SHARE_READ | FILE_SHARE_WRITE, &sa, OPEN_EXISTING, 0,
                                 nullptr));
        STARTUPINFOW si{};
        si.cb = sizeof si;
        si.dwFlags = STARTF_USESTDHANDLES;
        si.hStdInput = si.hStdOutput = si.hStdError = nul_.get();
        std::wstring exe = VELK_SCANNER_STUB_EXE;
        std::wstring line = L"\"" + exe + L"\" " + args;
        PROCESS_INFORMATION pi{};
        if (::CreateProcessW(exe.c_str(), &line[0], nullptr, nullptr, TRUE, CREATE_NO_WINDOW,
                             nullptr, nullptr, &si, &pi)) {
            process_.reset(pi.hProcess);
            ::CloseHandle(pi.hThread);
        }
    }
    ~ScannerProcess() {
        if (process_ && ::WaitForSingleObject(process_.get(), 0) == WAIT_TIMEOUT)
            ::TerminateProcess(process_.get(), 99);
    }
    bool started() const { return static_cast<bool>(process_); }

    // Pumps this thread (the target window lives here) until the child ends.
    DWORD Finish(DWORD timeout_ms = 30000) {
        if (!process_ || !PumpUntil(process_.get(), timeout_ms))
            return 0xDEAD;
        DWORD code = 0xDEAD;
        ::GetExitCodeProcess(process_.get(), &code);
        return code;
    }

private:
    unique_file nul_;
    unique_handle process_;
};

class ScannerStubTest : public ::testing::Test {
protected:
    void SetUp() override {
        wchar_t temp[MAX_PATH];
        ::GetTempPathW(MAX_PATH, temp);
        static int counter = 0;
        prefix_ = std::wstring(temp) + L"scanner_stub_" + std::to_wstring(::GetCurrentProcessId()) +
                  L"_" + std::to_wstring(++counter);
    }
    void TearDown() override {
        for (const std::wstring& f : files_)
            ::DeleteFileW(f.c_str());
    }

    std::wstring TempFile(const wchar_t* name, const std::string& content = std::string()) {
        std::wstring path = prefix_ + L"_" + name;
        HANDLE f =
            ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
        DWORD done = 0;
        ::WriteFile(f, content.data(), static_cast<DWORD>(content.size()), &done, nullptr);
        ::CloseHandle(f);
        files_.push_back(path);
        return path;
    }

    static std::vector<std::string> Lines(const std::wstring& path) {
        std::vector<std::string> lines;
        HANDLE f = ::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                 nullptr, OPEN_EXISTING, 0, nullptr);
        if (f == INVALID_HANDLE_VALUE)
            return lines;
        std::string text;
        char buffer[4096];
        DWORD got = 0;
        while (::ReadFile(f, buffer, sizeof buffer, &got, nullptr) && got)
            text.append(buffer, got);
        ::CloseHandle(f);
        for (size_t start = 0, nl; (nl = text.find("\r\n", start)) != std::string::npos;
             start = nl + 2)
            lines.push_back(text.substr(start, nl - start));
        return lines;
    }

    template <class T>
    static std::vector<std::uint8_t> Bytes(const T& record) {
        std::vector<std::uint8_t> b(sizeof(T));
        std::memcpy(b.data(), &record, sizeof(T));
        return b;
    }

    static void SetText(char16_t (&field)[rec::kHeaderUnits], const std::u16string& text) {
        std::memcpy(field, text.data(), text.size() * sizeof(char16_t));
    }

    std::wstring prefix_;
    std::vector<std::wstring> files_;
};

TEST_F(ScannerStubTest, AScriptDeliversEachRecordKindByteForByteAndTimesEverySend) {
    TargetWindow target;
    std::wstring script = TempFile(L"script.txt",
                                   "# every kind once, the move twice\r\n"
                                   "clone --folder 3 --msg 7 --option 1 --headers "
                                   "\"X-A: 1\\r\\nX-QZ-AS-Tagged-Subject: [SPAM] \\u00e9\"\r\n"
                                   "move --src 1 --dst 2 --msg 9 --verdict 2 --quarantine 0 "
                                   "--headers \"X-B: 2\" --repeat 2\r\n"
                                   "delete --folder 4 --msg 11\r\n"
                                   "sleep 1\r\n"
                                   "purge --folder 5\r\n");
    std::wstring report = TempFile(L"report.txt");
    ScannerProcess scanner(L"--hwnd " + target.handle_text() + L" --report \"" + report +
                           L"\" script \"" + script + L"\"");
    ASSERT_TRUE(scanner.started());
    ASSERT_EQ(0u, scanner.Finish());

    rec::CloneMsgRequest clone{};
    clone.nOption = 1;
    clone.nFolderID = 3;
    clone.nMsgID = 7;
    SetText(clone.szHeaders, u"X-A: 1\r\nX-QZ-AS-Tagged-Subject: [SPAM] \u00e9");
    rec::MoveMsgRequest move{};
    move.nVerdict = 2;
    move.nSrcFolderID = 1;
    move.nDstFolderID = 2;
    move.nMsgID = 9;
    SetText(move.szHeaders, u"X-B: 2");
    rec::DeleteMsgRequest del{4, 11, 0, {}};
    rec::DeleteMsgRequest purge{5, 0, 1, {}};

    const std::vector<Received>& got = target.received();
    ASSERT_EQ(5u, got.size());
    EXPECT_EQ(1076u, got[0].dwdata);
    EXPECT_EQ(Bytes(clone), got[0].bytes);
    for (int i : {1, 2}) {
        EXPECT_EQ(1077u, got[i].dwdata);
        EXPECT_EQ(Bytes(move), got[i].bytes);
    }
    EXPECT_EQ(1078u, got[3].dwdata);
    EXPECT_EQ(Bytes(del), got[3].bytes);
    EXPECT_EQ(1078u, got[4].dwdata);
    EXPECT_EQ(Bytes(purge), got[4].bytes);
    EXPECT_EQ(0u, got[0].from) << "no window of its own when only sending";

    std::vector<std::string> lines = Lines(report);
    ASSERT_EQ(6u, lines.size());
    const std::regex send(R"(send (\d) dwData=(\d+) cbData=(\d+) result=0 us=\d+\.\d)");
    const char* expected[][2] = {
        {"1076", "2060"}, {"1077", "2072"}, {"1077", "2072"}, {"1078", "12"}, {"1078", "12"}};
    for (int i = 0; i < 5; ++i) {
        std::smatch m;
        ASSERT_TRUE(std::regex_match(lines[i], m, send)) << lines[i];
        EXPECT_EQ(std::to_string(i + 1), m[1].str());
        EXPECT_EQ(expected[i][0], m[2].str());
        EXPECT_EQ(expected[i][1], m[3].str());
    }
    EXPECT_TRUE(std::regex_match(
        lines[5], std::regex(R"(summary sends=5 median_us=[\d.]+ p99_us=[\d.]+ max_us=[\d.]+)")))
        << lines[5];
}

TEST_F(ScannerStubTest, MalformedRecordsArriveExactlyAsAsked) {
    TargetWindow target;
    std::wstring hwnd = L"--hwnd " + target.handle_text() + L" ";
    // A text filling the whole field, with no terminating NUL.
    ASSERT_EQ(0u,
              ScannerProcess(hwnd + L"clone --folder 1 --msg 2 --headers abc --no-nul").Finish());
    // Cut short of the fixed size, empty, and padded beyond it.
    ASSERT_EQ(0u, ScannerProcess(hwnd + L"move --src 1 --dst 2 --msg 3 --cb 13").Finish());
    ASSERT_EQ(0u, ScannerProcess(hwnd + L"delete --folder 1 --msg 2 --cb 0").Finish());
    ASSERT_EQ(0u, ScannerProcess(hwnd + L"purge --folder 6 --cb 14").Finish());
    // A dwData nobody handles, and bytes of any shape.
    ASSERT_EQ(0u, ScannerProcess(hwnd + L"delete --folder 1 --msg 2 --dwdata 1234").Finish());
    ASSERT_EQ(0u, ScannerProcess(hwnd + L"raw --dwdata 0x435 --hex \"00 ff 10\"").Finish());

    const std::vector<Received>& got = target.received();
    ASSERT_EQ(6u, got.size());

    ASSERT_EQ(2060u, got[0].bytes.size());
    for (size_t unit = 0; unit < rec::kHeaderUnits; ++unit) {
        std::uint16_t u = static_cast<std::uint16_t>(got[0].bytes[12 + 2 * unit] |
                                                     got[0].bytes[13 + 2 * unit] << 8);
        ASSERT_EQ(static_cast<std::uint16_t>("abc"[unit % 3]), u) << "unit " << unit;
    }

    EXPECT_EQ(1077u, got[1].dwdata);
    EXPECT_EQ((std::vector<std::uint8_t>{1, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 1}), got[1].bytes);
    EXPECT_EQ(1078u, got[2].dwdata);
    EXPECT_TRUE(got[2].bytes.empty());
    EXPECT_EQ((std::vector<std::uint8_t>{6, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0}), got[3].bytes);
    EXPECT_EQ(1234u, got[4].dwdata);
    EXPECT_EQ(12u, got[4].bytes.size());
    EXPECT_EQ(1077u, got[5].dwdata);
    EXPECT_EQ((std::vector<std::uint8_t>{0x00, 0xFF, 0x10}), got[5].bytes);
}

TEST_F(ScannerStubTest, FindsTheWindowByClassEvenWhenItAppearsLate) {
    ScannerProcess scanner(std::wstring(L"--class ") + kTargetClass +
                           L" --wait 10000 purge --folder 8");
    ASSERT_TRUE(scanner.started());
    ::Sleep(300);  // the window comes after the sender started looking
    TargetWindow target;
    ASSERT_EQ(0u, scanner.Finish());
    ASSERT_EQ(1u, target.received().size());
    EXPECT_EQ(8u, target.received()[0].bytes[0]);
}

TEST_F(ScannerStubTest, ExitCodesTellAMissingWindowFromABadCommandLine) {
    std::wstring report = TempFile(L"report.txt");
    EXPECT_EQ(2u, ScannerProcess(L"--class NoSuchWindowClass --wait 50 --report \"" + report +
                                 L"\" purge --folder 1")
                      .Finish());
    EXPECT_EQ(2u, ScannerProcess(L"--hwnd 0x7FFFFFF0 purge --folder 1").Finish());
    EXPECT_EQ(1u, ScannerProcess(L"--report \"" + report + L"\" move --src 1").Finish());
    EXPECT_EQ(1u, ScannerProcess(L"script \"" + prefix_ + L"_missing.txt\"").Finish());
    EXPECT_EQ((std::vector<std::string>{"error: target window not found",
                                        "error: move needs --src, --dst and --msg"}),
              Lines(report));
}

TEST_F(ScannerStubTest, ListenerRecordsWhatIsSentAndPostedToItsWindow) {
    std::wstring log = TempFile(L"listen.txt");
    std::wstring event_name = L"VelkScannerReady" + std::to_wstring(::GetCurrentProcessId());
    unique_handle ready(::CreateEventW(nullptr, TRUE, FALSE, event_name.c_str()));
    ScannerProcess listener(L"listen --log \"" + log + L"\" --ready-event " + event_name);
    ASSERT_TRUE(listener.started());
    ASSERT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(ready.get(), 20000));
    HWND window = ::FindWindowW(nullptr, L"{5B0E7C21-93D4-4A6F-8B12-C4E97A1D2F58}");
    ASSERT_NE(nullptr, window);
    EXPECT_FALSE(::IsWindowVisible(window));

    // Sent ones first: a send returns once handled, so the order is fixed.
    EXPECT_EQ(0, ::SendMessageW(window, WM_USER + 20, 1, 0));
    EXPECT_EQ(0, ::SendMessageW(window, WM_USER + 21, 0, 0));
    COPYDATASTRUCT cds{1076, 3, const_cast<char*>("abc")};
    EXPECT_EQ(TRUE, ::SendMessageW(window, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&cds)));
    ::PostMessageW(window, WM_USER + 17, 0, 0);
    ::PostMessageW(window, WM_USER + 52, 0x10, static_cast<LPARAM>(-1));
    ::PostMessageW(window, WM_NULL, 0, 0);  // not private: not recorded
    ::PostMessageW(window, WM_CLOSE, 0, 0);
    ASSERT_EQ(0u, listener.Finish());

    EXPECT_EQ((std::vector<std::string>{
                  "sent WM_USER+20 wParam=0x1 lParam=0x0",
                  "sent WM_USER+21 wParam=0x0 lParam=0x0",
                  "copydata dwData=1076 cbData=3",
                  "posted WM_USER+17 wParam=0x0 lParam=0x0",
                  "posted WM_USER+52 wParam=0x10 lParam=0xFFFFFFFFFFFFFFFF",
              }),
              Lines(log));
}

TEST_F(ScannerStubTest, ListenerPlaysAScriptFromItsOwnWindow) {
    TargetWindow target;
    std::wstring script = TempFile(L"script.txt", "clone --folder 1 --msg 2\r\n");
    std::wstring report = TempFile(L"report.txt");
    ScannerProcess listener(L"--hwnd " + target.handle_text() + L" --report \"" + report +
                            L"\" listen --title VelkScannerStubScriptTest --script \"" + script +
                            L"\"");
    ASSERT_TRUE(listener.started());
    // Pump until the script's record has come, then close the listener.
    DWORD start = ::GetTickCount();
    while (target.received().empty() && ::GetTickCount() - start < 20000) {
        MSG msg;
        while (::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE))
            ::DispatchMessageW(&msg);
        ::Sleep(5);
    }
    ASSERT_EQ(1u, target.received().size());
    HWND window = ::FindWindowW(nullptr, L"VelkScannerStubScriptTest");
    ASSERT_NE(nullptr, window);
    EXPECT_EQ(reinterpret_cast<WPARAM>(window), target.received()[0].from)
        << "sends name the listening window as the sender";
    ::PostMessageW(window, WM_CLOSE, 0, 0);
    EXPECT_EQ(0u, listener.Finish());
    EXPECT_EQ(2u, Lines(report).size()) << "one send and the summary";
}

}  // namespace
}  // namespace velk::tools::scanner
