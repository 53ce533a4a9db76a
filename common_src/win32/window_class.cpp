#include "common_src/win32/window_class.h"

#include "log/diag_log.h"

namespace velk::win32 {

ATOM RegisterWindowClass(const wchar_t* name, const WindowClassOptions& options) {
    HINSTANCE instance = options.instance != nullptr ? options.instance : ThisModule();
    WNDCLASSEXW existing{};
    existing.cbSize = sizeof(existing);
    if (ATOM atom = static_cast<ATOM>(::GetClassInfoExW(instance, name, &existing))) {
        if (existing.lpfnWndProc == options.proc)
            return atom;
        VELK_LOG(L"!!! window class %s registered with another procedure, registering it again",
                 name);
        ::UnregisterClassW(name, instance);
    }
    WNDCLASSEXW wc{};
    wc.cbSize = sizeof(wc);
    wc.style = options.style;
    wc.lpfnWndProc = options.proc;
    wc.hInstance = instance;
    wc.hCursor = options.cursor != nullptr ? options.cursor : ::LoadCursorW(nullptr, IDC_ARROW);
    wc.hbrBackground = options.background;
    wc.lpszClassName = name;
    ATOM atom = ::RegisterClassExW(&wc);
    if (atom == 0) {
        VELK_LOG(L"@@@ Error : RegisterClassExW(%s) failed, error %lu", name, ::GetLastError());
    }
    return atom;
}

bool UnregisterWindowClass(const wchar_t* name, HINSTANCE instance) noexcept {
    return ::UnregisterClassW(name, instance != nullptr ? instance : ThisModule()) != FALSE;
}

}  // namespace velk::win32
