// demo_probe.dll: the demo's instrument inside the mail-client stand-in.
//
// The message store stand-in is an in-process COM server: the add-in's
// worker loads it into the client's process, so only code in that process can
// point it at the demo's mailbox and read its journal. The client loads this
// library as a second add-in; when the client hands over its window
// (SetOEBrowserWnd, on its UI thread, outside the loader lock) the probe
// loads the registered store module (the very module COM will use), sets the
// mailbox root from VELK_DEMO_MAILBOX, and from then on keeps the journal
// saved in VELK_DEMO_JOURNAL. It answers the demo driver through a hidden
// window owned by the client's window, so it goes when the client closes.
#include <windows.h>
#include <commctrl.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "common_src/win32/handles.h"
#include "demo/encoded_words.h"
#include "demo/mailbox.h"
#include "demo/probe/probe_protocol.h"
#include "tools/store_stub/store_stub_control.h"

namespace {

using velk::win32::unique_hkey;

HMODULE g_self = nullptr;

struct Store {
    HMODULE module = nullptr;
    PFN_StoreStub_SetMailboxRoot set_root = nullptr;
    PFN_StoreStub_Reset reset = nullptr;
    PFN_StoreStub_GetJournal journal = nullptr;
    PFN_StoreStub_ListMessages list = nullptr;
    PFN_StoreStub_ReadMessage read = nullptr;
};

Store g_store;
HWND g_window = nullptr;
HWND g_browser = nullptr;
std::wstring g_journal_path;
std::wstring g_saved;  // the journal as last written

std::wstring Environment(const wchar_t* name) {
    wchar_t value[MAX_PATH];
    DWORD n = ::GetEnvironmentVariableW(name, value, MAX_PATH);
    return n > 0 && n < MAX_PATH ? std::wstring(value, n) : std::wstring();
}

std::string Utf8(const std::wstring& text) {
    if (text.empty())
        return std::string();
    int n = ::WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr,
                                  0, nullptr, nullptr);
    std::string out(static_cast<std::size_t>(n), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), out.data(), n,
                          nullptr, nullptr);
    return out;
}

std::wstring Wide(const std::string& text) {
    if (text.empty())
        return std::wstring();
    int n =
        ::MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
    std::wstring out(static_cast<std::size_t>(n), L'\0');
    ::MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), out.data(), n);
    return out;
}

// Replaces the file in one step, so the driver never reads half a journal.
bool WriteWhole(const std::wstring& path, const std::string& bytes) {
    const std::wstring temp = path + L".tmp";
    {
        velk::win32::unique_file file(::CreateFileW(temp.c_str(), GENERIC_WRITE, FILE_SHARE_READ,
                                                    nullptr, CREATE_ALWAYS, 0, nullptr));
        if (!file)
            return false;
        DWORD written = 0;
        if (!::WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written,
                         nullptr) ||
            written != bytes.size()) {
            return false;
        }
    }
    return ::MoveFileExW(temp.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING) != FALSE;
}

void SaveJournal() {
    if (!g_store.journal || g_journal_path.empty())
        return;
    const DWORD flags = STORE_STUB_JOURNAL_TARGET | STORE_STUB_JOURNAL_RESULT;
    ULONG needed = g_store.journal(flags, nullptr, 0);
    std::wstring text(needed, L'\0');
    ULONG got = g_store.journal(flags, text.data(), needed);
    text.resize(std::min(got, needed) > 0 ? std::min(got, needed) - 1 : 0);
    if (text == g_saved)
        return;
    if (WriteWhole(g_journal_path, Utf8(text)))
        g_saved = text;
}

HWND FindChildByClass(HWND parent, const wchar_t* class_name) {
    return ::FindWindowExW(parent, nullptr, class_name, nullptr);
}

// Fills the client's message list with one folder of the store, as a mail
// client shows the folder it is in.
void ShowFolder(std::uint32_t folder, const std::wstring& name) {
    HWND list = FindChildByClass(g_browser, WC_LISTVIEWW);
    if (!list || !g_store.list || !g_store.read)
        return;
    ::SendMessageW(list, LVM_DELETEALLITEMS, 0, 0);
    ULONG count = g_store.list(folder, nullptr, 0);
    std::vector<ULONG> ids(count);
    count = std::min<ULONG>(count, g_store.list(folder, ids.data(), count));
    for (ULONG i = 0; i < count; ++i) {
        ULONG size = 0;
        g_store.read(folder, ids[i], nullptr, 0, &size);
        std::string bytes(size, '\0');
        if (FAILED(g_store.read(folder, ids[i], bytes.data(), size, &size)))
            continue;
        const std::vector<velk::demo::HeaderField> fields = velk::demo::HeaderFields(bytes);
        std::wstring columns[3] = {
            Wide(velk::demo::SenderDisplayName(velk::demo::FindField(fields, "From").value_or(""))),
            Wide(velk::demo::DecodeEncodedWords(
                velk::demo::FindField(fields, "Subject").value_or(""))),
            Wide(velk::demo::FindField(fields, "Date").value_or(""))};
        LVITEMW item{};
        item.mask = LVIF_TEXT;
        item.iItem = static_cast<int>(i);
        item.pszText = columns[0].data();
        int row = static_cast<int>(
            ::SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)));
        for (int column = 1; column < 3 && row >= 0; ++column) {
            item.iSubItem = column;
            item.pszText = columns[column].data();
            ::SendMessageW(list, LVM_SETITEMTEXTW, row, reinterpret_cast<LPARAM>(&item));
        }
    }
    ::SetWindowTextW(g_browser, (name + L" - Mail").c_str());
}

LRESULT CALLBACK ProbeProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    try {
        switch (msg) {
            case WM_TIMER:
                SaveJournal();
                return 0;
            case velk::demo::kProbeSaveJournal:
                SaveJournal();
                return 1;
            case WM_COPYDATA: {
                const auto* cds = reinterpret_cast<const COPYDATASTRUCT*>(lp);
                if (!cds || cds->dwData != velk::demo::kProbeShowFolder ||
                    cds->cbData < sizeof(std::uint32_t)) {
                    return FALSE;
                }
                std::uint32_t folder = 0;
                std::memcpy(&folder, cds->lpData, sizeof folder);
                const auto* name = reinterpret_cast<const wchar_t*>(
                    static_cast<const BYTE*>(cds->lpData) + sizeof folder);
                ShowFolder(folder,
                           std::wstring(name, (cds->cbData - sizeof folder) / sizeof(wchar_t)));
                return TRUE;
            }
            case WM_DESTROY:
                // The client is closing: the last calls of the run are in now.
                ::KillTimer(hwnd, 1);
                SaveJournal();
                g_window = nullptr;
                return 0;
            default:
                break;
        }
    } catch (...) {
        // Nothing may leave a window procedure inside the client.
    }
    return ::DefWindowProcW(hwnd, msg, wp, lp);
}

// The store module COM will load: the path registered for the class.
std::wstring RegisteredStorePath() {
    unique_hkey key;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE,
                        L"Software\\Classes\\CLSID\\{6E3B9A14-0C57-4D2E-B8F1-93A2C5D7E048}"
                        L"\\InprocServer32",
                        0, KEY_READ, key.put()) != ERROR_SUCCESS) {
        return std::wstring();
    }
    wchar_t path[MAX_PATH] = {};
    DWORD bytes = sizeof(path) - sizeof(wchar_t);
    DWORD type = 0;
    if (::RegQueryValueExW(key.get(), nullptr, nullptr, &type, reinterpret_cast<BYTE*>(path),
                           &bytes) != ERROR_SUCCESS ||
        type != REG_SZ) {
        return std::wstring();
    }
    return path;
}

// Why the probe could not start, where the driver looks for the journal.
void ReportFailure(const char* why) noexcept {
    try {
        if (!g_journal_path.empty())
            WriteWhole(g_journal_path, std::string("error: ") + why + "\n");
    } catch (...) {
        // Out of memory: the driver times out waiting for the probe instead.
    }
}

template <class T>
bool Resolve(T& out, const char* name) {
    out = reinterpret_cast<T>(reinterpret_cast<void*>(::GetProcAddress(g_store.module, name)));
    return out != nullptr;
}

void Start(HWND browser) {
    if (g_window)
        return;
    g_browser = browser;
    g_journal_path = Environment(velk::demo::kProbeJournalVariable);
    const std::wstring root = Environment(velk::demo::kProbeMailboxVariable);
    if (root.empty() || g_journal_path.empty())
        return ReportFailure("VELK_DEMO_MAILBOX or VELK_DEMO_JOURNAL is not set");
    const std::wstring store = RegisteredStorePath();
    if (store.empty())
        return ReportFailure("the message store is not registered");
    // Kept loaded until the process ends: COM shares this module with us.
    g_store.module = ::LoadLibraryW(store.c_str());
    if (!g_store.module || !Resolve(g_store.set_root, "StoreStub_SetMailboxRoot") ||
        !Resolve(g_store.reset, "StoreStub_Reset") ||
        !Resolve(g_store.journal, "StoreStub_GetJournal") ||
        !Resolve(g_store.list, "StoreStub_ListMessages") ||
        !Resolve(g_store.read, "StoreStub_ReadMessage")) {
        return ReportFailure("the registered store module lacks its control exports");
    }
    if (FAILED(g_store.set_root(root.c_str())))
        return ReportFailure("the store refused the mailbox root");
    g_store.reset();

    WNDCLASSEXW wc{};
    wc.cbSize = sizeof wc;
    wc.lpfnWndProc = &ProbeProc;
    wc.hInstance = g_self;
    wc.lpszClassName = velk::demo::kProbeWindowClass;
    if (!::RegisterClassExW(&wc) && ::GetLastError() != ERROR_CLASS_ALREADY_EXISTS)
        return ReportFailure("cannot register the probe's window class");
    // Owned by the client's window: destroyed before it, on the client's thread.
    g_window = ::CreateWindowExW(0, velk::demo::kProbeWindowClass, L"", WS_POPUP, 0, 0, 0, 0,
                                 browser, nullptr, g_self, nullptr);
    if (!g_window)
        return ReportFailure("cannot create the probe's window");
    SaveJournal();
    ::SetTimer(g_window, 1, 100, nullptr);
}

}  // namespace

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        g_self = instance;
        ::DisableThreadLibraryCalls(instance);
    }
    return TRUE;
}

extern "C" {

void WINAPI SetOEBrowserWnd(HWND browser) {
    try {
        if (browser)
            Start(browser);
    } catch (...) {
        ReportFailure("unexpected exception");
    }
}

// The client calls these too; the probe has nothing to build or tear down.
void WINAPI ReBuildToolBar() {}
void WINAPI DestroyToolBar() {}

}  // extern "C"
