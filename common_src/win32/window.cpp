#include "common_src/win32/window.h"

#include <exception>

#include "common_src/win32/message_guard.h"
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

HWND ReflectionSource(UINT msg, WPARAM wp, LPARAM lp) noexcept {
    switch (msg) {
        case WM_COMMAND:
            // lParam is null for menus and accelerators.
            return reinterpret_cast<HWND>(lp);
        case WM_NOTIFY:
            return lp != 0 ? reinterpret_cast<const NMHDR*>(lp)->hwndFrom : nullptr;
        case WM_DRAWITEM: {
            const auto* dis = reinterpret_cast<const DRAWITEMSTRUCT*>(lp);
            return dis != nullptr && dis->CtlType != ODT_MENU ? dis->hwndItem : nullptr;
        }
        case WM_CTLCOLORMSGBOX:
        case WM_CTLCOLOREDIT:
        case WM_CTLCOLORLISTBOX:
        case WM_CTLCOLORBTN:
        case WM_CTLCOLORDLG:
        case WM_CTLCOLORSCROLLBAR:
        case WM_CTLCOLORSTATIC:
            return reinterpret_cast<HWND>(lp);
        default:
            return nullptr;
    }
}

bool Window::ReflectToControl(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    Window* control = FromHandle(ReflectionSource(msg, wp, lp));
    if (control == nullptr)
        return false;
    // Called from inside the parent's ProcessMessage, behind its firewall.
    LRESULT answer = 0;
    if (!control->ProcessMessage(kReflectedMessageBase + msg, wp, lp, answer))
        return false;
    result = answer;
    return true;
}

}  // namespace velk::win32
