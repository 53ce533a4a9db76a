#include "tools/mail_client_stub/client_window.h"

#include <commctrl.h>

#include <cwchar>

#include "common_src/win32/window_class.h"

namespace velk::tools {
namespace {

constexpr int kListId = 100;

// One toolbar with the client's own buttons, as the band of a rebar.
HWND MakeToolbar(HWND rebar, const wchar_t* const* captions, int count) {
    HWND tb = ::CreateWindowExW(0, TOOLBARCLASSNAMEW, nullptr,
                                WS_CHILD | WS_VISIBLE | TBSTYLE_FLAT | TBSTYLE_LIST | CCS_NORESIZE |
                                    CCS_NODIVIDER | CCS_NOPARENTALIGN,
                                0, 0, 0, 0, rebar, nullptr, win32::ThisModule(), nullptr);
    if (tb == nullptr)
        return nullptr;
    ::SendMessageW(tb, TB_BUTTONSTRUCTSIZE, sizeof(TBBUTTON), 0);
    ::SendMessageW(tb, TB_SETBITMAPSIZE, 0, MAKELPARAM(0, 0));
    for (int i = 0; i < count; ++i) {
        TBBUTTON b{};
        b.iBitmap = I_IMAGENONE;
        b.idCommand = 200 + i;
        b.fsState = TBSTATE_ENABLED;
        b.fsStyle = BTNS_BUTTON | BTNS_AUTOSIZE | BTNS_SHOWTEXT;
        b.iString = reinterpret_cast<INT_PTR>(captions[i]);
        ::SendMessageW(tb, TB_ADDBUTTONSW, 1, reinterpret_cast<LPARAM>(&b));
    }
    ::SendMessageW(tb, TB_AUTOSIZE, 0, 0);
    return tb;
}

void AddBand(HWND rebar, HWND child, UINT id, int width) {
    SIZE ideal{};
    if (child != nullptr)
        ::SendMessageW(child, TB_GETMAXSIZE, 0, reinterpret_cast<LPARAM>(&ideal));
    REBARBANDINFOW band{};
    band.cbSize = sizeof(band);
    band.fMask = RBBIM_STYLE | RBBIM_CHILD | RBBIM_CHILDSIZE | RBBIM_SIZE | RBBIM_ID;
    band.fStyle = RBBS_CHILDEDGE | RBBS_GRIPPERALWAYS;
    band.hwndChild = child;
    band.cxMinChild = 0;
    band.cyMinChild = ideal.cy > 0 ? ideal.cy : 24;
    band.cx = width;
    band.wID = id;
    ::SendMessageW(rebar, RB_INSERTBANDW, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(&band));
}

}  // namespace

bool CSizableRebar::Create(HWND parent, int rebars) {
    if (Window::Create(kSizableRebarClass, parent, WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN, 0,
                       RECT{0, 0, 100, 30}) == nullptr) {
        return false;
    }
    static const wchar_t* const kMain[] = {L"Create Mail", L"Reply", L"Forward", L"Delete",
                                           L"Send/Receive"};
    static const wchar_t* const kSecond[] = {L"Contacts", L"Calendar", L"Find"};
    for (int i = 0; i < rebars; ++i) {
        HWND rebar = ::CreateWindowExW(
            0, REBARCLASSNAMEW, nullptr,
            WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS | WS_CLIPCHILDREN | RBS_VARHEIGHT |
                RBS_BANDBORDERS | CCS_NODIVIDER | CCS_NOPARENTALIGN,
            0, 0, 100, 30, hwnd(), nullptr, win32::ThisModule(), nullptr);
        if (rebar == nullptr)
            return false;
        REBARINFO info{sizeof(info), 0, nullptr};
        ::SendMessageW(rebar, RB_SETBARINFO, 0, reinterpret_cast<LPARAM>(&info));
        HWND tb = i == 0 ? MakeToolbar(rebar, kMain, 5) : MakeToolbar(rebar, kSecond, 3);
        AddBand(rebar, tb, static_cast<UINT>(i + 1), 400);
        rebars_.push_back(rebar);
    }
    return true;
}

int CSizableRebar::Layout(int width) {
    width_ = width;
    int y = 0;
    for (HWND rebar : rebars_) {
        int h = static_cast<int>(::SendMessageW(rebar, RB_GETBARHEIGHT, 0, 0));
        ::MoveWindow(rebar, 0, y, width, h, TRUE);
        y += h;
    }
    ::MoveWindow(hwnd(), 0, 0, width, y, TRUE);
    return y;
}

bool CSizableRebar::HasBand(UINT id) const {
    for (HWND rebar : rebars_) {
        if (::SendMessageW(rebar, RB_IDTOINDEX, id, 0) != -1)
            return true;
    }
    return false;
}

bool CSizableRebar::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    if (msg == WM_NOTIFY && reinterpret_cast<const NMHDR*>(lp)->code == RBN_HEIGHTCHANGE) {
        // A band came or went: the client lays itself out again.
        ::PostMessageW(::GetParent(hwnd()), WM_SIZE, 0, 0);
        return true;
    }
    return false;
}

bool CClientWindow::RegisterClasses() {
    INITCOMMONCONTROLSEX icc{sizeof(icc),
                             ICC_COOL_CLASSES | ICC_BAR_CLASSES | ICC_LISTVIEW_CLASSES};
    ::InitCommonControlsEx(&icc);
    win32::WindowClassOptions main;
    main.background = reinterpret_cast<HBRUSH>(COLOR_WINDOW + 1);
    return win32::RegisterWindowClass(kBrowserClass, main) != 0 &&
           win32::RegisterWindowClass(kSizableRebarClass) != 0;
}

bool CClientWindow::Create(bool windows_mail) {
    if (Window::Create(kBrowserClass, nullptr, WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, 0,
                       RECT{40, 40, 40 + 900, 40 + 560}, L"Inbox - Mail") == nullptr) {
        return false;
    }
    if (!rebar_.Create(hwnd(), windows_mail ? 2 : 1))
        return false;
    list_ = ::CreateWindowExW(WS_EX_CLIENTEDGE, WC_LISTVIEWW, nullptr,
                              WS_CHILD | WS_VISIBLE | LVS_REPORT, 0, 0, 10, 10, hwnd(),
                              reinterpret_cast<HMENU>(kListId), win32::ThisModule(), nullptr);
    const wchar_t* columns[] = {L"From", L"Subject", L"Received"};
    const int widths[] = {200, 420, 160};
    for (int i = 0; i < 3; ++i) {
        LVCOLUMNW col{};
        col.mask = LVCF_TEXT | LVCF_WIDTH;
        col.pszText = const_cast<wchar_t*>(columns[i]);
        col.cx = widths[i];
        ::SendMessageW(list_, LVM_INSERTCOLUMNW, i, reinterpret_cast<LPARAM>(&col));
    }
    Layout();
    return true;
}

void CClientWindow::Layout() {
    RECT rc{};
    ::GetClientRect(hwnd(), &rc);
    int top = rebar_.Layout(rc.right);
    if (list_ != nullptr)
        ::MoveWindow(list_, 0, top, rc.right, rc.bottom - top, TRUE);
}

bool CClientWindow::Hooked() const {
    return reinterpret_cast<WNDPROC>(::GetWindowLongPtrW(hwnd(), GWLP_WNDPROC)) !=
           &Window::StaticProc;
}

void CClientWindow::Event(const wchar_t* format, int value1, int value2) {
    wchar_t text[128];
    std::swprintf(text, 128, format, value1, value2);
    if (host_.event)
        host_.event(text);
}

bool CClientWindow::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    switch (msg) {
        case WM_SIZE:
            // A band coming or going relays the client out: the add-in's
            // band showing for the first time is worth an event.
            if (!band_seen_ && rebar_.HasBand(kAddinBandId)) {
                band_seen_ = true;
                Event(L"band shown", 0);
            }
            Layout();
            return false;
        case WM_CLOSE:
            // What the client's own procedure finds when the close reaches it.
            Event(L"wm-close band=%d hooked=%d", rebar_.HasBand(kAddinBandId) ? 1 : 0,
                  Hooked() ? 1 : 0);
            return false;
        case WM_DESTROY:
            Event(L"wm-destroy band=%d", rebar_.HasBand(kAddinBandId) ? 1 : 0);
            ::PostQuitMessage(0);
            return false;
        case WM_NCDESTROY:
            Event(L"wm-ncdestroy hooked=%d", Hooked() ? 1 : 0);
            return false;
        case WM_TIMER:
            ::KillTimer(hwnd(), wp);
            if (wp == kExitTimer) {
                if (host_.event)
                    host_.event(L"close requested (exit-after)");
                ::PostMessageW(hwnd(), WM_CLOSE, 0, 0);
            } else if (wp == kStepTimer && host_.timer_step) {
                host_.timer_step();
            }
            return true;
        case kCmdSetBrowser:
        case kCmdRebuild:
        case kCmdDestroy:
        case kCmdUnload:
        case kCmdMapped:
            result = host_.command && host_.command(msg) ? 1 : 0;
            return true;
        default:
            return false;
    }
}

}  // namespace velk::tools
