#include "settings_ui/advanced_page.h"

#include <functional>
#include <vector>

#include "settings_ui/dialog_ids.h"
#include "settings_ui/dialogs_test_support.h"

namespace velk::settings_ui::testing {
namespace {

constexpr UINT kNextStep = WM_APP + 7;

// A bare sheet around the page that runs one step per turn of its message
// loop, as a user would act, then presses OK or Cancel.
class ScriptedSheet : public win32::PropertySheet {
public:
    std::vector<std::function<void()>> steps;

protected:
    void OnInitialized() override { ::PostMessageW(hwnd(), kNextStep, 0, 0); }
    bool ProcessMessage(UINT msg, WPARAM, LPARAM, LRESULT& result) override {
        if (msg != kNextStep)
            return false;
        if (next_ < steps.size()) {
            steps[next_++]();
            ::PostMessageW(hwnd(), kNextStep, 0, 0);
        }
        result = 0;
        return true;
    }

private:
    std::size_t next_ = 0;
};

class AdvancedPage : public DialogsTest {
protected:
    // Runs the page in a sheet: `act` on the page's window, then the button.
    INT_PTR Run(const std::function<void(HWND page)>& act, int button) {
        CAdvancedPage page(ui_);
        ScriptedSheet sheet;
        sheet.AddPage(page);
        sheet.steps = {[&] { act(page.hwnd()); },
                       [&] { ::SendMessageW(sheet.hwnd(), PSM_PRESSBUTTON, button, 0); }};
        return sheet.DoModal(nullptr, L"Sheet", PSH_NOAPPLYNOW);
    }
    static bool Checked(HWND page, int id) { return ::IsDlgButtonChecked(page, id) == BST_CHECKED; }
};

TEST_F(AdvancedPage, ShowsStoredValuesWithTheirFallbacksAndTheDeliberateAsymmetry) {
    SetUser(L"General", L"NotifyIcon", L"yes");
    SetUser(L"General", L"DeleteDeleted", L"yes");
    SetUser(L"General", L"AutoMoved", L"yes");
    const struct {
        const wchar_t* stored;
        const wchar_t* shown;
    } periods[] = {{L"30d", L"20"}, {L"0", L"20"}, {L"400", L"20"}, {L"365", L"365"}, {L"1", L"1"}};
    for (const auto& p : periods) {
        SetUser(L"General", L"PurgeDays", p.stored);
        Run([&](HWND page) {
                EXPECT_EQ(p.shown, TextOf(::GetDlgItem(page, IDC_ADV_PURGE_DAYS))) << p.stored;
                EXPECT_TRUE(Checked(page, IDC_ADV_NOTIFY_ICON));
                EXPECT_TRUE(Checked(page, IDC_ADV_DELETE_DELETED));
                EXPECT_FALSE(Checked(page, IDC_ADV_AUTO_MOVED));
                // The period can be edited exactly while the box is checked.
                HWND days = ::GetDlgItem(page, IDC_ADV_PURGE_DAYS);
                Click(page, IDC_ADV_AUTO_MOVED);
                EXPECT_TRUE(::IsWindowEnabled(days));
                Click(page, IDC_ADV_AUTO_MOVED);
                EXPECT_FALSE(::IsWindowEnabled(days));
            },
            PSBTN_CANCEL);
    }
    EXPECT_EQ(L"1", User(L"General", L"PurgeDays")) << "only an applied page writes it back";
}

TEST_F(AdvancedPage, DeleteNowIsPostedAtOnceEvenWhenTheSheetIsCancelled) {
    StartScanner();
    SetUser(L"General", L"PurgeDays", L"30d");
    const std::string before = UserFile();
    Run([](HWND page) {
            Click(page, IDC_ADV_DELETE_DELETED);
            Click(page, IDC_ADV_DELETE_NOW);
        },
        PSBTN_CANCEL);
    EXPECT_TRUE(HeardLine("posted WM_USER+11 wParam=0x0 lParam=0x0"));
    EXPECT_EQ(before, UserFile());
}

TEST_F(AdvancedPage, OkWritesTheFourKeysInOrderAndSendsTheIconChangeOnlyWhenClicked) {
    StartScanner();
    Run([](HWND) {}, PSBTN_OK);
    EXPECT_EQ("", UserFile()) << "an untouched page saves nothing";

    Run([](HWND page) {
            Click(page, IDC_ADV_AUTO_MOVED);
            ::SetDlgItemTextW(page, IDC_ADV_PURGE_DAYS, L"45");
        },
        PSBTN_OK);
    EXPECT_EQ("[General]\r\nPurgeDays=45\r\nAutoMoved=1\r\nDeleteDeleted=0\r\nNotifyIcon=0\r\n", UserFile());

    Run([](HWND page) { Click(page, IDC_ADV_NOTIFY_ICON); }, PSBTN_OK);
    EXPECT_EQ(L"1", User(L"General", L"NotifyIcon"));
    StopScanner();
    const std::string heard = Heard();
    EXPECT_EQ(1u, CountOf(heard, "WM_USER+20")) << heard;
    EXPECT_EQ(1u, CountOf(heard, "sent WM_USER+20 wParam=0x0 lParam=0x0")) << heard;
}

}  // namespace
}  // namespace velk::settings_ui::testing
