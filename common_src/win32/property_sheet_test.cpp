#include "common_src/win32/property_sheet.h"

#include <gtest/gtest.h>

#include <vector>

namespace velk::win32 {
namespace {

constexpr UINT kStopSwallowing = WM_USER + 20;

std::vector<WORD> PageTemplate() {
    DLGTEMPLATE dt{};
    dt.style = WS_CHILD | WS_DISABLED | WS_CAPTION | DS_CONTROL;
    dt.cx = 150;
    dt.cy = 80;
    const WORD* head = reinterpret_cast<const WORD*>(&dt);
    std::vector<WORD> words(head, head + sizeof(dt) / sizeof(WORD));
    words.insert(words.end(), {0, 0});  // no menu, standard class
    for (const wchar_t* s = L"Page"; *s; ++s)
        words.push_back(*s);
    words.push_back(0);
    return words;
}

class TestPage : public PropertyPage {
public:
    explicit TestPage(const DLGTEMPLATE* t) : PropertyPage(t) {}
    HWND init_hwnd = nullptr;
    int applied = 0;
    int reset = 0;
    bool refuse_apply = false;

protected:
    bool ProcessMessage(UINT msg, WPARAM, LPARAM, LRESULT& result) override {
        if (msg == WM_INITDIALOG) {
            init_hwnd = hwnd();
            result = TRUE;
            return true;
        }
        return false;
    }
    bool OnApply() override {
        ++applied;
        return !refuse_apply;
    }
    void OnReset() override { ++reset; }
};

// Swallows OK, Cancel and SC_CLOSE until told to stop, as a sheet does while
// another settings window is open.
class TestSheet : public PropertySheet {
public:
    bool swallowing = true;
    int swallowed = 0;
    HWND apply_button = nullptr;
    std::vector<UINT> script;  // commands posted once the sheet is up

protected:
    void OnInitialized() override {
        apply_button = ::GetDlgItem(hwnd(), 12321);
        for (UINT id : script) {
            if (id == kStopSwallowing)
                ::PostMessageW(hwnd(), kStopSwallowing, 0, 0);
            else if (id == SC_CLOSE)
                ::PostMessageW(hwnd(), WM_SYSCOMMAND, SC_CLOSE, 0);
            else
                ::PostMessageW(hwnd(), WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), 0);
        }
    }
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM, LRESULT& result) override {
        if (msg == kStopSwallowing) {
            swallowing = false;
            return true;
        }
        const bool closing = (msg == WM_COMMAND && (LOWORD(wp) == IDOK || LOWORD(wp) == IDCANCEL)) ||
                             (msg == WM_SYSCOMMAND && (wp & 0xFFF0) == SC_CLOSE);
        if (closing && swallowing) {
            ++swallowed;
            result = 0;
            return true;
        }
        return false;
    }
};

TEST(PropertySheet, SwallowsClosingCommandsThenAppliesOnlyShownPages) {
    const std::vector<WORD> t = PageTemplate();
    const auto* dt = reinterpret_cast<const DLGTEMPLATE*>(t.data());
    TestPage first(dt), second(dt);
    TestSheet sheet;
    sheet.AddPage(first);
    sheet.AddPage(second);
    sheet.script = {IDOK, IDCANCEL, SC_CLOSE, kStopSwallowing, IDOK};
    const INT_PTR answer = sheet.DoModal(nullptr, L"Sheet", PSH_NOAPPLYNOW);

    EXPECT_EQ(3, sheet.swallowed);
    EXPECT_NE(nullptr, first.init_hwnd);  // the object was found from lParam
    EXPECT_TRUE(first.shown());
    EXPECT_FALSE(second.shown());
    EXPECT_EQ(1, first.applied);
    EXPECT_EQ(0, second.applied);  // never shown, so never asked to save
    EXPECT_GT(answer, 0);
    EXPECT_FALSE(sheet.attached());
    EXPECT_EQ(nullptr, first.hwnd());
}

TEST(PropertySheet, RefusedApplyKeepsTheSheetOpenAndCancelResets) {
    const std::vector<WORD> t = PageTemplate();
    TestPage page(reinterpret_cast<const DLGTEMPLATE*>(t.data()));
    page.refuse_apply = true;
    TestSheet sheet;
    sheet.swallowing = false;
    sheet.AddPage(page);
    sheet.script = {IDOK, IDCANCEL};
    EXPECT_EQ(0, sheet.DoModal(nullptr, L"Sheet"));
    EXPECT_EQ(1, page.applied);
    EXPECT_EQ(1, page.reset);
}

}  // namespace
}  // namespace velk::win32
