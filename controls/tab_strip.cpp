#include "controls/tab_strip.h"

#include <commctrl.h>

#include "common_src/win32/handles.h"
#include "common_src/win32/paint_buffer.h"

namespace velk::controls {
namespace {

constexpr int kAccentLine = 2;
// The selected tab stands out this far beyond its neighbours, as the stock
// tab control draws it.
constexpr int kSelectedRise = 2;

void Fill(HDC dc, const RECT& r, COLORREF colour) {
    win32::unique_hbrush brush(::CreateSolidBrush(colour));
    ::FillRect(dc, &r, brush.get());
}

// One-pixel lines along the given edges of `r` (inside it).
void Frame(HDC dc, const RECT& r, COLORREF colour, bool left, bool top, bool right, bool bottom) {
    if (left)
        Fill(dc, RECT{r.left, r.top, r.left + 1, r.bottom}, colour);
    if (top)
        Fill(dc, RECT{r.left, r.top, r.right, r.top + 1}, colour);
    if (right)
        Fill(dc, RECT{r.right - 1, r.top, r.right, r.bottom}, colour);
    if (bottom)
        Fill(dc, RECT{r.left, r.bottom - 1, r.right, r.bottom}, colour);
}

}  // namespace

bool TabStrip::TakeOver(HWND tab) {
    if (tab == nullptr || !Attach(tab))
        return false;
    // The width field is ignored by a tab control without fixed-width tabs.
    ::SendMessageW(tab, TCM_SETITEMSIZE, 0, MAKELPARAM(0xFFFF, kItemHeight));
    ::InvalidateRect(tab, nullptr, TRUE);
    return true;
}

void TabStrip::TrackHot(int x, int y) {
    TCHITTESTINFO hit{};
    hit.pt = POINT{x, y};
    const int item =
        static_cast<int>(::SendMessageW(hwnd(), TCM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit)));
    if (item != hot_) {
        hot_ = item;
        ::InvalidateRect(hwnd(), nullptr, FALSE);
    }
    if (hot_ >= 0 && !tracking_leave_) {
        TRACKMOUSEEVENT tme{sizeof(tme), TME_LEAVE, hwnd(), 0};
        tracking_leave_ = ::TrackMouseEvent(&tme) != FALSE;
    }
}

bool TabStrip::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    switch (msg) {
        case WM_MOUSEMOVE:
            TrackHot(static_cast<short>(LOWORD(lp)), static_cast<short>(HIWORD(lp)));
            return false;  // the control keeps its own mouse handling
        case WM_MOUSELEAVE:
            tracking_leave_ = false;
            if (hot_ != -1) {
                hot_ = -1;
                ::InvalidateRect(hwnd(), nullptr, FALSE);
            }
            return false;
        case WM_ERASEBKGND:
        case WM_PAINT:
        case WM_PRINTCLIENT:
            return win32::PaintOwnClient(hwnd(), msg, wp, result,
                                         [this](HDC dc, const RECT& client) { Paint(dc, client); });
        case WM_SETFOCUS:
        case WM_KILLFOCUS:
        case WM_UPDATEUISTATE:
            result = CallDefault(msg, wp, lp);
            ::InvalidateRect(hwnd(), nullptr, FALSE);
            return true;
        default:
            return false;
    }
}

void TabStrip::Paint(HDC dc, const RECT& client) {
    ::FillRect(dc, &client, ::GetSysColorBrush(COLOR_BTNFACE));
    const int count = static_cast<int>(::SendMessageW(hwnd(), TCM_GETITEMCOUNT, 0, 0));
    const int selected = static_cast<int>(::SendMessageW(hwnd(), TCM_GETCURSEL, 0, 0));

    // The page frame starts under the tab row (the lowest row when they wrap).
    RECT body = client;
    for (int i = 0; i < count; ++i) {
        RECT item{};
        if (::SendMessageW(hwnd(), TCM_GETITEMRECT, i, reinterpret_cast<LPARAM>(&item)) &&
            item.bottom > body.top) {
            body.top = item.bottom;
        }
    }
    Fill(dc, body, colours_.selected);
    Frame(dc, body, colours_.border, true, true, true, true);

    win32::select_object font(dc,
                              reinterpret_cast<HFONT>(::SendMessageW(hwnd(), WM_GETFONT, 0, 0)));
    ::SetBkMode(dc, TRANSPARENT);
    for (int i = 0; i < count; ++i) {
        if (i != selected)
            DrawItem(dc, i, false);
    }
    if (selected >= 0)
        DrawItem(dc, selected, true);  // last: it overlaps its neighbours
}

void TabStrip::DrawItem(HDC dc, int index, bool selected) {
    RECT r{};
    if (!::SendMessageW(hwnd(), TCM_GETITEMRECT, index, reinterpret_cast<LPARAM>(&r)))
        return;
    if (selected) {
        ::InflateRect(&r, kSelectedRise, 0);
        r.top -= kSelectedRise;
        r.bottom += 1;  // over the frame's top line: the tab opens into the page
        RECT client{};
        ::GetClientRect(hwnd(), &client);
        if (r.top < client.top)
            r.top = client.top;
    }
    const COLORREF fill = selected        ? colours_.selected
                          : index == hot_ ? colours_.hot
                                          : colours_.face;
    Fill(dc, r, fill);
    Frame(dc, r, colours_.border, true, true, true, false);
    if (selected)
        Fill(dc, RECT{r.left, r.top, r.right, r.top + kAccentLine}, colours_.accent);

    wchar_t text[128] = L"";
    TCITEMW item{};
    item.mask = TCIF_TEXT;
    item.pszText = text;
    item.cchTextMax = static_cast<int>(sizeof(text) / sizeof(text[0]));
    ::SendMessageW(hwnd(), TCM_GETITEMW, index, reinterpret_cast<LPARAM>(&item));
    RECT label = r;
    label.top += selected ? kAccentLine : 1;
    ::SetTextColor(dc, ::IsWindowEnabled(hwnd()) ? colours_.text : ::GetSysColor(COLOR_GRAYTEXT));
    const LRESULT ui_state = ::SendMessageW(hwnd(), WM_QUERYUISTATE, 0, 0);
    const UINT prefix = (ui_state & UISF_HIDEACCEL) != 0 ? DT_HIDEPREFIX : 0;
    ::DrawTextW(dc, text, -1, &label,
                DT_CENTER | DT_VCENTER | DT_SINGLELINE | DT_END_ELLIPSIS | prefix);

    if (selected && ::GetFocus() == hwnd() && (ui_state & UISF_HIDEFOCUS) == 0) {
        RECT focus = label;
        ::InflateRect(&focus, -3, -3);
        ::SetTextColor(dc, RGB(0, 0, 0));
        ::SetBkColor(dc, RGB(255, 255, 255));
        ::DrawFocusRect(dc, &focus);
    }
}

}  // namespace velk::controls
