#include "common_src/win32/subclassed_window.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <type_traits>
#include <vector>

#include "common_src/win32/dialog.h"
#include "common_src/win32/dialog_template_test_util.h"
#include "common_src/win32/reflection.h"
#include "common_src/win32/window.h"
#include "common_src/win32/window_class.h"

namespace velk::win32 {
namespace {

constexpr UINT kPing = WM_GETTEXTLENGTH;  // the window's own procedure answers it too
constexpr UINT kThrow = WM_USER + 11;

// The same recording for a subclassed control and for a window of our own.
template <class Base>
class Recorder : public Base {
public:
    std::vector<UINT> seen;
    HWND final_hwnd = nullptr;
    LRESULT reflected_answer = 0;
    bool SawReflected(UINT msg) const {
        return std::count(seen.begin(), seen.end(), kReflectedMessageBase + msg) > 0;
    }

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override {
        seen.push_back(msg);
        if (msg == kThrow)
            throw std::runtime_error("handler failed");
        if constexpr (std::is_same_v<Base, SubclassedWindow>) {
            if (msg == kPing) {
                result = this->CallDefault(msg, wp, lp) + 1;  // the window's own answer, plus ours
                return true;
            }
        }
        if (msg >= kReflectedMessageBase && reflected_answer != 0) {
            result = reflected_answer;
            return true;
        }
        return false;
    }
    void OnFinalMessage(HWND hwnd) override { final_hwnd = hwnd; }
};

LRESULT CALLBACK OtherSubclass(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp, UINT_PTR, DWORD_PTR) {
    return ::DefSubclassProc(hwnd, msg, wp, lp) + (msg == kPing ? 10 : 0);
}

TEST(SubclassedWindow, ChainsWithOtherSubclassesInAnyOrderAndLeavesOnDestroy) {
    HWND hwnd = ::CreateWindowExW(0, L"STATIC", L"abc", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr,
                                  nullptr, nullptr);
    ASSERT_NE(nullptr, hwnd);
    Recorder<SubclassedWindow> ours;
    ASSERT_TRUE(ours.Attach(hwnd));
    EXPECT_FALSE(ours.Attach(hwnd));
    EXPECT_EQ(&ours, SubclassedWindow::FromHandle(hwnd));
    // Someone else subclasses after us, then we leave first: their subclass
    // and the window's own procedure keep working.
    ASSERT_TRUE(::SetWindowSubclass(hwnd, &OtherSubclass, 7, 0));
    EXPECT_EQ(14, ::SendMessageW(hwnd, kPing, 0, 0));
    EXPECT_EQ(0, ::SendMessageW(hwnd, kThrow, 0, 0)) << "the default answer, not a crash";
    ours.Detach();
    EXPECT_EQ(nullptr, SubclassedWindow::FromHandle(hwnd));
    EXPECT_EQ(13, ::SendMessageW(hwnd, kPing, 0, 0));

    Recorder<SubclassedWindow> again;
    ASSERT_TRUE(again.Attach(hwnd));
    ::DestroyWindow(hwnd);
    EXPECT_EQ(hwnd, again.final_hwnd);
    EXPECT_FALSE(again.attached());
    EXPECT_EQ(WM_NCDESTROY, again.seen.back());
}

class Host : public Dialog {
protected:
    bool ProcessMessage(UINT msg, WPARAM, LPARAM, LRESULT& result) override {
        result = TRUE;
        return msg == WM_INITDIALOG;
    }
};

// A dialog hands what it leaves unhandled to the objects of its controls,
// whether subclassed stock controls or windows of our own.
TEST(Reflection, ReachesTheObjectsOfControlsAndNothingElse) {
    constexpr wchar_t kOwnClass[] = L"VelkReflectionTestClass";
    ASSERT_NE(0, RegisterWindowClass(kOwnClass));
    testing::DialogTemplate t(WS_POPUP, 150, 60);
    t.Control(L"BUTTON", 100, BS_PUSHBUTTON, 5, 5, 40, 14)
        .Control(TRACKBAR_CLASSW, 101, 0, 5, 25, 40, 14)
        .Control(L"BUTTON", 103, BS_PUSHBUTTON, 50, 25, 40, 14);
    Host host;
    HWND dlg = host.CreateModelessIndirect(t.get(), nullptr);
    ASSERT_NE(nullptr, dlg);
    HWND button = ::GetDlgItem(dlg, 100), slider = ::GetDlgItem(dlg, 101);
    HWND stock = ::GetDlgItem(dlg, 103);
    Recorder<SubclassedWindow> button_object, slider_object;
    ASSERT_TRUE(button_object.Attach(button));
    ASSERT_TRUE(slider_object.Attach(slider));
    Recorder<Window> own_object;
    HWND own = own_object.Create(kOwnClass, dlg, WS_CHILD, 0, RECT{0, 0, 5, 5}, L"", 104);
    ASSERT_NE(nullptr, own);
    button_object.reflected_answer = 5;
    own_object.reflected_answer = 99;

    ::SendMessageW(dlg, WM_COMMAND, MAKEWPARAM(100, BN_CLICKED), reinterpret_cast<LPARAM>(button));
    ::SendMessageW(dlg, WM_HSCROLL, TB_THUMBPOSITION, reinterpret_cast<LPARAM>(slider));
    MEASUREITEMSTRUCT mis{};
    mis.CtlType = ODT_BUTTON;
    mis.CtlID = 100;
    ::SendMessageW(dlg, WM_MEASUREITEM, 100, reinterpret_cast<LPARAM>(&mis));
    // Colour messages come back as the control's own answer (a brush).
    EXPECT_EQ(5, ::SendMessageW(dlg, WM_CTLCOLORBTN, 0, reinterpret_cast<LPARAM>(button)));
    NMHDR nm{own, 104, static_cast<UINT>(-2)};
    EXPECT_EQ(99, ::SendMessageW(dlg, WM_NOTIFY, 104, reinterpret_cast<LPARAM>(&nm)));
    DRAWITEMSTRUCT dis{};
    dis.CtlType = ODT_BUTTON;
    dis.hwndItem = own;
    ::SendMessageW(dlg, WM_DRAWITEM, 104, reinterpret_cast<LPARAM>(&dis));
    EXPECT_TRUE(button_object.SawReflected(WM_COMMAND) && button_object.SawReflected(WM_MEASUREITEM));
    EXPECT_TRUE(slider_object.SawReflected(WM_HSCROLL));
    EXPECT_FALSE(slider_object.SawReflected(WM_COMMAND));
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
    host.Close(0);
}

}  // namespace
}  // namespace velk::win32
