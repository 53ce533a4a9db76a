#include "common_src/win32/window_subclass.h"

#include "log/diag_log.h"

namespace velk::win32 {

WNDPROC ReadWindowProc(HWND hwnd) noexcept {
    if (hwnd == nullptr)
        return nullptr;
    return reinterpret_cast<WNDPROC>(::GetWindowLongPtrW(hwnd, GWLP_WNDPROC));
}

WNDPROC ReplaceWindowProc(HWND hwnd, WNDPROC proc) noexcept {
    if (hwnd == nullptr)
        return nullptr;
    return reinterpret_cast<WNDPROC>(
        ::SetWindowLongPtrW(hwnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(proc)));
}

WindowSubclass::~WindowSubclass() {
    if (hwnd_ != nullptr && ::IsWindow(hwnd_))
        Detach();
}

bool WindowSubclass::Attach(HWND hwnd, WNDPROC replacement) noexcept {
    if (hwnd_ != nullptr || hwnd == nullptr || replacement == nullptr)
        return false;
    WNDPROC previous = ReplaceWindowProc(hwnd, replacement);
    if (previous == nullptr)
        return false;
    hwnd_ = hwnd;
    previous_ = previous;
    replacement_ = replacement;
    return true;
}

bool WindowSubclass::Detach() noexcept {
    if (hwnd_ == nullptr)
        return false;
    HWND hwnd = hwnd_;
    WNDPROC previous = previous_;
    hwnd_ = nullptr;
    previous_ = nullptr;
    WNDPROC current = ReadWindowProc(hwnd);
    if (current != nullptr && current != replacement_) {
        VELK_LOG(L"!!! window %p was subclassed again after us; restoring its earlier procedure",
                 hwnd);
    }
    replacement_ = nullptr;
    return ReplaceWindowProc(hwnd, previous) != nullptr;
}

LRESULT WindowSubclass::CallPrevious(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) const {
    if (previous_ != nullptr)
        return ::CallWindowProcW(previous_, hwnd, msg, wp, lp);
    return ::DefWindowProcW(hwnd, msg, wp, lp);
}

}  // namespace velk::win32
