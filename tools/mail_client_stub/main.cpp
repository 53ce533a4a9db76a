// The mail-client stand-in: plays the client the add-in lives in, so tests
// and the demo see the add-in load, build its band, follow the client's close
// and unload. See tools/README.md for the command line.
#include <windows.h>
#include <ole2.h>
#include <winternl.h>
#include <shellapi.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "common_src/win32/handles.h"
#include "addin/addin_exports.h"
#include "tools/mail_client_stub/client_options.h"
#include "tools/mail_client_stub/client_window.h"
#include "tools/mail_client_stub/event_log.h"

namespace velk::tools {
namespace {

// The loader's unload notice (ntdll, Vista and later, looked up at run time):
// the stand-in notes on which thread an add-in was unloaded and how many
// windows with a procedure inside its image were still alive then. Any is a
// crash waiting for the next message to such a window.
struct UnloadedDll {
    ULONG flags;
    const void* full_name;
    const UNICODE_STRING* base_name;
    void* base;
    ULONG size;
};
using DllNotification = void(CALLBACK*)(ULONG reason, const UnloadedDll* data, void* context);
using RegisterDllNotification = LONG(NTAPI*)(ULONG, DllNotification, void*, void**);
using UnregisterDllNotification = LONG(NTAPI*)(void*);

struct UnloadWatch {
    EventLog* events = nullptr;
    DWORD client_thread = 0;
    const void* base = nullptr;
    const void* end = nullptr;
    int alive = 0;
};

BOOL CALLBACK CountAddinWindows(HWND hwnd, LPARAM lp) {
    auto* watch = reinterpret_cast<UnloadWatch*>(lp);
    for (const void* proc :
         {reinterpret_cast<const void*>(::GetClassLongPtrW(hwnd, GCLP_WNDPROC)),
          reinterpret_cast<const void*>(::GetWindowLongPtrW(hwnd, GWLP_WNDPROC))}) {
        if (proc >= watch->base && proc < watch->end) {
            ++watch->alive;
            break;
        }
    }
    return TRUE;
}

BOOL CALLBACK CountInTree(HWND hwnd, LPARAM lp) {
    CountAddinWindows(hwnd, lp);
    ::EnumChildWindows(hwnd, &CountAddinWindows, lp);
    return TRUE;
}

void CALLBACK OnDllNotification(ULONG reason, const UnloadedDll* data, void* context) {
    constexpr ULONG kUnloaded = 2;
    auto* watch = static_cast<UnloadWatch*>(context);
    if (reason != kUnloaded || data == nullptr || data->base_name == nullptr)
        return;
    const std::wstring name(data->base_name->Buffer, data->base_name->Length / sizeof(wchar_t));
    if (name.size() < 4 || _wcsicmp(name.c_str() + name.size() - 4, L".dll") != 0)
        return;
    watch->base = data->base;
    watch->end = static_cast<const char*>(data->base) + data->size;
    watch->alive = 0;
    ::EnumThreadWindows(watch->client_thread, &CountInTree, reinterpret_cast<LPARAM>(watch));
    watch->events->Write(L"unloaded %s thread=%s windows=%d", name.c_str(),
                         ::GetCurrentThreadId() == watch->client_thread ? L"client" : L"other",
                         watch->alive);
}

struct Addin {
    std::wstring path;
    HMODULE module = nullptr;
};

class ClientApp {
public:
    explicit ClientApp(ClientOptions options) : options_(std::move(options)) {}
    // Unloads at the process's end are not the add-in's doing, and the log
    // is gone by then.
    ~ClientApp() {
        auto unreg = reinterpret_cast<UnregisterDllNotification>(reinterpret_cast<void*>(
            ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "LdrUnregisterDllNotification")));
        if (unreg != nullptr && unload_cookie_ != nullptr)
            unreg(unload_cookie_);
    }

    int Run();

private:
    bool WindowsMail() const;
    void WriteIdentity();
    void LoadAddins();
    void CreateMainWindow();
    void PumpFor(unsigned ms);
    void RunSteps();
    bool Command(UINT command);
    void CallExport(const char* name);
    void FreeAddins(const wchar_t* what);

    ClientOptions options_;
    EventLog events_;
    UnloadWatch unload_watch_;
    void* unload_cookie_ = nullptr;
    std::vector<Addin> addins_;
    std::unique_ptr<CClientWindow> window_;
    std::size_t next_step_ = 0;
};

bool ClientApp::WindowsMail() const {
    if (options_.mode != ClientMode::kAuto)
        return options_.mode == ClientMode::kWindowsMail;
    // As the add-in decides: the basic version record's major version.
    OSVERSIONINFOW osvi{};
    osvi.dwOSVersionInfoSize = sizeof(osvi);
    return ::GetVersionExW(&osvi) && osvi.dwMajorVersion == 6;
}

void ClientApp::WriteIdentity() {
    if (!options_.write_identity) {
        events_.Write(L"identity kept");
        return;
    }
    win32::unique_hkey key;
    if (::RegCreateKeyExW(HKEY_CURRENT_USER, L"Identities", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                          key.put(), nullptr) != ERROR_SUCCESS) {
        events_.Write(L"identity failed");
        return;
    }
    const std::wstring& id = options_.identity;
    const DWORD bytes = static_cast<DWORD>((id.size() + 1) * sizeof(wchar_t));
    ::RegSetValueExW(key.get(), L"Last User ID", 0, REG_SZ,
                     reinterpret_cast<const BYTE*>(id.c_str()), bytes);
    ::RegSetValueExW(key.get(), L"Default User ID", 0, REG_SZ,
                     reinterpret_cast<const BYTE*>(id.c_str()), bytes);
    events_.Write(L"identity %s", id.c_str());
}

void ClientApp::LoadAddins() {
    if (unload_cookie_ == nullptr) {
        unload_watch_.events = &events_;
        unload_watch_.client_thread = ::GetCurrentThreadId();
        auto reg = reinterpret_cast<RegisterDllNotification>(reinterpret_cast<void*>(
            ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "LdrRegisterDllNotification")));
        if (reg != nullptr)
            reg(0, &OnDllNotification, &unload_watch_, &unload_cookie_);
    }
    for (const std::wstring& path : options_.addins) {
        const double t0 = events_.Now();
        HMODULE module = ::LoadLibraryW(path.c_str());
        const double ms = events_.Now() - t0;
        if (module == nullptr) {
            events_.Write(L"load %s failed error=%lu ms=%.2f", path.c_str(), ::GetLastError(), ms);
            continue;
        }
        // Whether the add-in put its band into the rebar while loading.
        events_.Write(L"load %s ok ms=%.2f band=%d", path.c_str(), ms,
                      window_ && window_->rebar().HasBand(kAddinBandId) ? 1 : 0);
        addins_.push_back(Addin{path, module});
    }
}

void ClientApp::CreateMainWindow() {
    CClientWindow::Host host;
    host.event = [this](const wchar_t* text) { events_.Write(L"%s", text); };
    host.command = [this](UINT command) { return Command(command); };
    host.timer_step = [this] { RunSteps(); };
    window_ = std::make_unique<CClientWindow>(std::move(host));
    if (!window_->Create(WindowsMail())) {
        events_.Write(L"window failed error=%lu", ::GetLastError());
        window_.reset();
        return;
    }
    ::ShowWindow(window_->hwnd(), SW_SHOWNORMAL);
    ::UpdateWindow(window_->hwnd());
    events_.Write(L"window created rebars=%d", static_cast<int>(window_->rebar().rebars().size()));
}

// Runs the message loop for `ms` before the main window exists: the add-in's
// own windows and timers keep working meanwhile.
void ClientApp::PumpFor(unsigned ms) {
    const DWORD start = ::GetTickCount();
    for (;;) {
        const DWORD elapsed = ::GetTickCount() - start;  // wraps safely
        if (elapsed >= ms)
            return;
        ::MsgWaitForMultipleObjects(0, nullptr, FALSE, ms - elapsed, QS_ALLINPUT);
        MSG msg;
        while (::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
            if (msg.message == WM_QUIT)
                return;
            ::TranslateMessage(&msg);
            ::DispatchMessageW(&msg);
        }
    }
}

void ClientApp::CallExport(const char* name) {
    for (const Addin& addin : addins_) {
        if (addin.module == nullptr)
            continue;
        FARPROC proc = ::GetProcAddress(addin.module, name);
        if (proc == nullptr) {
            events_.Write(L"export %hs missing", name);
            continue;
        }
        events_.Write(L"export %hs", name);
        if (std::strcmp(name, addin::kExportSetOEBrowserWnd) == 0) {
            reinterpret_cast<SetOEBrowserWndFn>(proc)(window_ ? window_->hwnd() : nullptr);
        } else {
            // ReBuildToolBar and DestroyToolBar take nothing.
            reinterpret_cast<ReBuildToolBarFn>(proc)();
        }
    }
}

void ClientApp::FreeAddins(const wchar_t* what) {
    for (auto it = addins_.rbegin(); it != addins_.rend(); ++it) {
        if (it->module == nullptr)
            continue;
        const double t0 = events_.Now();
        ::FreeLibrary(it->module);
        const double ms = events_.Now() - t0;
        // Whether that FreeLibrary unmapped the library or something (a
        // thread of the add-in) still holds it.
        events_.Write(L"%s %s ms=%.2f mapped=%d", what, it->path.c_str(), ms,
                      ::GetModuleHandleW(it->path.c_str()) != nullptr ? 1 : 0);
        it->module = nullptr;
    }
}

bool ClientApp::Command(UINT command) {
    switch (command) {
        case kCmdSetBrowser:
            CallExport(addin::kExportSetOEBrowserWnd);
            return true;
        case kCmdRebuild:
            CallExport(addin::kExportReBuildToolBar);
            return true;
        case kCmdDestroy:
            CallExport(addin::kExportDestroyToolBar);
            return true;
        case kCmdUnload:
            FreeAddins(L"unload");
            return true;
        case kCmdMapped:
            for (const Addin& addin : addins_) {
                if (::GetModuleHandleW(addin.path.c_str()) != nullptr)
                    return true;
            }
            return false;
        default:
            return false;
    }
}

void ClientApp::RunSteps() {
    while (window_ && window_->hwnd() != nullptr && next_step_ < options_.steps.size()) {
        const Step step = options_.steps[next_step_++];
        switch (step.kind) {
            case StepKind::kSetBrowser:
                Command(kCmdSetBrowser);
                break;
            case StepKind::kRebuild:
                Command(kCmdRebuild);
                break;
            case StepKind::kDestroy:
                Command(kCmdDestroy);
                break;
            case StepKind::kUnload:
                Command(kCmdUnload);
                break;
            case StepKind::kWait:
                ::SetTimer(window_->hwnd(), CClientWindow::kStepTimer, step.ms, nullptr);
                return;
            case StepKind::kClose:
                // Posted, as the system posts it when the user closes the window.
                events_.Write(L"close requested");
                ::PostMessageW(window_->hwnd(), WM_CLOSE, 0, 0);
                return;
        }
    }
}

int ClientApp::Run() {
    if (!options_.events_path.empty() && !events_.Open(options_.events_path)) {
        std::fwprintf(stderr, L"error: cannot open %ls\n", options_.events_path.c_str());
        return 2;
    }
    const bool wmail = WindowsMail();
    events_.Write(L"start mode=%s", wmail ? L"wmail" : L"oe");
    if (!CClientWindow::RegisterClasses()) {
        events_.Write(L"register failed");
        return 1;
    }
    WriteIdentity();
    // The real clients are OLE applications (drag and drop, the message
    // store's COM objects): OLE is up before any add-in loads.
    const HRESULT ole = ::OleInitialize(nullptr);
    if (options_.late_ms > 0) {
        LoadAddins();
        PumpFor(options_.late_ms);
        CreateMainWindow();
    } else {
        CreateMainWindow();
        LoadAddins();
    }
    if (!window_) {
        FreeAddins(L"free");
        if (SUCCEEDED(ole))
            ::OleUninitialize();
        return 1;
    }
    if (options_.exit_after_ms > 0) {
        ::SetTimer(window_->hwnd(), CClientWindow::kExitTimer, options_.exit_after_ms, nullptr);
    }
    RunSteps();

    MSG msg;
    while (::GetMessageW(&msg, nullptr, 0, 0) > 0) {
        ::TranslateMessage(&msg);
        ::DispatchMessageW(&msg);
    }
    // As the real client: the window is gone, then the add-ins are freed.
    if (options_.free_at_exit)
        FreeAddins(L"free");
    if (SUCCEEDED(ole))
        ::OleUninitialize();
    events_.Write(L"exit");
    return 0;
}

}  // namespace
}  // namespace velk::tools

int main() {
    int argc = 0;
    wchar_t** argv = ::CommandLineToArgvW(::GetCommandLineW(), &argc);
    std::vector<std::wstring> args;
    for (int i = 1; argv != nullptr && i < argc; ++i)
        args.emplace_back(argv[i]);
    ::LocalFree(argv);

    velk::tools::ClientOptions options;
    std::wstring error;
    if (!velk::tools::ParseClientOptions(args, options, error)) {
        std::fwprintf(stderr, L"error: %ls\n%ls", error.c_str(), velk::tools::ClientUsage());
        return 2;
    }
    if (options.help) {
        std::fwprintf(stdout, L"%ls", velk::tools::ClientUsage());
        return 0;
    }
    try {
        return velk::tools::ClientApp(std::move(options)).Run();
    } catch (...) {
        std::fwprintf(stderr, L"error: unexpected exception\n");
        return 1;
    }
}
