#include "common_src/win32/dialog.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "common_src/win32/dialog_template_test_util.h"

namespace velk::win32 {
namespace {

constexpr UINT kAnswer = WM_USER + 1;
constexpr UINT kThrow = WM_USER + 2;
constexpr UINT kCloseWith = WM_USER + 3;

class TestDialog : public Dialog {
public:
    HWND init_hwnd = nullptr;
    HWND final_hwnd = nullptr;
    HBRUSH brush = nullptr;
    bool close_in_init = false;

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM, LRESULT& result) override {
        switch (msg) {
            case WM_INITDIALOG:
                init_hwnd = hwnd();
                if (close_in_init)
                    ::PostMessageW(hwnd(), kCloseWith, 42, 0);
                result = TRUE;
                return true;
            case WM_CTLCOLORDLG:
                result = reinterpret_cast<LRESULT>(brush);
                return true;
            case kAnswer:
                result = static_cast<LRESULT>(wp) + 1000;
                return true;
            case kThrow:
                throw std::runtime_error("dialog handler failed");
            case kCloseWith:
                Close(static_cast<INT_PTR>(wp));
                return true;
            default:
                return false;
        }
    }
    void OnFinalMessage(HWND hwnd) override { final_hwnd = hwnd; }
};

TEST(Dialog, AnswersEachMessageItsWayAndEndsModalOrModeless) {
    const testing::DialogTemplate t(WS_POPUP | WS_CAPTION, 100, 50);
    TestDialog dlg;
    HWND hwnd = dlg.CreateModelessIndirect(t.get(), nullptr);
    ASSERT_NE(nullptr, hwnd);
    EXPECT_EQ(hwnd, dlg.init_hwnd);
    EXPECT_EQ(&dlg, Dialog::FromHandle(hwnd));

    // Ordinary messages answer through DWLP_MSGRESULT ...
    EXPECT_EQ(1005, ::SendMessageW(hwnd, kAnswer, 5, 0));
    // ... colour messages with the brush as the procedure's own result.
    dlg.brush = static_cast<HBRUSH>(::GetStockObject(BLACK_BRUSH));
    EXPECT_EQ(reinterpret_cast<LRESULT>(dlg.brush),
              ::SendMessageW(hwnd, WM_CTLCOLORDLG, 0, reinterpret_cast<LPARAM>(hwnd)));
    // An exception gives default processing and the dialog goes on.
    EXPECT_EQ(0, ::SendMessageW(hwnd, kThrow, 0, 0));
    EXPECT_EQ(1001, ::SendMessageW(hwnd, kAnswer, 1, 0));
    dlg.Close(0);
    EXPECT_FALSE(::IsWindow(hwnd));
    EXPECT_EQ(hwnd, dlg.final_hwnd);
    EXPECT_EQ(nullptr, dlg.hwnd());

    TestDialog modal;
    modal.close_in_init = true;
    EXPECT_EQ(42, modal.DoModalIndirect(t.get(), nullptr));
    EXPECT_NE(nullptr, modal.final_hwnd);
    {
        TestDialog modeless;
        hwnd = modeless.CreateModelessIndirect(t.get(), nullptr);
        ASSERT_NE(nullptr, hwnd);
    }
    EXPECT_FALSE(::IsWindow(hwnd)) << "a modeless dialog dies with its object";
}

}  // namespace
}  // namespace velk::win32
