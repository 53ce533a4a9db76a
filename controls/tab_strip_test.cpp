#include "controls/tab_strip.h"

#include <gtest/gtest.h>

#include <commctrl.h>

namespace velk::controls {
namespace {

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
    // The colour at (x, y) as the strip paints itself (WM_PRINTCLIENT: no
    // screen involved).
    COLORREF PixelAt(int x, int y) {
        HDC screen = ::GetDC(nullptr);
        HDC memory = ::CreateCompatibleDC(screen);
        HBITMAP canvas = ::CreateCompatibleBitmap(screen, 400, 200);
        HGDIOBJ old = ::SelectObject(memory, canvas);
        ::SendMessageW(tab_, WM_PRINTCLIENT, reinterpret_cast<WPARAM>(memory), PRF_CLIENT);
        const COLORREF c = ::GetPixel(memory, x, y);
        ::SelectObject(memory, old);
        ::DeleteObject(canvas);
        ::DeleteDC(memory);
        ::ReleaseDC(nullptr, screen);
        return c;
    }
    // Inside tab i, clear of its text and its frame.
    COLORREF FillOf(int i) {
        const RECT r = Item(i);
        return PixelAt(r.left + 4, r.bottom - 3);
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
    EXPECT_EQ(colours.accent, PixelAt(second.left + 4, second.top - 1));
    EXPECT_EQ(colours.selected, PixelAt(second.left + 4, second.bottom));
    EXPECT_EQ(colours.border, PixelAt(Item(0).left + 4, Item(0).bottom));

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
