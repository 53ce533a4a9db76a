#include <gtest/gtest.h>

#include <windows.h>
#include <shlwapi.h>

#include <fstream>
#include <string>
#include <vector>

#include "common_src/win32/handles.h"

namespace {

using velk::win32::unique_handle;
using velk::win32::unique_hkey;

std::wstring Folder() {
    wchar_t self[MAX_PATH];
    DWORD n = ::GetModuleFileNameW(nullptr, self, MAX_PATH);
    std::wstring path(self, n);
    return path.substr(0, path.rfind(L'\\') + 1);
}

// One event or record line without its time stamp.
std::vector<std::string> Lines(const std::wstring& path, bool strip_time) {
    std::ifstream in(path.c_str());
    std::vector<std::string> lines;
    std::string line;
    while (std::getline(in, line)) {
        if (strip_time)
            line = line.substr(line.find(' ') + 1);
        lines.push_back(line);
    }
    return lines;
}

// Index of the first line starting with `prefix`, or -1.
int Find(const std::vector<std::string>& lines, const std::string& prefix) {
    for (size_t i = 0; i < lines.size(); ++i) {
        if (lines[i].compare(0, prefix.size(), prefix) == 0)
            return static_cast<int>(i);
    }
    return -1;
}

std::string Dump(const std::vector<std::string>& lines) {
    std::string all;
    for (const auto& l : lines)
        all += "  " + l + "\n";
    return all;
}

constexpr wchar_t kAppDefaults[] = L"Software\\Wine\\AppDefaults\\mail_client_stub.exe";

void SetString(const std::wstring& key_path, const wchar_t* name, const std::wstring& value) {
    unique_hkey key;
    ::RegCreateKeyExW(HKEY_CURRENT_USER, key_path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                      key.put(), nullptr);
    ::RegSetValueExW(key.get(), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                     static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
}

class MailClientStubTest : public ::testing::Test {
protected:
    // The virtual display has no window manager, so Wine would wait 2 s for
    // one at each destruction of the client's visible window; unmanaged
    // windows are destroyed at once.
    static void SetUpTestSuite() {
        SetString(std::wstring(kAppDefaults) + L"\\X11 Driver", L"Managed", L"N");
    }
    static void TearDownTestSuite() { ::SHDeleteKeyW(HKEY_CURRENT_USER, kAppDefaults); }

    void SetUp() override {
        wchar_t temp[MAX_PATH];
        ::GetTempPathW(MAX_PATH, temp);
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        std::string name = info->name();
        dir_ = std::wstring(temp) + L"velk_client_" + std::wstring(name.begin(), name.end());
        ::CreateDirectoryW(dir_.c_str(), nullptr);
        events_ = dir_ + L"\\events.txt";
        record_ = dir_ + L"\\addin.txt";
        ::DeleteFileW(events_.c_str());
        ::DeleteFileW(record_.c_str());
        ::SetEnvironmentVariableW(L"FAKE_ADDIN_LOG", record_.c_str());
    }
    void TearDown() override {
        ::DeleteFileW(events_.c_str());
        ::DeleteFileW(record_.c_str());
        ::RemoveDirectoryW(dir_.c_str());
    }

    // Starts the stand-in with the fake add-in; its streams on NUL.
    unique_handle Start(const std::wstring& args) {
        std::wstring cmd =
            L"\"" + Folder() + L"mail_client_stub.exe\" --events \"" + events_ + L"\" " + args;
        SECURITY_ATTRIBUTES sa{sizeof(sa), nullptr, TRUE};
        nul_.reset(::CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE,
                                 FILE_SHARE_READ | FILE_SHARE_WRITE, &sa, OPEN_EXISTING, 0,
                                 nullptr));
        STARTUPINFOW si{};
        si.cb = sizeof(si);
        si.dwFlags = STARTF_USESTDHANDLES;
        si.hStdInput = si.hStdOutput = si.hStdError = nul_.get();
        PROCESS_INFORMATION pi{};
        if (!::CreateProcessW(nullptr, &cmd[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr, &si,
                              &pi)) {
            return unique_handle();
        }
        ::CloseHandle(pi.hThread);
        return unique_handle(pi.hProcess);
    }
    // Runs it to the end; the exit code, or -1 when it did not end in time.
    int Run(const std::wstring& args) {
        unique_handle process = Start(args);
        if (!process)
            return -2;
        if (::WaitForSingleObject(process.get(), 30000) != WAIT_OBJECT_0) {
            ::TerminateProcess(process.get(), 99);
            return -1;
        }
        DWORD code = 0;
        ::GetExitCodeProcess(process.get(), &code);
        return static_cast<int>(code);
    }
    std::wstring Fake() const { return L" --addin \"" + Folder() + L"fake_addin.dll\""; }
    std::vector<std::string> Events() const { return Lines(events_, true); }
    std::vector<std::string> Record() const { return Lines(record_, false); }

    std::wstring dir_, events_, record_;
    velk::win32::unique_file nul_;
};

TEST_F(MailClientStubTest, WindowsMailModeHasTwoRebarsAndCallsTheExportsInOrder) {
    ASSERT_EQ(0, Run(L"--mode wmail" + Fake() + L" --run set-browser,rebuild,destroy,close"));
    const auto events = Events();
    EXPECT_EQ(0, Find(events, "start mode=wmail")) << Dump(events);
    EXPECT_LT(Find(events, "window created rebars=2"), Find(events, "load "));
    EXPECT_NE(-1, Find(events, "load ")) << Dump(events);
    EXPECT_NE(std::string::npos, events[Find(events, "load ")].find(" ok ms="));
    EXPECT_LT(Find(events, "export SetOEBrowserWnd"), Find(events, "export ReBuildToolBar"));
    EXPECT_LT(Find(events, "export ReBuildToolBar"), Find(events, "export DestroyToolBar"));
    EXPECT_LT(Find(events, "export DestroyToolBar"), Find(events, "close requested"));
    EXPECT_LT(Find(events, "wm-close"), Find(events, "wm-destroy"));
    EXPECT_LT(Find(events, "wm-ncdestroy"), Find(events, "free "));
    EXPECT_EQ("exit", events.back());

    const std::vector<std::string> expected = {
        "attach window=1",
        "SetOEBrowserWnd class=Outlook Express Browser Class rebars=2",
        "ReBuildToolBar inserted=1",
        "DestroyToolBar removed=1",
        "detach",
    };
    EXPECT_EQ(expected, Record());
}

TEST_F(MailClientStubTest, CloseReportsWhetherTheBandWasStillThere) {
    // Nothing tears the fake band down: the client's own procedure sees it,
    // and (no hook installed) its own procedure is in place.
    ASSERT_EQ(0, Run(L"--mode wmail" + Fake() + L" --run rebuild,close"));
    auto events = Events();
    EXPECT_NE(-1, Find(events, "wm-close band=1 hooked=0")) << Dump(events);
    EXPECT_NE(-1, Find(events, "wm-ncdestroy hooked=0"));

    ::DeleteFileW(events_.c_str());
    ASSERT_EQ(0, Run(L"--mode wmail" + Fake() + L" --run rebuild,destroy,close"));
    events = Events();
    EXPECT_NE(-1, Find(events, "wm-close band=0 hooked=0")) << Dump(events);
}

TEST_F(MailClientStubTest, LateWindowComesAfterTheAddinLoaded) {
    ASSERT_EQ(0, Run(L"--late 400" + Fake() + L" --run set-browser,close"));
    const auto events = Events();
    const int load = Find(events, "load ");
    const int window = Find(events, "window created");
    ASSERT_NE(-1, load) << Dump(events);
    EXPECT_LT(load, window);
    const auto record = Record();
    ASSERT_FALSE(record.empty());
    EXPECT_EQ("attach window=0", record[0]);
    // The window came at least the delay later.
    const auto raw = Lines(events_, false);
    EXPECT_GE(std::stod(raw[window]) - std::stod(raw[load]), 350.0) << Dump(raw);
}

TEST_F(MailClientStubTest, UnloadWhileRunningAndNoFreeAtExit) {
    ASSERT_EQ(0, Run(Fake() + L" --run unload,close"));
    auto events = Events();
    EXPECT_LT(Find(events, "unload "), Find(events, "wm-close")) << Dump(events);
    EXPECT_EQ(-1, Find(events, "free "));
    EXPECT_EQ("detach", Record().back());

    ::DeleteFileW(events_.c_str());
    ::DeleteFileW(record_.c_str());
    ASSERT_EQ(0, Run(Fake() + L" --no-free --run close"));
    events = Events();
    EXPECT_EQ(-1, Find(events, "free ")) << Dump(events);
    // The process exit still detaches the library, after everything else.
    EXPECT_EQ("detach", Record().back());
}

TEST_F(MailClientStubTest, MissingAddinIsReportedAndTheClientStillRuns) {
    ASSERT_EQ(0, Run(L"--addin \"" + dir_ + L"\\absent.dll\" --run rebuild,close"));
    const auto events = Events();
    const int load = Find(events, "load ");
    ASSERT_NE(-1, load) << Dump(events);
    EXPECT_NE(std::string::npos, events[load].find(" failed error="));
    EXPECT_EQ(-1, Find(events, "export ")) << "nothing to call";
    EXPECT_EQ("exit", events.back());
    EXPECT_EQ(2, Run(L"--mode sideways")) << "a bad command line";
}

TEST_F(MailClientStubTest, WritesTheIdentityTheAddinLooksUp) {
    ASSERT_EQ(0, Run(L"--identity {11111111-2222-3333-4444-555555555555} --run close"));
    unique_hkey key;
    ASSERT_EQ(ERROR_SUCCESS,
              ::RegOpenKeyExW(HKEY_CURRENT_USER, L"Identities", 0, KEY_READ, key.put()));
    wchar_t value[64] = {};
    DWORD bytes = sizeof(value);
    ASSERT_EQ(ERROR_SUCCESS, ::RegQueryValueExW(key.get(), L"Last User ID", nullptr, nullptr,
                                                reinterpret_cast<BYTE*>(value), &bytes));
    EXPECT_STREQ(L"{11111111-2222-3333-4444-555555555555}", value);
    EXPECT_NE(-1, Find(Events(), "identity {11111111-2222-3333-4444-555555555555}"));
}

TEST_F(MailClientStubTest, AnotherProcessDrivesTheExportsAndClosesTheClient) {
    unique_handle process = Start(Fake() + L" --mode oe");
    ASSERT_TRUE(process);
    HWND browser = nullptr;
    for (int i = 0; i < 200 && browser == nullptr; ++i) {
        ::Sleep(25);
        HWND w = ::FindWindowW(L"Outlook Express Browser Class", nullptr);
        DWORD pid = 0;
        if (w != nullptr)
            ::GetWindowThreadProcessId(w, &pid);
        if (pid == ::GetProcessId(process.get()))
            browser = w;
    }
    ASSERT_NE(nullptr, browser);
    // Wait until the add-in is loaded (it loads after the window appears).
    for (int i = 0; i < 200 && Find(Events(), "load ") == -1; ++i)
        ::Sleep(25);
    EXPECT_EQ(1, ::SendMessageW(browser, WM_APP + 2, 0, 0));
    EXPECT_EQ(1, ::SendMessageW(browser, WM_APP + 3, 0, 0));
    ::PostMessageW(browser, WM_CLOSE, 0, 0);
    ASSERT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(process.get(), 20000));
    const std::vector<std::string> expected = {"attach window=1", "ReBuildToolBar inserted=1",
                                               "DestroyToolBar removed=1", "detach"};
    EXPECT_EQ(expected, Record());
}

// Wine's per-application version setting turns the same machine into an
// Outlook Express system for one program: how both client modes get tested.
TEST_F(MailClientStubTest, AutoModeFollowsTheReportedSystemVersion) {
    SetString(kAppDefaults, L"Version", L"winxp64");
    const int oe_run = Run(L"--run close");
    const auto oe_events = Events();
    ::SHDeleteValueW(HKEY_CURRENT_USER, kAppDefaults, L"Version");
    ASSERT_EQ(0, oe_run);
    EXPECT_EQ(0, Find(oe_events, "start mode=oe")) << Dump(oe_events);
    EXPECT_NE(-1, Find(oe_events, "window created rebars=1"));

    ::DeleteFileW(events_.c_str());
    ASSERT_EQ(0, Run(L"--run close"));
    EXPECT_EQ(0, Find(Events(), "start mode=wmail")) << Dump(Events());
}

}  // namespace
