#include "host/host_hook.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common_src/QzCommon/QzComn_test_util.h"
#include "host/window_identifiers.h"

namespace velk::host {
namespace {

// The client's own close on Outlook Express, as the user meets it, is proven
// with the add-in in the client; here what that run cannot show.

// What happened, in order, across the fake client and the fake toolbar window.
std::vector<std::string> g_order;

LRESULT CALLBACK Recorder(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    const bool toolbar = ::FindWindowW(kToolBarWindowClass, nullptr) == hwnd;
    if (msg == WM_CLOSE && toolbar) {
        g_order.push_back("leave");
        return 0;
    }
    if (msg == WM_CLOSE || msg == WM_NCDESTROY)
        g_order.push_back(msg == WM_CLOSE ? "close" : "ncdestroy");
    return msg == WM_USER + 100 ? 4321 : ::DefWindowProcW(hwnd, msg, wp, lp);
}

HWND Make(const wchar_t* cls) {
    WNDCLASSW wc{};
    wc.lpfnWndProc = &Recorder;
    wc.hInstance = ::GetModuleHandleW(nullptr);
    wc.lpszClassName = cls;
    ::RegisterClassW(&wc);
    return ::CreateWindowExW(0, cls, L"", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr,
                             ::GetModuleHandleW(nullptr), nullptr);
}

TEST(HostHook, UnhooksWithoutToolbarWindowLeavesOnDestroyAndUnhooksOnWindowsMailsMessage) {
    CHostHook& hook = CHostHook::Instance();
    hook.SetWindowsMail(false);
    QzCommon::testing_util::TempFolder folder;
    HWND client = Make(L"VelkHookTestClient");
    ASSERT_EQ(1, hook.OnHookOE(client));
    std::string log = QzCommon::testing_util::CaptureLog(
        folder, [&] { ::SendMessageW(client, WM_CLOSE, 0, 0); });
    EXPECT_NE(std::string::npos, log.find("@@@ Error : find oea failed when close oe")) << log;
    EXPECT_EQ((std::vector<std::string>{"close", "ncdestroy"}), g_order);

    // Destroyed without a close: the add-in leaves while the window still is.
    HWND toolbar = Make(kToolBarWindowClass);
    client = Make(L"VelkHookTestClient");
    ASSERT_EQ(1, hook.OnHookOE(client));
    g_order.clear();
    log = QzCommon::testing_util::CaptureLog(folder, [&] { ::DestroyWindow(client); });
    EXPECT_EQ((std::vector<std::string>{"leave", "ncdestroy"}), g_order);
    EXPECT_NE(std::string::npos, log.find("@@@ OE WM_NCDESTROY come in"));
    ::DestroyWindow(toolbar);

    // Only Windows Mail's unhook message takes it off; the client's
    // procedure answers again.
    client = Make(L"VelkHookTestClient");
    ASSERT_EQ(1, hook.OnHookOE(client));
    EXPECT_EQ(0, hook.OnUnhookWMail());
    EXPECT_EQ(client, hook.hooked_window());
    hook.SetWindowsMail(true);
    EXPECT_EQ(0, hook.OnUnhookWMail());
    EXPECT_EQ(nullptr, hook.hooked_window());
    EXPECT_EQ(nullptr, win32::SubclassedWindow::FromHandle(client));
    EXPECT_EQ(4321, ::SendMessageW(client, WM_USER + 100, 0, 0));
    ::DestroyWindow(client);
}

}  // namespace
}  // namespace velk::host
