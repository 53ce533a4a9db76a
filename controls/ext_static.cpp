#include "controls/ext_static.h"

#include <shellapi.h>

#include <cstdlib>

#include "common_src/win32/ui_context.h"
#include "log/diag_log.h"

namespace velk::controls {
namespace {

int Luminance(COLORREF c) {
    return (299 * GetRValue(c) + 587 * GetGValue(c) + 114 * GetBValue(c)) / 1000;
}

// The system's link colour, unless it hardly stands out from the dialog
// background (some systems ship a light grey): then the usual link blue, or
// a light blue on a dark scheme.
COLORREF LinkColour() {
    const COLORREF hot = ::GetSysColor(COLOR_HOTLIGHT);
    const int face = Luminance(::GetSysColor(COLOR_BTNFACE));
    if (std::abs(Luminance(hot) - face) >= 80)
        return hot;
    return face >= 128 ? RGB(0, 102, 204) : RGB(120, 180, 255);
}

std::wstring WindowText(HWND hwnd) {
    const int length = ::GetWindowTextLengthW(hwnd);
    std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
    text.resize(static_cast<std::size_t>(::GetWindowTextW(hwnd, &text[0], length + 1)));
    return text;
}

}  // namespace

bool ExtStatic::OpenWithShell(HWND control, const std::wstring& target) {
    SHELLEXECUTEINFOW info{};
    info.cbSize = sizeof(info);
    info.fMask = SEE_MASK_FLAG_NO_UI;
    info.hwnd = win32::TopLevelOwner(control);
    info.lpVerb = L"open";
    info.lpFile = target.c_str();
    info.nShow = SW_SHOWNORMAL;
    if (::ShellExecuteExW(&info))
        return true;
    VELK_LOG(L"@@@ Error : can't open the link %s (%lu)", target.c_str(), ::GetLastError());
    return false;
}

void ExtStatic::SetFont(const std::wstring& face, int points, int weight) {
    if (hwnd() == nullptr)
        return;
    SetFont(win32::unique_hfont(win32::CreateDialogFont(::GetParent(hwnd()), face, points, weight)));
}

void ExtStatic::SetFont(win32::unique_hfont font) {
    if (hwnd() == nullptr || !font)
        return;
    font_ = std::move(font);
    // Through our own procedure, so a link underlines the new font.
    ::SendMessageW(hwnd(), WM_SETFONT, reinterpret_cast<WPARAM>(font_.get()), TRUE);
}

void ExtStatic::SetTextColor(COLORREF colour) {
    text_colour_ = colour;
    if (hwnd() != nullptr)
        ::InvalidateRect(hwnd(), nullptr, TRUE);
}

void ExtStatic::SetBackground(COLORREF colour) {
    background_.reset(::CreateSolidBrush(colour));
    transparent_ = false;
    if (hwnd() != nullptr)
        ::InvalidateRect(hwnd(), nullptr, TRUE);
}

void ExtStatic::SetTransparent() {
    background_.reset();
    transparent_ = true;
    RefreshParentBehind();
}

void ExtStatic::SetLink(const std::wstring& target, Opener opener) {
    if (hwnd() == nullptr)
        return;
    link_ = true;
    target_ = target;
    opener_ = opener ? std::move(opener) : Opener(&OpenWithShell);
    // SS_NOTIFY: a static without it is transparent to the mouse.
    // SS_NOPREFIX: an "&" in an address is a character, not a mnemonic.
    const LONG_PTR style = ::GetWindowLongPtrW(hwnd(), GWL_STYLE);
    ::SetWindowLongPtrW(hwnd(), GWL_STYLE, style | SS_NOTIFY | SS_NOPREFIX | WS_TABSTOP);
    UpdateLinkFont();
}

std::wstring ExtStatic::LinkTarget() const {
    if (!link_ || hwnd() == nullptr)
        return std::wstring();
    return target_.empty() ? WindowText(hwnd()) : target_;
}

bool ExtStatic::Activate() {
    const std::wstring target = LinkTarget();
    if (target.empty() || !opener_)
        return false;
    return opener_(hwnd(), target);
}

void ExtStatic::SizeToText() {
    if (hwnd() == nullptr)
        return;
    win32::window_dc dc(hwnd());
    const std::wstring text = WindowText(hwnd());
    HGDIOBJ old = ::SelectObject(dc.get(), reinterpret_cast<HGDIOBJ>(CallDefault(WM_GETFONT, 0, 0)));
    SIZE extent{};
    ::GetTextExtentPoint32W(dc.get(), text.c_str(), static_cast<int>(text.size()), &extent);
    ::SelectObject(dc.get(), old);
    RECT rect{};
    ::GetWindowRect(hwnd(), &rect);
    const LONG width = extent.cx + 2;  // room for the focus rectangle
    if (width < rect.right - rect.left)
        ::SetWindowPos(hwnd(), nullptr, 0, 0, width, rect.bottom - rect.top,
                       SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void ExtStatic::UpdateLinkFont() {
    auto current = reinterpret_cast<HFONT>(CallDefault(WM_GETFONT, 0, 0));
    LOGFONTW lf{};
    if (current == nullptr || ::GetObjectW(current, sizeof(lf), &lf) == 0)
        ::GetObjectW(::GetStockObject(DEFAULT_GUI_FONT), sizeof(lf), &lf);
    lf.lfUnderline = TRUE;
    win32::unique_hfont underlined(::CreateFontIndirectW(&lf));
    if (!underlined)
        return;
    CallDefault(WM_SETFONT, reinterpret_cast<WPARAM>(underlined.get()), TRUE);
    link_font_ = std::move(underlined);
}

void ExtStatic::RefreshParentBehind() {
    HWND parent = hwnd() != nullptr ? ::GetParent(hwnd()) : nullptr;
    if (parent == nullptr)
        return;
    // A transparent static draws its new text over the old one unless the
    // parent paints the background behind it again first.
    RECT rect{};
    ::GetWindowRect(hwnd(), &rect);
    ::MapWindowPoints(nullptr, parent, reinterpret_cast<POINT*>(&rect), 2);
    ::RedrawWindow(parent, &rect, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

bool ExtStatic::OnColor(HDC dc, LRESULT& result) {
    if (!link_ && text_colour_ == CLR_INVALID && !transparent_ && !background_)
        return false;
    if (transparent_) {
        ::SetBkMode(dc, TRANSPARENT);
        result = reinterpret_cast<LRESULT>(::GetStockObject(NULL_BRUSH));
    } else if (background_) {
        LOGBRUSH lb{};
        ::GetObjectW(background_.get(), sizeof(lb), &lb);
        ::SetBkColor(dc, lb.lbColor);
        result = reinterpret_cast<LRESULT>(background_.get());
    } else {
        // The parent's own answer for the background.
        result = ::DefWindowProcW(::GetParent(hwnd()), WM_CTLCOLORSTATIC,
                                  reinterpret_cast<WPARAM>(dc), reinterpret_cast<LPARAM>(hwnd()));
    }
    if (text_colour_ != CLR_INVALID)
        ::SetTextColor(dc, text_colour_);
    else if (link_)
        ::SetTextColor(dc, LinkColour());
    return true;
}

void ExtStatic::DrawFocus() {
    win32::window_dc dc(hwnd());
    if (dc.get() == nullptr)
        return;
    RECT client{};
    ::GetClientRect(hwnd(), &client);
    const std::wstring text = WindowText(hwnd());
    HGDIOBJ old = ::SelectObject(dc.get(), reinterpret_cast<HGDIOBJ>(CallDefault(WM_GETFONT, 0, 0)));
    RECT box = client;
    ::DrawTextW(dc.get(), text.c_str(), static_cast<int>(text.size()), &box,
                DT_CALCRECT | DT_WORDBREAK | DT_NOPREFIX);
    ::SelectObject(dc.get(), old);
    // Around the text, one pixel out where the control leaves room.
    const LONG_PTR align = ::GetWindowLongPtrW(hwnd(), GWL_STYLE) & SS_TYPEMASK;
    const LONG width = box.right - box.left;
    if (align == SS_CENTER)
        box.left = client.left + (client.right - client.left - width) / 2;
    else if (align == SS_RIGHT)
        box.left = client.right - width;
    box.right = box.left + width;
    ::InflateRect(&box, 1, 1);
    ::IntersectRect(&box, &box, &client);
    ::DrawFocusRect(dc.get(), &box);
}

bool ExtStatic::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    switch (msg) {
        case win32::kReflectedMessageBase + WM_CTLCOLORSTATIC:
            return OnColor(reinterpret_cast<HDC>(wp), result);
        case WM_SETTEXT:
            if (!transparent_)
                return false;
            result = CallDefault(msg, wp, lp);
            RefreshParentBehind();
            return true;
        case WM_SETFONT:
            if (!link_ || reinterpret_cast<HFONT>(wp) == link_font_.get())
                return false;
            CallDefault(msg, wp, lp);
            UpdateLinkFont();
            result = 0;
            return true;
        default:
            break;
    }
    if (!link_)
        return false;
    switch (msg) {
        case WM_SETCURSOR:
            ::SetCursor(::LoadCursorW(nullptr, IDC_HAND));
            result = TRUE;
            return true;
        case WM_LBUTTONDOWN:
            pressed_ = true;
            return false;
        case WM_LBUTTONUP: {
            const bool was_pressed = pressed_;
            pressed_ = false;
            RECT client{};
            ::GetClientRect(hwnd(), &client);
            const POINT at{static_cast<short>(LOWORD(lp)), static_cast<short>(HIWORD(lp))};
            if (was_pressed && ::PtInRect(&client, at))
                Activate();
            return false;
        }
        case WM_GETDLGCODE: {
            // Enter opens the focused link instead of pressing the dialog's
            // default button.
            const auto* pending = reinterpret_cast<const MSG*>(lp);
            result = CallDefault(msg, wp, lp);
            if (pending != nullptr && pending->message == WM_KEYDOWN && pending->wParam == VK_RETURN)
                result |= DLGC_WANTMESSAGE;
            return true;
        }
        case WM_KEYDOWN:
            if (wp == VK_RETURN || wp == VK_SPACE) {
                Activate();
                result = 0;
                return true;
            }
            return false;
        case WM_SETFOCUS:
        case WM_KILLFOCUS:
            ::InvalidateRect(hwnd(), nullptr, TRUE);
            if (transparent_)
                RefreshParentBehind();
            return false;
        case WM_PAINT:
            result = CallDefault(msg, wp, lp);
            if (::GetFocus() == hwnd())
                DrawFocus();
            return true;
        default:
            return false;
    }
}

}  // namespace velk::controls
