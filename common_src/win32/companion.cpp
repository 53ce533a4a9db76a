#include "common_src/win32/companion.h"

#include "host/window_identifiers.h"
#include "log/diag_log.h"

namespace velk::win32::companion {

HWND FindWindow() noexcept {
    return ::FindWindowW(nullptr, host::kCompanionWindowTitle);
}

bool Post(UINT msg) noexcept {
    HWND window = FindWindow();
    return window != nullptr && ::PostMessageW(window, msg, 0, 0) != FALSE;
}

bool Send(UINT msg, UINT timeout_ms) noexcept {
    HWND window = FindWindow();
    if (window == nullptr)
        return false;
    DWORD_PTR answer = 0;
    if (::SendMessageTimeoutW(window, msg, 0, 0, SMTO_NORMAL | SMTO_ABORTIFHUNG, timeout_ms,
                              &answer) == 0) {
        VELK_LOG(L"!!! the scanning process did not handle message %u within %u ms (%lu)", msg,
                 timeout_ms, ::GetLastError());
        return false;
    }
    return true;
}

bool CompanionSettingsOpen() noexcept {
    return ::FindWindowW(nullptr, host::kSettingsSheetWindowTitle) != nullptr;
}

bool FilteringSheetOpen() noexcept {
    return ::FindWindowW(nullptr, host::kFilteringSheetMarkerTitle) != nullptr;
}

}  // namespace velk::win32::companion
