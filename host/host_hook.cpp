#include "host/host_hook.h"

#include <commctrl.h>

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
    Unhook();
    wmail_ = -1;
    ready_ = false;
}

void CHostHook::SetReady() noexcept {
    ready_ = true;
    VELK_LOG(L"Oeshadow is OK now!");
}

int CHostHook::OnHookOE(HWND window) noexcept {
    VELK_LOG(L"@@@ OnHookOE IN");
    if (!attached() && window != nullptr && !Attach(window))
        return 0;
    VELK_LOG(L"@@@ OnHookOE OUT");
    return 1;
}

LRESULT CHostHook::OnUnhookWMail() noexcept {
    if (WindowsMail())
        Unhook();
    return 0;
}

bool CHostHook::Unhook() noexcept {
    HWND window = hwnd();
    if (window == nullptr)
        return false;
    if (::IsWindow(window) &&
        ::GetWindowThreadProcessId(window, nullptr) != ::GetCurrentThreadId()) {
        VELK_LOG(L"!!! the client window can only be unhooked on its own thread");
        return false;
    }
    Detach();
    return true;
}

void LeaveWithClient() noexcept {
    if (HWND toolbar = ::FindWindowW(kToolBarWindowClass, nullptr))
        ::SendMessageW(toolbar, WM_CLOSE, 0, 0);
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
    // Off before the client's procedure sees the close: nothing the window
    // does from here on reaches the add-in. The call below still goes on to
    // the next procedure in the chain.
    Detach();
    if (SubclassedWindow::FromHandle(hwnd) == nullptr)
        VELK_LOG(L"@@@ WndProc Set back OK");
    else
        VELK_LOG(L"@@@ Error : set the old oe winproc failed");
    const LRESULT result = ::DefSubclassProc(hwnd, WM_CLOSE, wp, lp);
    // The client destroyed its window: the add-in goes with it. (A client
    // that stays open keeps the add-in, without band and hook.)
    if (!::IsWindow(hwnd))
        LeaveWithClient();
    return result;
}

bool CHostHook::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    switch (msg) {
        case WM_CLOSE:
            result = OnClose(hwnd(), wp, lp);
            return true;
        case WM_DESTROY:
            // Destroyed without a close we saw: leave before the children go.
            LeaveWithClient();
            return false;
        case WM_NCDESTROY:
            VELK_LOG(L"@@@ OE WM_NCDESTROY come in");
            return false;
        default:
            return false;
    }
}

}  // namespace velk::host
