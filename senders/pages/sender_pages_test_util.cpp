#include "senders/pages/sender_pages_test_util.h"

#include <commctrl.h>

#include <filesystem>
#include <fstream>
#include <map>

#include <gtest/gtest.h>

#include "common_src/win32/companion.h"
#include "log/diag_log.h"
#include "senders/pages/sender_page_ids.h"
#include "senders/sender_list_wide.h"

namespace velk::senders::testing {

namespace {

DialogDriver* g_driver = nullptr;
std::map<UINT_PTR, std::function<void()>> g_later;

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

QzLanguageEnvironment SourceTreeStrings() {
    // The string table of the source tree, so the tests need no staging.
    QzLanguageEnvironment environment;
    environment.resourceRoot = VELK_TEST_RESOURCE_ROOT;
    for (wchar_t& c : environment.resourceRoot)
        c = c == L'/' ? L'\\' : c;
    return environment;
}

}  // namespace

bool WaitFor(const std::function<bool()>& done) {
    for (const DWORD start = ::GetTickCount(); !done(); ::Sleep(10)) {
        if (::GetTickCount() - start > 10000)
            return false;
        for (MSG msg; ::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE);)
            ::DispatchMessageW(&msg);
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
    if (g_driver != nullptr && code == HCBT_ACTIVATE)
        g_driver->OnActivate(reinterpret_cast<HWND>(wp));
    else if (g_driver != nullptr && code == HCBT_DESTROYWND)
        g_driver->seen_.erase(reinterpret_cast<HWND>(wp));
    return ::CallNextHookEx(nullptr, code, wp, lp);
}

void DialogDriver::OnActivate(HWND window) {
    // The sheet has a tab strip; the boxes and dialogs of the pages have none.
    if (ClassOf(window) != L"#32770" || ::GetParent(window) != ::GetWindow(window, GW_OWNER) ||
        ::FindWindowExW(window, nullptr, WC_TABCONTROLW, nullptr) != nullptr)
        return;
    const bool again = !seen_.insert(window).second;
    // Only the first handler may take it: the order is the script's.
    if (!handlers_.empty() && handlers_.front()(window, again)) {
        handlers_.pop_front();
    } else if (handlers_.empty() && !again) {
        ADD_FAILURE() << "a dialog nobody expected: " << WindowText(window).c_str();
        ::PostMessageW(window, WM_COMMAND, IDCANCEL, 0);
    }
}

void DialogDriver::Answer(int button) {
    Then([this, button](HWND box, bool again) {
        if (again)
            return false;
        Box seen{WindowText(box), L""};
        for (HWND child = ::GetWindow(box, GW_CHILD); child;
             child = ::GetWindow(child, GW_HWNDNEXT)) {
            if (ClassOf(child) == L"Static" && WindowText(child).size() > seen.text.size())
                seen.text = WindowText(child);
        }
        boxes.push_back(seen);
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
        const auto it = g_later.find(timer);
        if (it == g_later.end())
            return;
        const auto run = std::move(it->second);
        g_later.erase(it);
        run();
    });
    g_later[id] = std::move(fn);
}

// ---- ScriptedSheet ----

void ScriptedSheet::OnInitialized() {
    ::SetTimer(hwnd(), kGiveUpTimer, 60000, nullptr);
    ::PostMessageW(hwnd(), kNextStep, 0, 0);
}

bool ScriptedSheet::ProcessMessage(UINT msg, WPARAM wp, LPARAM, LRESULT& result) {
    if (msg == kNextStep && next_ < steps.size()) {
        steps[next_++](*this);
        if (hwnd() != nullptr && ::IsWindow(hwnd()))
            ::PostMessageW(hwnd(), kNextStep, 0, 0);
    } else if (msg == WM_TIMER && wp == kGiveUpTimer) {
        ADD_FAILURE() << "the sheet's script did not end it";
        Press(PSBTN_CANCEL);
    } else {
        return msg == kNextStep;
    }
    result = 0;
    return true;
}

// ---- PageWorld ----

PageWorld::PageWorld() : strings_(SourceTreeStrings()) {
    dir.MakeFolder(L"bin");
    dir.MakeFolder(std::wstring(kUserFolder) + L"log");
    ui.where.install_dir = dir.path() + L"bin\\";
    ui.where.install_ini = ui.where.install_dir + L"VELK_OE.ini";
    ui.where.user_dir = dir.path() + kUserFolder;
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
    StopScanner();
}

std::string PageWorld::Log() const {
    // The log adds the date to its name.
    std::ifstream in(std::filesystem::path(log::CurrentPath()), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void PageWorld::StartScanner() {
    std::wstring cmd = std::wstring(L"\"") + VELK_SCANNER_STUB_EXE + L"\" listen --log \"" +
                       dir.path() + L"scanner.txt\"";
    STARTUPINFOW si{sizeof(si)};
    PROCESS_INFORMATION pi{};
    ASSERT_TRUE(::CreateProcessW(nullptr, &cmd[0], nullptr, nullptr, FALSE, DETACHED_PROCESS,
                                 nullptr, nullptr, &si, &pi));
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
    return dir.ReadFile(L"scanner.txt");
}

}  // namespace velk::senders::testing
