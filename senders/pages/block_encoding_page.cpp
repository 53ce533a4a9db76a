#include "senders/pages/block_encoding_page.h"

#include <commctrl.h>

#include "common_src/win32/companion.h"
#include "senders/pages/page_texts.h"
#include "senders/pages/sender_page_ids.h"
#include "senders/sender_text.h"

namespace velk::senders {

namespace {

// Tells the scanning process to read the blocked encodings again.
constexpr UINT kBlockedEncodingsSaved = WM_USER + 10;  // 1034

std::wstring Widen(std::string_view ascii) {
    return std::wstring(ascii.begin(), ascii.end());
}

std::wstring CodePageList(const std::vector<int>& pages) {
    std::wstring text;
    for (int page : pages) {
        if (!text.empty())
            text += L", ";
        text += std::to_wstring(page);
    }
    return text;
}

}  // namespace

CBlockEncodingPage::CBlockEncodingPage(const win32::UiContext& ui)
    : win32::PropertyPage(ui.resources, IDD_BLOCK_ENCODING_PAGE), ui_(ui) {
    tab_text_ = ui.Text(L"IDS_BLOCKENCODING_TAB");
    if (!tab_text_.empty()) {
        description().dwFlags |= PSP_USETITLE;
        description().pszTitle = tab_text_.c_str();
    }
}

std::u16string CBlockEncodingPage::FilePath() const {
    return BlockedEncodingsPath(ToU16(ui_.where.user_dir));
}

bool CBlockEncodingPage::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    switch (msg) {
        case WM_INITDIALOG:
            OnInitDialog();
            result = TRUE;
            return true;
        case WM_COMMAND:
            if (HIWORD(wp) != BN_CLICKED)
                return false;
            if (LOWORD(wp) == IDC_ENCODING_ALL || LOWORD(wp) == IDC_ENCODING_NONE) {
                CheckAll(LOWORD(wp) == IDC_ENCODING_ALL);
                return true;
            }
            return false;
        case WM_NOTIFY: {
            const auto& header = *reinterpret_cast<const NMHDR*>(lp);
            if (header.idFrom != IDC_ENCODING_LIST || header.code != LVN_ITEMCHANGED || filling_)
                return false;
            const auto& change = reinterpret_cast<const NMLISTVIEW&>(header);
            // The check box is the item's state image (1 clear, 2 checked).
            if ((change.uChanged & LVIF_STATE) != 0 && change.iItem >= 0 &&
                static_cast<std::size_t>(change.iItem) < entries_.size() &&
                ((change.uNewState ^ change.uOldState) & LVIS_STATEIMAGEMASK) != 0) {
                entries_[change.iItem].blocked =
                    ListView_GetCheckState(header.hwndFrom, change.iItem) != 0;
                changed_ = true;
                SetModified(true);
            }
            result = 0;
            return true;
        }
        default:
            return false;
    }
}

void CBlockEncodingPage::OnInitDialog() {
    const win32::ControlText texts[] = {{IDC_ENCODING_TITLE, L"IDS_BLOCKENCODING_TITLE"},
                                        {IDC_ENCODING_NOTE, L"IDS_BLOCKENCODING_NOTE"},
                                        {IDC_ENCODING_ALL, L"IDC_ENCODING_ALL"},
                                        {IDC_ENCODING_NONE, L"IDC_ENCODING_NONE"}};
    win32::ApplyTexts(hwnd(), ui_, texts);
    title_font_.reset(win32::CreateDialogFont(hwnd(), std::wstring(), 0, FW_BOLD));
    if (title_font_) {
        ::SendDlgItemMessageW(hwnd(), IDC_ENCODING_TITLE, WM_SETFONT,
                              reinterpret_cast<WPARAM>(title_font_.get()), FALSE);
    }
    entries_ = LoadBlockedEncodings(PlatformFileSystem(), FilePath());

    HWND list = ::GetDlgItem(hwnd(), IDC_ENCODING_LIST);
    ListView_SetExtendedListViewStyleEx(list, LVS_EX_CHECKBOXES | LVS_EX_FULLROWSELECT,
                                        LVS_EX_CHECKBOXES | LVS_EX_FULLROWSELECT);
    RECT client{};
    ::GetClientRect(list, &client);
    const int width = client.right - ::GetSystemMetrics(SM_CXVSCROLL);
    const PageTexts text(ui_);
    const std::wstring headers[] = {text(L"IDS_HEADER_ENCODING"), text(L"IDS_HEADER_CODEPAGES")};
    for (int i = 0; i < 2; ++i) {
        LVCOLUMNW column{};
        column.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_SUBITEM;
        column.pszText = const_cast<wchar_t*>(headers[i].c_str());
        column.cx = i == 0 ? width * 2 / 5 : width - width * 2 / 5;
        column.iSubItem = i;
        ListView_InsertColumn(list, i, &column);
    }
    filling_ = true;
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        std::wstring name = text(Widen(BlockedEncodingTextId(entries_[i].key)).c_str());
        if (name.empty())
            name = Widen(entries_[i].key);  // a short translation still shows the row
        LVITEMW item{};
        item.mask = LVIF_TEXT;
        item.iItem = static_cast<int>(i);
        item.pszText = &name[0];
        ListView_InsertItem(list, &item);
        std::wstring pages = CodePageList(entries_[i].codePages);
        ListView_SetItemText(list, static_cast<int>(i), 1, &pages[0]);
        ListView_SetCheckState(list, static_cast<int>(i), entries_[i].blocked);
    }
    ListView_SetItemState(list, 0, LVIS_FOCUSED, LVIS_FOCUSED);
    // The names take what their longest one needs (in whatever language);
    // the code pages take what is left, or as much as their longest list
    // needs, so a long list scrolls sideways instead of ending in "...".
    ListView_SetColumnWidth(list, 0, LVSCW_AUTOSIZE_USEHEADER);
    ListView_SetColumnWidth(list, 1, LVSCW_AUTOSIZE_USEHEADER);
    const int left = ListView_GetColumnWidth(list, 1);
    ListView_SetColumnWidth(list, 1, LVSCW_AUTOSIZE);
    if (ListView_GetColumnWidth(list, 1) < left)
        ListView_SetColumnWidth(list, 1, left);
    filling_ = false;
}

void CBlockEncodingPage::CheckAll(bool blocked) {
    HWND list = ::GetDlgItem(hwnd(), IDC_ENCODING_LIST);
    for (std::size_t i = 0; i < entries_.size(); ++i)
        ListView_SetCheckState(list, static_cast<int>(i), blocked);
}

bool CBlockEncodingPage::OnApply() {
    if (!changed_)
        return true;
    if (!SaveBlockedEncodings(PlatformFileSystem(), FilePath(), entries_)) {
        win32::ShowMessage(win32::TopLevelOwner(hwnd()), ui_, L"IDS_BLOCKENCODING_NOT_SAVED_MSG",
                           L"IDS_WARNING_CAPTION", MB_OK | MB_ICONWARNING);
        return false;  // the sheet stays open with the choices
    }
    changed_ = false;
    win32::companion::Post(kBlockedEncodingsSaved);
    return true;
}

}  // namespace velk::senders
