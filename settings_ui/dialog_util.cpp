#include "settings_ui/dialog_util.h"

#include <cwchar>

namespace velk::settings_ui {

std::wstring ItemText(HWND dialog, int id) {
    HWND item = ::GetDlgItem(dialog, id);
    if (item == nullptr)
        return std::wstring();
    const int length = ::GetWindowTextLengthW(item);
    std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
    text.resize(static_cast<std::size_t>(::GetWindowTextW(item, &text[0], length + 1)));
    return text;
}

void SetItemText(HWND dialog, int id, const std::wstring& text) {
    ::SetDlgItemTextW(dialog, id, text.c_str());
}

bool IsChecked(HWND dialog, int id) {
    return ::IsDlgButtonChecked(dialog, id) == BST_CHECKED;
}

void SetChecked(HWND dialog, int id, bool on) {
    ::CheckDlgButton(dialog, id, on ? BST_CHECKED : BST_UNCHECKED);
}

void EnableItems(HWND dialog, std::initializer_list<int> ids, bool on) {
    for (int id : ids) {
        if (HWND item = ::GetDlgItem(dialog, id))
            ::EnableWindow(item, on ? TRUE : FALSE);
    }
}

void FocusItem(HWND dialog, int id) {
    HWND item = ::GetDlgItem(dialog, id);
    if (item == nullptr)
        return;
    ::SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(item), TRUE);
    ::SendMessageW(item, EM_SETSEL, 0, -1);
}

HFONT CreateTextFont(HWND dialog, const win32::UiContext& ui, const wchar_t* face_key,
                     const wchar_t* size_key, int weight) {
    const std::wstring size = ui.RawText(size_key);
    const int points = static_cast<int>(std::wcstol(size.c_str(), nullptr, 10));
    // An unreadable size keeps the dialog's own; an absurd one is ignored.
    return win32::CreateDialogFont(dialog, ui.RawText(face_key),
                                   points > 0 && points <= 72 ? points : 0, weight);
}

}  // namespace velk::settings_ui
