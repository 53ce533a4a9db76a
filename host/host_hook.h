// The hook on the mail client's main window: a replacement window procedure
// that sees the client close, has the band torn down before the client's own
// procedure gets WM_CLOSE, and puts the client's procedure back.
//
// One per loaded add-in; all of it runs on the client's user-interface
// thread, so the state needs no lock.
#pragma once

#include <windows.h>

namespace velk::host {

class CHostHook {
public:
    static CHostHook& Instance() noexcept;

    // The client mode; unless set, asked once of CComUtilSet::IsWMail.
    void SetWindowsMail(bool wmail) noexcept;

    // Installs HostWndProc on `window` (WM_USER+34 and the band build).
    // 0 when the window's procedure cannot be read or replaced; a failed
    // replacement keeps the procedure read, so later calls change nothing.
    // Calling it again while hooked only logs.
    int OnHookOE(HWND window) noexcept;

    // WM_USER+35: on Windows Mail, puts the client's procedure back.
    LRESULT OnUnhookWMail() noexcept;

    // Before the add-in unloads: a client window still pointing at
    // HostWndProc would call into unmapped code. True when it restored.
    bool RestoreBeforeUnload() noexcept;

    HWND hooked_window() const noexcept { return hooked_; }
    WNDPROC previous_proc() const noexcept { return previous_; }

    // The scanning process's in-client component reported ready (WM_USER+51).
    void SetReady() noexcept;
    bool ready() const noexcept { return ready_; }

    static LRESULT CALLBACK HostWndProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp);

    // For tests: forget everything (the state of a freshly loaded add-in).
    void ResetForTest() noexcept;

private:
    bool WindowsMail() noexcept;
    LRESULT OnClose(HWND hwnd, WPARAM wp, LPARAM lp);
    LRESULT PassOn(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) const;

    HWND hooked_ = nullptr;
    WNDPROC previous_ = nullptr;
    int wmail_ = -1;  // -1 until known
    bool ready_ = false;
};

}  // namespace velk::host
