#include "host/host_hook.h"

#include <gtest/gtest.h>

#include <commctrl.h>

#include <string>
#include <vector>

#include "host/log_capture_for_test.h"
#include "host/window_identifiers.h"

namespace velk::host {
namespace {

// What happened, in order, across the fake client and the fake toolbar window.
std::vector<std::string> g_order;
HWND g_client = nullptr;

bool Hooked() {
    return win32::SubclassedWindow::FromHandle(g_client) != nullptr;
}

LRESULT CALLBACK ClientProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    if (msg == WM_CLOSE)
        g_order.push_back(Hooked() ? "close, hooked" : "close");
    if (msg == WM_NCDESTROY)
        g_order.push_back("ncdestroy");
    if (msg == WM_USER + 100)
        return 4321;
    return ::DefWindowProcW(hwnd, msg, wp, lp);
}

LRESULT CALLBACK ToolBarProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    if (msg == kMsgTearDownBand)
        g_order.push_back(Hooked() ? "tear-down, hooked" : "tear-down");
    if (msg == WM_CLOSE) {
        g_order.push_back("leave");
        return 0;
    }
    return ::DefWindowProcW(hwnd, msg, wp, lp);
}

// Someone else's subclass, answering a message of its own.
LRESULT CALLBACK OtherSubclass(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp, UINT_PTR, DWORD_PTR) {
    if (msg == WM_USER + 101)
        return 77;
    return ::DefSubclassProc(hwnd, msg, wp, lp);
}

class HostHookTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        WNDCLASSW wc{};
        wc.lpfnWndProc = &ClientProc;
        wc.hInstance = ::GetModuleHandleW(nullptr);
        wc.lpszClassName = L"VelkHookTestClient";
        ::RegisterClassW(&wc);
        wc.lpfnWndProc = &ToolBarProc;
        wc.lpszClassName = kToolBarWindowClass;
        ::RegisterClassW(&wc);
    }
    void SetUp() override {
        hook().ResetForTest();
        hook().SetWindowsMail(false);
        g_order.clear();
        g_client = Make(L"VelkHookTestClient");
        ASSERT_NE(nullptr, g_client);
    }
    void TearDown() override {
        hook().ResetForTest();
        if (::IsWindow(g_client))
            ::DestroyWindow(g_client);
        if (toolbar_ != nullptr)
            ::DestroyWindow(toolbar_);
    }
    static HWND Make(const wchar_t* cls) {
        return ::CreateWindowExW(0, cls, L"", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr,
                                 ::GetModuleHandleW(nullptr), nullptr);
    }
    static CHostHook& hook() { return CHostHook::Instance(); }

    velk::testing::LogCapture log_;
    HWND toolbar_ = nullptr;
};

TEST_F(HostHookTest, OutlookExpressCloseTearsTheBandDownUnhooksThenLeavesWithTheClient) {
    toolbar_ = Make(kToolBarWindowClass);
    ASSERT_EQ(1, hook().OnHookOE(g_client));
    EXPECT_EQ(g_client, hook().hooked_window());
    EXPECT_EQ(4321, ::SendMessageW(g_client, WM_USER + 100, 0, 0)) << "others pass through";

    ::SendMessageW(g_client, WM_CLOSE, 0, 0);
    // The client's procedure sees the close unhooked; WM_NCDESTROY reaches it
    // only; once the window is gone the add-in is told to leave.
    EXPECT_EQ((std::vector<std::string>{"tear-down, hooked", "close", "ncdestroy", "leave"}),
              g_order);
    EXPECT_EQ(nullptr, hook().hooked_window());
    for (const char* line :
         {"@@@ OnHookOE IN", "@@@ OnHookOE OUT", "@@@ OE will close and notice oea to quit at once",
          "@@@ WndProc Set back OK"}) {
        EXPECT_TRUE(log_.Contains(line)) << line;
    }
    EXPECT_FALSE(log_.Contains("@@@ OE WM_NCDESTROY come in"));
}

TEST_F(HostHookTest, CloseWithoutToolbarWindowOrOnWindowsMailStillUnhooks) {
    ASSERT_EQ(1, hook().OnHookOE(g_client));
    ::SendMessageW(g_client, WM_CLOSE, 0, 0);
    EXPECT_TRUE(log_.Contains("@@@ Error : find oea failed when close oe"));
    EXPECT_EQ((std::vector<std::string>{"close", "ncdestroy"}), g_order);

    // Windows Mail: the band is torn down through the exports, not here; the
    // add-in still leaves with the client.
    hook().SetWindowsMail(true);
    toolbar_ = Make(kToolBarWindowClass);
    g_client = Make(L"VelkHookTestClient");
    g_order.clear();
    ASSERT_EQ(1, hook().OnHookOE(g_client));
    ::SendMessageW(g_client, WM_CLOSE, 0, 0);
    EXPECT_EQ((std::vector<std::string>{"close", "ncdestroy", "leave"}), g_order);

    // Destroyed without a close: the add-in leaves while the window still is.
    g_client = Make(L"VelkHookTestClient");
    g_order.clear();
    ASSERT_EQ(1, hook().OnHookOE(g_client));
    ::DestroyWindow(g_client);
    EXPECT_EQ((std::vector<std::string>{"leave", "ncdestroy"}), g_order);
    EXPECT_TRUE(log_.Contains("@@@ OE WM_NCDESTROY come in"));
}

TEST_F(HostHookTest, HookComesAndGoesUnderAndOverOtherSubclasses) {
    ASSERT_TRUE(::SetWindowSubclass(g_client, &OtherSubclass, 1, 0));
    ASSERT_EQ(1, hook().OnHookOE(g_client));
    ASSERT_TRUE(::SetWindowSubclass(g_client, &OtherSubclass, 2, 0));
    EXPECT_EQ(1, hook().OnHookOE(g_client)) << "a second hook only logs";
    const std::string text = log_.Text();
    EXPECT_NE(text.find("@@@ OnHookOE OUT"), text.rfind("@@@ OnHookOE OUT")) << "logged twice";

    // Taken off from between the two, the others keep working.
    EXPECT_TRUE(hook().Unhook());
    EXPECT_FALSE(Hooked());
    EXPECT_EQ(77, ::SendMessageW(g_client, WM_USER + 101, 0, 0));
    EXPECT_EQ(4321, ::SendMessageW(g_client, WM_USER + 100, 0, 0));
    EXPECT_FALSE(hook().Unhook());
}

TEST_F(HostHookTest, UnhookMessageActsOnlyOnWindowsMail) {
    ASSERT_EQ(1, hook().OnHookOE(g_client));
    EXPECT_EQ(0, hook().OnUnhookWMail());
    EXPECT_EQ(g_client, hook().hooked_window()) << "Outlook Express keeps its hook";

    hook().SetWindowsMail(true);
    EXPECT_EQ(0, hook().OnUnhookWMail());
    EXPECT_FALSE(Hooked());
    EXPECT_EQ(nullptr, hook().hooked_window());
}

}  // namespace
}  // namespace velk::host
