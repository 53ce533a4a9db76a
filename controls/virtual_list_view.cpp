#include "controls/virtual_list_view.h"

#include <algorithm>
#include <climits>
#include <cwchar>
#include <optional>

#include "common_src/win32/handles.h"
#include "common_src/win32/paint_buffer.h"
#include "log/diag_log.h"

namespace velk::controls {

namespace {

constexpr int kColumns = 2;

COLORREF Blend(COLORREF a, COLORREF b, int percent_b) {
    auto mix = [&](int ca, int cb) { return (ca * (100 - percent_b) + cb * percent_b) / 100; };
    return RGB(mix(GetRValue(a), GetRValue(b)), mix(GetGValue(a), GetGValue(b)),
               mix(GetBValue(a), GetBValue(b)));
}

void Fill(HDC dc, const RECT& rect, COLORREF color) {
    ::SetBkColor(dc, color);
    ::ExtTextOutW(dc, 0, 0, ETO_OPAQUE, &rect, nullptr, 0, nullptr);
}

// Blank space around the text of a cell: about a third of the font's height,
// so it grows with the font at higher resolutions.
int CellPadding(HDC dc) {
    TEXTMETRICW tm{};
    ::GetTextMetricsW(dc, &tm);
    return std::max(2, static_cast<int>(tm.tmHeight / 3));
}

}  // namespace

HWND VirtualListView::CreateListView(HWND parent, int id, const RECT& rect) {
    return ::CreateWindowExW(WS_EX_CLIENTEDGE, WC_LISTVIEWW, L"", kListStyle | WS_TABSTOP,
                             rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top,
                             parent, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
                             ::GetModuleHandleW(nullptr), nullptr);
}

bool VirtualListView::Attach(HWND list, ListRows& rows, const std::wstring& first_header,
                             const std::wstring& second_header) {
    const LONG_PTR style = list != nullptr ? ::GetWindowLongPtrW(list, GWL_STYLE) : 0;
    // Neither style can be added once the control exists.
    if ((style & LVS_OWNERDATA) == 0 || (style & LVS_OWNERDRAWFIXED) == 0) {
        VELK_LOG(L"@@@ Error : the sender list control lacks LVS_OWNERDATA or LVS_OWNERDRAWFIXED");
        return false;
    }
    if (!SubclassedWindow::Attach(list))
        return false;
    rows_ = &rows;
    ListView_SetExtendedListViewStyleEx(list, LVS_EX_FULLROWSELECT, LVS_EX_FULLROWSELECT);

    // Half the width each, leaving room for the vertical scroll bar a long
    // list gets, so no horizontal one appears.
    RECT client{};
    ::GetClientRect(list, &client);
    const int width = std::max(0, static_cast<int>(client.right - ::GetSystemMetrics(SM_CXVSCROLL)));
    const std::wstring* headers[kColumns] = {&first_header, &second_header};
    for (int i = 0; i < kColumns; ++i) {
        LVCOLUMNW column{};
        column.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_SUBITEM;
        column.pszText = const_cast<wchar_t*>(headers[i]->c_str());
        column.cx = i == 0 ? width / 2 : width - width / 2;
        column.iSubItem = i;
        ListView_InsertColumn(list, i, &column);
    }
    HWND header = ListView_GetHeader(list);
    for (int i = 0; i < kColumns; ++i) {
        HDITEMW item{};
        item.mask = HDI_FORMAT;
        Header_GetItem(header, i, &item);
        item.fmt |= HDF_OWNERDRAW;
        Header_SetItem(header, i, &item);
    }
    Refresh();
    return true;
}

void VirtualListView::Refresh() {
    if (!attached() || rows_ == nullptr)
        return;
    const int count = static_cast<int>(std::min<std::size_t>(rows_->RowCount(), INT_MAX));
    // Setting the count updates the scroll bar, which costs milliseconds.
    if (count != ListView_GetItemCount(hwnd())) {
        ListView_SetItemCountEx(hwnd(), count, LVSICF_NOSCROLL);
        // The vertical scroll bar may have come or gone: the last column
        // takes the width left, so rows and header reach the list's edge.
        ListView_SetColumnWidth(hwnd(), kColumns - 1, LVSCW_AUTOSIZE_USEHEADER);
    }
    if (selected() >= count)
        Select(-1);
    ::InvalidateRect(hwnd(), nullptr, FALSE);
}

int VirtualListView::selected() const {
    return attached() ? ListView_GetNextItem(hwnd(), -1, LVNI_SELECTED) : -1;
}

void VirtualListView::Select(int row) {
    if (!attached())
        return;
    ListView_SetItemState(hwnd(), -1, 0, LVIS_SELECTED | LVIS_FOCUSED);
    if (row < 0)
        return;
    ListView_SetItemState(hwnd(), row, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
    ListView_SetSelectionMark(hwnd(), row);
    ListView_EnsureVisible(hwnd(), row, FALSE);
}

void VirtualListView::Sort(int column, bool ascending) {
    if (rows_ == nullptr || column < 0 || column >= kColumns)
        return;
    // The first column tells the rows apart (the sender's address): the
    // selection follows its row to the row's new place.
    const int before = selected();
    const std::wstring chosen = before >= 0 ? rows_->CellText(before, 0) : std::wstring();
    rows_->SortBy(column, ascending);
    sort_column_ = column;
    sort_ascending_ = ascending;
    MarkSortedHeader();
    Refresh();
    if (before >= 0)
        Select(FindRow(chosen, 0, false));
}

void VirtualListView::MarkSortedHeader() {
    if (HWND header = ListView_GetHeader(hwnd()))
        ::InvalidateRect(header, nullptr, FALSE);
}

int VirtualListView::FindRow(const std::wstring& text, int start, bool partial) const {
    const int count = ListView_GetItemCount(hwnd());
    if (rows_ == nullptr || count <= 0 || text.empty())
        return -1;
    start = std::clamp(start, 0, count - 1);
    for (int i = 0; i < count; ++i) {
        const int row = (start + i) % count;
        const std::wstring cell = rows_->CellText(static_cast<std::size_t>(row), 0);
        const bool match = partial ? _wcsnicmp(cell.c_str(), text.c_str(), text.size()) == 0
                                   : _wcsicmp(cell.c_str(), text.c_str()) == 0;
        if (match)
            return row;
    }
    return -1;
}

bool VirtualListView::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    switch (msg) {
        case win32::kReflectedMessageBase + WM_NOTIFY:
            return lp != 0 && OnNotify(*reinterpret_cast<const NMHDR*>(lp), result);
        case win32::kReflectedMessageBase + WM_DRAWITEM: {
            const auto& item = *reinterpret_cast<const DRAWITEMSTRUCT*>(lp);
            if (item.CtlType != ODT_LISTVIEW)
                return false;
            DrawRow(item);
            result = TRUE;
            return true;
        }
        case WM_DRAWITEM: {
            // The header is the list view's own child: its items come here.
            const auto& item = *reinterpret_cast<const DRAWITEMSTRUCT*>(lp);
            if (item.CtlType != ODT_HEADER || item.hwndItem != ListView_GetHeader(hwnd()))
                return false;
            DrawHeaderItem(item);
            result = TRUE;
            return true;
        }
        case WM_PAINT:
            if (wp != 0)
                return false;  // painting into a caller's DC: nothing to buffer
            Paint();
            result = 0;
            return true;
        case WM_ERASEBKGND:
            // The paint fills every pixel itself; erasing the screen first
            // would only make the rows flicker.
            result = 1;
            return true;
        case WM_GETDLGCODE: {
            result = CallDefault(msg, wp, lp);
            const MSG* key = reinterpret_cast<const MSG*>(lp);
            if (key != nullptr && key->message == WM_KEYDOWN && key->wParam == VK_RETURN &&
                selected() >= 0) {
                result |= DLGC_WANTMESSAGE;
            }
            return true;
        }
        case WM_SETFOCUS:
        case WM_KILLFOCUS:
            // The selected row changes colour with the focus.
            result = CallDefault(msg, wp, lp);
            ::InvalidateRect(hwnd(), nullptr, FALSE);
            return true;
        default:
            return false;
    }
}

bool VirtualListView::OnNotify(const NMHDR& header, LRESULT& result) {
    if (rows_ == nullptr)
        return false;
    switch (header.code) {
        case LVN_GETDISPINFOW: {
            // LVM_GETITEMTEXTW from a screen reader or another program.
            auto& info = const_cast<NMLVDISPINFOW&>(reinterpret_cast<const NMLVDISPINFOW&>(header));
            if ((info.item.mask & LVIF_TEXT) != 0 && info.item.pszText != nullptr &&
                info.item.cchTextMax > 0 && info.item.iItem >= 0) {
                const std::wstring text = rows_->CellText(static_cast<std::size_t>(info.item.iItem),
                                                          info.item.iSubItem);
                wcsncpy_s(info.item.pszText, static_cast<std::size_t>(info.item.cchTextMax),
                          text.c_str(), _TRUNCATE);
            }
            result = 0;
            return true;
        }
        case LVN_ODFINDITEMW: {
            const auto& find = reinterpret_cast<const NMLVFINDITEMW&>(header);
            if ((find.lvfi.flags & (LVFI_STRING | LVFI_PARTIAL)) == 0 || find.lvfi.psz == nullptr) {
                result = -1;
                return true;
            }
            result = FindRow(find.lvfi.psz, find.iStart, (find.lvfi.flags & LVFI_PARTIAL) != 0);
            return true;
        }
        case LVN_COLUMNCLICK: {
            const auto& click = reinterpret_cast<const NMLISTVIEW&>(header);
            const bool ascending = click.iSubItem == sort_column_ ? !sort_ascending_ : true;
            Sort(click.iSubItem, ascending);
            result = 0;
            return true;
        }
        default:
            return false;
    }
}

void VirtualListView::Paint() {
    // The whole client is drawn into one memory bitmap and copied to the
    // screen at once: one copy per paint instead of one per row, and nothing
    // is ever seen half drawn. The list view draws into a DC it is given.
    win32::BufferedPaint paint(hwnd());
    painting_ = paint.dc();
    Fill(painting_, paint.client(), ::GetSysColor(COLOR_WINDOW));
    CallDefault(WM_PAINT, reinterpret_cast<WPARAM>(painting_), 0);
    painting_ = nullptr;
}

void VirtualListView::DrawRow(const DRAWITEMSTRUCT& item) {
    // Rows drawn outside a paint of ours (a caller's DC) get a buffer each.
    std::optional<win32::PaintBuffer> own;
    if (item.hDC != painting_ || painting_ == nullptr)
        own.emplace(item.hDC, item.rcItem);
    HDC dc = own ? own->dc() : item.hDC;
    win32::select_object font(dc, reinterpret_cast<HFONT>(::SendMessageW(hwnd(), WM_GETFONT, 0, 0)));

    const bool focused = ::GetFocus() == hwnd();
    const bool chosen = (item.itemState & ODS_SELECTED) != 0;
    const COLORREF window = ::GetSysColor(COLOR_WINDOW);
    COLORREF back = (item.itemID % 2 == 1) ? Blend(window, ::GetSysColor(COLOR_HIGHLIGHT), 6) : window;
    COLORREF fore = ::GetSysColor(COLOR_WINDOWTEXT);
    if (chosen) {
        back = ::GetSysColor(focused ? COLOR_HIGHLIGHT : COLOR_BTNFACE);
        fore = ::GetSysColor(focused ? COLOR_HIGHLIGHTTEXT : COLOR_BTNTEXT);
    }
    Fill(dc, item.rcItem, back);
    ::SetTextColor(dc, fore);
    ::SetBkMode(dc, TRANSPARENT);

    const int pad = CellPadding(dc);
    int x = item.rcItem.left;
    for (int column = 0; column < kColumns; ++column) {
        const int width = ListView_GetColumnWidth(hwnd(), column);
        RECT cell{x + pad, item.rcItem.top, x + width - pad, item.rcItem.bottom};
        if (cell.right > cell.left) {
            const std::wstring text = rows_->CellText(item.itemID, column);
            ::DrawTextW(dc, text.c_str(), static_cast<int>(text.size()), &cell,
                        DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
        }
        x += width;
    }
    const bool showFocus =
        (::SendMessageW(hwnd(), WM_QUERYUISTATE, 0, 0) & UISF_HIDEFOCUS) == 0;
    if ((item.itemState & ODS_FOCUS) != 0 && focused && showFocus) {
        ::SetTextColor(dc, RGB(0, 0, 0));
        ::SetBkColor(dc, RGB(255, 255, 255));
        ::DrawFocusRect(dc, &item.rcItem);
    }
}

void VirtualListView::DrawHeaderItem(const DRAWITEMSTRUCT& item) {
    win32::PaintBuffer buffer(item.hDC, item.rcItem);
    HDC dc = buffer.dc();
    win32::select_object font(dc, reinterpret_cast<HFONT>(::SendMessageW(hwnd(), WM_GETFONT, 0, 0)));
    RECT r = item.rcItem;
    const COLORREF face = ::GetSysColor(COLOR_BTNFACE);
    Fill(dc, r, Blend(face, ::GetSysColor(COLOR_WINDOW), 45));
    RECT lower{r.left, (r.top + r.bottom) / 2, r.right, r.bottom};
    Fill(dc, lower, face);
    Fill(dc, RECT{r.left, r.bottom - 1, r.right, r.bottom}, ::GetSysColor(COLOR_BTNSHADOW));
    Fill(dc, RECT{r.right - 1, r.top + 3, r.right, r.bottom - 3}, ::GetSysColor(COLOR_BTNSHADOW));

    wchar_t text[256] = L"";
    HDITEMW hd{};
    hd.mask = HDI_TEXT;
    hd.pszText = text;
    hd.cchTextMax = 256;
    Header_GetItem(item.hwndItem, item.itemID, &hd);

    const int pad = CellPadding(dc);
    const int pressed = (item.itemState & ODS_SELECTED) != 0 ? 1 : 0;
    RECT label{r.left + pad + pressed, r.top + pressed, r.right - pad, r.bottom};
    const bool sorted = static_cast<int>(item.itemID) == sort_column_;
    // The sort mark: a small triangle at the right, pointing up for ascending.
    const int arrow = std::max(4, pad);
    if (sorted && label.right - label.left > 3 * arrow) {
        label.right -= 2 * arrow;
        const int cx = label.right + arrow;
        const int cy = (r.top + r.bottom) / 2 + pressed;
        const int h = arrow / 2;
        POINT points[3];
        if (sort_ascending_) {
            points[0] = {cx - arrow / 2 - 1, cy + h};
            points[1] = {cx + arrow / 2 + 1, cy + h};
            points[2] = {cx, cy - h - 1};
        } else {
            points[0] = {cx - arrow / 2 - 1, cy - h};
            points[1] = {cx + arrow / 2 + 1, cy - h};
            points[2] = {cx, cy + h + 1};
        }
        win32::unique_hbrush brush(::CreateSolidBrush(::GetSysColor(COLOR_BTNSHADOW)));
        win32::select_object pen(dc, ::GetStockObject(NULL_PEN));
        win32::select_object fill(dc, brush.get());
        ::Polygon(dc, points, 3);
    }
    ::SetBkMode(dc, TRANSPARENT);
    ::SetTextColor(dc, ::GetSysColor(COLOR_BTNTEXT));
    ::DrawTextW(dc, text, -1, &label, DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
}

}  // namespace velk::controls
