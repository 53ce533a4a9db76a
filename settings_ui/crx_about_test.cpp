#include <memory>

#include "host/window_identifiers.h"
#include "settings_ui/about_dlg.h"
#include "settings_ui/crx_dlg.h"
#include "settings_ui/dialog_ids.h"
#include "settings_ui/dialogs_test_support.h"
#include "settings_ui/show_dialogs.h"
#include "velk_version.h"

namespace velk::settings_ui::testing {
namespace {

using CloudFeedback = DialogsTest;
using About = DialogsTest;

TEST_F(CloudFeedback, AnyNonZeroChoiceReadsAsYesAndOkIsIgnoredWhileTheScannersSettingsAreOpen) {
    SetUser(L"Statistics", L"EnableCRX", L"5");
    SetInstall(L"General", L"CRXLink", L"https://feedback.example.test/about");
    auto dialog = std::make_unique<CCRXDlg>(ui_);
    HWND window = dialog->CreateModeless(ui_.resources, IDD_CLOUD_FEEDBACK, nullptr);
    ASSERT_NE(nullptr, window);
    EXPECT_TRUE(::IsDlgButtonChecked(window, IDC_CRX_YES));
    EXPECT_FALSE(::IsDlgButtonChecked(window, IDC_CRX_NO));
    EXPECT_EQ(std::wstring::npos, TextOf(::GetDlgItem(window, IDC_CRX_YES_DESC)).find(L"<$"));
    EXPECT_EQ(L"https://feedback.example.test/about", dialog->link().LinkTarget());

    {
        win32::unique_hwnd guard(::CreateWindowExW(0, L"STATIC", host::kSettingsSheetWindowTitle,
                                                   WS_POPUP, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr));
        Click(window, IDOK);
        EXPECT_TRUE(::IsWindow(window));
        EXPECT_EQ(L"5", User(L"Statistics", L"EnableCRX"));
    }
    Click(window, IDOK);
    EXPECT_FALSE(::IsWindow(window));
    EXPECT_EQ(L"1", User(L"Statistics", L"EnableCRX"));

    SetUser(L"Statistics", L"EnableCRX", L"0");
    dialog = std::make_unique<CCRXDlg>(ui_);
    window = dialog->CreateModeless(ui_.resources, IDD_CLOUD_FEEDBACK, nullptr);
    EXPECT_TRUE(::IsDlgButtonChecked(window, IDC_CRX_NO));
    Click(window, IDC_CRX_YES);
    Click(window, IDC_CRX_NO);
    Click(window, IDOK);
    EXPECT_EQ(L"0", User(L"Statistics", L"EnableCRX"));
}

class AboutBox : public About {
protected:
    HWND Open() {
        dialog_ = std::make_unique<CAboutDlg>(ui_);
        return dialog_->CreateModeless(ui_.resources, IDD_ABOUT, nullptr);
    }
    bool HasBanner(HWND window) {
        return ::SendDlgItemMessageW(window, IDC_ABOUT_BANNER, STM_GETIMAGE, IMAGE_BITMAP, 0) != 0;
    }
    std::unique_ptr<CAboutDlg> dialog_;
};

TEST_F(AboutBox, BannerAndVersionsWithTheirFallbacks) {
    HWND window = Open();
    ASSERT_NE(nullptr, window);
    EXPECT_TRUE(HasBanner(window)) << "no banner named: the built-in one";
    EXPECT_EQ(ui_.Text(L"IDD_ABOUT_IDC_STATIC_TITLE"), TextOf(window));
    EXPECT_EQ(ui_.Text(L"IDS_PRODUCT_NAME"), TextOf(::GetDlgItem(window, IDC_ABOUT_PRODUCT)));
    EXPECT_EQ(ui_.Text(L"IDS_CORP_NAME"), TextOf(::GetDlgItem(window, IDC_ABOUT_COMPANY)));
    EXPECT_EQ(std::wstring(L"" VELK_FILE_VERSION_STRING) + L" (build " + (L"" VELK_PRIVATE_BUILD_STRING) + L")",
              TextOf(::GetDlgItem(window, IDC_ABOUT_VERSION)));
    EXPECT_EQ(L"0.0.0", TextOf(::GetDlgItem(window, IDC_ABOUT_ENGINE)));
    EXPECT_EQ(L"00000.000", TextOf(::GetDlgItem(window, IDC_ABOUT_PATTERN)));

    SetInstall(L"General", L"AboutTitle", L"About Mail Shield");
    SetInstall(L"General", L"AboutProductName", L"Mail Shield");
    SetInstall(L"General", L"AboutCompanyName", L"Example Ltd");
    SetUser(L"Antispam", L"EngineVer", L"6.1.2");
    SetUser(L"Antispam", L"PatchVer", L"2024117");
    SetInstall(L"General", L"AboutBannerPath", L"art\\missing.bmp");
    window = Open();
    EXPECT_EQ(L"About Mail Shield", TextOf(window));
    EXPECT_EQ(L"Mail Shield", TextOf(::GetDlgItem(window, IDC_ABOUT_PRODUCT)));
    EXPECT_EQ(L"Example Ltd", TextOf(::GetDlgItem(window, IDC_ABOUT_COMPANY)));
    EXPECT_EQ(L"6.1.2", TextOf(::GetDlgItem(window, IDC_ABOUT_ENGINE)));
    EXPECT_EQ(L"2024.117", TextOf(::GetDlgItem(window, IDC_ABOUT_PATTERN)));
    EXPECT_FALSE(HasBanner(window));
    EXPECT_NE(std::string::npos, LogText().find("missing.bmp"));

    temp_.WriteFile(L"bin\\art\\broken.bmp", "BM this is not a bitmap at all");
    SetInstall(L"General", L"AboutBannerPath", L"art\\broken.bmp");
    window = Open();
    EXPECT_FALSE(HasBanner(window));

    // A real bitmap of the installation's own: 2x1 pixels, 24 bits.
    BITMAPFILEHEADER file{};
    BITMAPINFOHEADER info{};
    const char pixels[8] = {'\x20', '\x40', '\x60', '\x20', '\x40', '\x60', 0, 0};
    file.bfType = 0x4D42;
    file.bfOffBits = sizeof(file) + sizeof(info);
    file.bfSize = file.bfOffBits + sizeof(pixels);
    info.biSize = sizeof(info);
    info.biWidth = 2;
    info.biHeight = 1;
    info.biPlanes = 1;
    info.biBitCount = 24;
    std::string bmp(reinterpret_cast<const char*>(&file), sizeof(file));
    bmp.append(reinterpret_cast<const char*>(&info), sizeof(info));
    bmp.append(pixels, sizeof(pixels));
    temp_.WriteFile(L"bin\\art\\own.bmp", bmp);
    SetInstall(L"General", L"AboutBannerPath", L"art\\own.bmp");
    window = Open();
    EXPECT_TRUE(HasBanner(window));
}

TEST_F(About, ShownModallyOverTheClientAndCentredOnIt) {
    ui_.owner = ClientWindow();
    struct Seen {
        HWND dialog = nullptr;
        HWND owner = nullptr;
        RECT rect{};
        bool client_disabled = false;
    };
    static Seen seen;
    seen = Seen();
    const UINT_PTR timer = ::SetTimer(nullptr, 0, 20, [](HWND, UINT, UINT_PTR, DWORD) {
        HWND client = ::FindWindowW(L"STATIC", L"client");
        HWND dialog = ::FindWindowW(L"#32770", nullptr);
        if (dialog == nullptr || !::IsWindowVisible(dialog) || seen.dialog != nullptr)
            return;
        seen.dialog = dialog;
        seen.owner = ::GetWindow(dialog, GW_OWNER);
        seen.client_disabled = !::IsWindowEnabled(client);
        ::GetWindowRect(dialog, &seen.rect);
        ::PostMessageW(dialog, WM_COMMAND, IDOK, 0);
    });
    ShowAbout(ui_);
    ::KillTimer(nullptr, timer);
    ASSERT_NE(nullptr, seen.dialog);
    EXPECT_EQ(ui_.owner, seen.owner);
    EXPECT_TRUE(seen.client_disabled);
    EXPECT_TRUE(::IsWindowEnabled(ui_.owner));
    // The client is at 100,80 and 700x500: its centre is 450,330.
    EXPECT_NEAR(450, (seen.rect.left + seen.rect.right) / 2, 1);
    EXPECT_NEAR(330, (seen.rect.top + seen.rect.bottom) / 2, 1);
}

}  // namespace
}  // namespace velk::settings_ui::testing
