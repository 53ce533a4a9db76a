#include "senders/pages/sender_pages_test_util.h"

#include <commctrl.h>
#include <shellapi.h>
#include <shlobj.h>

#include <fstream>
#include <iterator>
#include <map>

#include <gtest/gtest.h>

#include "common_src/win32/companion.h"
#include "log/diag_log.h"
#include "senders/pages/sender_page_ids.h"
#include "senders/sender_list_wide.h"

namespace velk::senders::testing {

namespace {

DialogDriver* g_driver = nullptr;
std::map<UINT_PTR, std::function<void()>>& LaterQueue() {
    static std::map<UINT_PTR, std::function<void()>> queue;
    return queue;
}

constexpr UINT kNextStep = WM_APP + 0x300;
constexpr UINT_PTR kGiveUpTimer = 0x5EED;

std::wstring ClassOf(HWND window) {
    wchar_t name[64] = L"";
    ::GetClassNameW(window, name, 64);
    return name;
}

std::wstring WindowText(HWND window) {
    wchar_t text[4096] = L"";
    ::GetWindowTextW(window, text, 4096);
    return text;
}

std::wstring FromSourceTree(const wchar_t* unix_path) {
    std::wstring path = unix_path;
    for (wchar_t& c : path)
        c = c == L'/' ? L'\\' : c;
    return path;
}

void DeleteTree(const std::wstring& dir) {
    std::wstring from = dir + L'\0';
    SHFILEOPSTRUCTW op{};
    op.wFunc = FO_DELETE;
    op.pFrom = from.c_str();
    op.fFlags = FOF_NO_UI;
    ::SHFileOperationW(&op);
}

}  // namespace

std::string ReadBytes(const std::wstring& path) {
    std::ifstream in(path.c_str(), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void WriteBytes(const std::wstring& path, const std::string& bytes) {
    std::ofstream out(path.c_str(), std::ios::binary | std::ios::trunc);
    out << bytes;
}

void PumpFor(DWORD ms) {
    const DWORD start = ::GetTickCount();
    do {
        MSG msg;
        while (::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
            ::TranslateMessage(&msg);
            ::DispatchMessageW(&msg);
        }
        ::Sleep(5);
    } while (::GetTickCount() - start < ms);
}

bool WaitFor(const std::function<bool()>& done, DWORD ms) {
    const DWORD start = ::GetTickCount();
    while (!done()) {
        if (::GetTickCount() - start > ms)
            return false;
        PumpFor(20);
    }
    return true;
}

// ---- DialogDriver ----

DialogDriver::DialogDriver() {
    g_driver = this;
    hook_ = ::SetWindowsHookExW(WH_CBT, &Hook, nullptr, ::GetCurrentThreadId());
}

DialogDriver::~DialogDriver() {
    ::UnhookWindowsHookEx(hook_);
    g_driver = nullptr;
}

LRESULT CALLBACK DialogDriver::Hook(int code, WPARAM wp, LPARAM lp) {
    if (g_driver != nullptr) {
        if (code == HCBT_ACTIVATE)
            g_driver->OnActivate(reinterpret_cast<HWND>(wp));
        else if (code == HCBT_DESTROYWND)
            g_driver->seen_.erase(reinterpret_cast<HWND>(wp));
    }
    return ::CallNextHookEx(nullptr, code, wp, lp);
}

void DialogDriver::OnActivate(HWND window) {
    if (ClassOf(window) != L"#32770" || ::GetParent(window) != ::GetWindow(window, GW_OWNER))
        return;
    // The sheet has a tab strip; the boxes and dialogs of the pages have none.
    if (::FindWindowExW(window, nullptr, WC_TABCONTROLW, nullptr) != nullptr)
        return;
    const bool again = !seen_.insert(window).second;
    for (auto it = handlers_.begin(); it != handlers_.end(); ++it) {
        // Only the first handler may take it: the order is the script's.
        Handler handler = *it;
        if (handler(window, again))
            handlers_.erase(it);
        return;
    }
    if (!again) {
        ++unhandled;
        ADD_FAILURE() << "a dialog nobody expected: " << Describe(window).text.c_str();
        ::PostMessageW(window, WM_COMMAND, IDCANCEL, 0);
    }
}

DialogDriver::Box DialogDriver::Describe(HWND box) {
    Box seen;
    seen.caption = WindowText(box);
    for (HWND child = ::GetWindow(box, GW_CHILD); child != nullptr;
         child = ::GetWindow(child, GW_HWNDNEXT)) {
        if (ClassOf(child) == L"Static") {
            const std::wstring text = WindowText(child);
            if (text.size() > seen.text.size())
                seen.text = text;
        }
    }
    return seen;
}

void DialogDriver::Then(Handler handler) {
    handlers_.push_back(std::move(handler));
}

void DialogDriver::Answer(int button) {
    Then([this, button](HWND box, bool again) {
        if (again)
            return false;
        boxes.push_back(Describe(box));
        ::PostMessageW(box, WM_COMMAND, button, 0);
        return true;
    });
}

void DialogDriver::FillSender(const std::wstring& address, const std::wstring& name, int button) {
    Then([=](HWND dialog, bool again) {
        if (again || ::GetDlgItem(dialog, IDC_EDIT_ADDRESS) == nullptr)
            return false;
        ::SetDlgItemTextW(dialog, IDC_EDIT_ADDRESS, address.c_str());
        ::SetDlgItemTextW(dialog, IDC_EDIT_NAME, name.c_str());
        ::PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(button, BN_CLICKED),
                       reinterpret_cast<LPARAM>(::GetDlgItem(dialog, button)));
        return true;
    });
}

void DialogDriver::Later(std::function<void()> fn) {
    const UINT_PTR id = ::SetTimer(nullptr, 0, 10, [](HWND, UINT, UINT_PTR timer, DWORD) {
        ::KillTimer(nullptr, timer);
        auto it = LaterQueue().find(timer);
        if (it == LaterQueue().end())
            return;
        auto run = std::move(it->second);
        LaterQueue().erase(it);
        run();
    });
    LaterQueue()[id] = std::move(fn);
}

// ---- ScriptedSheet ----

void ScriptedSheet::OnInitialized() {
    ::SetTimer(hwnd(), kGiveUpTimer, 60000, nullptr);
    ::PostMessageW(hwnd(), kNextStep, 0, 0);
}

bool ScriptedSheet::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    if (msg == kNextStep) {
        if (next_ < steps.size()) {
            auto& step = steps[next_++];
            step(*this);
            if (hwnd() != nullptr && ::IsWindow(hwnd()))
                ::PostMessageW(hwnd(), kNextStep, 0, 0);
        }
        result = 0;
        return true;
    }
    if (msg == WM_TIMER && wp == kGiveUpTimer) {
        ADD_FAILURE() << "the sheet's script did not end it";
        Press(PSBTN_CANCEL);
        result = 0;
        return true;
    }
    return false;
}

void ScriptedSheet::Press(int button) {
    ::SendMessageW(hwnd(), PSM_PRESSBUTTON, button, 0);
}

void ScriptedSheet::Show(int index) {
    ::SendMessageW(hwnd(), PSM_SETCURSEL, index, 0);
}

HWND ScriptedSheet::page(int index) const {
    return pages()[index]->hwnd();
}

void ScriptedSheet::Click(int index, int control) {
    HWND target = page(index);
    ::SendMessageW(target, WM_COMMAND, MAKEWPARAM(control, BN_CLICKED),
                   reinterpret_cast<LPARAM>(::GetDlgItem(target, control)));
}

INT_PTR ScriptedSheet::Run() {
    return DoModal(nullptr, L"Sheet", PSH_NOAPPLYNOW);
}

// ---- PageWorld ----

static QzLanguageEnvironment TestLanguageEnvironment() {
    // The string table of the source tree, so the tests need no staging.
    QzLanguageEnvironment environment;
    environment.resourceRoot = FromSourceTree(VELK_TEST_RESOURCE_ROOT);
    return environment;
}

PageWorld::PageWorld() : strings_(TestLanguageEnvironment()) {
    wchar_t temp[MAX_PATH];
    ::GetTempPathW(MAX_PATH, temp);
    const ::testing::TestInfo* info = ::testing::UnitTest::GetInstance()->current_test_info();
    const std::string name = info != nullptr ? info->name() : "bench";
    root = std::wstring(temp) + L"velk_pages_" + std::wstring(name.begin(), name.end()) + L"\\";
    DeleteTree(root);
    ::SHCreateDirectoryExW(nullptr, (root + L"bin").c_str(), nullptr);
    ::SHCreateDirectoryExW(nullptr, (root + L"user\\log").c_str(), nullptr);
    ui.where.install_dir = root + L"bin\\";
    ui.where.install_ini = ui.where.install_dir + L"VELK_OE.ini";
    ui.where.data_dir = root;
    ui.where.user_dir = root + L"user\\";
    ui.where.user_ini = ui.where.user_dir + L"VELK_OE.ini";
    ::CopyFileW(VELK_IMPORTER_STUB_EXE, (ui.where.install_dir + L"VELK_OEImp.exe").c_str(), FALSE);

    strings_.Initialize(L"VELK_OE_AGENT");
    module_.reset(::LoadLibraryExW(VELK_TEST_PAGES_MODULE, nullptr, LOAD_LIBRARY_AS_DATAFILE));
    ui.strings = &strings_;
    ui.resources = module_.get();

    INITCOMMONCONTROLSEX icc{sizeof(icc), ICC_LISTVIEW_CLASSES | ICC_TAB_CLASSES};
    ::InitCommonControlsEx(&icc);
    log::Open(ui.where.user_dir + L"log\\VELKAgent.log");
}

PageWorld::~PageWorld() {
    log::Close();
    if (scanner_)
        StopScanner();
    DeleteTree(root);
}

void PageWorld::SetInstallValue(const wchar_t* key, const std::wstring& value) {
    ::WritePrivateProfileStringW(L"General", key, value.c_str(), ui.where.install_ini.c_str());
}

std::wstring PageWorld::UserValue(const wchar_t* key) const {
    wchar_t value[256] = L"";
    ::GetPrivateProfileStringW(L"General", key, L"<none>", value, 256, ui.where.user_ini.c_str());
    return value;
}

std::wstring PageWorld::ListPath(SenderListKind kind) const {
    return SenderListPathW(ui.where.user_dir, kind);
}

void PageWorld::LoadLists() {
    LoadSenders(approved, ListPath(SenderListKind::kApproved));
    LoadSenders(blocked, ListPath(SenderListKind::kBlocked));
}

std::string PageWorld::Log() const {
    return ReadBytes(log::CurrentPath());
}

void PageWorld::StartScanner() {
    heard_ = root + L"scanner.txt";
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
    ASSERT_TRUE(::CreateProcessW(nullptr, &cmd[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                                 &si, &pi));
    ::CloseHandle(pi.hThread);
    scanner_.reset(pi.hProcess);
    ASSERT_TRUE(WaitFor([] { return win32::companion::FindWindow() != nullptr; }));
}

std::string PageWorld::StopScanner() {
    if (!scanner_)
        return std::string();
    // Posted after everything else, so it is taken last.
    if (HWND window = win32::companion::FindWindow())
        ::PostMessageW(window, WM_CLOSE, 0, 0);
    if (::WaitForSingleObject(scanner_.get(), 10000) != WAIT_OBJECT_0)
        ::TerminateProcess(scanner_.get(), 99);
    scanner_.reset();
    return ReadBytes(heard_);
}

}  // namespace velk::senders::testing
