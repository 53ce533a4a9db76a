#include "common_src/win32/subclassed_window.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "common_src/win32/dialog.h"
#include "common_src/win32/reflection.h"

namespace velk::win32 {
namespace {

constexpr UINT kPing = WM_USER + 10;
constexpr UINT kThrow = WM_USER + 11;

class Recorder : public SubclassedWindow {
public:
    std::vector<UINT> seen;
    HWND final_hwnd = nullptr;
    LRESULT reflected_answer = 0;

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override {
        seen.push_back(msg);
        if (msg == kThrow)
            throw std::runtime_error("handler failed");
        if (msg == kPing) {
            result = CallDefault(msg, wp, lp) + 1;  // the window's own answer, plus ours
            return true;
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
    if (msg == kPing)
        return ::DefSubclassProc(hwnd, msg, wp, lp) + 10;
    return ::DefSubclassProc(hwnd, msg, wp, lp);
}

LRESULT CALLBACK ForeignProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    return msg == kPing ? 100 : ::DefWindowProcW(hwnd, msg, wp, lp);
}

HWND MakeForeign() {
    static const bool registered = [] {
        WNDCLASSW wc{};
        wc.lpfnWndProc = &ForeignProc;
        wc.hInstance = ::GetModuleHandleW(nullptr);
        wc.lpszClassName = L"VelkForeignSubclassed";
        return ::RegisterClassW(&wc) != 0;
    }();
    return registered ? ::CreateWindowExW(0, L"VelkForeignSubclassed", L"", WS_POPUP, 0, 0, 10,
                                          10, nullptr, nullptr, ::GetModuleHandleW(nullptr),
                                          nullptr)
                      : nullptr;
}

TEST(SubclassedWindow, ChainsWithOtherSubclassesInAnyOrderAndLeavesOnDestroy) {
    HWND hwnd = MakeForeign();
    ASSERT_NE(nullptr, hwnd);
    Recorder ours;
    ASSERT_TRUE(ours.Attach(hwnd));
    EXPECT_FALSE(ours.Attach(hwnd));
    EXPECT_EQ(&ours, SubclassedWindow::FromHandle(hwnd));
    // Someone else subclasses after us, then we leave first: their subclass
    // and the window's own procedure keep working.
    ASSERT_TRUE(::SetWindowSubclass(hwnd, &OtherSubclass, 7, 0));
    EXPECT_EQ(111, ::SendMessageW(hwnd, kPing, 0, 0));
    // An exception in our handler gives the default answer, not a crash.
    EXPECT_EQ(0, ::SendMessageW(hwnd, kThrow, 0, 0));
    ours.Detach();
    EXPECT_EQ(nullptr, SubclassedWindow::FromHandle(hwnd));
    EXPECT_EQ(110, ::SendMessageW(hwnd, kPing, 0, 0));

    Recorder again;
    ASSERT_TRUE(again.Attach(hwnd));
    ::DestroyWindow(hwnd);
    EXPECT_EQ(hwnd, again.final_hwnd);
    EXPECT_FALSE(again.attached());
    EXPECT_EQ(WM_NCDESTROY, again.seen.back());
}

// A dialog with one push button (id 100) and one trackbar (id 101).
std::vector<WORD> DialogWithControls() {
    std::vector<WORD> w;
    auto dword = [&](DWORD v) { w.push_back(LOWORD(v)); w.push_back(HIWORD(v)); };
    auto text = [&](const wchar_t* s) { do { w.push_back(*s); } while (*s++); };
    auto align = [&] { if (w.size() % 2) w.push_back(0); };
    dword(WS_POPUP | DS_SETFONT);
    dword(0);
    w.push_back(2);  // controls
    w.insert(w.end(), {0, 0, 100, 50});
    w.insert(w.end(), {0, 0, 0});  // no menu, default class, no title
    w.push_back(8);
    text(L"MS Shell Dlg");
    auto control = [&](const wchar_t* cls, WORD id, DWORD style) {
        align();
        dword(WS_CHILD | WS_VISIBLE | style);
        dword(0);
        w.insert(w.end(), {5, 5, 40, 14, id});
        text(cls);
        w.push_back(0);  // no title
        w.push_back(0);  // no creation data
    };
    control(L"BUTTON", 100, BS_PUSHBUTTON);
    control(TRACKBAR_CLASSW, 101, 0);
    return w;
}

class Host : public Dialog {
protected:
    bool ProcessMessage(UINT msg, WPARAM, LPARAM, LRESULT& result) override {
        if (msg == WM_INITDIALOG) {
            result = TRUE;
            return true;
        }
        return false;
    }
};

TEST(Reflection, DialogHandsItsControlsNotificationsToTheirObjects) {
    const std::vector<WORD> t = DialogWithControls();
    Host host;
    HWND dlg = host.CreateModelessIndirect(reinterpret_cast<const DLGTEMPLATE*>(t.data()), nullptr);
    ASSERT_NE(nullptr, dlg);
    HWND button = ::GetDlgItem(dlg, 100);
    HWND slider = ::GetDlgItem(dlg, 101);
    Recorder button_object, slider_object;
    ASSERT_TRUE(button_object.Attach(button));
    ASSERT_TRUE(slider_object.Attach(slider));
    button_object.reflected_answer = 5;

    ::SendMessageW(dlg, WM_COMMAND, MAKEWPARAM(100, BN_CLICKED), reinterpret_cast<LPARAM>(button));
    ::SendMessageW(dlg, WM_HSCROLL, TB_THUMBPOSITION, reinterpret_cast<LPARAM>(slider));
    MEASUREITEMSTRUCT mis{};
    mis.CtlType = ODT_BUTTON;
    mis.CtlID = 100;
    ::SendMessageW(dlg, WM_MEASUREITEM, 100, reinterpret_cast<LPARAM>(&mis));
    // Colour messages come back as the control's own answer (a brush).
    EXPECT_EQ(5, ::SendMessageW(dlg, WM_CTLCOLORBTN, 0, reinterpret_cast<LPARAM>(button)));

    auto saw = [](const Recorder& r, UINT m) {
        for (UINT s : r.seen)
            if (s == kReflectedMessageBase + m)
                return true;
        return false;
    };
    EXPECT_TRUE(saw(button_object, WM_COMMAND));
    EXPECT_TRUE(saw(button_object, WM_MEASUREITEM));
    EXPECT_TRUE(saw(slider_object, WM_HSCROLL));
    EXPECT_FALSE(saw(slider_object, WM_COMMAND));
    // A menu command names no control and is reflected nowhere.
    LRESULT r = 0;
    EXPECT_FALSE(ReflectToOwner(dlg, WM_COMMAND, 100, 0, r));
    host.Close(0);
}

}  // namespace
}  // namespace velk::win32
