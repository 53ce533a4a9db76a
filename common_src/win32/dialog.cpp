#include "common_src/win32/dialog.h"

#include <exception>

#include "common_src/win32/window.h"
#include "common_src/win32/entry_scope.h"
#include "common_src/win32/message_guard.h"
#include "common_src/win32/reflection.h"
#include "log/diag_log.h"

namespace velk::win32 {

bool DialogAnswersDirectly(UINT msg) noexcept {
    switch (msg) {
        case WM_INITDIALOG:
        case WM_CTLCOLORMSGBOX:
        case WM_CTLCOLOREDIT:
        case WM_CTLCOLORLISTBOX:
        case WM_CTLCOLORBTN:
        case WM_CTLCOLORDLG:
        case WM_CTLCOLORSCROLLBAR:
        case WM_CTLCOLORSTATIC:
        case WM_COMPAREITEM:
        case WM_VKEYTOITEM:
        case WM_CHARTOITEM:
        case WM_QUERYDRAGICON:
            return true;
        default:
            return false;
    }
}

Dialog::~Dialog() {
    if (hwnd_ != nullptr && !modal_) {
        HWND hwnd = hwnd_;
        ::SetWindowLongPtrW(hwnd, DWLP_USER, 0);
        hwnd_ = nullptr;
        ::DestroyWindow(hwnd);
    }
}

HWND Dialog::CreateModeless(HINSTANCE resources, int template_id, HWND parent) {
    if (hwnd_ != nullptr)
        return nullptr;
    modal_ = false;
    return ::CreateDialogParamW(resources, MAKEINTRESOURCEW(template_id), parent, &StaticProc,
                                reinterpret_cast<LPARAM>(this));
}

HWND Dialog::CreateModelessIndirect(const DLGTEMPLATE* dialog_template, HWND parent,
                                    HINSTANCE instance) {
    if (hwnd_ != nullptr)
        return nullptr;
    modal_ = false;
    return ::CreateDialogIndirectParamW(instance != nullptr ? instance : ThisModule(),
                                        dialog_template, parent, &StaticProc,
                                        reinterpret_cast<LPARAM>(this));
}

INT_PTR Dialog::DoModal(HINSTANCE resources, int template_id, HWND parent) {
    if (hwnd_ != nullptr)
        return -1;
    modal_ = true;
    return ::DialogBoxParamW(resources, MAKEINTRESOURCEW(template_id), parent, &StaticProc,
                             reinterpret_cast<LPARAM>(this));
}

INT_PTR Dialog::DoModalIndirect(const DLGTEMPLATE* dialog_template, HWND parent,
                                HINSTANCE instance) {
    if (hwnd_ != nullptr)
        return -1;
    modal_ = true;
    return ::DialogBoxIndirectParamW(instance != nullptr ? instance : ThisModule(), dialog_template,
                                     parent, &StaticProc, reinterpret_cast<LPARAM>(this));
}

void Dialog::Close(INT_PTR code) noexcept {
    if (hwnd_ == nullptr)
        return;
    if (modal_) {
        ::EndDialog(hwnd_, code);
    } else {
        ::DestroyWindow(hwnd_);
    }
}

Dialog* Dialog::FromHandle(HWND hwnd) noexcept {
    if (hwnd == nullptr)
        return nullptr;
    if (reinterpret_cast<DLGPROC>(::GetWindowLongPtrW(hwnd, DWLP_DLGPROC)) != &StaticProc) {
        return nullptr;
    }
    return reinterpret_cast<Dialog*>(::GetWindowLongPtrW(hwnd, DWLP_USER));
}

INT_PTR CALLBACK Dialog::StaticProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    EntryScope entry;
    Dialog* self = nullptr;
    if (msg == WM_INITDIALOG) {
        self = reinterpret_cast<Dialog*>(lp);
        if (self != nullptr) {
            self->hwnd_ = hwnd;
            ::SetWindowLongPtrW(hwnd, DWLP_USER, reinterpret_cast<LONG_PTR>(self));
        }
    } else {
        self = reinterpret_cast<Dialog*>(::GetWindowLongPtrW(hwnd, DWLP_USER));
    }
    // Messages before WM_INITDIALOG (WM_SETFONT) and after WM_NCDESTROY.
    if (self == nullptr)
        return msg == WM_INITDIALOG ? TRUE : FALSE;
    return Dispatch(self, hwnd, msg, wp, lp);
}

INT_PTR Dialog::Dispatch(Dialog* self, HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    LRESULT result = 0;
    const bool handled = RunMessageHandlerGuarded(L"dialog", hwnd, msg, [&] {
        // What the dialog leaves to its controls goes to their objects.
        return self->ProcessMessage(msg, wp, lp, result) ||
               ReflectToOwner(hwnd, msg, wp, lp, result);
    });
    if (msg == WM_NCDESTROY) {
        ::SetWindowLongPtrW(hwnd, DWLP_USER, 0);
        self->hwnd_ = nullptr;
        RunFinalMessageGuarded(L"dialog", hwnd, [&] { self->OnFinalMessage(hwnd); });
        return FALSE;
    }
    // `self` may be gone from here on (see Window::Dispatch).
    return DialogAnswer(hwnd, msg, handled, result);
}

INT_PTR DialogAnswer(HWND hwnd, UINT msg, bool handled, LRESULT result) noexcept {
    if (!handled)
        return msg == WM_INITDIALOG ? TRUE : FALSE;
    if (DialogAnswersDirectly(msg))
        return static_cast<INT_PTR>(result);
    ::SetWindowLongPtrW(hwnd, DWLP_MSGRESULT, result);
    return TRUE;
}

}  // namespace velk::win32
