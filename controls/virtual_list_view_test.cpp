#include "controls/virtual_list_view.h"

#include <gtest/gtest.h>

#include "common_src/win32/handles.h"
#include "controls/virtual_list_view_test_util.h"

namespace velk::controls {
namespace {

using testing::ListHost;
using testing::NumberedRows;
using testing::Pump;

// The text as any program reads it, into a buffer of `room` characters.
std::wstring ItemText(HWND list, int row, int column, int room = 128) {
    std::wstring buffer(static_cast<std::size_t>(room), L'x');
    ListView_GetItemText(list, row, column, &buffer[0], room);
    return buffer.c_str();
}

class VirtualListViewTest : public ::testing::Test {
protected:
    NumberedRows rows_{8000};
    ListHost host_{&rows_};
    HWND list() const { return host_.list_hwnd(); }
};

// What a screen reader or another program asks any list view.
TEST_F(VirtualListViewTest, AnswersTheListViewsCountTextAndFindQueriesFromTheRows) {
    EXPECT_EQ(8000, ::SendMessageW(list(), LVM_GETITEMCOUNT, 0, 0));
    EXPECT_EQ(L"sender7999@example.com", ItemText(list(), 7999, 0));
    EXPECT_EQ(L"Sender 42", ItemText(list(), 42, 1));
    EXPECT_EQ(L"sender", ItemText(list(), 0, 0, 7));  // cut to the caller's room

    LVFINDINFOW find{};
    find.flags = LVFI_STRING | LVFI_PARTIAL;
    find.psz = L"SENDER12@";
    EXPECT_EQ(12, ::SendMessageW(list(), LVM_FINDITEMW, -1, reinterpret_cast<LPARAM>(&find)));
    find.flags = LVFI_STRING;
    find.psz = L"sender12@example.com";
    EXPECT_EQ(12, ::SendMessageW(list(), LVM_FINDITEMW, -1, reinterpret_cast<LPARAM>(&find)));
    find.psz = L"sender12@";
    EXPECT_EQ(-1, ::SendMessageW(list(), LVM_FINDITEMW, -1, reinterpret_cast<LPARAM>(&find)));

    host_.list().Select(7000);
    rows_.Resize(3);
    host_.list().Refresh();
    EXPECT_EQ(3, ::SendMessageW(list(), LVM_GETITEMCOUNT, 0, 0));
    EXPECT_EQ(-1, host_.list().selected());  // its row is gone

    // A list that keeps its own items cannot be taken over.
    win32::unique_hwnd plain(::CreateWindowExW(0, WC_LISTVIEWW, L"", WS_CHILD | LVS_REPORT, 0, 0,
                                               50, 50, host_.hwnd(), nullptr, nullptr, nullptr));
    VirtualListView view;
    EXPECT_FALSE(view.Attach(plain.get(), rows_, L"a", L"b"));
    EXPECT_FALSE(view.attached());
}

TEST_F(VirtualListViewTest, DrawsOnlyTheRowsInSightAndTheSelectedRowStandsOut) {
    host_.list().Select(1);
    Pump();
    rows_.reads = 0;
    ::RedrawWindow(list(), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW);
    EXPECT_GT(rows_.reads, 20u);
    EXPECT_LT(rows_.reads, 200u);  // two cells of each row in sight, not 8000

    RECT selected{}, plain{};
    ASSERT_TRUE(ListView_GetItemRect(list(), 1, &selected, LVIR_BOUNDS));
    ASSERT_TRUE(ListView_GetItemRect(list(), 2, &plain, LVIR_BOUNDS));
    win32::window_dc dc(list());
    // Right of the short texts, inside the second column.
    const COLORREF on = ::GetPixel(dc.get(), selected.right - 30, (selected.top + selected.bottom) / 2);
    const COLORREF off = ::GetPixel(dc.get(), plain.right - 30, (plain.top + plain.bottom) / 2);
    EXPECT_EQ(::GetSysColor(COLOR_BTNFACE), on);  // selected, the list not focused
    EXPECT_EQ(::GetSysColor(COLOR_WINDOW), off);
}

// Enter reaches the list only while a row is selected; else it presses the
// dialog's default button.
TEST_F(VirtualListViewTest, HeaderClicksSortThenReverseTheSelectionFollowsAndEnterNeedsIt) {
    MSG enter{list(), WM_KEYDOWN, VK_RETURN, 0, 0, {}};
    auto wants_enter = [&] {
        return (::SendMessageW(list(), WM_GETDLGCODE, VK_RETURN, reinterpret_cast<LPARAM>(&enter)) &
                DLGC_WANTMESSAGE) != 0;
    };
    EXPECT_FALSE(wants_enter());
    host_.list().Select(5);
    EXPECT_TRUE(wants_enter());
    HWND header = ListView_GetHeader(list());
    RECT second{};
    ASSERT_TRUE(Header_GetItemRect(header, 1, &second));
    const LPARAM at = MAKELPARAM((second.left + second.right) / 2, (second.top + second.bottom) / 2);
    auto click = [&] {
        ::SendMessageW(header, WM_LBUTTONDOWN, MK_LBUTTON, at);
        ::SendMessageW(header, WM_LBUTTONUP, 0, at);
        Pump();
    };
    click();
    EXPECT_EQ(1, rows_.sorted_column);
    EXPECT_TRUE(rows_.sorted_ascending);
    click();
    EXPECT_FALSE(rows_.sorted_ascending);
    EXPECT_EQ(7994, host_.list().selected());
    EXPECT_EQ(L"sender5@example.com", ItemText(list(), 7994, 0));
}

}  // namespace
}  // namespace velk::controls
