// The hook on the mail client's main window: a subclass (comctl32's, so
// other subclasses of the window stay intact whatever the order) that sees
// the client close, has the band torn down before the client's own procedure
// gets WM_CLOSE, takes itself off, and, once the client's window is gone,
// has the add-in leave with it.
//
// One per loaded add-in; all of it runs on the client's user-interface
// thread, so the state needs no lock.
#pragma once

#include <windows.h>

#include "common_src/win32/subclassed_window.h"

namespace velk::host {

class CHostHook : public win32::SubclassedWindow {
public:
    static CHostHook& Instance() noexcept;

    // The client mode; unless set, asked once of CComUtilSet::IsWMail.
    void SetWindowsMail(bool wmail) noexcept;

    // Hooks `window` (WM_USER+34 and the band build): 0 when it cannot be
    // subclassed (a null window, or one of another thread). Calling it again
    // while hooked only logs.
    int OnHookOE(HWND window) noexcept;

    // WM_USER+35: on Windows Mail, takes the hook off.
    LRESULT OnUnhookWMail() noexcept;

    // Takes the hook off while the client runs on (the add-in leaves). Only
    // on the window's own thread, the only one allowed to. True when it did.
    bool Unhook() noexcept;

    HWND hooked_window() const noexcept { return hwnd(); }

    // The scanning process's in-client component reported ready (WM_USER+51).
    void SetReady() noexcept;
    bool ready() const noexcept { return ready_; }

    // For tests: forget everything (the state of a freshly loaded add-in).
    void ResetForTest() noexcept;

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;

private:
    bool WindowsMail() noexcept;
    LRESULT OnClose(HWND hwnd, WPARAM wp, LPARAM lp);

    int wmail_ = -1;  // -1 until known
    bool ready_ = false;
};

// Tells the toolbar window (found by its class) that the client's main
// window is gone, so the add-in leaves with it.
void LeaveWithClient() noexcept;

}  // namespace velk::host
