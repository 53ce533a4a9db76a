#include "demo/driver/remote_window.h"

#include <commctrl.h>

namespace velk::demo {

namespace {

struct IdSearch {
    int id;
    HWND found;
};

BOOL CALLBACK MatchId(HWND hwnd, LPARAM lp) {
    auto* search = reinterpret_cast<IdSearch*>(lp);
    if (::GetDlgCtrlID(hwnd) == search->id) {
        search->found = hwnd;
        return FALSE;
    }
    return TRUE;
}

bool SendMouse(DWORD flags, LONG x = 0, LONG y = 0) {
    INPUT input{};
    input.type = INPUT_MOUSE;
    input.mi.dwFlags = flags;
    input.mi.dx = x;
    input.mi.dy = y;
    return ::SendInput(1, &input, sizeof input) == 1;
}

}  // namespace

HWND WaitForWindow(const std::function<HWND()>& find, DWORD timeout_ms) {
    HWND found = nullptr;
    WaitUntil([&] { return (found = find()) != nullptr; }, timeout_ms);
    return found;
}

bool WaitUntil(const std::function<bool()>& done, DWORD timeout_ms) {
    const DWORD start = ::GetTickCount();
    for (;;) {
        if (done())
            return true;
        if (::GetTickCount() - start >= timeout_ms)
            return false;
        ::Sleep(20);
    }
}

HWND FindDescendantById(HWND root, int id) {
    IdSearch search{id, nullptr};
    // EnumChildWindows walks every descendant, not only the direct children.
    ::EnumChildWindows(root, &MatchId, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

bool ClientHasBand(HWND client, UINT band_id) {
    HWND sizable = ::FindWindowExW(client, nullptr, L"SizableRebar", nullptr);
    for (HWND rebar = ::FindWindowExW(sizable, nullptr, REBARCLASSNAMEW, nullptr); sizable && rebar;
         rebar = ::FindWindowExW(sizable, rebar, REBARCLASSNAMEW, nullptr)) {
        if (::SendMessageW(rebar, RB_IDTOINDEX, band_id, 0) != -1)
            return true;
    }
    return false;
}

bool MoveMouseOver(HWND window) {
    RECT rc{};
    if (!::GetWindowRect(window, &rc))
        return false;
    return MoveMouseTo(POINT{(rc.left + rc.right) / 2, (rc.top + rc.bottom) / 2});
}

bool MoveMouseTo(POINT p) {
    // Absolute input runs from 0 to 65535 across the primary screen.
    const LONG w = ::GetSystemMetrics(SM_CXSCREEN), h = ::GetSystemMetrics(SM_CYSCREEN);
    if (w <= 1 || h <= 1)
        return false;
    return SendMouse(MOUSEEVENTF_MOVE | MOUSEEVENTF_ABSOLUTE, (p.x * 65535 + (w - 1) / 2) / (w - 1),
                     (p.y * 65535 + (h - 1) / 2) / (h - 1));
}

bool ClickMouse() {
    return SendMouse(MOUSEEVENTF_LEFTDOWN) && SendMouse(MOUSEEVENTF_LEFTUP);
}

bool TypeText(const std::wstring& text) {
    // As characters, not keys: the text arrives the same whatever the
    // keyboard layout of the session's language.
    for (wchar_t c : text) {
        INPUT keys[2] = {};
        for (INPUT& k : keys) {
            k.type = INPUT_KEYBOARD;
            k.ki.wScan = c;
            k.ki.dwFlags = KEYEVENTF_UNICODE;
        }
        keys[1].ki.dwFlags |= KEYEVENTF_KEYUP;
        if (::SendInput(2, keys, sizeof keys[0]) != 2)
            return false;
    }
    return true;
}

bool PressKey(WORD virtual_key) {
    INPUT keys[2] = {};
    for (INPUT& k : keys) {
        k.type = INPUT_KEYBOARD;
        k.ki.wVk = virtual_key;
    }
    keys[1].ki.dwFlags = KEYEVENTF_KEYUP;
    return ::SendInput(2, keys, sizeof keys[0]) == 2;
}

}  // namespace velk::demo
