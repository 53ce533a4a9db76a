#include "settings_ui/updates_dlg.h"

#include <gtest/gtest.h>

#include <memory>

#include "host/log_capture_for_test.h"
#include "settings_ui/dialog_ids.h"
#include "settings_ui/sheet_test_world.h"

namespace velk::settings_ui {
namespace {

using test::TextOf;

constexpr long long kNow = 1700000000;

class UpdatesDialog : public ::testing::Test {
protected:
    // The dialog as it shows what the scanning process wrote, at kNow.
    HWND Open() {
        dialog_ = std::make_unique<CUpdatesDlg>(world_.ui(), [] { return kNow; });
        return dialog_->CreateModeless(world_.ui().resources, IDD_UPDATES, nullptr);
    }
    std::wstring Shown(int id) { return TextOf(::GetDlgItem(Open(), id)); }
    std::wstring Text(const wchar_t* key) { return world_.ui().Text(key); }

    test::SheetWorld world_;
    std::unique_ptr<CUpdatesDlg> dialog_;
};

TEST_F(UpdatesDialog, StatusAndVersionsFollowWhatTheScannerWrote) {
    EXPECT_EQ(Text(L"IDS_STR_NOT_UPDATE_YET"), Shown(IDC_UPD_STATUS));
    EXPECT_EQ(Text(L"IDS_UPD_NEVER"), Shown(IDC_UPD_LAST_UPDATE));

    world_.SetUser(L"RuleFile-Update", L"UpToDate", L"1");
    world_.SetUser(L"RuleFile-Update", L"LastUpdateTime", std::to_wstring(kNow - 60));
    world_.SetUser(L"Antispam", L"PatchVer", L"1234");
    HWND window = Open();
    EXPECT_EQ(Text(L"IDS_UP_TO_DATE"), TextOf(::GetDlgItem(window, IDC_UPD_STATUS)));
    EXPECT_NE(Text(L"IDS_UPD_NEVER"), TextOf(::GetDlgItem(window, IDC_UPD_LAST_UPDATE)));
    EXPECT_EQ(L"1.234", TextOf(::GetDlgItem(window, IDC_UPD_PATTERN_VERSION)));
}

TEST_F(UpdatesDialog, UpdateNowAsksTheScannerUnlessTheEngineIsVersionSeventeen) {
    velk::testing::LogCapture log;
    HWND window = Open();
    auto update_now = [&] { ::SendDlgItemMessageW(window, IDC_UPD_UPDATE_NOW, BM_CLICK, 0, 0); };
    const std::vector<std::string> posted = {"posted WM_USER+6 wParam=0x0 lParam=0x0"};
    test::SetEngineValue(L"version", L"17.0.1022");
    update_now();
    EXPECT_TRUE(world_.HeardSinceLastAsk().empty());
    EXPECT_TRUE(log.Contains("@@@ HVN version is 17.0.1022"));
    EXPECT_TRUE(log.Contains("@@@ Error:HVN version is 17"));
    test::SetEngineValue(L"version", L"16.7");
    update_now();
    EXPECT_EQ(posted, world_.HeardSinceLastAsk());
    EXPECT_TRUE(log.Contains("@@@ HVN version is 16.7"));
    test::RemoveEngineKey();
    update_now();  // no key: an empty version is not 17
    EXPECT_EQ(posted, world_.HeardSinceLastAsk());
    EXPECT_TRUE(
        log.Contains("@@@ Error:open HKEY_LOCAL_MACHINE\\SOFTWARE\\Nuvexa\\Tessaveli failed"));
}

TEST_F(UpdatesDialog, OkWritesTheScheduleAndRefusesAnEmptyInterval) {
    HWND window = Open();
    EXPECT_EQ(L"180", TextOf(::GetDlgItem(window, IDC_UPD_INTERVAL)));  // the default
    ::SendDlgItemMessageW(window, IDC_UPD_SHOW_PROGRESS, BM_CLICK, 0, 0);
    ::SetDlgItemTextW(window, IDC_UPD_INTERVAL, L"");
    EXPECT_EQ(Text(L"IDS_WARNING_CAPTION") + L"|" + Text(L"IDS_UPD_INTERVAL_RANGE"),
              test::ClickAnswering(window, IDOK));
    ASSERT_TRUE(::IsWindow(window));
    EXPECT_EQ("", world_.ReadUserIni());

    ::SetDlgItemTextW(window, IDC_UPD_INTERVAL, L"45");
    EXPECT_EQ(L"", test::ClickAnswering(window, IDOK));
    EXPECT_FALSE(::IsWindow(window));
    EXPECT_EQ("[RuleFile-Update]\r\nEnableSchedule=1\r\nUpdateUI=1\r\nInterval=45\r\n",
              world_.ReadUserIni());
}

}  // namespace
}  // namespace velk::settings_ui
