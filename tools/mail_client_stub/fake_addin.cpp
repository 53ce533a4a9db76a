// A stand-in add-in for testing the mail-client stand-in: exports the three
// entry points and writes each call, and what it found in the client's
// windows, to the file named by FAKE_ADDIN_LOG. ReBuildToolBar inserts a band
// with the add-in's band id into the client's last rebar, DestroyToolBar
// removes it, as the real band does.
#include <windows.h>
#include <commctrl.h>

#include <cstdarg>
#include <cstdio>
#include <string>

namespace {

constexpr UINT kBandId = 3339;
HWND g_band_child = nullptr;

void Record(const wchar_t* format, ...) {
    wchar_t path[MAX_PATH];
    DWORD n = ::GetEnvironmentVariableW(L"FAKE_ADDIN_LOG", path, MAX_PATH);
    if (n == 0 || n >= MAX_PATH)
        return;
    wchar_t line[512];
    va_list args;
    va_start(args, format);
    ::_vsnwprintf(line, 510, format, args);
    va_end(args);
    line[510] = L'\0';
    char text[1100];
    int bytes = ::WideCharToMultiByte(CP_UTF8, 0, line, -1, text, 1096, nullptr, nullptr);
    if (bytes <= 1)
        return;
    text[bytes - 1] = '\n';
    HANDLE f = ::CreateFileW(path, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                             OPEN_ALWAYS, 0, nullptr);
    if (f == INVALID_HANDLE_VALUE)
        return;
    DWORD written = 0;
    ::WriteFile(f, text, static_cast<DWORD>(bytes), &written, nullptr);
    ::CloseHandle(f);
}

HWND Browser() {
    return ::FindWindowW(L"Outlook Express Browser Class", nullptr);
}

// The client's rebars inside "SizableRebar", in order.
int Rebars(HWND browser, HWND* last) {
    HWND sizable = ::FindWindowExW(browser, nullptr, L"SizableRebar", nullptr);
    int count = 0;
    for (HWND r = ::FindWindowExW(sizable, nullptr, REBARCLASSNAMEW, nullptr); r != nullptr;
         r = ::FindWindowExW(sizable, r, REBARCLASSNAMEW, nullptr)) {
        ++count;
        if (last != nullptr)
            *last = r;
    }
    return count;
}

}  // namespace

extern "C" {

void WINAPI SetOEBrowserWnd(HWND browser) {
    wchar_t cls[128] = L"";
    ::GetClassNameW(browser, cls, 128);
    Record(L"SetOEBrowserWnd class=%s rebars=%d", cls, Rebars(browser, nullptr));
}

void WINAPI ReBuildToolBar(void) {
    HWND browser = Browser();
    HWND rebar = nullptr;
    Rebars(browser, &rebar);
    bool inserted = false;
    if (rebar != nullptr && ::SendMessageW(rebar, RB_IDTOINDEX, kBandId, 0) == -1) {
        g_band_child = ::CreateWindowExW(0, L"STATIC", L"fake band", WS_CHILD | WS_VISIBLE, 0, 0,
                                         200, 24, browser, nullptr, nullptr, nullptr);
        REBARBANDINFOW band{};
        band.cbSize = sizeof(band);
        band.fMask = RBBIM_STYLE | RBBIM_CHILD | RBBIM_CHILDSIZE | RBBIM_ID | RBBIM_SIZE;
        band.fStyle = RBBS_BREAK;
        band.hwndChild = g_band_child;
        band.cyMinChild = 24;
        band.cx = 200;
        band.wID = kBandId;
        inserted = ::SendMessageW(rebar, RB_INSERTBANDW, static_cast<WPARAM>(-1),
                                  reinterpret_cast<LPARAM>(&band)) != 0;
    }
    Record(L"ReBuildToolBar inserted=%d", inserted ? 1 : 0);
}

void WINAPI DestroyToolBar(void) {
    HWND rebar = nullptr;
    Rebars(Browser(), &rebar);
    bool removed = false;
    if (rebar != nullptr) {
        LRESULT index = ::SendMessageW(rebar, RB_IDTOINDEX, kBandId, 0);
        if (index != -1)
            removed = ::SendMessageW(rebar, RB_DELETEBAND, index, 0) != 0;
    }
    if (g_band_child != nullptr) {
        ::DestroyWindow(g_band_child);
        g_band_child = nullptr;
    }
    Record(L"DestroyToolBar removed=%d", removed ? 1 : 0);
}

}  // extern "C"

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*) {
    if (reason == DLL_PROCESS_ATTACH)
        Record(L"attach window=%d", Browser() != nullptr ? 1 : 0);
    if (reason == DLL_PROCESS_DETACH)
        Record(L"detach");
    return TRUE;
}
