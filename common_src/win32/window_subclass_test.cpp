#include "common_src/win32/window_subclass.h"

#include <gtest/gtest.h>

#include <string>

namespace velk::win32 {
namespace {

// The foreign window: a procedure of its own, as the client's is.
LRESULT CALLBACK ForeignProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    return msg == WM_USER + 10 ? 100 : ::DefWindowProcW(hwnd, msg, wp, lp);
}
LRESULT CALLBACK ForeignProcA(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    return ::DefWindowProcA(hwnd, msg, wp, lp);
}

WindowSubclass* g_subclass = nullptr;
int g_replacement_calls = 0;
LRESULT CALLBACK Replacement(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    if (msg == WM_USER + 10)
        ++g_replacement_calls;
    return g_subclass->CallPrevious(hwnd, msg, wp, lp);
}

HWND MakeForeign(bool ansi) {
    static bool registered = false;
    if (!registered) {
        WNDCLASSW wc{};
        wc.lpfnWndProc = &ForeignProc;
        wc.hInstance = ::GetModuleHandleW(nullptr);
        wc.lpszClassName = L"VelkForeignW";
        ::RegisterClassW(&wc);
        WNDCLASSA wca{};
        wca.lpfnWndProc = &ForeignProcA;
        wca.hInstance = wc.hInstance;
        wca.lpszClassName = "VelkForeignA";
        ::RegisterClassA(&wca);
        registered = true;
    }
    return ansi ? ::CreateWindowExA(0, "VelkForeignA", "", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr,
                                    ::GetModuleHandleW(nullptr), nullptr)
                : ::CreateWindowExW(0, L"VelkForeignW", L"", WS_POPUP, 0, 0, 10, 10, nullptr,
                                    nullptr, ::GetModuleHandleW(nullptr), nullptr);
}

TEST(WindowSubclass, ReplacementSeesMessagesUntilDetachedOrDestroyed) {
    HWND hwnd = MakeForeign(false);
    ASSERT_NE(nullptr, hwnd);
    {
        WindowSubclass subclass;
        g_subclass = &subclass;
        EXPECT_FALSE(subclass.Attach(nullptr, &Replacement));
        ASSERT_TRUE(subclass.Attach(hwnd, &Replacement));
        EXPECT_EQ(&ForeignProc, subclass.previous());
        EXPECT_EQ(100, ::SendMessageW(hwnd, WM_USER + 10, 0, 0));
        EXPECT_EQ(1, g_replacement_calls);
        // A second attach would lose the first previous procedure.
        EXPECT_FALSE(subclass.Attach(hwnd, &Replacement));

        ASSERT_TRUE(subclass.Detach());
        EXPECT_EQ(&ForeignProc, ReadWindowProc(hwnd));
        ::SendMessageW(hwnd, WM_USER + 10, 0, 0);
        EXPECT_EQ(1, g_replacement_calls);

        // Leaving scope attached puts the previous procedure back.
        ASSERT_TRUE(subclass.Attach(hwnd, &Replacement));
    }
    EXPECT_EQ(&ForeignProc, ReadWindowProc(hwnd));

    WindowSubclass late;
    g_subclass = &late;
    ASSERT_TRUE(late.Attach(hwnd, &Replacement));
    ::DestroyWindow(hwnd);
    EXPECT_FALSE(late.Detach()) << "nothing to restore on a window that is gone";
    EXPECT_FALSE(late.attached());
}

TEST(WindowSubclass, AnsiWindowKeepsItsTextThroughAWideReplacement) {
    HWND ansi = MakeForeign(true);
    ASSERT_NE(nullptr, ansi);
    WindowSubclass subclass;
    g_subclass = &subclass;
    ASSERT_TRUE(subclass.Attach(ansi, &Replacement));
    // Calling the ANSI procedure directly with a wide string would store
    // only its first character; CallWindowProcW converts.
    ASSERT_TRUE(::SetWindowTextW(ansi, L"client"));
    char text[32] = {};
    ::GetWindowTextA(ansi, text, 32);
    EXPECT_EQ(std::string("client"), text);
    EXPECT_TRUE(subclass.Detach());
    ::DestroyWindow(ansi);
}

}  // namespace
}  // namespace velk::win32
