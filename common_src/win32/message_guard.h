// The exception firewall of every window and dialog procedure: nothing a
// handler throws may reach the mail client's message loop. One place, so
// every escaped exception reaches the diagnostic log in the same words.
#pragma once

#include <windows.h>

#include <exception>

#include "log/diag_log.h"

namespace velk::win32 {

// Runs `handler` (returns whether it handled the message). An exception is
// logged with `kind` ("window", "dialog") and counts as not handled.
template <class Handler>
bool RunMessageHandlerGuarded(const wchar_t* kind, HWND hwnd, UINT msg,
                              Handler&& handler) noexcept {
    try {
        return handler();
    } catch (const std::exception& e) {
        VELK_LOG(L"@@@ Error : exception \"%hs\" in %s %p, message 0x%04x", e.what(), kind, hwnd,
                 msg);
    } catch (...) {
        VELK_LOG(L"@@@ Error : unknown exception in %s %p, message 0x%04x", kind, hwnd, msg);
    }
    return false;
}

// Runs the object's last call after WM_NCDESTROY behind the same firewall.
template <class Final>
void RunFinalMessageGuarded(const wchar_t* kind, HWND hwnd, Final&& final_call) noexcept {
    try {
        final_call();
    } catch (...) {
        VELK_LOG(L"@@@ Error : exception in the final message of %s %p", kind, hwnd);
    }
}

}  // namespace velk::win32
