#include "common_src/win32/window.h"

#include <gtest/gtest.h>

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

// Records what reaches it; throws and answers on request.
class Recorder : public Window {
public:
    std::vector<UINT> seen;
    HWND final_hwnd = nullptr;
    bool delete_on_final = false;
    int* destroyed_count = nullptr;
    LRESULT reflected_answer = 0;

    ~Recorder() override {
        Destroy();
        if (destroyed_count != nullptr)
            ++*destroyed_count;
    }
    bool Saw(UINT msg) const {
        for (UINT m : seen) {
            if (m == msg)
                return true;
        }
        return false;
    }

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override {
        seen.push_back(msg);
        if (msg == kThrow)
            throw std::runtime_error("handler failed");
        if (msg == WM_GETTEXTLENGTH && wp == 1)
            throw 42;
        if (msg == kAnswer) {
            result = static_cast<LRESULT>(wp) * 2;
            return true;
        }
        if (msg == kDestroySelf) {
            ::DestroyWindow(hwnd());
            result = 7;
            return true;
        }
        if (msg >= kReflectedMessageBase && reflected_answer != 0) {
            result = reflected_answer;
            return true;
        }
        return false;
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
public:
    int messages = 0;

protected:
    bool ProcessMessage(UINT, WPARAM, LPARAM, LRESULT&) override {
        ++messages;
        return false;
    }
};

class ReflectingParent : public Window {
protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override {
        return ReflectToControl(msg, wp, lp, result);
    }
};

class WindowTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_NE(0, RegisterWindowClass(kClass)); }
};

TEST_F(WindowTest, AttachesOnCreateDispatchesAndDetachesOnNcDestroy) {
    Recorder w;
    HWND hwnd = w.Create(kClass, nullptr, WS_POPUP, 0, RECT{0, 0, 50, 20}, L"title");
    ASSERT_NE(nullptr, hwnd);
    EXPECT_EQ(&w, Window::FromHandle(hwnd));
    EXPECT_TRUE(w.Saw(WM_NCCREATE) && w.Saw(WM_CREATE));
    EXPECT_EQ(nullptr, w.Create(kClass, nullptr, WS_POPUP)) << "one window per object";

    EXPECT_EQ(10, ::SendMessageW(hwnd, kAnswer, 5, 0));
    EXPECT_EQ(5, ::SendMessageW(hwnd, WM_GETTEXTLENGTH, 0, 0)) << "default processing";
    // Exceptions become the default result, not a made-up 0, and the window
    // keeps working.
    EXPECT_EQ(0, ::SendMessageW(hwnd, kThrow, 0, 0));
    EXPECT_EQ(5, ::SendMessageW(hwnd, WM_GETTEXTLENGTH, 1, 0));
    EXPECT_EQ(4, ::SendMessageW(hwnd, kAnswer, 2, 0));

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
    EXPECT_FALSE(::IsWindow(hwnd));

    auto* plain = new Plain;
    hwnd = plain->Create(kClass, nullptr, WS_POPUP);
    ASSERT_NE(nullptr, hwnd);
    delete plain;
    EXPECT_FALSE(::IsWindow(hwnd));
}

TEST_F(WindowTest, ParentReflectsControlMessagesToTheOwningObject) {
    ReflectingParent parent;
    HWND p = parent.Create(kClass, nullptr, WS_POPUP, 0, RECT{0, 0, 100, 100});
    Recorder child;
    child.reflected_answer = 99;
    HWND c = child.Create(kClass, p, WS_CHILD, 0, RECT{0, 0, 10, 10}, L"", 1001);
    HWND stock = ::CreateWindowExW(0, L"BUTTON", L"", WS_CHILD, 0, 0, 5, 5, p,
                                   reinterpret_cast<HMENU>(1002), nullptr, nullptr);
    ASSERT_TRUE(p && c && stock);

    EXPECT_EQ(99, ::SendMessageW(p, WM_COMMAND, MAKEWPARAM(1001, BN_CLICKED),
                                 reinterpret_cast<LPARAM>(c)));
    NMHDR nm{c, 1001, static_cast<UINT>(-2)};
    EXPECT_EQ(99, ::SendMessageW(p, WM_NOTIFY, 1001, reinterpret_cast<LPARAM>(&nm)));
    DRAWITEMSTRUCT dis{};
    dis.CtlType = ODT_BUTTON;
    dis.hwndItem = c;
    EXPECT_EQ(99, ::SendMessageW(p, WM_DRAWITEM, 1001, reinterpret_cast<LPARAM>(&dis)));
    EXPECT_EQ(99, ::SendMessageW(p, WM_CTLCOLORBTN, 0, reinterpret_cast<LPARAM>(c)));
    std::vector<UINT> reflected;
    for (UINT m : child.seen) {
        if (m >= kReflectedMessageBase)
            reflected.push_back(m - kReflectedMessageBase);
    }
    EXPECT_EQ((std::vector<UINT>{WM_COMMAND, WM_NOTIFY, WM_DRAWITEM, WM_CTLCOLORBTN}), reflected);

    // Menus, stock controls and menu drawing are not reflected; a control
    // that leaves its reflection unhandled leaves it to the parent.
    child.seen.clear();
    ::SendMessageW(p, WM_COMMAND, 1001, 0);
    ::SendMessageW(p, WM_COMMAND, 1002, reinterpret_cast<LPARAM>(stock));
    dis.CtlType = ODT_MENU;
    ::SendMessageW(p, WM_DRAWITEM, 0, reinterpret_cast<LPARAM>(&dis));
    EXPECT_FALSE(child.Saw(kReflectedMessageBase + WM_COMMAND));
    EXPECT_FALSE(child.Saw(kReflectedMessageBase + WM_DRAWITEM));
    child.reflected_answer = 0;
    LRESULT r = -1;
    EXPECT_FALSE(Window::ReflectToControl(WM_COMMAND, 1001, reinterpret_cast<LPARAM>(c), r));
    EXPECT_EQ(-1, r);
}

LRESULT CALLBACK OtherProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    return ::DefWindowProcW(hwnd, msg, wp, lp);
}

TEST(WindowClass, RegistersOnceAndReplacesAStaleRegistration) {
    constexpr wchar_t kName[] = L"VelkWindowClassTest";
    WindowClassOptions stale;
    stale.proc = &OtherProc;
    ASSERT_NE(0, RegisterWindowClass(kName, stale));
    const ATOM ours = RegisterWindowClass(kName);
    ASSERT_NE(0, ours);
    EXPECT_EQ(ours, RegisterWindowClass(kName));
    WNDCLASSEXW wc{};
    wc.cbSize = sizeof(wc);
    ASSERT_TRUE(::GetClassInfoExW(ThisModule(), kName, &wc));
    EXPECT_EQ(&Window::StaticProc, wc.lpfnWndProc);

    // A class cannot go while one of its windows exists.
    Plain w;
    ASSERT_NE(nullptr, w.Create(kName, nullptr, WS_POPUP));
    EXPECT_FALSE(UnregisterWindowClass(kName));
    w.Destroy();
    EXPECT_TRUE(UnregisterWindowClass(kName));
}

}  // namespace
}  // namespace velk::win32

namespace velk::win32 {
namespace {

// Defers from inside a nested procedure call, run within a message loop of
// our own (a modal loop under one of our frames), and notes the depth.
class Deferrer : public Window {
public:
    std::vector<int> ran_at;  // the depth seen by each deferred action
    int nested_depth = 0;

protected:
    bool ProcessMessage(UINT msg, WPARAM, LPARAM, LRESULT&) override {
        if (msg == WM_USER + 10) {
            // Our frame stays on the stack while a loop pumps the inner message.
            ::PostMessageW(hwnd(), WM_USER + 11, 0, 0);
            MSG m;
            while (::PeekMessageW(&m, hwnd(), WM_USER + 11, WM_USER + 11, PM_REMOVE))
                ::DispatchMessageW(&m);
            return true;
        }
        if (msg == WM_USER + 11) {
            nested_depth = EntryDepth();
            WhenOutOfModule([this] { ran_at.push_back(EntryDepth()); });
            return true;
        }
        return false;
    }
};

TEST_F(WindowTest, WorkDeferredOutOfTheModuleWaitsForTheOutermostProcedure) {
    Deferrer w;
    ASSERT_NE(nullptr, w.Create(kClass, nullptr, WS_POPUP));
    ::SendMessageW(w.hwnd(), WM_USER + 10, 0, 0);
    EXPECT_EQ(2, w.nested_depth);
    EXPECT_EQ(std::vector<int>{0}, w.ran_at) << "ran once, after the outer procedure";
    WhenOutOfModule([&] { w.ran_at.push_back(-1); });  // no frame of ours: at once
    EXPECT_EQ((std::vector<int>{0, -1}), w.ran_at);
}

}  // namespace
}  // namespace velk::win32
