#include <gtest/gtest.h>

#include <fstream>
#include <memory>

#include "demo/driver/screen_shot.h"
#include "host/log_capture_for_test.h"
#include "host/window_identifiers.h"
#include "settings_ui/about_dlg.h"
#include "settings_ui/crx_dlg.h"
#include "settings_ui/dialog_ids.h"
#include "settings_ui/sheet_test_world.h"
#include "velk_version.h"

namespace velk::settings_ui {
namespace {

using test::TextOf;

class SmallDialogs : public ::testing::Test {
protected:
    template <class D>
    HWND Open(std::unique_ptr<D>& dialog, int id) {
        dialog = std::make_unique<D>(world_.ui());
        return dialog->CreateModeless(world_.ui().resources, id, nullptr);
    }
    void Click(HWND window, int id) { ::SendDlgItemMessageW(window, id, BM_CLICK, 0, 0); }

    test::SheetWorld world_;
};

TEST_F(SmallDialogs, CloudFeedbackReadsAnyNonZeroAsYesAndWaitsForTheScannersSettings) {
    world_.SetUser(L"Statistics", L"EnableCRX", L"5");
    world_.SetInstall(L"General", L"CRXLink", L"https://feedback.example.test/about");
    std::unique_ptr<CCRXDlg> dialog;
    HWND window = Open(dialog, IDD_CLOUD_FEEDBACK);
    ASSERT_NE(nullptr, window);
    EXPECT_TRUE(::IsDlgButtonChecked(window, IDC_CRX_YES));
    EXPECT_FALSE(::IsDlgButtonChecked(window, IDC_CRX_NO));
    EXPECT_EQ(std::wstring::npos, TextOf(::GetDlgItem(window, IDC_CRX_YES_DESC)).find(L"<$"));
    EXPECT_EQ(L"https://feedback.example.test/about", dialog->link().LinkTarget());
    {
        win32::unique_hwnd guard(::CreateWindowExW(0, L"STATIC", host::kSettingsSheetWindowTitle,
                                                   WS_POPUP, 0, 0, 0, 0, nullptr, nullptr, nullptr,
                                                   nullptr));
        Click(window, IDOK);
        EXPECT_TRUE(::IsWindow(window));
        EXPECT_EQ(L"5", world_.UserValue(L"Statistics", L"EnableCRX"));
    }
    Click(window, IDOK);
    EXPECT_FALSE(::IsWindow(window));
    EXPECT_EQ(L"1", world_.UserValue(L"Statistics", L"EnableCRX"));

    window = Open(dialog, IDD_CLOUD_FEEDBACK);
    Click(window, IDC_CRX_NO);
    Click(window, IDOK);
    EXPECT_EQ(L"0", world_.UserValue(L"Statistics", L"EnableCRX"));
}

TEST_F(SmallDialogs, AboutShowsBannerNamesAndVersionsWithTheirFallbacks) {
    velk::testing::LogCapture log;
    std::unique_ptr<CAboutDlg> dialog;
    auto banner = [](HWND window) {
        return ::SendDlgItemMessageW(window, IDC_ABOUT_BANNER, STM_GETIMAGE, IMAGE_BITMAP, 0) != 0;
    };
    HWND window = Open(dialog, IDD_ABOUT);
    ASSERT_NE(nullptr, window);
    EXPECT_TRUE(banner(window)) << "no banner named: the built-in one";
    EXPECT_EQ(world_.ui().Text(L"IDD_ABOUT_IDC_STATIC_TITLE"), TextOf(window));
    EXPECT_EQ(world_.ui().Text(L"IDS_PRODUCT_NAME"),
              TextOf(::GetDlgItem(window, IDC_ABOUT_PRODUCT)));
    EXPECT_EQ(world_.ui().Text(L"IDS_CORP_NAME"), TextOf(::GetDlgItem(window, IDC_ABOUT_COMPANY)));
    EXPECT_EQ(std::wstring(L"" VELK_FILE_VERSION_STRING) + L" (build " +
                  (L"" VELK_PRIVATE_BUILD_STRING) + L")",
              TextOf(::GetDlgItem(window, IDC_ABOUT_VERSION)));

    world_.SetInstall(L"General", L"AboutTitle", L"About Mail Shield");
    world_.SetInstall(L"General", L"AboutProductName", L"Mail Shield");
    world_.SetInstall(L"General", L"AboutCompanyName", L"Example Ltd");
    world_.SetUser(L"Antispam", L"EngineVer", L"6.1.2");
    world_.SetUser(L"Antispam", L"PatchVer", L"2024117");
    world_.SetInstall(L"General", L"AboutBannerPath", L"missing.bmp");
    window = Open(dialog, IDD_ABOUT);
    EXPECT_EQ(L"About Mail Shield", TextOf(window));
    EXPECT_EQ(L"Mail Shield", TextOf(::GetDlgItem(window, IDC_ABOUT_PRODUCT)));
    EXPECT_EQ(L"Example Ltd", TextOf(::GetDlgItem(window, IDC_ABOUT_COMPANY)));
    EXPECT_EQ(L"6.1.2", TextOf(::GetDlgItem(window, IDC_ABOUT_ENGINE)));
    EXPECT_EQ(L"2024.117", TextOf(::GetDlgItem(window, IDC_ABOUT_PATTERN)));
    EXPECT_FALSE(banner(window));
    EXPECT_TRUE(log.Contains("missing.bmp"));

    // A damaged file, then a real bitmap of the installation's own, found
    // beside the settings file.
    const std::wstring own = world_.ui().where.install_dir + L"own.bmp";
    std::ofstream(own.c_str(), std::ios::binary) << "BM this is not a bitmap at all";
    world_.SetInstall(L"General", L"AboutBannerPath", L"own.bmp");
    EXPECT_FALSE(banner(Open(dialog, IDD_ABOUT)));
    demo::Picture picture;
    picture.width = 2;
    picture.height = 1;
    picture.pixels = {RGB(0x60, 0x40, 0x20), RGB(0x60, 0x40, 0x20)};
    ASSERT_TRUE(demo::SaveBmp(picture, own));
    EXPECT_TRUE(banner(Open(dialog, IDD_ABOUT)));
}

}  // namespace
}  // namespace velk::settings_ui
