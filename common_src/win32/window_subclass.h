// Replacing the window procedure of a window we did not create (the mail
// client's main window), and putting it back.
//
// The previous procedure is always called through CallWindowProcW: for a
// window of an ANSI class GetWindowLongPtrW hands out a conversion handle, not
// a callable address.
#pragma once

#include <windows.h>

namespace velk::win32 {

// The window's current procedure; null when it cannot be read.
WNDPROC ReadWindowProc(HWND hwnd) noexcept;

// Installs `proc` and returns the procedure it replaced; null when the
// replacement failed (a null previous procedure also counts as failure, as
// there would be nothing to pass messages on to).
WNDPROC ReplaceWindowProc(HWND hwnd, WNDPROC proc) noexcept;

// One foreign window, subclassed by one replacement procedure. The
// replacement finds its way back with previous() / CallPrevious().
class WindowSubclass {
public:
    WindowSubclass() noexcept = default;
    // Puts the previous procedure back while the window still exists: a
    // window left pointing into an unloaded module crashes its owner.
    ~WindowSubclass();

    WindowSubclass(const WindowSubclass&) = delete;
    WindowSubclass& operator=(const WindowSubclass&) = delete;

    // Fails when already attached, for a null window, or when the window's
    // procedure cannot be replaced.
    bool Attach(HWND hwnd, WNDPROC replacement) noexcept;

    // Puts the previous procedure back and forgets the window; false when the
    // restore failed (the window is gone) or nothing was attached. When
    // another subclass was installed on top of ours it is cut off; that is
    // logged, as the window has to stop calling into us either way.
    bool Detach() noexcept;

    bool attached() const noexcept { return hwnd_ != nullptr; }
    HWND window() const noexcept { return hwnd_; }
    WNDPROC previous() const noexcept { return previous_; }

    // Passes a message on to the previous procedure, or DefWindowProcW once
    // detached (a message that arrives while the replacement is unwinding).
    LRESULT CallPrevious(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) const;

private:
    HWND hwnd_ = nullptr;
    WNDPROC previous_ = nullptr;
    WNDPROC replacement_ = nullptr;
};

}  // namespace velk::win32
