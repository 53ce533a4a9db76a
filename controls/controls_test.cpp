// The owner-drawn controls in one dialog, as settings templates hold them,
// driven through the messages the system and the user send them.
#include <windows.h>

#include <commctrl.h>
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "common_src/win32/dialog.h"
#include "common_src/win32/dialog_template_test_util.h"
#include "controls/bitmap_slider.h"
#include "controls/digit_edit.h"
#include "controls/ext_static.h"
#include "controls/tab_strip.h"

namespace velk::controls {
namespace {

constexpr int kVertical = 100, kHorizontal = 101, kTabs = 102, kEdit = 103, kLink = 104,
              kPlain = 105, kClear = 106, kFramed = 107;

struct Notice {
    UINT msg;
    int code;
    int pos;
};

// Records what its sliders say and counts the OK commands; hands the rest to
// the controls' objects.
class Host : public win32::Dialog {
public:
    std::vector<Notice> notices;
    int ok_commands = 0;

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM, LRESULT& result) override {
        if (msg == WM_VSCROLL || msg == WM_HSCROLL)
            notices.push_back({msg, LOWORD(wp), HIWORD(wp)});
        if (msg == WM_COMMAND && LOWORD(wp) == IDOK) {
            ++ok_commands;
            return true;
        }
        result = TRUE;
        return msg == WM_INITDIALOG;
    }
};

// Two sliders on static placeholders (taller than wide: vertical; wider than
// tall: horizontal), a tab control, an edit, the default button followed by
// a link, and three more statics.
class ControlsInDialog : public ::testing::Test {
protected:
    void SetUp() override {
        INITCOMMONCONTROLSEX icc{sizeof(icc), ICC_TAB_CLASSES};
        ::InitCommonControlsEx(&icc);
        win32::testing::DialogTemplate t(WS_POPUP | WS_VISIBLE, 300, 190);
        t.Control(L"STATIC", kVertical, WS_TABSTOP | SS_NOTIFY, 10, 10, 40, 90)
            .Control(L"STATIC", kHorizontal, WS_TABSTOP | SS_NOTIFY, 60, 10, 120, 24)
            .Control(WC_TABCONTROLW, kTabs, 0, 60, 50, 230, 60)
            .Control(L"EDIT", kEdit, WS_BORDER | ES_AUTOHSCROLL, 10, 120, 100, 14)
            .Control(L"BUTTON", IDOK, WS_TABSTOP | BS_DEFPUSHBUTTON, 240, 120, 50, 14)
            .Control(L"STATIC", kLink, 0, 10, 140, 150, 10)
            .Control(L"STATIC", kPlain, 0, 10, 152, 100, 10)
            .Control(L"STATIC", kClear, 0, 10, 164, 100, 10)
            .Control(L"STATIC", kFramed, 0, 10, 176, 100, 10);
        dialog_ = host_.CreateModelessIndirect(t.get(), nullptr);
        ASSERT_NE(nullptr, dialog_);
        for (BitmapSlider* slider : {&vertical_, &horizontal_})
            slider->SetStops({L"High", L"Medium", L"Low"}, {L"tip high", L"tip medium", L"tip low"},
                             true);
        ASSERT_TRUE(vertical_.TakeOver(dialog_, kVertical));
        ASSERT_TRUE(horizontal_.TakeOver(dialog_, kHorizontal));
        EXPECT_FALSE(vertical_.TakeOver(dialog_, kVertical));
        host_.notices.clear();
    }

    HWND Item(int id) const { return ::GetDlgItem(dialog_, id); }
    // A key as the dialog manager delivers it from the message loop.
    void Key(UINT msg, WPARAM key) {
        MSG m{Item(kVertical), msg, key, 1, 0, {0, 0}};
        if (!::IsDialogMessageW(dialog_, &m))
            ::DispatchMessageW(&m);
    }
    int Pos(int id) const { return static_cast<int>(::SendDlgItemMessageW(dialog_, id, TBM_GETPOS, 0, 0)); }
    std::wstring Text(int id) const {
        wchar_t text[64] = L"";
        ::GetDlgItemTextW(dialog_, id, text, 64);
        return text;
    }
    std::vector<int> Codes(UINT msg) const {
        std::vector<int> codes;
        for (const Notice& n : host_.notices) {
            EXPECT_EQ(msg, n.msg);
            codes.push_back(n.code);
        }
        return codes;
    }

    Host host_;
    HWND dialog_ = nullptr;
    BitmapSlider vertical_, horizontal_;
};

TEST_F(ControlsInDialog, SliderMovesByKeysAndMouseLikeATrackbarAndItsTextNamesTheStop) {
    ::SetFocus(Item(kVertical));
    EXPECT_EQ(1, Pos(kVertical));
    EXPECT_EQ(L"Medium", Text(kVertical));
    Key(WM_KEYDOWN, VK_DOWN);
    EXPECT_EQ(L"Low", Text(kVertical));
    Key(WM_KEYUP, VK_DOWN);
    Key(WM_KEYDOWN, VK_NEXT);  // at the end: nothing moves, nothing is said
    Key(WM_KEYDOWN, VK_HOME);
    EXPECT_EQ(L"High", Text(kVertical));
    Key(WM_KEYDOWN, VK_END);
    Key(WM_KEYDOWN, VK_PRIOR);
    EXPECT_EQ(1, Pos(kVertical));
    Key(WM_KEYDOWN, VK_UP);
    EXPECT_EQ(0, Pos(kVertical));
    EXPECT_EQ(Item(kVertical), ::GetFocus()) << "the arrows stay with the slider";
    EXPECT_EQ((std::vector<int>{TB_LINEDOWN, TB_ENDTRACK, TB_TOP, TB_BOTTOM, TB_PAGEUP, TB_LINEUP}),
              Codes(WM_VSCROLL));

    // Set by the page: moves without a notification, clamped to the stops.
    host_.notices.clear();
    ::SendDlgItemMessageW(dialog_, kVertical, TBM_SETPOS, TRUE, 9);
    EXPECT_EQ(2, Pos(kVertical));
    EXPECT_EQ(2, ::SendDlgItemMessageW(dialog_, kVertical, TBM_GETRANGEMAX, 0, 0));
    EXPECT_TRUE(host_.notices.empty());

    // The mouse drags the horizontal one between stops; the drop is reported
    // like a trackbar's.
    HWND control = Item(kHorizontal);
    RECT client{};
    ::GetClientRect(control, &client);
    auto mouse = [&](UINT msg, int x) {
        ::SendMessageW(control, msg, msg == WM_LBUTTONUP ? 0 : MK_LBUTTON,
                       MAKELPARAM(x, client.bottom / 2));
        return Pos(kHorizontal);
    };
    EXPECT_EQ(0, mouse(WM_LBUTTONDOWN, 1));
    EXPECT_EQ(control, ::GetFocus()) << "a click gives the slider the keyboard";
    EXPECT_EQ(1, mouse(WM_MOUSEMOVE, client.right / 2));
    EXPECT_EQ(2, mouse(WM_MOUSEMOVE, client.right + 40));  // past the end while captured
    EXPECT_EQ(2, mouse(WM_LBUTTONUP, client.right + 40));
    EXPECT_NE(control, ::GetCapture());

    const std::vector<int> codes = Codes(WM_HSCROLL);
    ASSERT_GE(codes.size(), 4u);
    EXPECT_EQ(TB_THUMBTRACK, codes[1]);
    EXPECT_EQ(1, host_.notices[1].pos);
    EXPECT_EQ(TB_THUMBPOSITION, codes[codes.size() - 2]);
    EXPECT_EQ(2, host_.notices[codes.size() - 2].pos);
    EXPECT_EQ(TB_ENDTRACK, codes.back());
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

TEST_F(ControlsInDialog, SliderDrawsTheStateFrameOfItsThumbsAndSurvivesABrokenFile) {
    // No product bitmap here (no language module): a broken or missing file
    // leaves the slider to draw its own thumb rather than failing.
    wchar_t dir[MAX_PATH];
    ::GetTempPathW(MAX_PATH, dir);
    const std::wstring broken = std::wstring(dir) + L"velk_slider_broken.bmp";
    std::ofstream(broken.c_str(), std::ios::binary) << "not a bitmap";
    EXPECT_FALSE(LoadSliderBitmap(nullptr, 1, broken));
    EXPECT_FALSE(LoadSliderBitmap(nullptr, 1, std::wstring(dir) + L"velk_no_such.bmp"));
    ::DeleteFileW(broken.c_str());

    // Four 10x10 frames (normal, hot, pressed, disabled), each with a
    // magenta top-left pixel.
    const COLORREF frames[4] = {RGB(0, 0, 200), RGB(0, 200, 0), RGB(200, 0, 0), RGB(128, 128, 128)};
    BITMAPINFO info{};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), 40, -10, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    win32::unique_hbitmap thumbs(::CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    for (int i = 0; i < 400; ++i) {
        const COLORREF c = i % 10 == 0 && i < 40 ? RGB(255, 0, 255) : frames[i % 40 / 10];
        static_cast<DWORD*>(bits)[i] = (GetRValue(c) << 16) | (GetGValue(c) << 8) | GetBValue(c);
    }
    vertical_.SetBitmap(thumbs.get());
    ::SendDlgItemMessageW(dialog_, kVertical, TBM_SETPOS, TRUE, 0);
    const SliderRect at = vertical_.geometry().Thumb(0);
    const int cx = (at.left + at.right) / 2, cy = (at.top + at.bottom) / 2;
    EXPECT_EQ(frames[0], PrintedPixel(Item(kVertical), cx, cy));
    EXPECT_NE(RGB(255, 0, 255), PrintedPixel(Item(kVertical), at.left, at.top))
        << "the key is see-through";
    ::EnableWindow(Item(kVertical), FALSE);
    EXPECT_EQ(frames[3], PrintedPixel(Item(kVertical), cx, cy));
}

TEST_F(ControlsInDialog, TabStripPaintsSelectedAndHotTabsInTheProductsColours) {
    HWND tab = Item(kTabs);
    for (const wchar_t* title : {L"Detection", L"Links", L"Senders"}) {
        TCITEMW item{};
        item.mask = TCIF_TEXT;
        item.pszText = const_cast<wchar_t*>(title);
        ::SendMessageW(tab, TCM_INSERTITEMW, 9, reinterpret_cast<LPARAM>(&item));
    }
    const TabStripColours colours;
    TabStrip strip(colours);
    ASSERT_TRUE(strip.TakeOver(tab));
    auto rect = [&](int i) {
        RECT r{};
        ::SendMessageW(tab, TCM_GETITEMRECT, i, reinterpret_cast<LPARAM>(&r));
        return r;
    };
    // Inside tab i, clear of its text and its frame.
    auto fill = [&](int i) { return PrintedPixel(tab, rect(i).left + 4, rect(i).bottom - 3); };

    ::SendMessageW(tab, TCM_SETCURSEL, 1, 0);
    ::SendMessageW(tab, WM_MOUSEMOVE, 0, MAKELPARAM(rect(2).left + 5, rect(2).top + 5));
    EXPECT_EQ(2, strip.hot_item());
    EXPECT_EQ(colours.selected, fill(1));
    EXPECT_EQ(colours.hot, fill(2));
    EXPECT_EQ(colours.face, fill(0));

    // The mouse leaves: nothing is hot any more.
    ::SendMessageW(tab, WM_MOUSELEAVE, 0, 0);
    EXPECT_EQ(-1, strip.hot_item());
    EXPECT_EQ(colours.face, fill(2));

    // Selection still works the stock way (the strip only paints).
    const LPARAM first = MAKELPARAM(rect(0).left + 5, rect(0).top + 5);
    ::SendMessageW(tab, WM_LBUTTONDOWN, MK_LBUTTON, first);
    ::SendMessageW(tab, WM_LBUTTONUP, 0, first);
    EXPECT_EQ(0, ::SendMessageW(tab, TCM_GETCURSEL, 0, 0));
    EXPECT_EQ(colours.selected, fill(0));
}

bool PutOnClipboard(HWND owner, const std::wstring& text) {
    const std::size_t bytes = (text.size() + 1) * sizeof(wchar_t);
    HGLOBAL data = ::GlobalAlloc(GMEM_MOVEABLE, bytes);
    std::memcpy(::GlobalLock(data), text.c_str(), bytes);
    ::GlobalUnlock(data);
    const bool put = ::OpenClipboard(owner) && ::EmptyClipboard() &&
                     ::SetClipboardData(CF_UNICODETEXT, data) != nullptr;
    ::CloseClipboard();
    return put;
}

TEST_F(ControlsInDialog, DigitEditRefusesTypedAndPastedNonDigits) {
    HWND edit = Item(kEdit);
    DigitEdit digits;
    ASSERT_TRUE(digits.Attach(edit));

    for (wchar_t c : std::wstring(L"1a2 -3"))
        ::SendMessageW(edit, WM_CHAR, c, 0);
    EXPECT_EQ(L"123", Text(kEdit));
    ::SendMessageW(edit, WM_CHAR, VK_BACK, 0);  // editing keys still work
    EXPECT_EQ(L"12", Text(kEdit));

    ::SendMessageW(edit, EM_SETSEL, 2, 2);
    ASSERT_TRUE(PutOnClipboard(edit, L"4x5"));
    ::SendMessageW(edit, WM_PASTE, 0, 0);
    EXPECT_EQ(L"12", Text(kEdit)) << "a paste holding a letter changes nothing";
    ASSERT_TRUE(PutOnClipboard(edit, L" 345\r\n"));
    ::SendMessageW(edit, WM_PASTE, 0, 0);
    EXPECT_EQ(L"12345", Text(kEdit)) << "blanks around a copied number are dropped";

    // Another program inserting text directly meets the same rule.
    ::SendMessageW(edit, EM_SETSEL, 0, -1);
    ::SendMessageW(edit, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(L"7e3"));
    EXPECT_EQ(L"12345", Text(kEdit));
    ::SendMessageW(edit, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(L"9"));
    EXPECT_EQ(L"9", Text(kEdit));
}

LOGFONTW FontOf(HWND control) {
    LOGFONTW lf{};
    ::GetObjectW(reinterpret_cast<HFONT>(::SendMessageW(control, WM_GETFONT, 0, 0)), sizeof(lf), &lf);
    return lf;
}

// A link, a plain, a transparent red and a framed static.
TEST_F(ControlsInDialog, ExtStaticLinksOpenByMouseAndKeyboardAndStaticsAnswerTheirPainting) {
    HWND button = Item(IDOK), label = Item(kLink);
    ::SetWindowTextW(label, L"https://example.test/a?b=1&c=2");
    ExtStatic link, untouched, transparent, coloured;
    ASSERT_TRUE(link.Attach(label) && untouched.Attach(Item(kPlain)) &&
                transparent.Attach(Item(kClear)) && coloured.Attach(Item(kFramed)));
    std::vector<std::wstring> opened;
    link.SetLink(std::wstring(), [&](HWND, const std::wstring& target) {
        opened.push_back(target);
        return true;
    });
    transparent.SetTransparent();
    transparent.SetTextColor(RGB(200, 0, 0));
    coloured.SetBackground(RGB(1, 2, 3));
    coloured.SetFont(L"Tahoma", 14, FW_BOLD);

    HDC dc = ::GetDC(dialog_);
    auto ask = [&](HWND control) {
        ::SetBkMode(dc, OPAQUE);
        return reinterpret_cast<HGDIOBJ>(::SendMessageW(dialog_, WM_CTLCOLORSTATIC,
                                                        reinterpret_cast<WPARAM>(dc),
                                                        reinterpret_cast<LPARAM>(control)));
    };
    ask(Item(kPlain));
    EXPECT_NE(RGB(200, 0, 0), ::GetTextColor(dc));
    EXPECT_EQ(::GetStockObject(NULL_BRUSH), ask(Item(kClear)));
    EXPECT_EQ(TRANSPARENT, ::GetBkMode(dc));
    EXPECT_EQ(RGB(200, 0, 0), ::GetTextColor(dc));
    LOGBRUSH lb{};
    ::GetObjectW(ask(Item(kFramed)), sizeof(lb), &lb);
    EXPECT_EQ(RGB(1, 2, 3), lb.lbColor);
    EXPECT_EQ(RGB(1, 2, 3), ::GetBkColor(dc));
    ::ReleaseDC(dialog_, dc);
    EXPECT_STREQ(L"Tahoma", FontOf(Item(kFramed)).lfFaceName);
    EXPECT_EQ(FW_BOLD, FontOf(Item(kFramed)).lfWeight);

    EXPECT_TRUE(FontOf(label).lfUnderline);
    ::SendMessageW(label, WM_SETCURSOR, reinterpret_cast<WPARAM>(label),
                   MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
    EXPECT_EQ(::LoadCursorW(nullptr, IDC_HAND), ::GetCursor());
    ::SendMessageW(label, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(3, 3));
    ::SendMessageW(label, WM_LBUTTONUP, 0, MAKELPARAM(3, 3));
    ::SendMessageW(label, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(3, 3));
    ::SendMessageW(label, WM_LBUTTONUP, 0, MAKELPARAM(500, 3));  // released outside
    EXPECT_EQ(std::vector<std::wstring>{L"https://example.test/a?b=1&c=2"}, opened);

    // Tab reaches it; Enter opens it instead of pressing the default button.
    ::SetFocus(button);
    ::SendMessageW(dialog_, WM_NEXTDLGCTL, 0, FALSE);
    ASSERT_EQ(label, ::GetFocus());
    MSG enter{label, WM_KEYDOWN, VK_RETURN, 0, 0, {}};
    EXPECT_TRUE(::IsDialogMessageW(dialog_, &enter));
    EXPECT_EQ(0, host_.ok_commands);
    MSG space{label, WM_KEYDOWN, VK_SPACE, 0, 0, {}};
    ::IsDialogMessageW(dialog_, &space);
    EXPECT_EQ(3u, opened.size());
}

}  // namespace
}  // namespace velk::controls
