#include "senders/pages/sender_edit_dialog.h"

#include <gtest/gtest.h>

#include "senders/pages/sender_page_ids.h"
#include "senders/pages/sender_pages_test_util.h"

namespace velk::senders {
namespace {

using testing::DialogDriver;
using testing::PageWorld;

bool OkEnabled(HWND dialog) {
    return ::IsWindowEnabled(::GetDlgItem(dialog, IDOK)) != FALSE;
}

void Press(HWND dialog, int button) {
    ::PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(button, BN_CLICKED),
                   reinterpret_cast<LPARAM>(::GetDlgItem(dialog, button)));
}

class SenderEditDialogTest : public ::testing::Test {
protected:
    PageWorld world_;
    DialogDriver driver_;
};

TEST_F(SenderEditDialogTest, OkWaitsForAnAddressAndTheTextsAreCleanedOnOk) {
    bool blank = true, blanks = true, typed = false;
    std::wstring caption;
    driver_.Then([&](HWND dialog, bool) {
        wchar_t text[64] = L"";
        ::GetWindowTextW(dialog, text, 64);
        caption = text;
        blank = OkEnabled(dialog);
        ::SetDlgItemTextW(dialog, IDC_EDIT_ADDRESS, L" \t\r\n");
        blanks = OkEnabled(dialog);
        ::SetDlgItemTextW(dialog, IDC_EDIT_ADDRESS, L"  ***@Ex.com\t");
        typed = OkEnabled(dialog);
        ::SetDlgItemTextW(dialog, IDC_EDIT_NAME, L"\tAnn Lee  ");
        Press(dialog, IDOK);
        return true;
    });
    CSenderEditDlg dialog(world_.ui, L"IDS_ADDBLOCKSENDER_CAPTION", L"", L"");
    EXPECT_EQ(IDOK, dialog.Run(nullptr));
    EXPECT_EQ(world_.ui.Text(L"IDS_ADDBLOCKSENDER_CAPTION"), caption);
    EXPECT_FALSE(blank);
    EXPECT_FALSE(blanks);
    EXPECT_TRUE(typed);
    EXPECT_EQ(L"*@Ex.com", dialog.address());
    EXPECT_EQ(L"Ann Lee", dialog.name());
}

TEST_F(SenderEditDialogTest, RefusedTextsGetTheFocusBackWithOkDisabledUntilChanged) {
    const std::wstring too_long = std::wstring(251, L'a') + L"@x.com";  // 257 characters
    struct Seen {
        bool ok_enabled = true;
        int focus = 0;
    } after_long_address, after_bad_address, after_long_name;
    auto note = [](Seen& seen, HWND dialog) {
        testing::DialogDriver::Later([&seen, dialog] {
            seen.ok_enabled = OkEnabled(dialog);
            seen.focus = ::GetDlgCtrlID(::GetFocus());
        });
    };
    bool ok_back = false;
    driver_.Then([&](HWND dialog, bool) {
        ::SetDlgItemTextW(dialog, IDC_EDIT_ADDRESS, too_long.c_str());
        Press(dialog, IDOK);
        return true;
    });
    driver_.Answer(IDOK);
    driver_.Then([&](HWND dialog, bool again) {
        note(after_long_address, dialog);
        testing::DialogDriver::Later([&, dialog] {
            ::SetDlgItemTextW(dialog, IDC_EDIT_ADDRESS, L"a..b@x.com");
            ok_back = OkEnabled(dialog);
            Press(dialog, IDOK);
        });
        return again;
    });
    driver_.Answer(IDOK);
    driver_.Then([&](HWND dialog, bool again) {
        note(after_bad_address, dialog);
        testing::DialogDriver::Later([dialog] {
            ::SetDlgItemTextW(dialog, IDC_EDIT_ADDRESS, L"a.b@x.com");
            ::SetDlgItemTextW(dialog, IDC_EDIT_NAME, std::wstring(257, L'n').c_str());
            Press(dialog, IDOK);
        });
        return again;
    });
    driver_.Answer(IDOK);
    driver_.Then([&](HWND dialog, bool again) {
        note(after_long_name, dialog);
        testing::DialogDriver::Later([dialog] { Press(dialog, IDCANCEL); });
        return again;
    });

    CSenderEditDlg dialog(world_.ui, L"IDS_EDITAPPROVESENDER_CAPTION", L"old@x.com", L"Old");
    EXPECT_EQ(IDCANCEL, dialog.Run(nullptr));
    EXPECT_EQ(L"old@x.com", dialog.address());  // untouched by a cancelled dialog

    EXPECT_FALSE(after_long_address.ok_enabled);
    EXPECT_EQ(IDC_EDIT_ADDRESS, after_long_address.focus);
    EXPECT_TRUE(ok_back);
    EXPECT_EQ(IDC_EDIT_ADDRESS, after_bad_address.focus);
    EXPECT_FALSE(after_long_name.ok_enabled);
    EXPECT_EQ(IDC_EDIT_NAME, after_long_name.focus);
    ASSERT_EQ(3u, driver_.boxes.size());
    EXPECT_EQ(world_.ui.Text(L"IDS_TEXT_TOO_LONG_MSG"), driver_.boxes[0].text);
    EXPECT_EQ(world_.ui.Text(L"IDS_CONFIRMATION_CAPTION"), driver_.boxes[0].caption);
    EXPECT_EQ(world_.ui.Text(L"IDS_WRONG_EMAILADDR_MSG"), driver_.boxes[1].text);
    EXPECT_EQ(world_.ui.Text(L"IDS_TEXT_TOO_LONG_MSG"), driver_.boxes[2].text);
    EXPECT_TRUE(driver_.Done());
}

}  // namespace
}  // namespace velk::senders
