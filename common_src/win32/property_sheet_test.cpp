#include "common_src/win32/property_sheet.h"

#include <gtest/gtest.h>

#include <vector>

#include "common_src/win32/dialog_template_test_util.h"

namespace velk::win32 {
namespace {

constexpr UINT kStopSwallowing = WM_USER + 20;

class TestPage : public PropertyPage {
public:
    explicit TestPage(const DLGTEMPLATE* t) : PropertyPage(t) {}
    HWND init_hwnd = nullptr;
    int applied = 0;
    int reset = 0;
    bool refuse_apply = false;

protected:
    bool ProcessMessage(UINT msg, WPARAM, LPARAM, LRESULT& result) override {
        if (msg == WM_INITDIALOG)
            init_hwnd = hwnd();
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
    EXPECT_NE(nullptr, first.init_hwnd);  // the object was found from lParam
    EXPECT_TRUE(first.shown());
    EXPECT_FALSE(second.shown());
    EXPECT_EQ(1, first.applied);
    EXPECT_EQ(0, second.applied);  // never shown, so never asked to save
    EXPECT_EQ(1, first.reset);
    EXPECT_FALSE(sheet.attached());
    EXPECT_EQ(nullptr, first.hwnd());
}

}  // namespace
}  // namespace velk::win32
