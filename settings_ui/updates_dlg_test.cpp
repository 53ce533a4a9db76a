#include "settings_ui/updates_dlg.h"

#include "settings_ui/dialog_ids.h"
#include "settings_ui/dialogs_test_support.h"

namespace velk::settings_ui::testing {
namespace {

constexpr long long kNow = 1700000000;

class UpdatesDialog : public DialogsTest {
protected:
    // The status line and pattern version shown for what the scanning
    // process wrote, at the fixed time kNow.
    std::wstring Shown(int id) {
        CUpdatesDlg dialog(ui_, [] { return kNow; });
        HWND window = dialog.CreateModeless(ui_.resources, IDD_UPDATES, nullptr);
        EXPECT_NE(nullptr, window);
        return TextOf(::GetDlgItem(window, id));
    }
};

TEST_F(UpdatesDialog, StatusFollowsTheLastUpdateTimeAndThePatternVersionGetsItsDot) {
    SetUser(L"RuleFile-Update", L"UpToDate", L"1");
    SetUser(L"RuleFile-Update", L"LastUpdateTime", L"0");
    EXPECT_EQ(ui_.Text(L"IDS_STR_NOT_UPDATE_YET"), Shown(IDC_UPD_STATUS));
    EXPECT_EQ(ui_.Text(L"IDS_UPD_NEVER"), Shown(IDC_UPD_LAST_UPDATE));

    SetUser(L"RuleFile-Update", L"LastUpdateTime", std::to_wstring(kNow - 604800));
    EXPECT_EQ(ui_.Text(L"IDS_OUT_OF_DATE"), Shown(IDC_UPD_STATUS)) << "seven days is out of date";
    SetUser(L"RuleFile-Update", L"LastUpdateTime", std::to_wstring(kNow - 604799));
    EXPECT_EQ(ui_.Text(L"IDS_UP_TO_DATE"), Shown(IDC_UPD_STATUS));
    EXPECT_NE(std::wstring::npos, ui_.Text(L"IDS_UP_TO_DATE").find(L"Anti-Spam"));
    SetUser(L"RuleFile-Update", L"UpToDate", L"0");
    EXPECT_EQ(ui_.Text(L"IDS_OUT_OF_DATE"), Shown(IDC_UPD_STATUS));

    SetUser(L"Antispam", L"PatchVer", L"123");
    EXPECT_EQ(L"123", Shown(IDC_UPD_PATTERN_VERSION));
    SetUser(L"Antispam", L"PatchVer", L"1234");
    EXPECT_EQ(L"1.234", Shown(IDC_UPD_PATTERN_VERSION));
}

// The engine installation's "version", set for one test and removed after
// (with the key when the test made it).
class EngineKey {
public:
    EngineKey() {
        ::RegCreateKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Nuvexa\\Tessaveli", 0, nullptr, 0,
                          KEY_ALL_ACCESS | KEY_WOW64_64KEY, nullptr, key_.put(), &disposition_);
    }
    ~EngineKey() {
        ::RegDeleteValueW(key_.get(), L"version");
        key_.reset();
        if (disposition_ == REG_CREATED_NEW_KEY)
            ::RegDeleteKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Nuvexa\\Tessaveli", KEY_WOW64_64KEY, 0);
    }
    void SetVersion(const std::wstring& version) {
        ::RegSetValueExW(key_.get(), L"version", 0, REG_SZ, reinterpret_cast<const BYTE*>(version.c_str()),
                         static_cast<DWORD>((version.size() + 1) * sizeof(wchar_t)));
    }

private:
    win32::unique_hkey key_;
    DWORD disposition_ = 0;
};

TEST_F(UpdatesDialog, UpdateNowAsksTheScannerUnlessTheEngineIsVersionSeventeen) {
    StartScanner();
    CUpdatesDlg dialog(ui_);
    HWND window = dialog.CreateModeless(ui_.resources, IDD_UPDATES, nullptr);
    ASSERT_NE(nullptr, window);
    {
        EngineKey key;
        key.SetVersion(L"17.0.1022");
        Click(window, IDC_UPD_UPDATE_NOW);
        key.SetVersion(L"16.7");
        Click(window, IDC_UPD_UPDATE_NOW);
    }
    Click(window, IDC_UPD_UPDATE_NOW);  // no key: an empty version is not 17
    StopScanner();

    const std::string heard = Heard();
    EXPECT_EQ(2u, CountOf(heard, "posted WM_USER+6 wParam=0x0 lParam=0x0")) << heard;
    EXPECT_EQ(2u, CountOf(heard, "\n")) << heard;
    const std::string log = LogText();
    for (const char* line : {"@@@ HVN version is 17.0.1022", "@@@ Error:HVN version is 17",
                             "@@@ HVN version is 16.7",
                             "@@@ Error:open HKEY_LOCAL_MACHINE\\SOFTWARE\\Nuvexa\\Tessaveli failed"}) {
        EXPECT_NE(std::string::npos, log.find(line)) << line << "\n" << log;
    }
    EXPECT_EQ(1u, CountOf(log, "Error:HVN version is 17"));
}

TEST_F(UpdatesDialog, OkWritesTheScheduleAndRefusesAnEmptyInterval) {
    CUpdatesDlg dialog(ui_);
    HWND window = dialog.CreateModeless(ui_.resources, IDD_UPDATES, nullptr);
    ASSERT_NE(nullptr, window);
    EXPECT_EQ(L"180", TextOf(::GetDlgItem(window, IDC_UPD_INTERVAL)));  // the default
    Click(window, IDC_UPD_SHOW_PROGRESS);
    ::SetDlgItemTextW(window, IDC_UPD_INTERVAL, L"");
    MessageBoxAnswerer answerer;
    Click(window, IDOK);
    ASSERT_EQ(1u, answerer.boxes.size());
    EXPECT_EQ(ui_.Text(L"IDS_UPD_INTERVAL_RANGE"), answerer.boxes[0].text);
    ASSERT_TRUE(::IsWindow(window));
    EXPECT_EQ(L"<none>", User(L"RuleFile-Update", L"UpdateUI"));

    ::SetDlgItemTextW(window, IDC_UPD_INTERVAL, L"45");
    Click(window, IDOK);
    EXPECT_FALSE(::IsWindow(window));
    EXPECT_EQ(L"1", User(L"RuleFile-Update", L"EnableSchedule"));
    EXPECT_EQ(L"1", User(L"RuleFile-Update", L"UpdateUI"));
    EXPECT_EQ(L"45", User(L"RuleFile-Update", L"Interval"));
}

}  // namespace
}  // namespace velk::settings_ui::testing
