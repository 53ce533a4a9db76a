#include "common_src/win32/property_sheet.h"

#include "common_src/win32/dialog.h"
#include "common_src/win32/entry_scope.h"
#include "common_src/win32/message_guard.h"
#include "common_src/win32/reflection.h"
#include "common_src/win32/window.h"
#include "log/diag_log.h"

namespace velk::win32 {
namespace {

// The sheet being started on this thread: PSCB_INITIALIZED has no context
// of its own. Filled just before PropertySheetW, emptied by the callback.
thread_local PropertySheet* t_starting_sheet = nullptr;

}  // namespace

PropertyPage::PropertyPage(HINSTANCE resources, int template_id) noexcept {
    psp_.dwSize = sizeof(psp_);
    psp_.hInstance = resources;
    psp_.pszTemplate = MAKEINTRESOURCEW(template_id);
    psp_.pfnDlgProc = &StaticProc;
    psp_.lParam = reinterpret_cast<LPARAM>(this);
}

PropertyPage::PropertyPage(const DLGTEMPLATE* dialog_template) noexcept {
    psp_.dwSize = sizeof(psp_);
    psp_.dwFlags = PSP_DLGINDIRECT;
    psp_.hInstance = ThisModule();
    psp_.pResource = dialog_template;
    psp_.pfnDlgProc = &StaticProc;
    psp_.lParam = reinterpret_cast<LPARAM>(this);
}

void PropertyPage::SetModified(bool changed) noexcept {
    if (HWND parent = sheet())
        ::SendMessageW(parent, changed ? PSM_CHANGED : PSM_UNCHANGED,
                       reinterpret_cast<WPARAM>(hwnd_), 0);
}

PropertyPage* PropertyPage::FromHandle(HWND hwnd) noexcept {
    if (hwnd == nullptr ||
        reinterpret_cast<DLGPROC>(::GetWindowLongPtrW(hwnd, DWLP_DLGPROC)) != &StaticProc) {
        return nullptr;
    }
    return reinterpret_cast<PropertyPage*>(::GetWindowLongPtrW(hwnd, DWLP_USER));
}

bool PropertyPage::OnSheetNotify(const NMHDR& header, LRESULT& result) {
    switch (header.code) {
        case PSN_APPLY:
            result = OnApply() ? PSNRET_NOERROR : PSNRET_INVALID_NOCHANGEPAGE;
            return true;
        case PSN_KILLACTIVE:
            result = OnKillActive() ? FALSE : TRUE;
            return true;
        case PSN_SETACTIVE:
            OnSetActive();
            result = 0;
            return true;
        case PSN_RESET:
            OnReset();
            result = 0;
            return true;
        case PSN_HELP:
            OnHelp();
            result = 0;
            return true;
        default:
            return false;
    }
}

INT_PTR CALLBACK PropertyPage::StaticProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    EntryScope entry;
    PropertyPage* self = nullptr;
    if (msg == WM_INITDIALOG) {
        // The sheet hands the page its own copy of the description.
        const auto* psp = reinterpret_cast<const PROPSHEETPAGEW*>(lp);
        self = psp != nullptr ? reinterpret_cast<PropertyPage*>(psp->lParam) : nullptr;
        if (self != nullptr) {
            self->hwnd_ = hwnd;
            self->shown_ = true;
            ::SetWindowLongPtrW(hwnd, DWLP_USER, reinterpret_cast<LONG_PTR>(self));
        }
    } else {
        self = reinterpret_cast<PropertyPage*>(::GetWindowLongPtrW(hwnd, DWLP_USER));
    }
    if (self == nullptr)
        return msg == WM_INITDIALOG ? TRUE : FALSE;

    LRESULT result = 0;
    const bool handled = RunMessageHandlerGuarded(L"page", hwnd, msg, [&] {
        if (self->ProcessMessage(msg, wp, lp, result))
            return true;
        if (msg == WM_NOTIFY && lp != 0) {
            const auto& header = *reinterpret_cast<const NMHDR*>(lp);
            if (header.hwndFrom == ::GetParent(hwnd))
                return self->OnSheetNotify(header, result);
        }
        return ReflectToOwner(hwnd, msg, wp, lp, result);
    });
    if (msg == WM_NCDESTROY) {
        ::SetWindowLongPtrW(hwnd, DWLP_USER, 0);
        self->hwnd_ = nullptr;
        RunFinalMessageGuarded(L"page", hwnd, [&] { self->OnFinalMessage(hwnd); });
        return FALSE;
    }
    return DialogAnswer(hwnd, msg, handled, result);
}

INT_PTR PropertySheet::DoModal(HWND owner, const std::wstring& caption, DWORD flags,
                               HINSTANCE instance) {
    if (attached() || pages_.empty())
        return -1;
    std::vector<PROPSHEETPAGEW> descriptions;
    descriptions.reserve(pages_.size());
    for (PropertyPage* page : pages_) {
        page->shown_ = false;
        descriptions.push_back(page->description());
    }

    PROPSHEETHEADERW header{};
    header.dwSize = sizeof(header);
    header.dwFlags = PSH_PROPSHEETPAGE | PSH_USECALLBACK | flags;
    header.hwndParent = owner;
    header.hInstance = instance != nullptr ? instance : ThisModule();
    header.pszCaption = caption.c_str();
    header.nPages = static_cast<UINT>(descriptions.size());
    header.nStartPage = 0;
    header.ppsp = descriptions.data();
    header.pfnCallback = &SheetCallback;

    PropertySheet* outer = t_starting_sheet;  // a sheet opened from a sheet
    t_starting_sheet = this;
    const INT_PTR answer = ::PropertySheetW(&header);
    t_starting_sheet = outer;
    Detach();
    return answer;
}

int CALLBACK PropertySheet::SheetCallback(HWND hwnd, UINT msg, LPARAM lp) {
    if (msg != PSCB_INITIALIZED)
        return 0;
    PropertySheet* self = t_starting_sheet;
    t_starting_sheet = nullptr;
    if (self == nullptr)
        return 0;
    RunMessageHandlerGuarded(L"sheet", hwnd, WM_INITDIALOG, [&] {
        if (!self->Attach(hwnd)) {
            VELK_LOG(L"@@@ Error : can't subclass the property sheet %p", hwnd);
            return false;
        }
        self->OnInitialized();
        return true;
    });
    return 0;
}

HWND PropertySheet::tab_control() const noexcept {
    return hwnd() != nullptr ? reinterpret_cast<HWND>(::SendMessageW(hwnd(), PSM_GETTABCONTROL, 0, 0))
                             : nullptr;
}

int PropertySheet::active_index() const noexcept {
    HWND tab = tab_control();
    return tab != nullptr ? static_cast<int>(::SendMessageW(tab, TCM_GETCURSEL, 0, 0)) : -1;
}

}  // namespace velk::win32
