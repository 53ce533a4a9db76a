#include "controls/bitmap_slider.h"

#include <gtest/gtest.h>

#include <commctrl.h>

#include <fstream>
#include <string>
#include <vector>

#include "common_src/win32/dialog_template_test_util.h"
#include "controls/tab_strip.h"

namespace velk::controls {
namespace {

constexpr int kSliderId = 100;

struct Notice {
    UINT msg;
    int code;
    int pos;
};

std::vector<Notice>* g_notices = nullptr;

INT_PTR CALLBACK RecordingProc(HWND, UINT msg, WPARAM wp, LPARAM) {
    if ((msg == WM_VSCROLL || msg == WM_HSCROLL) && g_notices != nullptr)
        g_notices->push_back({msg, LOWORD(wp), HIWORD(wp)});
    return msg == WM_INITDIALOG;
}

class SliderInDialog : public ::testing::Test {
protected:
    void Open(short cx, short cy) {
        g_notices = &notices_;
        // A static placeholder and an OK button after it, as a settings
        // template holds them.
        win32::testing::DialogTemplate t(WS_POPUP | WS_VISIBLE, 200, 150, L"Slider");
        t.Control(L"STATIC", kSliderId, WS_TABSTOP | SS_NOTIFY, 10, 10, cx, cy)
            .Control(L"BUTTON", IDOK, WS_TABSTOP | BS_DEFPUSHBUTTON, 140, 120, 50, 14);
        dialog_ = ::CreateDialogIndirectParamW(::GetModuleHandleW(nullptr), t.get(), nullptr,
                                               &RecordingProc, 0);
        ASSERT_NE(nullptr, dialog_);
        slider_.SetStops({L"High", L"Medium", L"Low"}, {L"tip high", L"tip medium", L"tip low"},
                         true);
        ASSERT_TRUE(slider_.TakeOver(dialog_, kSliderId));
        EXPECT_FALSE(slider_.TakeOver(dialog_, kSliderId));
        control_ = ::GetDlgItem(dialog_, kSliderId);
        ::GetClientRect(control_, &client_);
    }
    void TearDown() override {
        if (dialog_ != nullptr)
            ::DestroyWindow(dialog_);
        g_notices = nullptr;
    }
    // A key as the dialog manager delivers it from the message loop.
    void Key(UINT msg, WPARAM key) {
        MSG m{control_, msg, key, 1, 0, {0, 0}};
        if (!::IsDialogMessageW(dialog_, &m))
            ::DispatchMessageW(&m);
    }
    void Mouse(UINT msg, int x, int y) {
        ::SendMessageW(control_, msg, msg == WM_LBUTTONUP ? 0 : MK_LBUTTON, MAKELPARAM(x, y));
    }
    int Pos() { return static_cast<int>(::SendMessageW(control_, TBM_GETPOS, 0, 0)); }
    std::wstring Text() {
        wchar_t text[64] = L"";
        ::GetWindowTextW(control_, text, 64);
        return text;
    }

    std::vector<Notice> notices_;
    HWND dialog_ = nullptr;
    HWND control_ = nullptr;
    RECT client_{};
    BitmapSlider slider_;
};

TEST_F(SliderInDialog, KeysMoveItLikeAVerticalTrackbarAndItsTextNamesTheStop) {
    Open(40, 90);
    ::SetFocus(control_);
    ASSERT_EQ(control_, ::GetFocus());
    EXPECT_EQ(1, Pos());
    EXPECT_EQ(L"Medium", Text());

    Key(WM_KEYDOWN, VK_DOWN);
    EXPECT_EQ(2, Pos());
    EXPECT_EQ(L"Low", Text());
    Key(WM_KEYUP, VK_DOWN);
    Key(WM_KEYDOWN, VK_NEXT);  // at the end: nothing moves, nothing is said
    EXPECT_EQ(2, Pos());
    Key(WM_KEYDOWN, VK_HOME);
    EXPECT_EQ(0, Pos());
    EXPECT_EQ(L"High", Text());
    Key(WM_KEYDOWN, VK_END);
    Key(WM_KEYDOWN, VK_PRIOR);
    EXPECT_EQ(1, Pos());
    Key(WM_KEYDOWN, VK_UP);
    EXPECT_EQ(0, Pos());
    EXPECT_EQ(control_, ::GetFocus()) << "the arrows stay with the slider";

    const std::vector<std::pair<int, int>> expected = {{TB_LINEDOWN, 0}, {TB_ENDTRACK, 0},
                                                       {TB_TOP, 0},      {TB_BOTTOM, 0},
                                                       {TB_PAGEUP, 0},   {TB_LINEUP, 0}};
    ASSERT_EQ(expected.size(), notices_.size());
    for (size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(static_cast<UINT>(WM_VSCROLL), notices_[i].msg);
        EXPECT_EQ(expected[i].first, notices_[i].code) << i;
    }

    // Set by the page: moves without a notification, clamped to the stops.
    notices_.clear();
    ::SendMessageW(control_, TBM_SETPOS, TRUE, 2);
    EXPECT_EQ(2, Pos());
    ::SendMessageW(control_, TBM_SETPOS, TRUE, 9);
    EXPECT_EQ(2, Pos());
    EXPECT_EQ(2, ::SendMessageW(control_, TBM_GETRANGEMAX, 0, 0));
    EXPECT_TRUE(notices_.empty());
}

TEST_F(SliderInDialog, MouseDragsBetweenStopsAndReportsTheDropLikeATrackbar) {
    Open(120, 24);  // wider than tall: horizontal, WM_HSCROLL
    const int y = client_.bottom / 2;
    Mouse(WM_LBUTTONDOWN, 1, y);
    EXPECT_EQ(0, Pos());
    EXPECT_EQ(control_, ::GetFocus()) << "a click gives the slider the keyboard";
    Mouse(WM_MOUSEMOVE, client_.right / 2, y);
    EXPECT_EQ(1, Pos());
    Mouse(WM_MOUSEMOVE, client_.right + 40, y);  // past the end while captured
    EXPECT_EQ(2, Pos());
    Mouse(WM_LBUTTONUP, client_.right + 40, y);
    EXPECT_EQ(2, Pos());
    EXPECT_NE(control_, ::GetCapture());

    ASSERT_GE(notices_.size(), 4u);
    for (const Notice& n : notices_)
        EXPECT_EQ(static_cast<UINT>(WM_HSCROLL), n.msg);
    const Notice& drop = notices_[notices_.size() - 2];
    EXPECT_EQ(TB_THUMBPOSITION, drop.code);
    EXPECT_EQ(2, drop.pos);
    EXPECT_EQ(TB_ENDTRACK, notices_.back().code);
    EXPECT_EQ(TB_THUMBTRACK, notices_[1].code);
    EXPECT_EQ(1, notices_[1].pos);
}

// Four 10x10 frames in the given colours, each with a magenta top-left pixel.
win32::unique_hbitmap ThumbStrip(const COLORREF (&frames)[4]) {
    BITMAPINFO info{};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), 40, -10, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    win32::unique_hbitmap strip(
        ::CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    auto* px = static_cast<DWORD*>(bits);
    for (int y = 0; y < 10; ++y) {
        for (int x = 0; x < 40; ++x) {
            const COLORREF c = (x % 10 == 0 && y == 0) ? RGB(255, 0, 255) : frames[x / 10];
            px[y * 40 + x] = (GetRValue(c) << 16) | (GetGValue(c) << 8) | GetBValue(c);
        }
    }
    return strip;
}

// The colour at (x, y) as the control paints itself (WM_PRINTCLIENT: no
// screen involved).
COLORREF PrintedPixel(HWND control, int x, int y) {
    RECT client{};
    ::GetClientRect(control, &client);
    HDC screen = ::GetDC(nullptr);
    HDC memory = ::CreateCompatibleDC(screen);
    HBITMAP canvas = ::CreateCompatibleBitmap(screen, client.right, client.bottom);
    HGDIOBJ old = ::SelectObject(memory, canvas);
    ::SendMessageW(control, WM_PRINTCLIENT, reinterpret_cast<WPARAM>(memory), PRF_CLIENT);
    const COLORREF c = ::GetPixel(memory, x, y);
    ::SelectObject(memory, old);
    ::DeleteObject(canvas);
    ::DeleteDC(memory);
    ::ReleaseDC(nullptr, screen);
    return c;
}

TEST_F(SliderInDialog, DrawsTheStateFrameOfItsThumbsAndSurvivesABrokenFile) {
    // No product bitmap here (no language module): a broken or missing file
    // leaves the slider to draw its own thumb rather than failing.
    wchar_t dir[MAX_PATH];
    ::GetTempPathW(MAX_PATH, dir);
    const std::wstring broken = std::wstring(dir) + L"velk_slider_broken.bmp";
    std::ofstream(broken.c_str(), std::ios::binary) << "not a bitmap";
    EXPECT_FALSE(LoadSliderBitmap(nullptr, 1, broken));
    EXPECT_FALSE(LoadSliderBitmap(nullptr, 1, std::wstring(dir) + L"velk_no_such.bmp"));
    ::DeleteFileW(broken.c_str());

    const COLORREF frames[4] = {RGB(0, 0, 200), RGB(0, 200, 0), RGB(200, 0, 0), RGB(128, 128, 128)};
    win32::unique_hbitmap thumbs = ThumbStrip(frames);
    Open(40, 90);
    slider_.SetBitmap(thumbs.get());
    ::SendMessageW(control_, TBM_SETPOS, TRUE, 0);
    const SliderRect at = slider_.geometry().Thumb(0);
    const int cx = (at.left + at.right) / 2, cy = (at.top + at.bottom) / 2;
    EXPECT_EQ(frames[0], PrintedPixel(control_, cx, cy));
    EXPECT_NE(RGB(255, 0, 255), PrintedPixel(control_, at.left, at.top)) << "the key is see-through";
    ::EnableWindow(control_, FALSE);
    EXPECT_EQ(frames[3], PrintedPixel(control_, cx, cy));
}

class TabStripTest : public ::testing::Test {
protected:
    void SetUp() override {
        INITCOMMONCONTROLSEX icc{sizeof(icc), ICC_TAB_CLASSES};
        ::InitCommonControlsEx(&icc);
        frame_ = ::CreateWindowExW(0, L"Static", L"", WS_POPUP | WS_VISIBLE, 20, 20, 400, 200,
                                   nullptr, nullptr, nullptr, nullptr);
        tab_ = ::CreateWindowExW(0, WC_TABCONTROLW, L"", WS_CHILD | WS_VISIBLE, 0, 0, 400, 200,
                                 frame_, nullptr, nullptr, nullptr);
        ASSERT_NE(nullptr, tab_);
        ::SendMessageW(tab_, WM_SETFONT,
                       reinterpret_cast<WPARAM>(::GetStockObject(DEFAULT_GUI_FONT)), 0);
        const wchar_t* titles[] = {L"Detection", L"Links", L"Senders"};
        for (int i = 0; i < 3; ++i) {
            TCITEMW item{};
            item.mask = TCIF_TEXT;
            item.pszText = const_cast<wchar_t*>(titles[i]);
            ::SendMessageW(tab_, TCM_INSERTITEMW, i, reinterpret_cast<LPARAM>(&item));
        }
    }
    void TearDown() override { ::DestroyWindow(frame_); }

    RECT Item(int i) {
        RECT r{};
        ::SendMessageW(tab_, TCM_GETITEMRECT, i, reinterpret_cast<LPARAM>(&r));
        return r;
    }
    // Inside tab i, clear of its text and its frame.
    COLORREF FillOf(int i) {
        const RECT r = Item(i);
        return PrintedPixel(tab_, r.left + 4, r.bottom - 3);
    }

    HWND frame_ = nullptr;
    HWND tab_ = nullptr;
};

TEST_F(TabStripTest, PaintsSelectedAndHotTabsInTheProductsColours) {
    const TabStripColours colours;
    TabStrip strip(colours);
    ASSERT_TRUE(strip.TakeOver(tab_));
    EXPECT_EQ(TabStrip::kItemHeight, Item(0).bottom - Item(0).top);

    ::SendMessageW(tab_, TCM_SETCURSEL, 1, 0);
    const RECT second = Item(1);
    ::SendMessageW(tab_, WM_MOUSEMOVE, 0, MAKELPARAM(Item(2).left + 5, Item(2).top + 5));
    EXPECT_EQ(2, strip.hot_item());

    EXPECT_EQ(colours.selected, FillOf(1));
    EXPECT_EQ(colours.hot, FillOf(2));
    EXPECT_EQ(colours.face, FillOf(0));
    // The open tab carries the accent line on top and opens into the page.
    EXPECT_EQ(colours.accent, PrintedPixel(tab_, second.left + 4, second.top - 1));
    EXPECT_EQ(colours.selected, PrintedPixel(tab_, second.left + 4, second.bottom));
    EXPECT_EQ(colours.border, PrintedPixel(tab_, Item(0).left + 4, Item(0).bottom));

    // The mouse leaves: nothing is hot any more.
    ::SendMessageW(tab_, WM_MOUSELEAVE, 0, 0);
    EXPECT_EQ(-1, strip.hot_item());
    EXPECT_EQ(colours.face, FillOf(2));

    // Selection still works the stock way (the strip only paints).
    ::SendMessageW(tab_, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(Item(0).left + 5, Item(0).top + 5));
    ::SendMessageW(tab_, WM_LBUTTONUP, 0, MAKELPARAM(Item(0).left + 5, Item(0).top + 5));
    EXPECT_EQ(0, ::SendMessageW(tab_, TCM_GETCURSEL, 0, 0));
    EXPECT_EQ(colours.selected, FillOf(0));
}

}  // namespace
}  // namespace velk::controls
