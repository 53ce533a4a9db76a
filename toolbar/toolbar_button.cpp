#include "toolbar/toolbar_button.h"

#include "common_src/win32/handles.h"
#include "common_src/win32/paint_buffer.h"
#include "common_src/win32/window_class.h"

namespace velk::toolbar {
namespace {

void FillSolid(HDC dc, const RECT& rect, Colour colour) {
    win32::unique_hbrush brush(::CreateSolidBrush(colour));
    ::FillRect(dc, &rect, brush.get());
}

// A one-pixel frame: `top_left` on the top and left edges, `bottom_right` on
// the others.
void Frame(HDC dc, const RECT& r, Colour top_left, Colour bottom_right) {
    const int w = r.right - r.left;
    const int h = r.bottom - r.top;
    if (w <= 0 || h <= 0)
        return;
    FillSolid(dc, RECT{r.left, r.top, r.right - 1, r.top + 1}, top_left);
    FillSolid(dc, RECT{r.left, r.top, r.left + 1, r.bottom - 1}, top_left);
    FillSolid(dc, RECT{r.right - 1, r.top, r.right, r.bottom}, bottom_right);
    FillSolid(dc, RECT{r.left, r.bottom - 1, r.right, r.bottom}, bottom_right);
}

}  // namespace

bool CToolBarButton::RegisterButtonClass() {
    // No CS_DBLCLKS: a quick second click must arrive as a click.
    return win32::RegisterWindowClass(kClassName) != 0;
}

void CToolBarButton::UnregisterButtonClass() noexcept {
    win32::UnregisterWindowClass(kClassName);
}

CToolBarButton::CToolBarButton(const ToolBarButtonRecord& record, const ToolBarTheme& theme)
    : record_(record), theme_(theme) {}

CToolBarButton::~CToolBarButton() {
    Destroy();
}

ButtonContent CToolBarButton::Content(HDC measure_dc) const {
    ButtonContent content;
    content.variant = record_.nVariant;
    content.bitmap = BitmapExtent(record_.hBitmap);
    content.has_bitmap = content.bitmap.cx > 0 && content.bitmap.cy > 0;
    if (!record_.strCaption.empty() && measure_dc != nullptr) {
        win32::select_object font(measure_dc, theme_.font());
        SIZE text{};
        if (::GetTextExtentPoint32W(measure_dc, record_.strCaption.c_str(),
                                    static_cast<int>(record_.strCaption.size()), &text)) {
            content.text = Extent{text.cx, text.cy};
        }
    }
    return content;
}

Extent CToolBarButton::Measure(int min_height) const {
    win32::window_dc screen(nullptr);
    return MeasureButton(Content(screen.get()), min_height);
}

SIZE CToolBarButton::Create(HWND band, int x, int y, int min_height) {
    const Extent size = Measure(min_height);
    DWORD style = WS_CHILD | WS_VISIBLE;
    if (record_.nVariant == kVariantSeparator) {
        state_ = kStateDisabled;
        style |= WS_DISABLED;
    }
    RECT rect{x, y, x + size.cx, y + size.cy};
    // Drawn by us, the button still says what it is to screen readers and
    // other programs: its caption, else its tooltip.
    const std::wstring& text = record_.strCaption.empty() ? record_.strTooltip : record_.strCaption;
    if (Window::Create(kClassName, band, style, 0, rect, text.c_str(), record_.nId) == nullptr) {
        return SIZE{0, 0};
    }
    return SIZE{size.cx, size.cy};
}

void CToolBarButton::Enable(bool enable) {
    state_ = enable ? kStateEnabled : kStateDisabled;
    Repaint();
}

void CToolBarButton::Repaint() const {
    if (hwnd() != nullptr)
        ::InvalidateRect(hwnd(), nullptr, FALSE);
}

bool CToolBarButton::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    switch (msg) {
        case WM_ERASEBKGND:
            // Everything is painted in WM_PAINT, in one piece.
            result = 1;
            return true;
        case WM_PAINT: {
            win32::paint_dc dc(hwnd());
            Draw(dc.get());
            return true;
        }
        case WM_PRINTCLIENT:
            Draw(reinterpret_cast<HDC>(wp));
            return true;
        default:
            break;
    }
    if (state_ == kStateDisabled)
        return false;
    switch (msg) {
        case WM_MOUSEMOVE:
            if (!hot_) {
                hot_ = true;
                TRACKMOUSEEVENT track{sizeof(track), TME_LEAVE, hwnd(), 0};
                ::TrackMouseEvent(&track);
                Repaint();
            }
            return true;
        case WM_MOUSELEAVE:
            hot_ = false;
            if (record_.nVariant != kVariantDropDown)
                pressed_ = false;
            Repaint();
            return true;
        case WM_LBUTTONDOWN:
            Repaint();
            pressed_ = true;
            return true;
        case WM_LBUTTONUP:
            OnLButtonUp();
            return true;
        default:
            return false;
    }
}

void CToolBarButton::OnLButtonUp() {
    HWND self = hwnd();
    // Sent, not posted: a menu or a modal dialog that the command opens runs
    // while the button still looks pressed.
    ::SendMessageW(::GetParent(self), WM_COMMAND,
                   MAKEWPARAM(static_cast<WORD>(record_.nId), BN_CLICKED),
                   reinterpret_cast<LPARAM>(self));
    // The command may have torn the band down, and this button with it.
    if (!::IsWindow(self) || Window::FromHandle(self) != this)
        return;
    Repaint();
    pressed_ = false;
}

void CToolBarButton::Draw(HDC target) const {
    RECT client{};
    if (hwnd() == nullptr || !::GetClientRect(hwnd(), &client))
        return;
    const int w = client.right;
    const int h = client.bottom;
    if (w <= 0 || h <= 0)
        return;

    win32::PaintBuffer buffer(target, client);
    const HDC dc = buffer.dc();
    const Palette& palette = theme_.palette();
    const bool disabled = state_ == kStateDisabled;

    FillSolid(dc, client, palette.face);
    switch (ChooseFrame(record_.nVariant, disabled, hot_, pressed_)) {
        case FrameLook::kNone:
            break;
        case FrameLook::kFlat:
            Frame(dc, client, palette.face, palette.face);
            break;
        case FrameLook::kSunken:
            Frame(dc, client, palette.shadow, palette.highlight);
            break;
        case FrameLook::kRaised:
            Frame(dc, client, palette.highlight, palette.shadow);
            break;
    }

    const ButtonContent content = Content(dc);
    if (content.has_bitmap) {
        HBITMAP bitmap = disabled && record_.hBitmapDisabled != nullptr ? record_.hBitmapDisabled
                                                                        : record_.hBitmap;
        DrawTransparent(dc, bitmap, kButtonMargin, kButtonMargin);
    }
    if (record_.nVariant == kVariantDropDown && theme_.arrow() != nullptr) {
        const Extent arrow = BitmapExtent(theme_.arrow());
        DrawTransparent(dc, theme_.arrow(), ArrowLeft(Extent{w, h}, arrow.cx), (h - arrow.cy) / 2);
    }
    if (!record_.strCaption.empty()) {
        win32::select_object font(dc, theme_.font());
        ::SetBkMode(dc, TRANSPARENT);
        ::SetTextColor(dc, CaptionColour(palette, theme_.wmail(), record_.nVariant, disabled));
        RECT text{CaptionLeft(content), 0, w, h};
        ::DrawTextW(dc, record_.strCaption.c_str(), static_cast<int>(record_.strCaption.size()),
                    &text, DT_SINGLELINE | DT_VCENTER | DT_LEFT | DT_NOPREFIX);
    }
}

}  // namespace velk::toolbar
