#include "common_src/win32/window.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "common_src/win32/entry_scope.h"
#include "common_src/win32/window_class.h"

namespace velk::win32 {
namespace {

constexpr wchar_t kClass[] = L"VelkWindowTestClass";
constexpr UINT kThrow = WM_USER + 1;
constexpr UINT kAnswer = WM_USER + 3;
constexpr UINT kDestroySelf = WM_USER + 4;
constexpr UINT kNested = WM_USER + 10;
constexpr UINT kDefer = WM_USER + 11;

// Records what reaches it; throws, answers, destroys itself and defers work
// from a nested call on request.
class Recorder : public Window {
public:
    std::vector<UINT> seen;
    HWND final_hwnd = nullptr;
    bool delete_on_final = false;
    int* destroyed_count = nullptr;
    std::vector<int> deferred_at;  // the entry depth each deferred action saw

    ~Recorder() override {
        Destroy();
        if (destroyed_count != nullptr)
            ++*destroyed_count;
    }
    bool Saw(UINT msg) const { return std::count(seen.begin(), seen.end(), msg) > 0; }

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM, LRESULT& result) override {
        seen.push_back(msg);
        if (msg == kThrow)
            throw std::runtime_error("handler failed");
        if (msg == WM_GETTEXTLENGTH && wp == 1)
            throw 42;
        if (msg == kAnswer)
            result = static_cast<LRESULT>(wp) * 2;
        else if (msg == kDestroySelf)
            ::DestroyWindow(hwnd()), result = 7;
        else if (msg == kNested) {
            // Our frame stays on the stack while a loop pumps the inner message.
            ::PostMessageW(hwnd(), kDefer, 0, 0);
            MSG m;
            while (::PeekMessageW(&m, hwnd(), kDefer, kDefer, PM_REMOVE))
                ::DispatchMessageW(&m);
        } else if (msg == kDefer)
            WhenOutOfModule([this] { deferred_at.push_back(EntryDepth()); });
        else
            return false;
        return true;
    }
    void OnFinalMessage(HWND hwnd) override {
        final_hwnd = hwnd;
        if (delete_on_final)
            delete this;
    }
};

// No teardown of its own: the base destructor must destroy the window without
// dispatching to the half-destroyed object (a pure virtual call).
class Plain : public Window {
protected:
    bool ProcessMessage(UINT, WPARAM, LPARAM, LRESULT&) override { return false; }
};

class WindowTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_NE(0, RegisterWindowClass(kClass)); }
};

TEST_F(WindowTest, AttachesOnCreateSurvivesThrowingHandlersAndDetachesOnNcDestroy) {
    Recorder w;
    HWND hwnd = w.Create(kClass, nullptr, WS_POPUP, 0, RECT{0, 0, 50, 20}, L"title");
    ASSERT_NE(nullptr, hwnd);
    EXPECT_EQ(&w, Window::FromHandle(hwnd));
    EXPECT_TRUE(w.Saw(WM_NCCREATE) && w.Saw(WM_CREATE));
    EXPECT_EQ(nullptr, w.Create(kClass, nullptr, WS_POPUP)) << "one window per object";

    EXPECT_EQ(10, ::SendMessageW(hwnd, kAnswer, 5, 0));
    // Exceptions become the default result, not a made-up 0, and the window
    // keeps working.
    EXPECT_EQ(0, ::SendMessageW(hwnd, kThrow, 0, 0));
    EXPECT_EQ(5, ::SendMessageW(hwnd, WM_GETTEXTLENGTH, 1, 0));
    EXPECT_EQ(4, ::SendMessageW(hwnd, kAnswer, 2, 0));

    // Work deferred out of the module waits for the outermost procedure.
    ::SendMessageW(hwnd, kNested, 0, 0);
    EXPECT_EQ(std::vector<int>{0}, w.deferred_at);
    WhenOutOfModule([&] { w.deferred_at.push_back(-1); });  // no frame of ours: at once
    EXPECT_EQ((std::vector<int>{0, -1}), w.deferred_at);

    ::DestroyWindow(hwnd);
    EXPECT_TRUE(w.Saw(WM_NCDESTROY));
    EXPECT_EQ(hwnd, w.final_hwnd);
    EXPECT_EQ(nullptr, w.hwnd());
    EXPECT_EQ(0, ::GetWindowLongPtrW(hwnd, GWLP_USERDATA));
}

TEST_F(WindowTest, ObjectsMayGoWithTheirWindowAndWindowsWithTheirObject) {
    // A handler destroys its own window and the object deletes itself in
    // that call: the dispatcher must not touch it afterwards.
    int destroyed = 0;
    auto* self_owned = new Recorder;
    self_owned->delete_on_final = true;
    self_owned->destroyed_count = &destroyed;
    HWND hwnd = self_owned->Create(kClass, nullptr, WS_POPUP);
    ASSERT_NE(nullptr, hwnd);
    EXPECT_EQ(7, ::SendMessageW(hwnd, kDestroySelf, 0, 0));
    EXPECT_EQ(1, destroyed);

    auto* plain = new Plain;
    hwnd = plain->Create(kClass, nullptr, WS_POPUP);
    ASSERT_NE(nullptr, hwnd);
    delete plain;
    EXPECT_FALSE(::IsWindow(hwnd));
}

LRESULT CALLBACK OtherProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    return ::DefWindowProcW(hwnd, msg, wp, lp);
}

TEST(WindowClass, ReplacesAStaleRegistrationAndStaysWhileAWindowExists) {
    constexpr wchar_t kName[] = L"VelkWindowClassTest";
    WindowClassOptions stale;
    stale.proc = &OtherProc;
    ASSERT_NE(0, RegisterWindowClass(kName, stale));
    const ATOM ours = RegisterWindowClass(kName);
    ASSERT_NE(0, ours);
    EXPECT_EQ(ours, RegisterWindowClass(kName));
    Plain w;
    ASSERT_NE(nullptr, w.Create(kName, nullptr, WS_POPUP));
    EXPECT_EQ(&w, Window::FromHandle(w.hwnd())) << "made on our procedure";
    EXPECT_FALSE(UnregisterWindowClass(kName));
    w.Destroy();
    EXPECT_TRUE(UnregisterWindowClass(kName));
}

}  // namespace
}  // namespace velk::win32
