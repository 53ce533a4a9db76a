#include "controls/bitmap_slider.h"

#include <commctrl.h>

#include <algorithm>

#include "common_src/win32/paint_buffer.h"
#include "log/diag_log.h"

namespace velk::controls {
namespace {

constexpr COLORREF kTransparentKey = RGB(255, 0, 255);
// The built-in thumb, when no bitmap loads: the product's orange.
constexpr int kDrawnThumb = 15;
constexpr COLORREF kThumbFill = RGB(240, 138, 36);
constexpr COLORREF kThumbHot = RGB(248, 168, 80);
constexpr COLORREF kThumbPressed = RGB(210, 105, 30);
constexpr COLORREF kThumbRim = RGB(185, 80, 26);
constexpr COLORREF kGrooveFill = RGB(232, 232, 232);
constexpr COLORREF kGrooveRim = RGB(150, 150, 150);

struct BitmapSize {
    int frame_width = 0;
    int height = 0;
    int frames = 0;
};

BitmapSize SizeOf(HBITMAP bitmap) {
    BITMAP info{};
    if (bitmap == nullptr || ::GetObjectW(bitmap, sizeof(info), &info) == 0 || info.bmWidth <= 0 ||
        info.bmHeight == 0) {
        return {};
    }
    const int width = info.bmWidth;
    const int height = info.bmHeight < 0 ? -info.bmHeight : info.bmHeight;
    const int frames = width % 4 == 0 ? 4 : 1;
    return {width / frames, height, frames};
}

HFONT FontOf(HWND hwnd) {
    auto font = reinterpret_cast<HFONT>(::SendMessageW(hwnd, WM_GETFONT, 0, 0));
    return font != nullptr ? font : static_cast<HFONT>(::GetStockObject(DEFAULT_GUI_FONT));
}

RECT ToRect(const SliderRect& r) {
    return RECT{r.left, r.top, r.right, r.bottom};
}

void Fill(HDC dc, const RECT& r, COLORREF colour) {
    win32::unique_hbrush brush(::CreateSolidBrush(colour));
    ::FillRect(dc, &r, brush.get());
}

// The trackbar's keys: arrows a stop at a time, Page Up/Down a page (one
// stop here), Home and End to either end.
struct KeyStep {
    WPARAM key;
    SliderStep step;
    int code;
};
constexpr KeyStep kKeySteps[] = {
    {VK_UP, SliderStep::kLineUp, TB_LINEUP},       {VK_LEFT, SliderStep::kLineUp, TB_LINEUP},
    {VK_DOWN, SliderStep::kLineDown, TB_LINEDOWN}, {VK_RIGHT, SliderStep::kLineDown, TB_LINEDOWN},
    {VK_PRIOR, SliderStep::kPageUp, TB_PAGEUP},    {VK_NEXT, SliderStep::kPageDown, TB_PAGEDOWN},
    {VK_HOME, SliderStep::kTop, TB_TOP},           {VK_END, SliderStep::kBottom, TB_BOTTOM},
};

const KeyStep* StepOfKey(WPARAM key) {
    for (const KeyStep& step : kKeySteps) {
        if (step.key == key)
            return &step;
    }
    return nullptr;
}

}  // namespace

win32::unique_hbitmap LoadSliderBitmap(HINSTANCE resources, int bitmap_id,
                                       const std::wstring& override_file) {
    if (!override_file.empty()) {
        HANDLE image = ::LoadImageW(nullptr, override_file.c_str(), IMAGE_BITMAP, 0, 0,
                                    LR_LOADFROMFILE | LR_CREATEDIBSECTION);
        if (image != nullptr && SizeOf(static_cast<HBITMAP>(image)).frames > 0)
            return win32::unique_hbitmap(static_cast<HBITMAP>(image));
        if (image != nullptr)
            ::DeleteObject(image);
        // A broken installation file should not leave the slider without a thumb.
        VELK_LOG(L"@@@ Error : can't load the slider bitmap %s, using the built-in one",
                 override_file.c_str());
    }
    if (resources == nullptr)
        return win32::unique_hbitmap();
    return win32::unique_hbitmap(static_cast<HBITMAP>(::LoadImageW(
        resources, MAKEINTRESOURCEW(bitmap_id), IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION)));
}

BitmapSlider::~BitmapSlider() {
    DropTooltips();
}

void BitmapSlider::DropTooltips() noexcept {
    // The dialog destroys the popups it owns before its controls: the
    // tooltip may be gone already, and its handle must not be destroyed twice.
    if (::IsWindow(tooltip_.get()))
        tooltip_.reset();
    else
        tooltip_.release();
}

bool BitmapSlider::TakeOver(HWND dialog, int id) {
    HWND control = ::GetDlgItem(dialog, id);
    if (control == nullptr || !Attach(control))
        return false;
    ::SetWindowTextW(control, names_[position_].c_str());
    CreateTooltips();
    ::InvalidateRect(control, nullptr, TRUE);
    return true;
}

void BitmapSlider::SetStops(const std::array<std::wstring, kStops>& names,
                            const std::array<std::wstring, kStops>& tooltips, bool draw_names) {
    names_ = names;
    tooltips_ = tooltips;
    draw_names_ = draw_names;
    if (attached()) {
        ::SetWindowTextW(hwnd(), names_[position_].c_str());
        DropTooltips();
        CreateTooltips();
        ::InvalidateRect(hwnd(), nullptr, TRUE);
    }
}

void BitmapSlider::SetBitmap(HBITMAP thumbs) {
    thumbs_ = SizeOf(thumbs).frames > 0 ? thumbs : nullptr;
    if (attached()) {
        PlaceTooltips();
        ::InvalidateRect(hwnd(), nullptr, TRUE);
    }
}

void BitmapSlider::SetPosition(int position) {
    MoveTo(position, false, 0);
}

SliderGeometry BitmapSlider::geometry() const {
    RECT client{};
    if (attached())
        ::GetClientRect(hwnd(), &client);
    const BitmapSize size = SizeOf(thumbs_);
    const int thumb_width = size.frames > 0 ? size.frame_width : kDrawnThumb;
    const int thumb_height = size.frames > 0 ? size.height : kDrawnThumb;
    const bool vertical = client.bottom > client.right;
    // The names take what is left beside the thumb.
    const int breadth = vertical ? client.right : client.bottom;
    const int label_width =
        draw_names_ ? std::max(0, breadth - (vertical ? thumb_width : thumb_height) - 6) : 0;
    return SliderGeometry(client.right, client.bottom, kStops, thumb_width, thumb_height,
                          label_width);
}

void BitmapSlider::MoveTo(int position, bool notify, int code) {
    const int clamped = std::clamp(position, 0, kStops - 1);
    if (clamped != position_) {
        position_ = clamped;
        if (attached()) {
            ::SetWindowTextW(hwnd(), names_[position_].c_str());
            ::InvalidateRect(hwnd(), nullptr, FALSE);
        }
    }
    if (notify)
        Notify(code);
}

void BitmapSlider::Notify(int code) {
    HWND parent = attached() ? ::GetParent(hwnd()) : nullptr;
    if (parent == nullptr)
        return;
    const UINT msg = geometry().vertical() ? WM_VSCROLL : WM_HSCROLL;
    const WORD at =
        (code == TB_THUMBTRACK || code == TB_THUMBPOSITION) ? static_cast<WORD>(position_) : 0;
    ::SendMessageW(parent, msg, MAKEWPARAM(code, at), reinterpret_cast<LPARAM>(hwnd()));
}

bool BitmapSlider::OnKeyDown(WPARAM key) {
    const KeyStep* step = StepOfKey(key);
    if (step == nullptr)
        return false;
    const int next = geometry().Step(position_, step->step);
    // Like a trackbar: a key that cannot move the thumb says nothing.
    if (next != position_)
        MoveTo(next, true, step->code);
    return true;
}

void BitmapSlider::OnMouse(UINT msg, int x, int y) {
    const SliderGeometry g = geometry();
    switch (msg) {
        case WM_LBUTTONDOWN:
            if (::GetFocus() != hwnd())
                ::SetFocus(hwnd());
            ::SetCapture(hwnd());
            dragging_ = true;
            // A click anywhere on the slider goes straight to that stop:
            // with three stops there is nothing to page through.
            MoveTo(g.StopAt(x, y), false, 0);
            Notify(TB_THUMBTRACK);
            ::InvalidateRect(hwnd(), nullptr, FALSE);
            break;
        case WM_MOUSEMOVE: {
            if (dragging_) {
                const int stop = g.StopAt(x, y);
                if (stop != position_)
                    MoveTo(stop, true, TB_THUMBTRACK);
                break;
            }
            const bool hot = g.Thumb(position_).Contains(x, y);
            if (hot != hot_) {
                hot_ = hot;
                ::InvalidateRect(hwnd(), nullptr, FALSE);
            }
            if (!tracking_leave_) {
                TRACKMOUSEEVENT tme{sizeof(tme), TME_LEAVE, hwnd(), 0};
                tracking_leave_ = ::TrackMouseEvent(&tme) != FALSE;
            }
            break;
        }
        case WM_LBUTTONUP:
            if (dragging_) {
                dragging_ = false;
                ::ReleaseCapture();
                Notify(TB_THUMBPOSITION);
                Notify(TB_ENDTRACK);
                ::InvalidateRect(hwnd(), nullptr, FALSE);
            }
            break;
        default:
            break;
    }
}

bool BitmapSlider::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    switch (msg) {
        case TBM_GETPOS:
            result = position_;
            return true;
        case TBM_SETPOS:
            MoveTo(static_cast<int>(lp), false, 0);
            if (wp == FALSE)
                ::ValidateRect(hwnd(), nullptr);
            result = 0;
            return true;
        case TBM_GETRANGEMIN:
            result = 0;
            return true;
        case TBM_GETRANGEMAX:
            result = kStops - 1;
            return true;
        case TBM_SETRANGE:
        case TBM_SETRANGEMIN:
        case TBM_SETRANGEMAX:
            // The three levels are fixed; a page asking for them gets them.
            result = 0;
            return true;
        case WM_GETDLGCODE:
            result = DLGC_WANTARROWS;
            return true;
        case WM_NCHITTEST:
            // The placeholder static would let the mouse fall through.
            result = HTCLIENT;
            return true;
        case WM_KEYDOWN:
            result = 0;
            return OnKeyDown(wp);
        case WM_KEYUP:
            if (StepOfKey(wp) == nullptr)
                return false;
            Notify(TB_ENDTRACK);  // a trackbar ends each key's move on its release
            result = 0;
            return true;
        case WM_LBUTTONDOWN:
        case WM_LBUTTONUP:
        case WM_MOUSEMOVE:
            OnMouse(msg, static_cast<short>(LOWORD(lp)), static_cast<short>(HIWORD(lp)));
            result = 0;
            return true;
        case WM_LBUTTONDBLCLK:
            OnMouse(WM_LBUTTONDOWN, static_cast<short>(LOWORD(lp)), static_cast<short>(HIWORD(lp)));
            result = 0;
            return true;
        case WM_MOUSELEAVE:
            tracking_leave_ = false;
            if (hot_) {
                hot_ = false;
                ::InvalidateRect(hwnd(), nullptr, FALSE);
            }
            result = 0;
            return true;
        case WM_CAPTURECHANGED:
            if (dragging_ && reinterpret_cast<HWND>(lp) != hwnd()) {
                dragging_ = false;
                Notify(TB_ENDTRACK);
                ::InvalidateRect(hwnd(), nullptr, FALSE);
            }
            return false;
        case WM_SETFOCUS:
        case WM_KILLFOCUS:
        case WM_ENABLE:
            ::InvalidateRect(hwnd(), nullptr, FALSE);
            return false;
        case WM_UPDATEUISTATE:
            result = CallDefault(msg, wp, lp);
            ::InvalidateRect(hwnd(), nullptr, FALSE);
            return true;
        case WM_SIZE:
            PlaceTooltips();
            ::InvalidateRect(hwnd(), nullptr, FALSE);
            return false;
        case WM_ERASEBKGND:
        case WM_PAINT:
        case WM_PRINTCLIENT:
            return win32::PaintOwnClient(hwnd(), msg, wp, result,
                                         [this](HDC dc, const RECT& client) { Paint(dc, client); });
        case WM_DESTROY:
            DropTooltips();
            return false;
        default:
            return false;
    }
}

void BitmapSlider::Paint(HDC dc, const RECT& client) {
    // The background and text colour the dialog gives its statics, so the
    // slider sits on a white page as on a grey one.
    HWND parent = ::GetParent(hwnd());
    auto brush = reinterpret_cast<HBRUSH>(::SendMessageW(
        parent, WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(dc), reinterpret_cast<LPARAM>(hwnd())));
    ::FillRect(dc, &client, brush != nullptr ? brush : ::GetSysColorBrush(COLOR_BTNFACE));

    const SliderGeometry g = geometry();
    const bool enabled = ::IsWindowEnabled(hwnd()) != FALSE;

    // The groove: a light channel with a grey rim. The stops carry tick
    // marks unless their names stand beside them.
    RECT track = ToRect(g.Track());
    Fill(dc, track, enabled ? kGrooveRim : ::GetSysColor(COLOR_GRAYTEXT));
    ::InflateRect(&track, -1, -1);
    Fill(dc, track, enabled ? kGrooveFill : ::GetSysColor(COLOR_BTNFACE));
    if (!draw_names_) {
        for (int stop = 0; stop < kStops; ++stop)
            Fill(dc, ToRect(g.Tick(stop)), kGrooveRim);
    }

    if (draw_names_) {
        win32::select_object font(dc, FontOf(hwnd()));
        ::SetBkMode(dc, TRANSPARENT);
        if (!enabled)
            ::SetTextColor(dc, ::GetSysColor(COLOR_GRAYTEXT));
        for (int stop = 0; stop < kStops; ++stop) {
            RECT label = ToRect(g.Label(stop));
            const UINT align = g.vertical() ? DT_LEFT | DT_VCENTER : DT_CENTER | DT_TOP;
            ::DrawTextW(dc, names_[stop].c_str(), -1, &label,
                        align | DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS);
        }
    }

    Frame frame = Frame::kNormal;
    if (!enabled)
        frame = Frame::kDisabled;
    else if (dragging_)
        frame = Frame::kPressed;
    else if (hot_)
        frame = Frame::kHot;
    const SliderRect thumb = g.Thumb(position_);
    DrawThumb(dc, thumb, frame);

    const LRESULT ui_state = ::SendMessageW(hwnd(), WM_QUERYUISTATE, 0, 0);
    if (::GetFocus() == hwnd() && (ui_state & UISF_HIDEFOCUS) == 0) {
        RECT focus = ToRect(thumb);
        ::InflateRect(&focus, 1, 1);
        ::SetTextColor(dc, RGB(0, 0, 0));
        ::SetBkColor(dc, RGB(255, 255, 255));
        ::DrawFocusRect(dc, &focus);
    }
}

void BitmapSlider::DrawThumb(HDC dc, const SliderRect& at, Frame frame) {
    const BitmapSize size = SizeOf(thumbs_);
    if (size.frames > 0) {
        win32::unique_hdc source(::CreateCompatibleDC(dc));
        if (source) {
            win32::select_object keep(source.get(), thumbs_);
            const int index = size.frames == 4 ? static_cast<int>(frame) : 0;
            ::TransparentBlt(dc, at.left, at.top, size.frame_width, size.height, source.get(),
                             index * size.frame_width, 0, size.frame_width, size.height,
                             kTransparentKey);
            return;
        }
    }
    COLORREF fill = kThumbFill;
    COLORREF rim = kThumbRim;
    switch (frame) {
        case Frame::kHot:
            fill = kThumbHot;
            break;
        case Frame::kPressed:
            fill = kThumbPressed;
            break;
        case Frame::kDisabled:
            fill = ::GetSysColor(COLOR_BTNFACE);
            rim = ::GetSysColor(COLOR_GRAYTEXT);
            break;
        case Frame::kNormal:
            break;
    }
    win32::unique_hbrush brush(::CreateSolidBrush(fill));
    win32::unique_any<HPEN, win32::detail::DeleteGdi<HPEN>> pen(::CreatePen(PS_SOLID, 1, rim));
    win32::select_object b(dc, brush.get());
    win32::select_object p(dc, pen.get());
    ::Ellipse(dc, at.left, at.top, at.right, at.bottom);
}

void BitmapSlider::CreateTooltips() {
    if (!attached() || tooltip_)
        return;
    bool any = false;
    for (const std::wstring& text : tooltips_)
        any = any || !text.empty();
    if (!any)
        return;
    tooltip_.reset(::CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr,
                                     WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX, CW_USEDEFAULT,
                                     CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, hwnd(), nullptr,
                                     nullptr, nullptr));
    if (!tooltip_)
        return;
    // The texts are sentences: wrap them rather than run off the screen.
    ::SendMessageW(tooltip_.get(), TTM_SETMAXTIPWIDTH, 0, 320);
    const SliderGeometry g = geometry();
    for (int stop = 0; stop < kStops; ++stop) {
        TTTOOLINFOW tool{};
        tool.cbSize = sizeof(tool);
        tool.uFlags = TTF_SUBCLASS;
        tool.hwnd = hwnd();
        tool.uId = static_cast<UINT_PTR>(stop);
        tool.rect = ToRect(g.Zone(stop));
        tool.lpszText = const_cast<wchar_t*>(tooltips_[stop].c_str());
        ::SendMessageW(tooltip_.get(), TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
    }
}

void BitmapSlider::PlaceTooltips() {
    if (!tooltip_)
        return;
    const SliderGeometry g = geometry();
    for (int stop = 0; stop < kStops; ++stop) {
        TTTOOLINFOW tool{};
        tool.cbSize = sizeof(tool);
        tool.hwnd = hwnd();
        tool.uId = static_cast<UINT_PTR>(stop);
        tool.rect = ToRect(g.Zone(stop));
        ::SendMessageW(tooltip_.get(), TTM_NEWTOOLRECTW, 0, reinterpret_cast<LPARAM>(&tool));
    }
}

}  // namespace velk::controls
