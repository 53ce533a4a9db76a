// The add-in inside the mail-client stand-in, with the scanning-process
// stand-in listening: what a user and the scanning process see.
#include <gtest/gtest.h>

#include <windows.h>
#include <commctrl.h>
#include <shellapi.h>
#include <shlobj.h>
#include <shlwapi.h>

#include <fstream>
#include <functional>
#include <string>

#include "common_src/win32/handles.h"
#include "host/window_identifiers.h"
#include "resources/resource_ids.h"
#include "tools/store_stub/store_stub_control.h"

namespace {

using velk::win32::unique_handle;

// Copied under another name, this program stands in for what the add-in
// starts (the scanning process, the logo's web site): it only notes its
// command line in "<its path>.started" and ends, before any test runs.
[[maybe_unused]] const bool kRecordedStart = [] {
    wchar_t self[MAX_PATH] = L"";
    ::GetModuleFileNameW(nullptr, self, MAX_PATH);
    const wchar_t* name = ::PathFindFileNameW(self);
    if (_wcsicmp(name, L"VELK_OE.exe") != 0 && _wcsicmp(name, L"logo_site.exe") != 0)
        return false;
    std::ofstream out((std::wstring(self) + L".started").c_str(), std::ios::binary | std::ios::app);
    const std::wstring line = ::GetCommandLineW();
    out << std::string(line.begin(), line.end()) << '\n';
    out.close();
    ::ExitProcess(0);
}();

constexpr wchar_t kAppDefaults[] = L"Software\\Wine\\AppDefaults\\mail_client_stub.exe";
constexpr UINT kBandId = 3339;
constexpr wchar_t kMenuClass[] = L"#32768";  // a pop-up menu's window

void SetString(const std::wstring& key_path, const wchar_t* name, const std::wstring& value) {
    velk::win32::unique_hkey key;
    ::RegCreateKeyExW(HKEY_CURRENT_USER, key_path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                      key.put(), nullptr);
    ::RegSetValueExW(key.get(), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                     static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
}

std::string ReadAll(const std::wstring& path) {
    std::ifstream in(path.c_str(), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::wstring Ini(const std::wstring& file, const wchar_t* section, const wchar_t* key) {
    wchar_t buffer[256] = L"";
    ::GetPrivateProfileStringW(section, key, L"<none>", buffer, 256, file.c_str());
    return buffer;
}

// Polls `done` for up to `ms`, pumping this thread's messages meanwhile.
bool WaitFor(const std::function<bool()>& done, DWORD ms = 5000) {
    const DWORD start = ::GetTickCount();
    while (!done()) {
        if (::GetTickCount() - start > ms)
            return false;
        ::Sleep(20);
    }
    return true;
}

unique_handle StartProcess(std::wstring cmd, HANDLE nul) {
    STARTUPINFOW si{};
    si.cb = sizeof(si);
    si.dwFlags = STARTF_USESTDHANDLES;
    si.hStdInput = si.hStdOutput = si.hStdError = nul;
    PROCESS_INFORMATION pi{};
    if (!::CreateProcessW(nullptr, &cmd[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr, &si,
                          &pi)) {
        return unique_handle();
    }
    ::CloseHandle(pi.hThread);
    return unique_handle(pi.hProcess);
}

// A private copy of the staged installation per test, so each may change its
// installation file and carry a "VELK_OE.exe" with a version resource.
class AddinWorld : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        // Without a window manager Wine waits 2 s at each managed window's end.
        SetString(std::wstring(kAppDefaults) + L"\\X11 Driver", L"Managed", L"N");
    }
    static void TearDownTestSuite() { ::SHDeleteKeyW(HKEY_CURRENT_USER, kAppDefaults); }

    void SetUp() override {
        wchar_t temp[MAX_PATH];
        ::GetTempPathW(MAX_PATH, temp);
        const std::string name = ::testing::UnitTest::GetInstance()->current_test_info()->name();
        root_ = std::wstring(temp) + L"velk_tb_" + std::wstring(name.begin(), name.end()) + L"\\";
        ::SHCreateDirectoryExW(nullptr, (root_ + L"bin").c_str(), nullptr);
        ::SHCreateDirectoryExW(nullptr, (root_ + L"Resource\\en-US").c_str(), nullptr);
        const std::wstring dist = VELK_TEST_DIST;
        for (const wchar_t* f :
             {L"bin\\VELK_OEA.dll", L"bin\\VELK_OE.ini", L"Resource\\LanguageMap.ini",
              L"Resource\\en-US\\StringTable.ini", L"Resource\\en-US\\VELK_OEA.dll.mui"}) {
            ASSERT_TRUE(::CopyFileW((dist + L"\\" + f).c_str(), (root_ + f).c_str(), FALSE))
                << "not staged: " << std::string(f, f + wcslen(f));
        }
        // Any file with a version resource plays the scanning process's exe here.
        ::CopyFileW((root_ + L"bin\\VELK_OEA.dll").c_str(), (root_ + L"bin\\VELK_OE.exe").c_str(),
                    FALSE);
        addin_ = root_ + L"bin\\VELK_OEA.dll";
        install_ini_ = root_ + L"bin\\VELK_OE.ini";
        events_ = root_ + L"events.txt";
        heard_ = root_ + L"scanner.txt";
        identity_ = L"{tb-" + std::wstring(name.begin(), name.end()) + L"}";
        wchar_t data[MAX_PATH];
        ::ExpandEnvironmentStringsW(L"%ProgramData%", data, MAX_PATH);
        user_dir_ = std::wstring(data) + L"\\Nuvexa\\OE\\Users\\" + identity_ + L"\\";
        DeleteTree(user_dir_);
        SECURITY_ATTRIBUTES sa{sizeof(sa), nullptr, TRUE};
        nul_.reset(::CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE,
                                 FILE_SHARE_READ | FILE_SHARE_WRITE, &sa, OPEN_EXISTING, 0,
                                 nullptr));
    }
    void TearDown() override {
        StopAll();
        ::SHDeleteValueW(HKEY_CURRENT_USER, kAppDefaults, L"Version");
        DeleteTree(root_);
        DeleteTree(user_dir_);
    }
    static void DeleteTree(const std::wstring& dir) {
        std::wstring from = dir + L'\0';
        SHFILEOPSTRUCTW op{};
        op.wFunc = FO_DELETE;
        op.pFrom = from.c_str();
        op.fFlags = FOF_NO_UI;
        ::SHFileOperationW(&op);
    }

    void StartScanner() {
        std::wstring cmd =
            std::wstring(L"\"") + VELK_SCANNER_STUB_EXE + L"\" listen --log \"" + heard_ + L"\"";
        scanner_ = StartProcess(cmd, nul_.get());
        ASSERT_TRUE(scanner_);
        ASSERT_TRUE(
            WaitFor([] { return ::FindWindowW(nullptr, velk::host::kCompanionWindowTitle); }));
    }
    void StartClient(const std::wstring& args) {
        std::wstring cmd = std::wstring(L"\"") + VELK_MAIL_CLIENT_STUB_EXE + L"\" --identity " +
                           identity_ + L" --events \"" + events_ + L"\" --addin \"" + addin_ +
                           L"\" " + args;
        client_ = StartProcess(cmd, nul_.get());
        ASSERT_TRUE(client_);
    }
    // Until the client process has ended; its exit code.
    DWORD WaitClient(DWORD ms = 20000) {
        if (::WaitForSingleObject(client_.get(), ms) != WAIT_OBJECT_0) {
            ::TerminateProcess(client_.get(), 99);
            return 99;
        }
        DWORD code = 0;
        ::GetExitCodeProcess(client_.get(), &code);
        client_.reset();
        return code;
    }
    void StopAll() {
        if (client_) {
            if (HWND main = MainWindow())
                ::PostMessageW(main, WM_CLOSE, 0, 0);
            WaitClient(10000);
        }
        StopScanner();
    }
    void StopScanner() {
        if (scanner_) {
            if (HWND s = ::FindWindowW(nullptr, velk::host::kCompanionWindowTitle))
                ::PostMessageW(s, WM_CLOSE, 0, 0);
            if (::WaitForSingleObject(scanner_.get(), 10000) != WAIT_OBJECT_0)
                ::TerminateProcess(scanner_.get(), 99);
            scanner_.reset();
        }
    }

    static std::wstring Self() {
        wchar_t self[MAX_PATH] = L"";
        ::GetModuleFileNameW(nullptr, self, MAX_PATH);
        return self;
    }
    static HWND MainWindow() { return ::FindWindowW(velk::host::kClientMainWindowClass, nullptr); }
    static HWND Rebar(int which) {
        HWND sizable = ::FindWindowExW(MainWindow(), nullptr, L"SizableRebar", nullptr);
        HWND rebar = ::FindWindowExW(sizable, nullptr, REBARCLASSNAMEW, nullptr);
        for (int i = 0; i < which && rebar != nullptr; ++i)
            rebar = ::FindWindowExW(sizable, rebar, REBARCLASSNAMEW, nullptr);
        return rebar;
    }
    static int BandIndex(HWND rebar) {
        return rebar ? static_cast<int>(::SendMessageW(rebar, RB_IDTOINDEX, kBandId, 0)) : -1;
    }
    // The band dialog: the rebar's child holding the logo button.
    static HWND Band(HWND rebar) {
        for (HWND child = ::FindWindowExW(rebar, nullptr, nullptr, nullptr); child != nullptr;
             child = ::FindWindowExW(rebar, child, nullptr, nullptr)) {
            if (::GetDlgItem(child, ID_TB_LOGO) != nullptr)
                return child;
        }
        return nullptr;
    }
    // A visible dialog of the client's process owned by `owner`.
    static HWND OwnedDialog(HWND owner) {
        for (HWND w = ::FindWindowExW(nullptr, nullptr, L"#32770", nullptr); w != nullptr;
             w = ::FindWindowExW(nullptr, w, L"#32770", nullptr)) {
            if (::GetWindow(w, GW_OWNER) == owner && ::IsWindowVisible(w))
                return w;
        }
        return nullptr;
    }
    static bool Visible(HWND band, int id) {
        HWND b = ::GetDlgItem(band, id);
        return b != nullptr && ::IsWindowVisible(b);
    }
    static void Click(HWND band, int id) {
        HWND b = ::GetDlgItem(band, id);
        ::PostMessageW(b, WM_MOUSEMOVE, 0, MAKELPARAM(3, 3));
        ::PostMessageW(b, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(3, 3));
        ::PostMessageW(b, WM_LBUTTONUP, 0, MAKELPARAM(3, 3));
    }
    bool Heard(const std::string& line) {
        return WaitFor([&] { return ReadAll(heard_).find(line) != std::string::npos; });
    }
    std::string Events() const { return ReadAll(events_); }
    std::wstring UserIni() const { return user_dir_ + L"VELK_OE.ini"; }
    // The add-in's log (Debug on), whatever its time stamp in the name.
    std::wstring LogFile() const {
        WIN32_FIND_DATAW found{};
        HANDLE any = ::FindFirstFileW((user_dir_ + L"log\\VELKAgent*.log").c_str(), &found);
        if (any == INVALID_HANDLE_VALUE)
            return L"<no log>";
        ::FindClose(any);
        return user_dir_ + L"log\\" + found.cFileName;
    }

    std::wstring root_, addin_, install_ini_, events_, heard_, identity_, user_dir_;
    velk::win32::unique_file nul_;
    unique_handle client_, scanner_;
};

TEST_F(AddinWorld, WindowsMailBandTalksToTheScannerAndFollowsTheExportsAndSwitches) {
    StartScanner();
    StartClient(L"--exit-after 60000");
    HWND band = nullptr;
    ASSERT_TRUE(WaitFor([&] { return (band = Band(Rebar(1))) != nullptr; })) << Events();
    // The band is in the rebar before its first layout has shown the buttons.
    ASSERT_TRUE(WaitFor([&] { return Visible(band, ID_TB_LOGO); }));
    // Built after the load returned, never under the loader lock.
    EXPECT_NE(std::string::npos, Events().find("VELK_OEA.dll ok ms=")) << Events();
    EXPECT_EQ(std::string::npos, Events().find("band=1")) << Events();
    // Windows Mail: the second rebar, never the first.
    EXPECT_EQ(-1, BandIndex(Rebar(0)));
    EXPECT_TRUE(Visible(band, ID_TB_MENU_BUTTON) && Visible(band, ID_TB_REPORT_SPAM));
    EXPECT_FALSE(Visible(band, ID_TB_REPORT_FP));

    Click(band, ID_TB_REPORT_SPAM);
    EXPECT_TRUE(Heard("posted WM_USER+17 "));
    // The scanning process asks for Report FP in Report Spam's place.
    HWND toolbar = ::FindWindowW(velk::host::kToolBarWindowClass, nullptr);
    ASSERT_NE(nullptr, toolbar);
    ::SendMessageW(toolbar, velk::host::kMsgSwitchReportButton, 0, 1);
    EXPECT_FALSE(Visible(band, ID_TB_REPORT_SPAM));
    Click(band, ID_TB_REPORT_FP);
    EXPECT_TRUE(Heard("posted WM_USER+18 "));
    ::SendMessageW(toolbar, velk::host::kMsgSwitchReportButton, 0, 0);
    EXPECT_TRUE(Visible(band, ID_TB_REPORT_SPAM));

    // The forwarded commands; none while the settings sheet is open (its
    // marker window here stands for it).
    {
        velk::win32::unique_hwnd sheet(
            ::CreateWindowW(L"STATIC", velk::host::kSettingsSheetWindowTitle, WS_POPUP, 0, 0, 0, 0,
                            nullptr, nullptr, nullptr, nullptr));
        ASSERT_TRUE(sheet);
        ::SendMessageW(band, WM_COMMAND, ID_TB_POST_USER15, 0);
        ::SendMessageW(band, WM_COMMAND, ID_TB_REPORT_SPAM, 0);
    }
    ::SendMessageW(band, WM_COMMAND, ID_TB_POST_USER14, 0);
    ::SendMessageW(band, WM_COMMAND, ID_TB_POST_USER19, 0);
    EXPECT_TRUE(Heard("posted WM_USER+19 "));
    std::string heard = ReadAll(heard_);
    EXPECT_NE(std::string::npos, heard.find("posted WM_USER+14 ")) << heard;
    EXPECT_EQ(std::string::npos, heard.find("WM_USER+15 ")) << heard;
    EXPECT_EQ(heard.find("posted WM_USER+17 "), heard.rfind("posted WM_USER+17 ")) << heard;

    // The logo opens the configured site; with Shift held it asks the
    // scanning process instead. Shift is set in the input state the client's
    // thread shares with this one while attached, where GetKeyState looks.
    const std::wstring site = root_ + L"logo_site.exe";
    ASSERT_TRUE(::CopyFileW(Self().c_str(), site.c_str(), FALSE));
    ::WritePrivateProfileStringW(L"General", L"WebSiteForLogo", site.c_str(), install_ini_.c_str());
    ::SendMessageW(band, WM_COMMAND, ID_TB_LOGO, 0);
    EXPECT_TRUE(WaitFor([&] { return !ReadAll(site + L".started").empty(); })) << "site not opened";
    ::DeleteFileW((site + L".started").c_str());
    {
        MSG none;
        ::PeekMessageW(&none, nullptr, 0, 0, PM_NOREMOVE);  // this thread's input queue
        const DWORD client_thread = ::GetWindowThreadProcessId(band, nullptr);
        ASSERT_TRUE(::AttachThreadInput(::GetCurrentThreadId(), client_thread, TRUE));
        BYTE keys[256] = {};
        ::GetKeyboardState(keys);
        keys[VK_SHIFT] = keys[VK_LSHIFT] = 0x80;
        ::SetKeyboardState(keys);
        ::SendMessageW(band, WM_COMMAND, ID_TB_LOGO, 0);
        keys[VK_SHIFT] = keys[VK_LSHIFT] = 0;
        ::SetKeyboardState(keys);
        ::AttachThreadInput(::GetCurrentThreadId(), client_thread, FALSE);
    }
    EXPECT_TRUE(Heard("posted WM_USER+29 "));
    EXPECT_TRUE(ReadAll(site + L".started").empty()) << "Shift still opened the site";

    // The logo menu's fourth entry, chosen with keys as a user would:
    // "Disable toolbar", or while disabled "Enable toolbar".
    auto toggle_from_menu = [&] {
        Click(band, ID_TB_MENU_BUTTON);
        ASSERT_TRUE(WaitFor([] { return ::FindWindowW(kMenuClass, nullptr) != nullptr; }));
        for (WPARAM key : {VK_DOWN, VK_DOWN, VK_DOWN, VK_RETURN})
            ::PostMessageW(MainWindow(), WM_KEYDOWN, key, 0);
    };
    // Disabled: the user's file, the scanner, and the report switch ignored.
    toggle_from_menu();
    EXPECT_TRUE(Heard("posted WM_USER+45 "));
    EXPECT_EQ(L"0", Ini(UserIni(), L"Antispam", L"EnableTBar"));
    EXPECT_TRUE(Heard("posted WM_USER+45 "));
    ::SendMessageW(toolbar, velk::host::kMsgSwitchReportButton, 0, 1);
    EXPECT_TRUE(Visible(band, ID_TB_REPORT_SPAM));
    // Enabling starts the scanning process when its window is absent, and
    // only then.
    const std::wstring scanner_exe = root_ + L"bin\\VELK_OE.exe";
    const std::wstring started = scanner_exe + L".started";
    ASSERT_TRUE(::CopyFileW(Self().c_str(), scanner_exe.c_str(), FALSE));
    StopScanner();
    toggle_from_menu();
    ASSERT_TRUE(WaitFor([&] { return !ReadAll(started).empty(); })) << "not started";
    EXPECT_EQ(L"1", Ini(UserIni(), L"Antispam", L"EnableTBar"));
    ::SendMessageW(toolbar, velk::host::kMsgSwitchReportButton, 0, 1);
    EXPECT_TRUE(Visible(band, ID_TB_REPORT_FP)) << "still disabled";
    const std::wstring command = L"\"" + scanner_exe + L"\" " + velk::host::kCompanionWindowTitle;
    EXPECT_EQ(std::string(command.begin(), command.end()) + "\n", ReadAll(started));
    ::DeleteFileW(started.c_str());
    StartScanner();
    ::SendMessageW(band, WM_COMMAND, ID_MENU_ENABLE_TOOLBAR, 0);

    // The exports, each twice: one band out, one band in. A menu open as the
    // band goes closes with it.
    HWND main = MainWindow();
    Click(band, ID_TB_MENU_BUTTON);
    ASSERT_TRUE(WaitFor([] { return ::FindWindowW(kMenuClass, nullptr) != nullptr; }));
    for (UINT export_call : {WM_APP + 3, WM_APP + 3}) {
        ::SendMessageW(main, export_call, 0, 0);
        EXPECT_EQ(-1, BandIndex(Rebar(1)));
    }
    EXPECT_TRUE(WaitFor([] { return ::FindWindowW(kMenuClass, nullptr) == nullptr; }));
    for (UINT export_call : {WM_APP + 2, WM_APP + 2})
        ::SendMessageW(main, export_call, 0, 0);
    EXPECT_GE(BandIndex(Rebar(1)), 0);

    // A settings window, owned by the client's window, stays usable through
    // the band's end; the add-in's leave waits for it.
    ::SendMessageW(Band(Rebar(1)), WM_COMMAND, ID_MENU_ABOUT, 0);
    HWND about = nullptr;
    ASSERT_TRUE(WaitFor([&] { return (about = OwnedDialog(main)) != nullptr; }));
    ::SendMessageW(main, WM_APP + 3, 0, 0);
    ::SendMessageW(toolbar, WM_CLOSE, 0, 0);
    EXPECT_TRUE(::IsWindowEnabled(about));
    EXPECT_TRUE(::IsWindow(toolbar)) << "left from under an open window";
    ::PostMessageW(about, WM_COMMAND, IDOK, 0);
    EXPECT_TRUE(WaitFor([&] { return !::IsWindow(toolbar); }));

    // The client's FreeLibrary at its close then unmaps the add-in at once.
    ::PostMessageW(main, WM_CLOSE, 0, 0);
    EXPECT_EQ(0u, WaitClient());
    EXPECT_NE(std::string::npos, Events().find("VELK_OEA.dll ms=")) << Events();
    EXPECT_EQ(std::string::npos, Events().find("mapped=1")) << Events();
    EXPECT_EQ("", ReadAll(started)) << "started although the window was there";
}

// A bitmap file an administrator may name in the installation file: 24-bit,
// `width` by 16 pixels.
void WriteBitmapFile(const std::wstring& path, int width) {
    BITMAPINFOHEADER info{};
    info.biSize = sizeof(info);
    info.biWidth = width;
    info.biHeight = 16;
    info.biPlanes = 1;
    info.biBitCount = 24;
    const DWORD pixels = ((width * 3 + 3) & ~3) * 16;
    BITMAPFILEHEADER head{};
    head.bfType = 0x4D42;  // "BM"
    head.bfOffBits = sizeof(head) + sizeof(info);
    head.bfSize = head.bfOffBits + pixels;
    std::ofstream out(path.c_str(), std::ios::binary);
    out.write(reinterpret_cast<const char*>(&head), sizeof(head));
    out.write(reinterpret_cast<const char*>(&info), sizeof(info));
    out << std::string(pixels, '\x40');
}

TEST_F(AddinWorld, OutlookExpressLateWindowTakesTheAdministratorsChoicesAndClosesCleanly) {
    SetString(kAppDefaults, L"Version", L"winxp64");  // the stand-in plays Outlook Express
    for (auto [key, value] : {std::pair{L"ShowReportButton", L"0"}, {L"Debug", L"1"},
                              {L"VELKLogo", L"corp_logo.bmp"}, {L"CorpName", L"Acme"}})
        ::WritePrivateProfileStringW(L"General", key, value, install_ini_.c_str());
    WriteBitmapFile(root_ + L"bin\\corp_logo.bmp", 40);
    // A machine where no add-in ever ran: the shared folder comes with the first start.
    wchar_t common[MAX_PATH];
    ::ExpandEnvironmentStringsW(L"%ProgramData%\\Nuvexa\\VELK_common", common, MAX_PATH);
    DeleteTree(common);
    ::SHCreateDirectoryExW(nullptr, (user_dir_ + L"log").c_str(), nullptr);
    StartClient(L"--mode oe --late 700 --exit-after 60000");
    HWND band = nullptr;
    // The window comes after the add-in; the retry finds it within a second.
    ASSERT_TRUE(WaitFor([&] { return (band = Band(Rebar(0))) != nullptr; }, 8000)) << Events();
    EXPECT_TRUE(WaitFor([&] { return Visible(band, ID_TB_LOGO); }));
    EXPECT_EQ(nullptr, ::GetDlgItem(band, ID_TB_REPORT_SPAM));
    RECT logo{};
    ::GetClientRect(::GetDlgItem(band, ID_TB_LOGO), &logo);
    EXPECT_EQ(40 + 2 * 4, logo.right) << "the administrator's logo, with its margins";
    wchar_t tip[128] = L"";
    ::GetWindowTextW(::GetDlgItem(band, ID_TB_LOGO), tip, 128);
    EXPECT_NE(nullptr, wcsstr(tip, L"Acme")) << "the company named in its tooltip";
    EXPECT_NE("", ReadAll(std::wstring(common) + L"\\VELK_version.ini"));
    EXPECT_EQ(L"1", Ini(UserIni(), L"General", L"VELKStartTimes"));

    // Debug on: the log is open, and the help command reports what it lacks.
    ::SendMessageW(band, WM_COMMAND, ID_MENU_HELP, 0);
    const std::wstring log = LogFile();
    EXPECT_NE(std::string::npos, ReadAll(log).find("VLEK_OE version: ")) << ReadAll(log);
    EXPECT_NE(std::string::npos, ReadAll(log).find("Can't retrieve on-line help URL from registry."));

    ::PostMessageW(MainWindow(), WM_CLOSE, 0, 0);
    EXPECT_EQ(0u, WaitClient());
    // The band was gone and the hook off before the client saw WM_CLOSE, which
    // reached only the client from then on; the add-in left with the window,
    // so the client's FreeLibrary unmapped it.
    EXPECT_NE(std::string::npos, Events().find("wm-close band=0")) << Events();
    const std::string closed = ReadAll(log);
    EXPECT_NE(std::string::npos, closed.find("@@@ WndProc Set back OK")) << closed;
    EXPECT_EQ(std::string::npos, closed.find("WM_NCDESTROY come in")) << closed;
    EXPECT_NE(std::string::npos, Events().find("unloaded VELK_OEA.dll thread=client windows=0"))
        << Events();

    // This time the add-in stays until the process ends: unloaded at exit.
    StartClient(L"--mode oe --no-free --run wait=300,close --exit-after 20000");
    EXPECT_EQ(0u, WaitClient());
    EXPECT_EQ(L"2", Ini(UserIni(), L"General", L"VELKStartTimes"));
}

TEST_F(AddinWorld, SecondCopyRefusesAndTheLastReferenceGoesWithTheToolbarWindow) {
    SetString(kAppDefaults, L"Version", L"winxp64");
    ::WritePrivateProfileStringW(L"General", L"Debug", L"1", install_ini_.c_str());
    ::SHCreateDirectoryExW(nullptr, (user_dir_ + L"log").c_str(), nullptr);
    const std::wstring copy = root_ + L"bin\\VELK_OEA_copy.dll";
    ASSERT_TRUE(::CopyFileW(addin_.c_str(), copy.c_str(), FALSE));
    StartClient(L"--mode oe --addin \"" + copy + L"\" --exit-after 60000");
    ASSERT_TRUE(WaitFor([&] { return Band(Rebar(0)) != nullptr; })) << Events();
    // The band is up while the first LoadLibrary still runs: wait for both.
    WaitFor([&] { return Events().find("VELK_OEA_copy.dll") != std::string::npos; });
    EXPECT_NE(std::string::npos, Events().find("VELK_OEA.dll ok")) << Events();
    EXPECT_NE(std::string::npos, Events().find("VELK_OEA_copy.dll failed")) << Events();

    // The client lets go while the add-in runs: the worker's reference keeps
    // it mapped, band and hook working.
    HWND main = MainWindow();
    EXPECT_EQ(1, ::SendMessageW(main, WM_APP + 4, 0, 0));
    EXPECT_EQ(1, ::SendMessageW(main, WM_APP + 5, 0, 0)) << "unmapped while running";
    // Now its last reference goes with the toolbar window (the scanning
    // process may close it): the worker ends, and the library is unmapped
    // with the client's thread out of its code, the client running on.
    ::SendMessageW(::FindWindowW(velk::host::kToolBarWindowClass, nullptr), WM_CLOSE, 0, 0);
    EXPECT_TRUE(WaitFor([&] { return ::SendMessageW(main, WM_APP + 5, 0, 0) == 0; }));
    EXPECT_EQ(-1, BandIndex(Rebar(0)));
    ::PostMessageW(main, WM_CLOSE, 0, 0);
    EXPECT_EQ(0u, WaitClient()) << Events();
    // Unmapped with no window of its own left behind, and the worker never
    // had the client's thread wait for it: it ended with its request done.
    EXPECT_NE(std::string::npos, Events().find("unloaded VELK_OEA.dll thread=other windows=0"))
        << Events();
    const std::string log = ReadAll(LogFile());
    EXPECT_NE(std::string::npos, log.find("[ThreadFuncMsgProcess] OUT")) << log;
    EXPECT_EQ(std::string::npos, log.find("did not end within")) << log;
}

TEST_F(AddinWorld, MoveRequestReachesTheMailboxAlthoughTheClientUnloadsWhileTheWorkerIsBusy) {
    velk::tools::StoreStub store;
    ASSERT_TRUE(store.Load());
    ASSERT_EQ(S_OK, store.Register());
    const std::wstring mailbox = root_ + L"mbox";
    ::CreateDirectoryW(mailbox.c_str(), nullptr);
    ASSERT_EQ(S_OK, store.SetMailboxRoot(mailbox));
    store.CreateFolder(1);
    store.CreateFolder(2);
    ASSERT_EQ(S_OK, store.PutMessage(1, 1, "Subject: cheap pills\r\n\r\nbody\r\n"));

    const std::wstring probe_log = root_ + L"probe.txt";
    const std::wstring release_name =
        L"velk_tb_release_" + std::to_wstring(::GetCurrentProcessId());
    unique_handle release(::CreateEventW(nullptr, TRUE, FALSE, release_name.c_str()));
    ::SetEnvironmentVariableW(L"VELK_PROBE_LOG", probe_log.c_str());
    ::SetEnvironmentVariableW(L"VELK_PROBE_STORE_ROOT", mailbox.c_str());
    ::SetEnvironmentVariableW(L"VELK_PROBE_HOLD", L"GetFolder");
    ::SetEnvironmentVariableW(L"VELK_PROBE_RELEASE_EVENT", release_name.c_str());
    StartClient(L"--addin \"" + std::wstring(VELK_TEST_PROBE) +
                L"\" --run set-browser --exit-after 60000");
    for (const wchar_t* name : {L"VELK_PROBE_LOG", L"VELK_PROBE_STORE_ROOT", L"VELK_PROBE_HOLD",
                                L"VELK_PROBE_RELEASE_EVENT"})
        ::SetEnvironmentVariableW(name, nullptr);
    ASSERT_TRUE(WaitFor([&] { return ReadAll(probe_log).find("store") != std::string::npos; }))
        << Events();

    std::wstring move = std::wstring(L"\"") + VELK_SCANNER_STUB_EXE +
                        L"\" move --src 1 --dst 2 --msg 1 --headers \"X-Spam-Score: 9\"";
    unique_handle sender = StartProcess(move, nul_.get());
    ASSERT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(sender.get(), 20000));
    ASSERT_TRUE(WaitFor([&] { return ReadAll(probe_log).find("held") != std::string::npos; }))
        << ReadAll(probe_log);

    // The worker sits inside a store call; the client lets go of the add-in.
    const DWORD before = ::GetTickCount();
    EXPECT_EQ(1, ::SendMessageW(MainWindow(), WM_APP + 4, 0, 0));
    EXPECT_LT(::GetTickCount() - before, 3000u);
    ::SetEvent(release.get());

    // The request completes in the still-mapped add-in.
    EXPECT_TRUE(WaitFor([&] { return store.HasMessage(2, 1) && !store.HasMessage(1, 1); }));
    const std::string moved = store.ReadMessage(2, 1);
    EXPECT_NE(std::string::npos, moved.find("X-Spam-Score: 9")) << moved;
    EXPECT_NE(std::string::npos, moved.find("X-Nuvexa-AntispamAddin-Checked")) << moved;

    // And the client still closes normally, the add-in unloading at its exit.
    ::PostMessageW(MainWindow(), WM_CLOSE, 0, 0);
    EXPECT_EQ(0u, WaitClient()) << Events();
    EXPECT_NE(std::string::npos, Events().find(" exit")) << Events();
}

}  // namespace
