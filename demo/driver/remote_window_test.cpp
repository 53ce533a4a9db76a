#include "demo/driver/remote_window.h"

#include <gtest/gtest.h>

#include <vector>

#include "common_src/win32/handles.h"

namespace velk::demo {
namespace {

std::vector<UINT> g_mouse;  // what the target button got

LRESULT CALLBACK ButtonProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    if (msg == WM_LBUTTONDOWN || msg == WM_LBUTTONUP)
        g_mouse.push_back(msg);
    return ::DefWindowProcW(hwnd, msg, wp, lp);
}

void Pump(DWORD ms) {
    const DWORD start = ::GetTickCount();
    do {
        MSG msg;
        while (::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE))
            ::DispatchMessageW(&msg);
        ::Sleep(10);
    } while (::GetTickCount() - start < ms);
}

HWND Child(const wchar_t* cls, HWND parent, int id, int x, int y, int w, int h, DWORD style = 0) {
    return ::CreateWindowExW(0, cls, L"", WS_CHILD | WS_VISIBLE | style, x, y, w, h, parent,
                             reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
                             ::GetModuleHandleW(nullptr), nullptr);
}

class DemoRemoteWindow : public ::testing::Test {
protected:
    void SetUp() override {
        WNDCLASSW wc{};
        wc.lpfnWndProc = &ButtonProc;
        wc.hInstance = ::GetModuleHandleW(nullptr);
        wc.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
        wc.lpszClassName = L"DemoRemoteWindowTest";
        ::RegisterClassW(&wc);
        top_.reset(::CreateWindowExW(WS_EX_TOPMOST, L"DemoRemoteWindowTest", L"", WS_POPUP, 200,
                                     150, 400, 200, nullptr, nullptr, wc.hInstance, nullptr));
        ASSERT_TRUE(top_);
        ::GetCursorPos(&cursor_);
        // Not activated: Wine then does not wait for a window manager the
        // virtual display lacks when the window goes.
        ::ShowWindow(top_.get(), SW_SHOWNOACTIVATE);
        g_mouse.clear();
    }
    // The pointer is shared by every program on the display: put it back.
    void TearDown() override { ::SetCursorPos(cursor_.x, cursor_.y); }

    win32::unique_hwnd top_;
    POINT cursor_{};
};

TEST_F(DemoRemoteWindow, AButtonDeepInTheTreeIsFoundAndClickedWithTheRealMouse) {
    // The band's buttons sit in a dialog inside a rebar inside the client.
    HWND band = Child(L"DemoRemoteWindowTest", top_.get(), 77, 10, 10, 380, 60);
    Child(L"DemoRemoteWindowTest", band, 6010, 0, 0, 100, 40);
    HWND button = Child(L"DemoRemoteWindowTest", band, 6011, 150, 5, 100, 40);
    ASSERT_EQ(button, FindDescendantById(top_.get(), 6011));
    EXPECT_EQ(nullptr, FindDescendantById(top_.get(), 6012));
    Pump(100);

    ASSERT_TRUE(MoveMouseOver(button));
    Pump(100);
    POINT p{};
    ::GetCursorPos(&p);
    RECT rc{};
    ::GetWindowRect(button, &rc);
    EXPECT_TRUE(::PtInRect(&rc, p)) << p.x << "," << p.y;
    ASSERT_TRUE(ClickMouse());
    Pump(200);
    EXPECT_EQ((std::vector<UINT>{WM_LBUTTONDOWN, WM_LBUTTONUP}), g_mouse);
}

}  // namespace
}  // namespace velk::demo
