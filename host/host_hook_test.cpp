#include "host/host_hook.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/log_capture_for_test.h"
#include "host/window_identifiers.h"

namespace velk::host {
namespace {

// What happened, in order, across the fake client and the fake toolbar window.
std::vector<std::string> g_order;
HWND g_client = nullptr;

LRESULT CALLBACK ClientProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp);
bool ClientProcInstalled() {
    return reinterpret_cast<WNDPROC>(::GetWindowLongPtrW(g_client, GWLP_WNDPROC)) == &ClientProc;
}

LRESULT CALLBACK ClientProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    if (msg == WM_CLOSE)
        g_order.push_back(ClientProcInstalled() ? "close, restored" : "close");
    if (msg == WM_NCDESTROY)
        g_order.push_back("ncdestroy");
    if (msg == WM_USER + 100)
        return 4321;
    return ::DefWindowProcW(hwnd, msg, wp, lp);
}

LRESULT CALLBACK ToolBarProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    if (msg == kMsgTearDownBand)
        g_order.push_back(ClientProcInstalled() ? "tear-down, restored" : "tear-down");
    return ::DefWindowProcW(hwnd, msg, wp, lp);
}

LRESULT CALLBACK OtherSubclass(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    return ::CallWindowProcW(&CHostHook::HostWndProc, hwnd, msg, wp, lp);
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
        if (::IsWindow(g_client))
            ::DestroyWindow(g_client);
        if (toolbar_ != nullptr)
            ::DestroyWindow(toolbar_);
        hook().ResetForTest();
    }
    static HWND Make(const wchar_t* cls) {
        return ::CreateWindowExW(0, cls, L"", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr,
                                 ::GetModuleHandleW(nullptr), nullptr);
    }
    static CHostHook& hook() { return CHostHook::Instance(); }

    velk::testing::LogCapture log_;
    HWND toolbar_ = nullptr;
};

TEST_F(HostHookTest, OutlookExpressCloseTearsTheBandDownBeforeTheClientSeesIt) {
    toolbar_ = Make(kToolBarWindowClass);
    ASSERT_EQ(1, hook().OnHookOE(g_client));
    EXPECT_EQ(g_client, hook().hooked_window());
    EXPECT_EQ(&ClientProc, hook().previous_proc());
    EXPECT_EQ(4321, ::SendMessageW(g_client, WM_USER + 100, 0, 0)) << "others pass through";

    ::SendMessageW(g_client, WM_CLOSE, 0, 0);
    // WM_NCDESTROY reaches the client's own procedure only.
    EXPECT_EQ((std::vector<std::string>{"tear-down", "close, restored", "ncdestroy"}), g_order);
    EXPECT_EQ(nullptr, hook().hooked_window());
    EXPECT_EQ(nullptr, hook().previous_proc());
    for (const char* line :
         {"@@@ OnHookOE IN", "@@@ OnHookOE OUT", "@@@ OE will close and notice oea to quit at once",
          "@@@ WndProc Set back OK"}) {
        EXPECT_TRUE(log_.Contains(line)) << line;
    }
    EXPECT_FALSE(log_.Contains("@@@ OE WM_NCDESTROY come in"));
}

TEST_F(HostHookTest, CloseWithoutToolbarWindowOrOnWindowsMailStillRestores) {
    ASSERT_EQ(1, hook().OnHookOE(g_client));
    ::SendMessageW(g_client, WM_CLOSE, 0, 0);
    EXPECT_TRUE(log_.Contains("@@@ Error : find oea failed when close oe"));
    EXPECT_EQ((std::vector<std::string>{"close, restored", "ncdestroy"}), g_order);

    // Windows Mail: the band is torn down through the exports, not here.
    hook().SetWindowsMail(true);
    toolbar_ = Make(kToolBarWindowClass);
    g_client = Make(L"VelkHookTestClient");
    g_order.clear();
    ASSERT_EQ(1, hook().OnHookOE(g_client));
    ::SendMessageW(g_client, WM_CLOSE, 0, 0);
    EXPECT_EQ((std::vector<std::string>{"close, restored", "ncdestroy"}), g_order);
}

TEST_F(HostHookTest, SecondHookNeitherReadsNorReplaces) {
    ASSERT_EQ(1, hook().OnHookOE(g_client));
    // Someone else subclasses the client on top of us.
    ::SetWindowLongPtrW(g_client, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&OtherSubclass));
    EXPECT_EQ(1, hook().OnHookOE(g_client));
    EXPECT_EQ(&ClientProc, hook().previous_proc());
    EXPECT_EQ(reinterpret_cast<LONG_PTR>(&OtherSubclass),
              ::GetWindowLongPtrW(g_client, GWLP_WNDPROC));
    const std::string text = log_.Text();
    EXPECT_NE(text.find("@@@ OnHookOE OUT"), text.rfind("@@@ OnHookOE OUT")) << "logged twice";
}

TEST_F(HostHookTest, UnhookMessageActsOnlyOnWindowsMail) {
    ASSERT_EQ(1, hook().OnHookOE(g_client));
    EXPECT_EQ(0, hook().OnUnhookWMail());
    EXPECT_EQ(g_client, hook().hooked_window()) << "Outlook Express keeps its hook";

    hook().SetWindowsMail(true);
    EXPECT_EQ(0, hook().OnUnhookWMail());
    EXPECT_TRUE(ClientProcInstalled());
    EXPECT_EQ(nullptr, hook().hooked_window());
    EXPECT_EQ(nullptr, hook().previous_proc());
}

TEST_F(HostHookTest, UnloadRestoresAHookStillInPlaceAndOnlyThat) {
    ASSERT_EQ(1, hook().OnHookOE(g_client));
    EXPECT_TRUE(hook().RestoreBeforeUnload());
    EXPECT_TRUE(ClientProcInstalled());
    EXPECT_FALSE(hook().RestoreBeforeUnload());

    ASSERT_EQ(1, hook().OnHookOE(g_client));
    ::DestroyWindow(g_client);
    EXPECT_FALSE(hook().RestoreBeforeUnload()) << "the window is gone";
    EXPECT_EQ(nullptr, hook().hooked_window());
}

}  // namespace
}  // namespace velk::host
