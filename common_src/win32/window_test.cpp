// The life cycle of the objects behind windows (our own windows, dialogs,
// property sheets and pages, subclassed windows we did not create) and the
// reflection of control notifications between them.
#include "common_src/win32/window.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <type_traits>
#include <vector>

#include "common_src/win32/dialog.h"
#include "common_src/win32/dialog_template_test_util.h"
#include "common_src/win32/entry_scope.h"
#include "common_src/win32/property_sheet.h"
#include "common_src/win32/reflection.h"
#include "common_src/win32/subclassed_window.h"
#include "common_src/win32/window_class.h"

namespace velk::win32 {
namespace {

constexpr wchar_t kClass[] = L"VelkWindowTestClass";
constexpr UINT kThrow = WM_USER + 2;  // default processing answers 0 (a dialog's DM_REPOSITION)
constexpr UINT kAnswer = WM_USER + 3;
constexpr UINT kDestroySelf = WM_USER + 4;
constexpr UINT kNested = WM_USER + 10;
constexpr UINT kDefer = WM_USER + 11;
constexpr UINT kCloseWith = WM_USER + 12;

// Records what reaches it; throws, answers, destroys itself and defers work
// from a nested call on request. WM_GETTEXTLENGTH with wParam 1 throws a
// non-standard exception; a subclass adds 1 to the window's own answer.
template <class Base>
class Recorder : public Base {
public:
    std::vector<UINT> seen;
    HWND final_hwnd = nullptr;
    int* destroyed_count = nullptr;  // set: the object deletes itself after its last message
    LRESULT reflected_answer = 0;
    INT_PTR close_in_init = 0;     // a dialog posts itself this code to close with
    std::vector<int> deferred_at;  // the entry depth each deferred action saw

    ~Recorder() override {
        if constexpr (std::is_same_v<Base, Window>)
            this->Destroy();
        if (destroyed_count != nullptr)
            ++*destroyed_count;
    }
    bool Saw(UINT msg) const { return std::count(seen.begin(), seen.end(), msg) > 0; }
    bool SawReflected(UINT msg) const { return Saw(kReflectedMessageBase + msg); }

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override {
        seen.push_back(msg);
        if (msg == kThrow)
            throw std::runtime_error("handler failed");
        if (msg == WM_GETTEXTLENGTH && wp == 1)
            throw 42;
        if constexpr (std::is_same_v<Base, SubclassedWindow>) {
            if (msg == WM_GETTEXTLENGTH) {
                result = this->CallDefault(msg, wp, lp) + 1;
                return true;
            }
        }
        if constexpr (std::is_same_v<Base, Dialog>) {
            if (msg == kCloseWith)
                this->Close(static_cast<INT_PTR>(wp));
            if (msg == WM_INITDIALOG && close_in_init != 0)
                ::PostMessageW(this->hwnd(), kCloseWith, close_in_init, 0);
        }
        if (msg == kAnswer) {
            result = static_cast<LRESULT>(wp) * 2;
        } else if (msg == WM_INITDIALOG || msg == WM_CTLCOLORDLG) {
            result = msg == WM_CTLCOLORDLG ? 77 : TRUE;  // 77 stands for a brush
        } else if (msg == kDestroySelf) {
            ::DestroyWindow(this->hwnd());
            result = 7;
        } else if (msg == kNested) {
            // Our frame stays on the stack while a loop pumps the inner message.
            ::PostMessageW(this->hwnd(), kDefer, 0, 0);
            MSG m;
            while (::PeekMessageW(&m, this->hwnd(), kDefer, kDefer, PM_REMOVE))
                ::DispatchMessageW(&m);
        } else if (msg == kDefer) {
            WhenOutOfModule([this] { deferred_at.push_back(EntryDepth()); });
        } else if (msg >= kReflectedMessageBase && reflected_answer != 0) {
            result = reflected_answer;
        } else {
            return false;
        }
        return true;
    }
    void OnFinalMessage(HWND hwnd) override {
        final_hwnd = hwnd;
        if (destroyed_count != nullptr)
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

TEST_F(WindowTest, AttachesOnCreateSurvivesThrowingHandlersAndLetsGoOnNcDestroy) {
    Recorder<Window> w;
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

    // A handler destroys its own window and the object deletes itself in
    // that call: the dispatcher must not touch it afterwards.
    int destroyed = 0;
    auto* self_owned = new Recorder<Window>;
    self_owned->destroyed_count = &destroyed;
    hwnd = self_owned->Create(kClass, nullptr, WS_POPUP);
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
    ASSERT_NE(0, RegisterWindowClass(kName));
    Plain w;
    ASSERT_NE(nullptr, w.Create(kName, nullptr, WS_POPUP));
    EXPECT_EQ(&w, Window::FromHandle(w.hwnd())) << "made on our procedure";
    EXPECT_FALSE(UnregisterWindowClass(kName));
    w.Destroy();
    EXPECT_TRUE(UnregisterWindowClass(kName));
}

LRESULT CALLBACK OtherSubclass(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp, UINT_PTR, DWORD_PTR) {
    return ::DefSubclassProc(hwnd, msg, wp, lp) + (msg == WM_GETTEXTLENGTH ? 10 : 0);
}

// Colour messages answer with the brush as the procedure's result, others
// through DWLP_MSGRESULT; what the dialog leaves unhandled goes to the
// objects of its controls, subclassed stock controls or windows of our own.
TEST_F(WindowTest, DialogsAnswerTheirWayAndReflectToTheObjectsOfTheirControls) {
    testing::DialogTemplate t(WS_POPUP, 150, 60);
    t.Control(L"BUTTON", 100, BS_PUSHBUTTON, 5, 5, 40, 14)
        .Control(L"BUTTON", 103, BS_PUSHBUTTON, 50, 25, 40, 14);
    Recorder<Dialog> host;
    HWND dlg = host.CreateModelessIndirect(t.get(), nullptr);
    ASSERT_NE(nullptr, dlg);
    EXPECT_EQ(&host, Dialog::FromHandle(dlg));
    EXPECT_EQ(10, ::SendMessageW(dlg, kAnswer, 5, 0));
    EXPECT_EQ(77, ::SendMessageW(dlg, WM_CTLCOLORDLG, 0, reinterpret_cast<LPARAM>(dlg)));
    EXPECT_EQ(0, ::SendMessageW(dlg, kThrow, 0, 0));
    EXPECT_EQ(4, ::SendMessageW(dlg, kAnswer, 2, 0));

    HWND button = ::GetDlgItem(dlg, 100), stock = ::GetDlgItem(dlg, 103);
    Recorder<SubclassedWindow> button_object;
    ASSERT_TRUE(button_object.Attach(button));
    Recorder<Window> own_object;
    HWND own = own_object.Create(kClass, dlg, WS_CHILD, 0, RECT{0, 0, 5, 5}, L"", 104);
    ASSERT_NE(nullptr, own);
    button_object.reflected_answer = 5;
    own_object.reflected_answer = 99;

    ::SendMessageW(dlg, WM_COMMAND, MAKEWPARAM(100, BN_CLICKED), reinterpret_cast<LPARAM>(button));
    MEASUREITEMSTRUCT mis{};
    mis.CtlType = ODT_BUTTON;
    mis.CtlID = 100;
    ::SendMessageW(dlg, WM_MEASUREITEM, 100, reinterpret_cast<LPARAM>(&mis));
    EXPECT_EQ(5, ::SendMessageW(dlg, WM_CTLCOLORBTN, 0, reinterpret_cast<LPARAM>(button)));
    NMHDR nm{own, 104, static_cast<UINT>(-2)};
    EXPECT_EQ(99, ::SendMessageW(dlg, WM_NOTIFY, 104, reinterpret_cast<LPARAM>(&nm)));
    DRAWITEMSTRUCT dis{};
    dis.CtlType = ODT_BUTTON;
    dis.hwndItem = own;
    ::SendMessageW(dlg, WM_DRAWITEM, 104, reinterpret_cast<LPARAM>(&dis));
    EXPECT_TRUE(button_object.SawReflected(WM_COMMAND) && button_object.SawReflected(WM_MEASUREITEM));
    EXPECT_TRUE(own_object.SawReflected(WM_NOTIFY) && own_object.SawReflected(WM_DRAWITEM));

    // Menus, menu drawing and controls without an object are not reflected;
    // a control that leaves its reflection unhandled leaves it to the parent.
    own_object.seen.clear();
    LRESULT r = -1;
    EXPECT_FALSE(ReflectToOwner(dlg, WM_COMMAND, 104, 0, r));
    EXPECT_FALSE(ReflectToOwner(dlg, WM_COMMAND, 103, reinterpret_cast<LPARAM>(stock), r));
    dis.CtlType = ODT_MENU;
    ::SendMessageW(dlg, WM_DRAWITEM, 0, reinterpret_cast<LPARAM>(&dis));
    EXPECT_FALSE(own_object.SawReflected(WM_DRAWITEM));
    own_object.reflected_answer = 0;
    EXPECT_FALSE(Window::ReflectToControl(WM_COMMAND, 104, reinterpret_cast<LPARAM>(own), r));
    EXPECT_EQ(-1, r);

    // Someone else subclasses a control after us, then we leave first: their
    // subclass and the control's own procedure keep working.
    ::SetWindowTextW(stock, L"abc");
    Recorder<SubclassedWindow> ours;
    ASSERT_TRUE(ours.Attach(stock));
    EXPECT_FALSE(ours.Attach(stock));
    ASSERT_TRUE(::SetWindowSubclass(stock, &OtherSubclass, 7, 0));
    EXPECT_EQ(14, ::SendMessageW(stock, WM_GETTEXTLENGTH, 0, 0));
    EXPECT_EQ(0, ::SendMessageW(stock, kThrow, 0, 0)) << "the default answer, not a crash";
    ours.Detach();
    EXPECT_EQ(nullptr, SubclassedWindow::FromHandle(stock));
    EXPECT_EQ(13, ::SendMessageW(stock, WM_GETTEXTLENGTH, 0, 0));

    // Every object lets go of its window on WM_NCDESTROY.
    ::SendMessageW(dlg, kCloseWith, 0, 0);
    EXPECT_EQ(dlg, host.final_hwnd);
    EXPECT_EQ(nullptr, host.hwnd());
    EXPECT_EQ(button, button_object.final_hwnd);
    EXPECT_FALSE(button_object.attached());
    EXPECT_EQ(WM_NCDESTROY, button_object.seen.back());

    Recorder<Dialog> modal;
    modal.close_in_init = 42;
    EXPECT_EQ(42, modal.DoModalIndirect(t.get(), nullptr));
    {
        Recorder<Dialog> modeless;
        dlg = modeless.CreateModelessIndirect(t.get(), nullptr);
    }
    EXPECT_FALSE(::IsWindow(dlg)) << "a modeless dialog dies with its object";
}

constexpr UINT kStopSwallowing = WM_USER + 20;

class TestPage : public PropertyPage {
public:
    explicit TestPage(const DLGTEMPLATE* t) : PropertyPage(t) {}
    int applied = 0;
    int reset = 0;
    bool refuse_apply = false;

protected:
    bool ProcessMessage(UINT msg, WPARAM, LPARAM, LRESULT& result) override {
        result = TRUE;
        return msg == WM_INITDIALOG;
    }
    bool OnApply() override {
        ++applied;
        return !refuse_apply;
    }
    void OnReset() override { ++reset; }
};

// Swallows OK, Cancel and SC_CLOSE until told to stop, as a sheet does while
// another settings window is open; plays its script once it is up.
class TestSheet : public PropertySheet {
public:
    bool swallowing = true;
    int swallowed = 0;
    std::vector<std::pair<UINT, WPARAM>> script;  // messages posted once the sheet is up

protected:
    void OnInitialized() override {
        for (const auto& [msg, wp] : script)
            ::PostMessageW(hwnd(), msg, wp, 0);
    }
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM, LRESULT& result) override {
        if (msg == kStopSwallowing) {
            swallowing = false;
            return true;
        }
        const bool closing = (msg == WM_COMMAND && (LOWORD(wp) == IDOK || LOWORD(wp) == IDCANCEL)) ||
                             (msg == WM_SYSCOMMAND && (wp & 0xFFF0) == SC_CLOSE);
        if (!closing || !swallowing)
            return false;
        ++swallowed;
        result = 0;
        return true;
    }
};

const testing::DialogTemplate kPage(WS_CHILD | WS_DISABLED | WS_CAPTION | DS_CONTROL, 150, 80,
                                    L"Page");

// One session: OK, Cancel and the close box are swallowed, then OK meets a
// page that refuses to save, then Cancel ends the sheet.
TEST(PropertySheet, SwallowsClosingCommandsAndAppliesOnlyShownPagesThatMayRefuse) {
    TestPage first(kPage.get()), second(kPage.get());
    first.refuse_apply = true;
    TestSheet sheet;
    sheet.AddPage(first);
    sheet.AddPage(second);
    sheet.script = {{WM_COMMAND, IDOK},     {WM_COMMAND, IDCANCEL}, {WM_SYSCOMMAND, SC_CLOSE},
                    {kStopSwallowing, 0},   {WM_COMMAND, IDOK},     {WM_COMMAND, IDCANCEL}};
    EXPECT_EQ(0, sheet.DoModal(nullptr, L"Sheet", PSH_NOAPPLYNOW));

    EXPECT_EQ(3, sheet.swallowed);
    EXPECT_TRUE(first.shown());  // the object was found from lParam
    EXPECT_FALSE(second.shown());
    EXPECT_EQ(1, first.applied);
    EXPECT_EQ(0, second.applied);  // never shown, so never asked to save
    EXPECT_EQ(1, first.reset);
    EXPECT_FALSE(sheet.attached());
    EXPECT_EQ(nullptr, first.hwnd());
}

}  // namespace
}  // namespace velk::win32
