#include "tools/control_gallery/control_gallery.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include <string>

#include "demo/driver/screen_shot.h"

namespace velk::tools {
namespace {

void Pump(DWORD ms) {
    const DWORD until = ::GetTickCount() + ms;
    MSG msg;
    while (static_cast<LONG>(until - ::GetTickCount()) > 0) {
        while (::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
            ::TranslateMessage(&msg);
            ::DispatchMessageW(&msg);
        }
        ::Sleep(10);
    }
}

int CountColour(const demo::Picture& p, COLORREF c) {
    int n = 0;
    for (COLORREF px : p.pixels)
        n += px == c ? 1 : 0;
    return n;
}

// The gallery shows every control in its states; its picture is the one in
// docs/controls.png (written here as a BMP for scripts/shot-gallery.sh).
TEST(ControlGallery, ShowsEveryControlDrawnByItsOwnObject) {
    HMODULE module = ::LoadLibraryExW(VELK_TEST_LANGUAGE_MODULE, nullptr, LOAD_LIBRARY_AS_DATAFILE);
    ASSERT_NE(nullptr, module);
    auto gallery = ShowControlGallery(module);
    ASSERT_NE(nullptr, gallery);
    HWND window = GalleryWindow(*gallery);
    ::SetForegroundWindow(window);
    ::RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_ALLCHILDREN | RDW_UPDATENOW);
    Pump(300);

    // Each control answers as its stock counterpart would.
    EXPECT_EQ(0, ::SendDlgItemMessageW(window, 100, TBM_GETPOS, 0, 0));
    EXPECT_EQ(2, ::SendDlgItemMessageW(window, 102, TBM_GETPOS, 0, 0));
    EXPECT_EQ(6, ::SendDlgItemMessageW(window, 300, LVM_GETITEMCOUNT, 0, 0));
    wchar_t text[64] = {};
    ::GetDlgItemTextW(window, 100, text, 64);
    EXPECT_STREQ(L"High", text);

    demo::Picture picture;
    ASSERT_TRUE(demo::CaptureWindow(window, picture));
    // The chart's three slice colours are on the screen, in about their shares.
    const int normal = CountColour(picture, RGB(0x99, 0x99, 0xFF));
    const int detected = CountColour(picture, RGB(0x99, 0x33, 0x66));
    EXPECT_GT(normal, 1000);
    EXPECT_GT(detected, 500);
    EXPECT_GT(normal, detected);
    // The tab strip's accent line over the open tab.
    EXPECT_GT(CountColour(picture, RGB(240, 130, 30)), 20);
    ::CreateDirectoryW(L"screenshots", nullptr);
    EXPECT_TRUE(demo::SaveBmp(picture, L"screenshots\\controls.bmp"));
    gallery.reset();
    EXPECT_FALSE(::IsWindow(window));
    ::FreeLibrary(module);
}

}  // namespace
}  // namespace velk::tools
