// Pictures of the sheet's pages and dialogs as they appear on the screen,
// for the README and for judging the layout at the display's DPI: written
// as BMP files to the build tree's screenshots folder (VELK_TEST_SHOTS).
#include "settings_ui/filtering_sheet.h"

#include <gtest/gtest.h>

#include <commctrl.h>
#include <shlobj.h>

#include "demo/driver/screen_shot.h"
#include "settings_ui/sheet_ids.h"
#include "settings_ui/sheet_test_world.h"

namespace velk::settings_ui {
namespace {

using test::FindDescendant;
using test::FindDialog;

bool Shoot(HWND window, const wchar_t* name) {
    const std::wstring dir = VELK_TEST_SHOTS;
    ::SHCreateDirectoryExW(nullptr, dir.c_str(), nullptr);
    demo::Picture picture;
    return window != nullptr && demo::CaptureWindow(window, picture) &&
           demo::SaveBmp(picture, dir + L"\\" + name + L".bmp");
}

TEST(SheetScreenshots, DetectionPagesLinkFilterAndBothLevelDialogs) {
    test::SheetWorld world;
    world.WriteUserIni(
        "[General]\r\nProtectLevel=2\r\nFinancialLevel=3\r\nHealthLevel=1\r\n"
        "[LinkFilter]\r\nFlagNumericLinks=0\r\n"
        "TrustedDomains=example.com;bank.example;mail.example.org;intranet.example.net\r\n");
    const std::wstring caption = world.SheetCaption();
    const std::wstring category = world.ui().Text(L"IDS_CATEGORY_CAPTION");
    const std::wstring serenel = world.ui().Text(L"IDS_SERENEL_CAPTION");
    auto sheet = [&] { return FindDialog(caption); };
    auto item = [&](int id) { return FindDescendant(sheet(), id); };
    auto click = [&](int id) { ::PostMessageW(item(id), BM_CLICK, 0, 0); };
    int shots = 0;

    test::Script script;
    script.Then([&] { return sheet() != nullptr; })
        .Do([&] {
            // The mouse over the second tab shows its hot state.
            HWND tab = reinterpret_cast<HWND>(::SendMessageW(sheet(), PSM_GETTABCONTROL, 0, 0));
            RECT r{};
            ::SendMessageW(tab, TCM_GETITEMRECT, 1, reinterpret_cast<LPARAM>(&r));
            ::SendMessageW(tab, WM_MOUSEMOVE, 0, MAKELPARAM(r.left + 4, r.top + 4));
            ::SetFocus(item(IDC_DEFAULT_SLIDER));
        })
        .Wait(400)
        .Do([&] { shots += Shoot(sheet(), L"sheet_detection"); })
        .Do([&] { click(IDC_DEFAULT_CUSTOMIZE); })
        .Then([&] { return FindDialog(category) != nullptr; })
        .Wait(400)
        .Do([&] {
            shots += Shoot(FindDialog(category), L"sheet_category_level");
            ::PostMessageW(FindDialog(category), WM_COMMAND, IDOK, 0);
        })
        .Then([&] { return FindDialog(category) == nullptr; })
        .Wait(300)
        .Do([&] { shots += Shoot(sheet(), L"sheet_detection_custom"); })
        .Do([&] { click(IDC_CUSTOM_SERENEL); })
        .Then([&] { return FindDialog(serenel) != nullptr; })
        .Do([&] { ::SendDlgItemMessageW(FindDialog(serenel), IDC_SERENEL_ENABLE, BM_CLICK, 0, 0); })
        .Wait(400)
        .Do([&] {
            shots += Shoot(FindDialog(serenel), L"sheet_serenel");
            ::PostMessageW(FindDialog(serenel), WM_COMMAND, IDCANCEL, 0);
        })
        .Then([&] { return FindDialog(serenel) == nullptr; })
        .Do([&] { ::SendMessageW(sheet(), PSM_SETCURSEL, 1, 0); })
        .Wait(400)
        .Do([&] { shots += Shoot(sheet(), L"sheet_link_filter"); })
        // The other tabs, as they sit in this sheet.
        .Do([&] { ::SendMessageW(sheet(), PSM_SETCURSEL, 2, 0); })
        .Wait(400)
        .Do([&] { shots += Shoot(sheet(), L"sheet_approved_senders"); })
        .Do([&] { ::SendMessageW(sheet(), PSM_SETCURSEL, 4, 0); })
        .Wait(400)
        .Do([&] { shots += Shoot(sheet(), L"sheet_blocked_languages"); })
        .Do([&] { ::SendMessageW(sheet(), PSM_SETCURSEL, 5, 0); })
        .Wait(400)
        .Do([&] {
            shots += Shoot(sheet(), L"sheet_advanced");
            ::PostMessageW(sheet(), WM_COMMAND, IDCANCEL, 0);
        });
    ASSERT_TRUE(script.Run([&] { ShowFilteringSheet(world.ui()); }));
    EXPECT_EQ(8, shots);
}

}  // namespace
}  // namespace velk::settings_ui
