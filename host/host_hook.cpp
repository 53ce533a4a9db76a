#include "host/host_hook.h"

#include "common_src/win32/window_subclass.h"
#include "host/com_util_set.h"
#include "host/window_identifiers.h"
#include "log/diag_log.h"

namespace velk::host {

CHostHook& CHostHook::Instance() noexcept {
    static CHostHook hook;
    return hook;
}

void CHostHook::SetWindowsMail(bool wmail) noexcept {
    wmail_ = wmail ? 1 : 0;
}

bool CHostHook::WindowsMail() noexcept {
    if (wmail_ < 0)
        wmail_ = CComUtilSet::IsWMail() ? 1 : 0;
    return wmail_ != 0;
}

void CHostHook::ResetForTest() noexcept {
    *this = CHostHook();
}

void CHostHook::SetReady() noexcept {
    ready_ = true;
    VELK_LOG(L"Oeshadow is OK now!");
}

int CHostHook::OnHookOE(HWND window) noexcept {
    VELK_LOG(L"@@@ OnHookOE IN");
    if (previous_ == nullptr && window != nullptr) {
        previous_ = win32::ReadWindowProc(window);
        if (previous_ == nullptr)
            return 0;
        if (win32::ReplaceWindowProc(window, &CHostHook::HostWndProc) == nullptr)
            return 0;
        hooked_ = window;
    }
    VELK_LOG(L"@@@ OnHookOE OUT");
    return 1;
}

LRESULT CHostHook::OnUnhookWMail() noexcept {
    if (WindowsMail() && previous_ != nullptr && hooked_ != nullptr) {
        win32::ReplaceWindowProc(hooked_, previous_);
        previous_ = nullptr;
        hooked_ = nullptr;
    }
    return 0;
}

bool CHostHook::RestoreBeforeUnload() noexcept {
    if (previous_ == nullptr || hooked_ == nullptr)
        return false;
    HWND window = hooked_;
    WNDPROC previous = previous_;
    hooked_ = nullptr;
    previous_ = nullptr;
    if (!::IsWindow(window) || win32::ReadWindowProc(window) != &CHostHook::HostWndProc) {
        return false;
    }
    VELK_LOG(L"!!! the client window is still hooked at unload, restoring its procedure");
    return win32::ReplaceWindowProc(window, previous) != nullptr;
}

LRESULT CHostHook::PassOn(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) const {
    // CallWindowProcW: the client's procedure may be an ANSI one.
    if (previous_ != nullptr)
        return ::CallWindowProcW(previous_, hwnd, msg, wp, lp);
    return ::DefWindowProcW(hwnd, msg, wp, lp);
}

LRESULT CHostHook::OnClose(HWND hwnd, WPARAM wp, LPARAM lp) {
    if (!WindowsMail()) {
        VELK_LOG(L"@@@ OE will close and notice oea to quit at once");
        // Sent, so the band is gone before the client's procedure sees the
        // close and starts destroying its rebar.
        if (HWND toolbar = ::FindWindowW(kToolBarWindowClass, nullptr)) {
            ::SendMessageW(toolbar, kMsgTearDownBand, 0, 0);
        } else {
            VELK_LOG(L"@@@ Error : find oea failed when close oe");
        }
    }
    if (previous_ == nullptr) {
        VELK_LOG(L"@@@ Proc is NULL");
        return PassOn(hwnd, WM_CLOSE, wp, lp);
    }
    if (win32::ReplaceWindowProc(hooked_, previous_) == nullptr) {
        VELK_LOG(L"@@@ Error : set the old oe winproc failed");
        return PassOn(hwnd, WM_CLOSE, wp, lp);
    }
    VELK_LOG(L"@@@ WndProc Set back OK");
    const WNDPROC previous = previous_;
    const LRESULT result = ::CallWindowProcW(previous, hwnd, WM_CLOSE, wp, lp);
    hooked_ = nullptr;
    previous_ = nullptr;
    return result;
}

LRESULT CALLBACK CHostHook::HostWndProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    CHostHook& hook = Instance();
    try {
        if (msg == WM_CLOSE)
            return hook.OnClose(hwnd, wp, lp);
        if (msg == WM_NCDESTROY)
            VELK_LOG(L"@@@ OE WM_NCDESTROY come in");
        return hook.PassOn(hwnd, msg, wp, lp);
    } catch (...) {
        // Nothing of ours may end the client's message loop.
        VELK_LOG(L"@@@ Error : exception in HostWndProc, message 0x%04x", msg);
        return hook.PassOn(hwnd, msg, wp, lp);
    }
}

}  // namespace velk::host
