#include "controls/virtual_list_view_test_util.h"

#include <algorithm>
#include <numeric>

#include "common_src/win32/window_class.h"

namespace velk::controls::testing {

namespace {
constexpr wchar_t kHostClass[] = L"VelkVirtualListHost";
constexpr int kListId = 100;
}  // namespace

void NumberedRows::Resize(std::size_t count) {
    order_.resize(count);
    std::iota(order_.begin(), order_.end(), std::size_t{0});
}

std::wstring NumberedRows::CellText(std::size_t row, int column) const {
    ++reads;
    if (row >= order_.size())
        return std::wstring();
    const std::wstring n = std::to_wstring(order_[row]);
    return column == 0 ? L"sender" + n + L"@example.com" : L"Sender " + n;
}

void NumberedRows::SortBy(int column, bool ascending) {
    sorted_column = column;
    sorted_ascending = ascending;
    std::sort(order_.begin(), order_.end());
    if (!ascending)
        std::reverse(order_.begin(), order_.end());
}

ListHost::ListHost(ListRows* rows) {
    INITCOMMONCONTROLSEX icc{sizeof(icc), ICC_LISTVIEW_CLASSES};
    ::InitCommonControlsEx(&icc);
    win32::WindowClassOptions options;
    options.background = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
    win32::RegisterWindowClass(kHostClass, options);
    Create(kHostClass, nullptr, WS_POPUP | WS_CLIPCHILDREN, 0, RECT{40, 40, 460, 340});
    ::ShowWindow(hwnd(), SW_SHOWNOACTIVATE);
    if (rows != nullptr)
        ShowList(*rows);
}

void ListHost::ShowList(ListRows& rows) {
    DestroyList();
    RECT client{};
    ::GetClientRect(hwnd(), &client);
    HWND list = VirtualListView::CreateListView(hwnd(), kListId, client);
    ::SendMessageW(list, WM_SETFONT,
                   reinterpret_cast<WPARAM>(::GetStockObject(DEFAULT_GUI_FONT)), FALSE);
    list_.Attach(list, rows, L"E-mail Address", L"Sender Name");
    ::RedrawWindow(list, nullptr, nullptr,
                   RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
}

void Pump() {
    MSG msg;
    while (::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
        ::TranslateMessage(&msg);
        ::DispatchMessageW(&msg);
    }
}

}  // namespace velk::controls::testing
