#include "common_src/win32/reflection.h"

#include "common_src/win32/subclassed_window.h"

namespace velk::win32 {

HWND ReflectionSource(HWND parent, UINT msg, WPARAM wp, LPARAM lp) noexcept {
    switch (msg) {
        case WM_COMMAND:
        case WM_HSCROLL:
        case WM_VSCROLL:
            // lParam is null for menus, accelerators and window scroll bars.
            return reinterpret_cast<HWND>(lp);
        case WM_NOTIFY:
            return lp != 0 ? reinterpret_cast<const NMHDR*>(lp)->hwndFrom : nullptr;
        case WM_DRAWITEM: {
            const auto* dis = reinterpret_cast<const DRAWITEMSTRUCT*>(lp);
            return dis != nullptr && dis->CtlType != ODT_MENU ? dis->hwndItem : nullptr;
        }
        case WM_MEASUREITEM: {
            const auto* mis = reinterpret_cast<const MEASUREITEMSTRUCT*>(lp);
            if (parent == nullptr || mis == nullptr || mis->CtlType == ODT_MENU)
                return nullptr;
            return ::GetDlgItem(parent, static_cast<int>(mis->CtlID));
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

bool ReflectToOwner(HWND parent, UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    HWND source = ReflectionSource(parent, msg, wp, lp);
    if (source == nullptr || source == parent)
        return false;
    // Called from inside the parent's procedure, behind its firewall.
    LRESULT answer = 0;
    if (Window* window = Window::FromHandle(source)) {
        if (!window->ReceiveReflected(msg, wp, lp, answer))
            return false;
    } else if (SubclassedWindow* subclassed = SubclassedWindow::FromHandle(source)) {
        if (!subclassed->ReceiveReflected(msg, wp, lp, answer))
            return false;
    } else {
        return false;
    }
    result = answer;
    return true;
}

}  // namespace velk::win32
