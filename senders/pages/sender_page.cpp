#include "senders/pages/sender_page.h"

#include <commctrl.h>

#include "common_src/win32/companion.h"
#include "log/diag_log.h"
#include "senders/pages/page_texts.h"
#include "senders/pages/sender_edit_dialog.h"
#include "senders/pages/sender_page_ids.h"
#include "senders/sender_list_wide.h"
#include "senders/sender_text.h"
#include "settings/ini_profile.h"
#include "settings/settings_access.h"

namespace velk::senders {

namespace {

// Tells the scanning process to read both lists again.
constexpr UINT kSenderListsSaved = WM_USER + 9;  // 1033

// The list-full text names the list's limit where the translation put "%d".
std::wstring WithLimit(std::wstring text, std::size_t limit) {
    const std::size_t at = text.find(L"%d");
    if (at != std::wstring::npos)
        text.replace(at, 2, std::to_wstring(limit));
    return text;
}

}  // namespace

std::wstring SenderListRows::CellText(std::size_t row, int column) const {
    SenderRecord record;
    if (!rows_.At(row, record))
        return std::wstring();
    return ToWide(column == 0 ? record.address : record.name);
}

void SenderListRows::SortBy(int column, bool ascending) {
    rows_.SortBy(column == 1 ? SenderColumn::kName : SenderColumn::kAddress, ascending);
}

CSenderPage::CSenderPage(const win32::UiContext& ui, SenderList* approved, SenderList* blocked,
                         const Kind& kind)
    : win32::PropertyPage(ui.resources, kind.template_id),
      approved_(approved),
      blocked_(blocked),
      ui_(ui),
      kind_(kind),
      rows_(own()) {
    tab_text_ = ui.Text(kind.tab_text);
    if (!tab_text_.empty()) {
        description().dwFlags |= PSP_USETITLE;
        description().pszTitle = tab_text_.c_str();
    }
}

std::wstring CSenderPage::ListPath(SenderListKind kind) const {
    return SenderListPathW(ui_.where.user_dir, kind);
}

int CSenderPage::Ask(const wchar_t* text_key, const wchar_t* caption_key, UINT type) {
    return win32::ShowMessage(win32::TopLevelOwner(hwnd()), ui_, text_key, caption_key, type);
}

bool CSenderPage::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    switch (msg) {
        case WM_INITDIALOG:
            OnInitDialog();
            result = TRUE;
            return true;
        case WM_COMMAND:
            if (HIWORD(wp) != BN_CLICKED)
                return false;
            switch (LOWORD(wp)) {
                case IDC_SENDER_ADD:
                    AddSender();
                    return true;
                case IDC_SENDER_EDIT:
                    EditSender();
                    return true;
                case IDC_SENDER_REMOVE:
                    RemoveSender();
                    return true;
                default:
                    return OnPageCommand(LOWORD(wp));
            }
        case WM_NOTIFY: {
            const auto& header = *reinterpret_cast<const NMHDR*>(lp);
            return header.idFrom == IDC_SENDER_LIST && OnListNotify(header, result);
        }
        case PSM_QUERYSIBLINGS:
            if (wp != kSenderListsChanged)
                return false;
            RefreshRows();
            result = 0;  // every other page hears it too
            return true;
        default:
            return false;
    }
}

void CSenderPage::OnInitDialog() {
    // An administrator's texts from the installation file win; without them
    // the page says in the user's language what the list is for.
    settings::IniProfile profile(ui_.where);
    const std::wstring title = settings::ReadText(profile, kind_.title_key);
    const std::wstring note = settings::ReadText(profile, kind_.note_key);
    texts_.emplace(ui_);
    const PageTexts& text = *texts_;
    ::SetDlgItemTextW(hwnd(), IDC_SENDER_TITLE,
                      (title.empty() ? text(kind_.title_text) : title).c_str());
    ::SetDlgItemTextW(hwnd(), IDC_SENDER_NOTE,
                      (note.empty() ? text(kind_.note_text) : note).c_str());
    title_font_.reset(win32::CreateDialogFont(hwnd(), std::wstring(), 0, FW_BOLD));
    if (title_font_) {
        ::SendDlgItemMessageW(hwnd(), IDC_SENDER_TITLE, WM_SETFONT,
                              reinterpret_cast<WPARAM>(title_font_.get()), FALSE);
    }
    SetItemText(IDC_SENDER_ADD, L"IDC_SENDER_ADD");
    SetItemText(IDC_SENDER_EDIT, L"IDC_SENDER_EDIT");
    SetItemText(IDC_SENDER_REMOVE, L"IDC_SENDER_REMOVE");

    rows_.rows().Refresh();
    list_.Attach(::GetDlgItem(hwnd(), IDC_SENDER_LIST), rows_, text(L"IDS_HEADER_ADDR"),
                 text(L"IDS_HEADER_SENDERNAME"));
    OnInitPage();
    UpdateButtons();
    texts_.reset();
}

void CSenderPage::SetItemText(int id, const wchar_t* key) {
    if (!texts_)
        return;
    const std::wstring text = (*texts_)(key);
    if (!text.empty())
        ::SetDlgItemTextW(hwnd(), id, text.c_str());
}

void CSenderPage::OnSetActive() {
    // The other page may have moved senders out of this list meanwhile.
    RefreshRows();
}

bool CSenderPage::OnListNotify(const NMHDR& header, LRESULT& result) {
    switch (header.code) {
        case LVN_ITEMCHANGED:
            UpdateButtons();
            result = 0;
            return true;
        case NM_DBLCLK:
            if (list_.selected() >= 0)
                EditSender();
            result = 0;
            return true;
        case LVN_KEYDOWN:
            switch (reinterpret_cast<const NMLVKEYDOWN&>(header).wVKey) {
                case VK_DELETE:
                    RemoveSender();
                    break;
                case VK_INSERT:
                    AddSender();
                    break;
                case VK_RETURN:
                    EditSender();
                    break;
                default:
                    break;
            }
            result = 0;
            return true;
        default:
            return false;  // the list's own (drawing, texts, sorting)
    }
}

void CSenderPage::UpdateButtons() {
    const bool chosen = list_.selected() >= 0;
    ::EnableWindow(::GetDlgItem(hwnd(), IDC_SENDER_EDIT), chosen);
    ::EnableWindow(::GetDlgItem(hwnd(), IDC_SENDER_REMOVE), chosen);
}

void CSenderPage::RefreshRows(const std::wstring& address) {
    if (hwnd() == nullptr)
        return;
    rows_.rows().Refresh();
    list_.Refresh();
    if (!address.empty()) {
        const std::size_t row = rows_.rows().RowOf(ToU16(address));
        if (row != SenderRows::npos)
            list_.Select(static_cast<int>(row));
    }
    UpdateButtons();
}

void CSenderPage::TellSiblings() {
    if (HWND sheet_window = sheet())
        PropSheet_QuerySiblings(sheet_window, kSenderListsChanged, 0);
}

void CSenderPage::AddSender() {
    CSenderEditDlg dialog(ui_, kind_.add_caption, std::wstring(), std::wstring());
    if (dialog.Run(win32::TopLevelOwner(hwnd())) != IDOK)
        return;
    const std::wstring& address = dialog.address();
    if (SenderExists(other(), address.c_str()) &&
        Ask(kind_.conflict_text, L"IDS_CONFIRMATION_CAPTION", MB_YESNO | MB_ICONQUESTION) != IDYES)
        return;
    switch (senders::AddSender(own(), address.c_str(), dialog.name().c_str())) {
        case kSenderAdded:
            senders::RemoveSender(other(), address.c_str());
            RefreshRows(address);
            TellSiblings();
            SetModified(true);
            break;
        case kSenderListFull:
            win32::ShowMessageText(win32::TopLevelOwner(hwnd()),
                                   WithLimit(ui_.Text(L"IDS_LISTFULL_MSG"), own().Capacity()),
                                   ui_.Text(L"IDS_WARNING_CAPTION"), MB_OK | MB_ICONWARNING);
            break;
        default:
            Ask(L"IDS_LISTEXISTED_MSG", L"IDS_WARNING_CAPTION", MB_OK | MB_ICONWARNING);
            break;
    }
    ::SetFocus(list_.hwnd());
}

void CSenderPage::EditSender() {
    SenderRecord current;
    const int row = list_.selected();
    if (row < 0 || !rows_.rows().At(static_cast<std::size_t>(row), current))
        return;
    const std::wstring old_address = ToWide(current.address);
    CSenderEditDlg dialog(ui_, kind_.edit_caption, old_address, ToWide(current.name));
    if (dialog.Run(win32::TopLevelOwner(hwnd())) != IDOK)
        return;
    const std::wstring& address = dialog.address();
    const std::wstring& name = dialog.name();
    const bool same_key = FoldKey(ToU16(address)) == FoldKey(current.address);
    if (same_key && IsSameSender(own(), address.c_str(), name.c_str()))
        return;  // nothing changed
    if (!same_key && SenderExists(own(), address.c_str())) {
        Ask(L"IDS_LISTEXISTED_MSG", L"IDS_WARNING_CAPTION", MB_OK | MB_ICONWARNING);
        return;
    }
    const bool conflict = SenderExists(other(), address.c_str());
    if (conflict &&
        Ask(kind_.conflict_text, L"IDS_CONFIRMATION_CAPTION", MB_YESNO | MB_ICONQUESTION) != IDYES)
        return;
    ModifySender(own(), old_address.c_str(), name.c_str(), address.c_str());
    if (conflict) {
        senders::RemoveSender(other(), address.c_str());
        TellSiblings();
    }
    RefreshRows(address);
    SetModified(true);
    ::SetFocus(list_.hwnd());
}

void CSenderPage::RemoveSender() {
    SenderRecord current;
    const int row = list_.selected();
    if (row < 0 || !rows_.rows().At(static_cast<std::size_t>(row), current))
        return;
    if (Ask(L"IDS_REMOVEADDR_MSG", L"IDS_CONFIRMATION_CAPTION", MB_YESNO | MB_ICONQUESTION) != IDYES)
        return;
    senders::RemoveSender(own(), ToWide(current.address).c_str());
    RefreshRows();
    // The row below takes the removed one's place, or the new last row.
    const int count = static_cast<int>(rows_.RowCount());
    list_.Select(row < count ? row : count - 1);
    SetModified(true);
    ::SetFocus(list_.hwnd());
}

bool CSenderPage::SaveListsIfChanged() {
    if (!approved_->Modified() && !blocked_->Modified())
        return true;
    // The scanning process reads the blocked list first; both are written
    // whichever changed, as it reloads both.
    const bool blocked_saved = SaveSenders(*blocked_, ListPath(SenderListKind::kBlocked));
    const bool approved_saved = SaveSenders(*approved_, ListPath(SenderListKind::kApproved));
    if (blocked_saved || approved_saved)
        win32::companion::Post(kSenderListsSaved);
    if (blocked_saved && approved_saved)
        return true;
    VELK_LOG(L"@@@ Error : the sender lists were not saved (blocked %d, approved %d); the "
             L"changes are kept",
             blocked_saved ? 1 : 0, approved_saved ? 1 : 0);
    Ask(L"IDS_SENDERS_NOT_SAVED_MSG", L"IDS_WARNING_CAPTION", MB_OK | MB_ICONWARNING);
    return false;
}

bool CSenderPage::OnApply() {
    return SaveListsIfChanged();
}

}  // namespace velk::senders
