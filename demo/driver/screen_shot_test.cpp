#include "demo/driver/screen_shot.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "common_src/win32/handles.h"

namespace velk::demo {
namespace {

constexpr COLORREF kRed = RGB(200, 30, 40);
constexpr COLORREF kGreen = RGB(20, 180, 60);
constexpr COLORREF kBlue = RGB(30, 40, 210);

// Top left red, top right green, bottom half blue: a flip in either
// direction shows.
LRESULT CALLBACK QuadrantProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    if (msg == WM_PAINT) {
        win32::paint_dc dc(hwnd);
        RECT rc;
        ::GetClientRect(hwnd, &rc);
        const int mx = rc.right / 2, my = rc.bottom / 2;
        const struct {
            RECT r;
            COLORREF c;
        } parts[] = {{{0, 0, mx, my}, kRed},
                     {{mx, 0, rc.right, my}, kGreen},
                     {{0, my, rc.right, rc.bottom}, kBlue}};
        for (const auto& p : parts) {
            win32::unique_hbrush brush(::CreateSolidBrush(p.c));
            ::FillRect(dc.get(), &p.r, brush.get());
        }
        return 0;
    }
    return ::DefWindowProcW(hwnd, msg, wp, lp);
}

class DemoScreenShot : public ::testing::Test {
protected:
    void SetUp() override {
        WNDCLASSW wc{};
        wc.lpfnWndProc = &QuadrantProc;
        wc.hInstance = ::GetModuleHandleW(nullptr);
        wc.lpszClassName = L"DemoScreenShotTest";
        ::RegisterClassW(&wc);
        window_.reset(::CreateWindowExW(WS_EX_TOPMOST, L"DemoScreenShotTest", L"", WS_POPUP, 60, 50,
                                        120, 80, nullptr, nullptr, wc.hInstance, nullptr));
        ASSERT_TRUE(window_);
        // Shown without activation: Wine leaves such a window to itself
        // rather than waiting for a window manager that the virtual display lacks.
        ::ShowWindow(window_.get(), SW_SHOWNOACTIVATE);
        ::UpdateWindow(window_.get());
        // Let the display catch up with the paint.
        for (int i = 0; i < 20; ++i) {
            MSG msg;
            while (::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE))
                ::DispatchMessageW(&msg);
            ::Sleep(20);
        }
    }

    win32::unique_hwnd window_;
};

TEST_F(DemoScreenShot, TheCaptureHoldsTheWindowAsDrawnOnTheScreen) {
    Picture picture;
    ASSERT_TRUE(CaptureWindow(window_.get(), picture));
    ASSERT_EQ(120, picture.width);
    ASSERT_EQ(80, picture.height);
    EXPECT_EQ(kRed, picture.At(10, 10));
    EXPECT_EQ(kGreen, picture.At(110, 10));
    EXPECT_EQ(kBlue, picture.At(60, 70));
}

TEST(DemoBmpFile, IsBottomUpWithPaddedRows) {
    Picture picture;
    picture.width = 3;  // 9 bytes a row, padded to 12
    picture.height = 2;
    picture.pixels = {kRed, kGreen, kBlue, kBlue, kBlue, kGreen};
    wchar_t dir[MAX_PATH];
    ::GetTempPathW(MAX_PATH, dir);
    const std::wstring path = std::wstring(dir) + L"velk_demo_shot.bmp";
    ASSERT_TRUE(SaveBmp(picture, path));
    std::ifstream in(std::filesystem::path(path), std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    in.close();
    ::DeleteFileW(path.c_str());
    ASSERT_EQ(14u + 40u + 24u, bytes.size());
    EXPECT_EQ("BM", bytes.substr(0, 2));
    auto pixel = [&](int row_in_file, int x) {
        const std::size_t at = 54 + static_cast<std::size_t>(row_in_file) * 12 + x * 3;
        return RGB(static_cast<BYTE>(bytes[at + 2]), static_cast<BYTE>(bytes[at + 1]),
                   static_cast<BYTE>(bytes[at]));
    };
    EXPECT_EQ(kGreen, pixel(0, 2));  // the file starts with the bottom row
    EXPECT_EQ(kRed, pixel(1, 0));
}

}  // namespace
}  // namespace velk::demo
