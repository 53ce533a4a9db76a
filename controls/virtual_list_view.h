// The owner-drawn, virtual list of the settings pages (the sender lists): a
// report-style list view with two columns whose rows are drawn from a
// ListRows when they come into sight, so a list of 8000 senders shows at once
// and scrolls smoothly.
//
// The list view control is kept (a stock "SysListView32" created with
// LVS_OWNERDATA and LVS_OWNERDRAWFIXED, from a dialog template or
// CreateListView): it keeps selection, focus, scrolling, keyboard and the
// answers to LVM_GETITEMCOUNT and LVM_GETITEMTEXTW, so screen readers and
// other programs read the rows as from any list view. This object subclasses
// it and draws the rows and the header itself, double-buffered. Its parent
// reflects WM_NOTIFY and WM_DRAWITEM to it (Dialog and PropertyPage do).
//
// Clicking a column header sorts by that column, clicking it again reverses
// the order; the selected row stays selected. Enter reaches the list (LVN_KEYDOWN
// to the parent) while a row is selected, instead of pressing the default
// button; typing finds the row whose first column starts with the typed text.
#pragma once

#include <windows.h>
#include <commctrl.h>

#include <string>

#include "common_src/win32/subclassed_window.h"
#include "controls/list_rows.h"

namespace velk::controls {

class VirtualListView : public win32::SubclassedWindow {
public:
    // The styles the control must be created with (a template adds
    // WS_TABSTOP and a border).
    static constexpr DWORD kListStyle = WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN | LVS_REPORT |
                                        LVS_OWNERDATA | LVS_OWNERDRAWFIXED | LVS_SINGLESEL |
                                        LVS_SHOWSELALWAYS;

    // A list view with kListStyle, a border and a tab stop.
    static HWND CreateListView(HWND parent, int id, const RECT& rect);

    VirtualListView() = default;

    // Takes over `list` (created with LVS_OWNERDATA and LVS_OWNERDRAWFIXED;
    // false, logged, for any other window) and shows `rows` under the two
    // headers, each column half the width. The rows are borrowed.
    bool Attach(HWND list, ListRows& rows, const std::wstring& first_header,
                const std::wstring& second_header);

    // The rows changed: takes their new count and redraws. The selection
    // stays on its row number while that exists.
    void Refresh();

    // The selected row, or -1.
    int selected() const;
    // Selects and focuses `row`, scrolled into sight; -1 clears the selection.
    void Select(int row);

    void Sort(int column, bool ascending);
    int sort_column() const noexcept { return sort_column_; }
    bool sort_ascending() const noexcept { return sort_ascending_; }

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;

private:
    bool OnNotify(const NMHDR& header, LRESULT& result);
    void DrawRow(const DRAWITEMSTRUCT& item);
    void DrawHeaderItem(const DRAWITEMSTRUCT& item);
    void MarkSortedHeader();
    int FindRow(const std::wstring& text, int start, bool partial) const;

    void Paint();

    ListRows* rows_ = nullptr;
    // The memory DC of the paint under way: its rows need no buffer of their own.
    HDC painting_ = nullptr;
    int sort_column_ = 0;
    bool sort_ascending_ = true;
};

}  // namespace velk::controls
