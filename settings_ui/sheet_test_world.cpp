#include "settings_ui/sheet_test_world.h"

#include <gtest/gtest.h>
#include <shellapi.h>
#include <shlobj.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>

#include "common_src/win32/companion.h"

namespace velk::settings_ui::test {
namespace {

constexpr DWORD kStepTimeoutMs = 10000;
constexpr UINT kFence = WM_USER + 900;

Script* g_running = nullptr;

QzLanguageEnvironment StagedLanguages() {
    QzLanguageEnvironment environment;
    environment.resourceRoot = std::wstring(VELK_TEST_DIST) + L"\\Resource\\";
    return environment;
}

std::string ReadFile(const std::wstring& path) {
    std::ifstream in(path.c_str(), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void DeleteTree(const std::wstring& dir) {
    std::wstring from = dir + L'\0';
    SHFILEOPSTRUCTW op{};
    op.wFunc = FO_DELETE;
    op.pFrom = from.c_str();
    op.fFlags = FOF_NO_UI;
    ::SHFileOperationW(&op);
}

BOOL CALLBACK DestroyDialog(HWND hwnd, LPARAM) {
    wchar_t name[16] = L"";
    ::GetClassNameW(hwnd, name, 16);
    if (std::wstring(name) == L"#32770")
        ::DestroyWindow(hwnd);
    return TRUE;
}

}  // namespace

Script& Script::Then(Step step) {
    steps_.push_back(std::move(step));
    return *this;
}

Script& Script::Do(std::function<void()> action) {
    return Then([action] {
        action();
        return true;
    });
}

Script& Script::Wait(DWORD ms) {
    auto started = std::make_shared<DWORD>(0);
    return Then([started, ms] {
        if (*started == 0)
            *started = ::GetTickCount() | 1;
        return ::GetTickCount() - *started >= ms;
    });
}

bool Script::Run(const std::function<void()>& modal) {
    next_ = 0;
    timed_out_ = false;
    step_started_ = ::GetTickCount();
    g_running = this;
    const UINT_PTR timer = ::SetTimer(nullptr, 0, 25, &Tick);
    modal();
    ::KillTimer(nullptr, timer);
    g_running = nullptr;
    return !timed_out_ && next_ == steps_.size();
}

void CALLBACK Script::Tick(HWND, UINT, UINT_PTR, DWORD) {
    if (g_running != nullptr)
        g_running->OnTick();
}

void Script::OnTick() {
    // A step may run a message loop of its own (a message box): the timer
    // must not start the next step inside it.
    if (busy_ || next_ >= steps_.size())
        return;
    busy_ = true;
    if (steps_[next_]()) {
        ++next_;
        step_started_ = ::GetTickCount();
    } else if (::GetTickCount() - step_started_ > kStepTimeoutMs) {
        ADD_FAILURE() << "step " << next_ << " did not finish";
        timed_out_ = true;
        next_ = steps_.size();
        ::EnumThreadWindows(::GetCurrentThreadId(), &DestroyDialog, 0);
    }
    busy_ = false;
}

HWND FindDialog(const std::wstring& caption) {
    return ::FindWindowW(L"#32770", caption.c_str());
}

HWND FindDescendant(HWND root, int id) {
    struct Search {
        int id;
        HWND found;
    } search{id, nullptr};
    ::EnumChildWindows(
        root,
        [](HWND child, LPARAM lp) -> BOOL {
            auto* s = reinterpret_cast<Search*>(lp);
            if (::GetDlgCtrlID(child) != s->id)
                return TRUE;
            s->found = child;
            return FALSE;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.found;
}

SheetWorld::SheetWorld() : strings_(StagedLanguages()) {
    wchar_t temp[MAX_PATH];
    ::GetTempPathW(MAX_PATH, temp);
    root_ = std::wstring(temp) + L"velk_sheet_" + std::to_wstring(::GetCurrentProcessId()) + L"\\";
    DeleteTree(root_);
    const std::wstring bin = root_ + L"bin\\";
    ::SHCreateDirectoryExW(nullptr, bin.c_str(), nullptr);
    ::CopyFileW((std::wstring(VELK_TEST_DIST) + L"\\bin\\VELK_OE.ini").c_str(),
                (bin + L"VELK_OE.ini").c_str(), FALSE);
    ui_.where = settings::SettingsLocations(bin, root_ + L"data\\");
    ui_.where.SetUser(L"{sheet-test}");
    ::SHCreateDirectoryExW(nullptr, ui_.where.user_dir.c_str(), nullptr);

    EXPECT_TRUE(strings_.Initialize(L"VELK_OE_AGENT"));
    ui_.strings = &strings_;
    module_.reset(::LoadLibraryExW(
        (std::wstring(VELK_TEST_DIST) + L"\\Resource\\en-US\\VELK_OEA.dll.mui").c_str(), nullptr,
        LOAD_LIBRARY_AS_DATAFILE));
    EXPECT_TRUE(module_) << "the staged language module";
    ui_.resources = module_.get();

    heard_ = root_ + L"heard.txt";
    SECURITY_ATTRIBUTES sa{sizeof(sa), nullptr, TRUE};
    nul_.reset(::CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE,
                             FILE_SHARE_READ | FILE_SHARE_WRITE, &sa, OPEN_EXISTING, 0, nullptr));
    std::wstring cmd =
        std::wstring(L"\"") + VELK_SCANNER_STUB_EXE + L"\" listen --log \"" + heard_ + L"\"";
    STARTUPINFOW si{};
    si.cb = sizeof(si);
    si.dwFlags = STARTF_USESTDHANDLES;
    si.hStdInput = si.hStdOutput = si.hStdError = nul_.get();
    PROCESS_INFORMATION pi{};
    if (::CreateProcessW(nullptr, &cmd[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr, &si, &pi)) {
        ::CloseHandle(pi.hThread);
        scanner_.reset(pi.hProcess);
    }
    const DWORD start = ::GetTickCount();
    while (win32::companion::FindWindow() == nullptr && ::GetTickCount() - start < 10000)
        ::Sleep(20);
    EXPECT_NE(nullptr, win32::companion::FindWindow()) << "the scanning process's stand-in";
}

SheetWorld::~SheetWorld() {
    if (HWND companion = win32::companion::FindWindow())
        ::PostMessageW(companion, WM_CLOSE, 0, 0);
    if (scanner_ && ::WaitForSingleObject(scanner_.get(), 10000) != WAIT_OBJECT_0)
        ::TerminateProcess(scanner_.get(), 99);
    DeleteTree(root_);
}

void SheetWorld::WriteUserIni(const std::string& text) const {
    std::ofstream(ui_.where.user_ini.c_str(), std::ios::binary) << text;
}

std::string SheetWorld::ReadUserIni() const {
    return ReadFile(ui_.where.user_ini);
}

std::wstring SheetWorld::UserValue(const wchar_t* section, const wchar_t* key) const {
    wchar_t value[1024] = L"";
    ::GetPrivateProfileStringW(section, key, L"<none>", value, 1024, ui_.where.user_ini.c_str());
    return value;
}

std::vector<std::string> SheetWorld::HeardSinceLastAsk() {
    // The stand-in's log is written as messages arrive; a message of our own
    // posted after everything else marks how far this question reaches.
    const unsigned fence = ++fence_;
    ::PostMessageW(win32::companion::FindWindow(), kFence, fence, 0);
    char mark[64];
    snprintf(mark, sizeof mark, "posted WM_USER+900 wParam=0x%X ", fence);
    std::string all;
    const DWORD start = ::GetTickCount();
    while ((all = ReadFile(heard_)).find(mark) == std::string::npos &&
           ::GetTickCount() - start < 10000) {
        ::Sleep(20);
    }
    std::vector<std::string> lines;
    std::size_t at = heard_offset_;
    while (at < all.size()) {
        const std::size_t end = all.find('\n', at);
        std::string line = all.substr(at, end == std::string::npos ? std::string::npos : end - at);
        at = end == std::string::npos ? all.size() : end + 1;
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (line.find("WM_USER+900 ") != std::string::npos) {
            if (line.find(mark) != std::string::npos)
                break;
            continue;
        }
        lines.push_back(line);
    }
    heard_offset_ = at;
    return lines;
}

}  // namespace velk::settings_ui::test
