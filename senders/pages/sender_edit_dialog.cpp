#include "senders/pages/sender_edit_dialog.h"

#include "senders/address_check.h"
#include "senders/pages/sender_page_ids.h"
#include "senders/sender_text.h"

namespace velk::senders {

namespace {

constexpr std::size_t kMaxNameChars = 256;

std::wstring ItemText(HWND dialog, int id) {
    HWND item = ::GetDlgItem(dialog, id);
    const int length = item != nullptr ? ::GetWindowTextLengthW(item) : 0;
    std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
    if (length > 0)
        text.resize(static_cast<std::size_t>(::GetWindowTextW(item, &text[0], length + 1)));
    else
        text.clear();
    return text;
}

std::wstring Trim(const std::wstring& text) {
    const wchar_t* const blanks = L" \t\r\n";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::wstring::npos)
        return std::wstring();
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

}  // namespace

CSenderEditDlg::CSenderEditDlg(const win32::UiContext& ui, const wchar_t* caption_key,
                               std::wstring address, std::wstring name)
    : ui_(ui), caption_key_(caption_key), address_(std::move(address)), name_(std::move(name)) {}

INT_PTR CSenderEditDlg::Run(HWND owner) {
    return DoModal(ui_.resources, IDD_SENDER_EDIT, owner);
}

bool CSenderEditDlg::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    switch (msg) {
        case WM_INITDIALOG:
            OnInit();
            result = FALSE;  // the focus is set
            return true;
        case WM_COMMAND:
            switch (LOWORD(wp)) {
                case IDOK:
                    OnOk();
                    return true;
                case IDCANCEL:
                    Close(IDCANCEL);
                    return true;
                case IDC_EDIT_ADDRESS:
                case IDC_EDIT_NAME:
                    if (HIWORD(wp) == EN_CHANGE)
                        UpdateOk();
                    return HIWORD(wp) == EN_CHANGE;
                default:
                    return false;
            }
        default:
            return false;
    }
}

void CSenderEditDlg::OnInit() {
    const win32::ControlText texts[] = {{0, caption_key_},
                                        {IDC_EDIT_ADDRESS_LABEL, L"IDS_SENDER_EDIT_ADDRESS"},
                                        {IDC_EDIT_NAME_LABEL, L"IDS_SENDER_EDIT_NAME"},
                                        {IDC_EDIT_HINT, L"IDS_SENDER_EDIT_HINT"}};
    win32::ApplyTexts(hwnd(), ui_, texts);
    ::SetDlgItemTextW(hwnd(), IDC_EDIT_ADDRESS, address_.c_str());
    ::SetDlgItemTextW(hwnd(), IDC_EDIT_NAME, name_.c_str());
    UpdateOk();
    win32::CenterOnOwner(hwnd());
    HWND edit = ::GetDlgItem(hwnd(), IDC_EDIT_ADDRESS);
    ::SetFocus(edit);
    ::SendMessageW(edit, EM_SETSEL, 0, -1);
}

void CSenderEditDlg::UpdateOk() {
    ::EnableWindow(::GetDlgItem(hwnd(), IDOK), !Trim(ItemText(hwnd(), IDC_EDIT_ADDRESS)).empty());
}

void CSenderEditDlg::Refuse(int edit, const wchar_t* text_key, const wchar_t* caption_key,
                            UINT icon) {
    win32::ShowMessage(hwnd(), ui_, text_key, caption_key, MB_OK | icon);
    // OK comes back with the next change of either text.
    ::EnableWindow(::GetDlgItem(hwnd(), IDOK), FALSE);
    HWND item = ::GetDlgItem(hwnd(), edit);
    ::SendMessageW(hwnd(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(item), TRUE);
    ::SendMessageW(item, EM_SETSEL, 0, -1);
}

void CSenderEditDlg::OnOk() {
    // Blanks around the texts are no part of them, and the checks see the
    // texts as they will be kept.
    const std::wstring address = Trim(ItemText(hwnd(), IDC_EDIT_ADDRESS));
    const std::wstring name = Trim(ItemText(hwnd(), IDC_EDIT_NAME));
    if (address.empty())
        return;  // OK is disabled then; Enter still lands here
    if (address.size() > kMaxSenderAddressChars) {
        Refuse(IDC_EDIT_ADDRESS, L"IDS_TEXT_TOO_LONG_MSG", L"IDS_CONFIRMATION_CAPTION",
               MB_ICONINFORMATION);
        return;
    }
    if (!IsValidSenderAddress(ToU16(address))) {
        Refuse(IDC_EDIT_ADDRESS, L"IDS_WRONG_EMAILADDR_MSG", L"IDS_WARNING_CAPTION",
               MB_ICONWARNING);
        return;
    }
    if (name.size() > kMaxNameChars) {
        Refuse(IDC_EDIT_NAME, L"IDS_TEXT_TOO_LONG_MSG", L"IDS_CONFIRMATION_CAPTION",
               MB_ICONINFORMATION);
        return;
    }
    std::u16string collapsed = ToU16(address);
    CollapseAsteriskRuns(collapsed);
    address_ = ToWide(collapsed);
    name_ = name;
    Close(IDOK);
}

}  // namespace velk::senders
