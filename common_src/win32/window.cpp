#include "common_src/win32/window.h"

#include <exception>

#include "common_src/win32/entry_scope.h"
#include "common_src/win32/message_guard.h"
#include "common_src/win32/reflection.h"
#include "log/diag_log.h"

// The linker's symbol for the start of this module's image: the module handle
// of whichever DLL or executable this code was linked into (MSVC and MinGW).
extern "C" IMAGE_DOS_HEADER __ImageBase;

namespace velk::win32 {

HINSTANCE ThisModule() noexcept {
    return reinterpret_cast<HINSTANCE>(&__ImageBase);
}

Window::~Window() {
    if (hwnd_ != nullptr) {
        HWND hwnd = hwnd_;
        ::SetWindowLongPtrW(hwnd, GWLP_USERDATA, 0);
        hwnd_ = nullptr;
        ::DestroyWindow(hwnd);
    }
}

HWND Window::Create(const wchar_t* class_name, HWND parent, DWORD style, DWORD ex_style,
                    const RECT& rect, const wchar_t* title, INT_PTR id, HINSTANCE instance) {
    if (hwnd_ != nullptr)
        return nullptr;
    // CreateWindowExW reports the result of WM_NCCREATE, where hwnd_ is set.
    HWND hwnd = ::CreateWindowExW(ex_style, class_name, title, style, rect.left, rect.top,
                                  rect.right - rect.left, rect.bottom - rect.top, parent,
                                  reinterpret_cast<HMENU>(id), instance, this);
    if (hwnd == nullptr)
        hwnd_ = nullptr;
    return hwnd;
}

void Window::Destroy() noexcept {
    if (hwnd_ != nullptr)
        ::DestroyWindow(hwnd_);
}

Window* Window::FromHandle(HWND hwnd) noexcept {
    if (hwnd == nullptr)
        return nullptr;
    auto proc = reinterpret_cast<WNDPROC>(::GetClassLongPtrW(hwnd, GCLP_WNDPROC));
    if (proc != &Window::StaticProc)
        return nullptr;
    return reinterpret_cast<Window*>(::GetWindowLongPtrW(hwnd, GWLP_USERDATA));
}

LRESULT CALLBACK Window::StaticProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    EntryScope entry;
    Window* self = nullptr;
    if (msg == WM_NCCREATE) {
        const auto* cs = reinterpret_cast<const CREATESTRUCTW*>(lp);
        self = static_cast<Window*>(cs->lpCreateParams);
        if (self != nullptr) {
            self->hwnd_ = hwnd;
            ::SetWindowLongPtrW(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
        }
    } else {
        self = reinterpret_cast<Window*>(::GetWindowLongPtrW(hwnd, GWLP_USERDATA));
    }
    // Messages before WM_NCCREATE (WM_GETMINMAXINFO) and after WM_NCDESTROY.
    if (self == nullptr)
        return ::DefWindowProcW(hwnd, msg, wp, lp);
    return Dispatch(self, hwnd, msg, wp, lp);
}

LRESULT Window::Dispatch(Window* self, HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    LRESULT result = 0;
    const bool handled = RunMessageHandlerGuarded(
        L"window", hwnd, msg, [&] { return self->ProcessMessage(msg, wp, lp, result); });
    // From here on `self` may be gone (a handler may have destroyed the window
    // and its owner deleted the object); only WM_NCDESTROY still uses it, and
    // there the object is alive until OnFinalMessage by contract.
    if (msg != WM_NCDESTROY) {
        return handled ? result : ::DefWindowProcW(hwnd, msg, wp, lp);
    }
    // Stop dispatching before anything else can run on this window.
    ::SetWindowLongPtrW(hwnd, GWLP_USERDATA, 0);
    self->hwnd_ = nullptr;
    LRESULT def = ::DefWindowProcW(hwnd, msg, wp, lp);
    RunFinalMessageGuarded(L"window", hwnd, [&] { self->OnFinalMessage(hwnd); });
    return handled ? result : def;
}

bool Window::ReflectToControl(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    return ReflectToOwner(nullptr, msg, wp, lp, result);
}

}  // namespace velk::win32
