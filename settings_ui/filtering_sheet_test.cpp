// The filtering settings sheet as the user and the scanning process meet
// it: the language module's templates, the settings file's bytes, the
// stand-in's record of what was posted and sent to it.
#include "settings_ui/filtering_sheet.h"

#include <gtest/gtest.h>

#include <commctrl.h>

#include <algorithm>

#include "common_src/win32/companion.h"
#include "host/log_capture_for_test.h"
#include "host/window_identifiers.h"
#include "settings_ui/dialog_ids.h"
#include "settings_ui/sheet_ids.h"
#include "settings_ui/sheet_test_world.h"

namespace velk::settings_ui {
namespace {

using test::FindDescendant;
using test::FindDialog;
using test::Script;
using test::SheetWorld;

constexpr int kAdvancedTab = 5;

class FilteringSheetTest : public ::testing::Test {
protected:
    HWND Sheet() { return FindDialog(world_.SheetCaption()); }
    HWND Item(int id) { return FindDescendant(Sheet(), id); }
    // A control of the page the sheet shows now.
    HWND Shown(int id) {
        return FindDescendant(
            reinterpret_cast<HWND>(::SendMessageW(Sheet(), PSM_GETCURRENTPAGEHWND, 0, 0)), id);
    }
    void ShowTab(int tab) { ::SendMessageW(Sheet(), PSM_SETCURSEL, tab, 0); }
    int Pos(HWND slider) { return static_cast<int>(::SendMessageW(slider, TBM_GETPOS, 0, 0)); }
    bool Checked(HWND button) { return ::SendMessageW(button, BM_GETCHECK, 0, 0) == BST_CHECKED; }
    void Click(HWND button) { ::SendMessageW(button, BM_CLICK, 0, 0); }
    // The panel holding control `id` is the one its page shows.
    bool PanelShown(int id) {
        return (::GetWindowLongW(::GetParent(Item(id)), GWL_STYLE) & WS_VISIBLE) != 0;
    }
    void Press(HWND dialog, int id) {
        ::PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), 0);
    }
    void Key(HWND target, WPARAM key) {
        ::SetFocus(target);
        ::PostMessageW(target, WM_KEYDOWN, key, 1);
        ::PostMessageW(target, WM_KEYUP, key, 0xC0000001);
    }
    Script::Step SheetUp() {
        return [this] { return Sheet() != nullptr; };
    }
    Script::Step DialogUp(const wchar_t* key, bool up = true) {
        return [this, key, up] { return (FindDialog(world_.ui().Text(key)) != nullptr) == up; };
    }
    bool RunSheet(Script& script) {
        return script.Run([this] { ShowFilteringSheet(world_.ui()); });
    }

    SheetWorld world_;
};

RECT ChildRect(HWND parent, HWND child) {
    RECT r{};
    ::GetWindowRect(child, &r);
    ::MapWindowPoints(nullptr, parent, reinterpret_cast<POINT*>(&r), 2);
    return r;
}

TEST_F(FilteringSheetTest, GuardMarkerLayoutAndDeleteNowWhichIsPostedEvenOnCancel) {
    auto settings_window = [] {
        return win32::unique_hwnd(::CreateWindowExW(0, L"Static", host::kSettingsSheetWindowTitle,
                                                    WS_POPUP, 0, 0, 10, 10, nullptr, nullptr,
                                                    nullptr, nullptr));
    };
    // Not even opened while the scanning process's settings window is up.
    win32::unique_hwnd guard = settings_window();
    ShowFilteringSheet(world_.ui());
    EXPECT_EQ(nullptr, Sheet());
    guard.reset();
    EXPECT_FALSE(win32::companion::FilteringSheetOpen());
    world_.SetUser(L"General", L"PurgeDays", L"30d");
    const std::string before = world_.ReadUserIni();

    bool marker_while_open = false;
    Script script;
    script.Then(SheetUp())
        .Do([&] {
            marker_while_open = win32::companion::FilteringSheetOpen();
            guard = settings_window();  // it opens while the sheet is up
            Press(Sheet(), IDOK);
            Press(Sheet(), IDCANCEL);
            ::PostMessageW(Sheet(), WM_SYSCOMMAND, SC_CLOSE, 0);
            ::PostMessageW(Sheet(), WM_SYSKEYDOWN, VK_F4, 0x20000001);  // Alt+F4
        })
        .Wait(400)
        .Do([&] {
            HWND sheet = Sheet();
            ASSERT_NE(nullptr, sheet) << "the guard let the sheet close";
            EXPECT_FALSE(::IsWindowVisible(::GetDlgItem(sheet, 12321))) << "Apply is never shown";
            // Help at the left; OK, then Cancel at the right; the taller tabs
            // still leave the whole page below them.
            const RECT help = ChildRect(sheet, ::GetDlgItem(sheet, IDHELP));
            const RECT ok = ChildRect(sheet, ::GetDlgItem(sheet, IDOK));
            const RECT cancel = ChildRect(sheet, ::GetDlgItem(sheet, IDCANCEL));
            EXPECT_TRUE(help.right < ok.left && ok.right < cancel.left && help.top == cancel.top);
            HWND tab = reinterpret_cast<HWND>(::SendMessageW(sheet, PSM_GETTABCONTROL, 0, 0));
            const RECT page = ChildRect(
                sheet, reinterpret_cast<HWND>(::SendMessageW(sheet, PSM_GETCURRENTPAGEHWND, 0, 0)));
            RECT item{};
            ::SendMessageW(tab, TCM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&item));
            ::MapWindowPoints(tab, sheet, reinterpret_cast<POINT*>(&item), 2);
            EXPECT_TRUE(page.top >= item.bottom && page.bottom <= ChildRect(sheet, tab).bottom);
            EXPECT_LT(ChildRect(sheet, tab).bottom, ok.top);
            ShowTab(kAdvancedTab);
        })
        .Then([&] { return Shown(IDC_ADV_DELETE_NOW) != nullptr; })
        .Do([&] {
            Click(Shown(IDC_ADV_DELETE_DELETED));
            Click(Shown(IDC_ADV_DELETE_NOW));
            guard.reset();
            Press(Sheet(), IDCANCEL);
        });
    ASSERT_TRUE(RunSheet(script));
    EXPECT_TRUE(marker_while_open);
    EXPECT_FALSE(win32::companion::FilteringSheetOpen());
    EXPECT_EQ(std::vector<std::string>{"posted WM_USER+11 wParam=0x0 lParam=0x0"},
              world_.HeardSinceLastAsk());
    EXPECT_EQ(before, world_.ReadUserIni());
}

TEST_F(FilteringSheetTest, StoredValuesShowWithTheirFallbacksAndOkWithoutChangesWritesNothing) {
    world_.WriteUserIni(
        "[General]\r\nGlobalLevel=2\r\nProtectLevel=5\r\nEnableInTheCloud=abc\r\n"
        "NotifyIcon=yes\r\nDeleteDeleted=yes\r\nAutoMoved=yes\r\nPurgeDays=400\r\n"
        "[LinkFilter]\r\nTrustedDomains=b.example;a.example;not a domain\r\n");
    const std::string before = world_.ReadUserIni();
    Script script;
    script.Then(SheetUp())
        .Do([&] {
            // GlobalLevel 2 is the default mode; ProtectLevel 5 reads as Medium.
            EXPECT_TRUE(PanelShown(IDC_DEFAULT_SLIDER));
            EXPECT_EQ(1, Pos(Item(IDC_DEFAULT_SLIDER)));
            ShowTab(1);  // every page shown, so every page is asked
        })
        .Then([&] { return Item(IDC_LINK_LIST) != nullptr; })
        .Do([&] {
            EXPECT_EQ(2, ::SendMessageW(Item(IDC_LINK_LIST), LB_GETCOUNT, 0, 0));
            ShowTab(kAdvancedTab);
        })
        .Then([&] { return Shown(IDC_ADV_PURGE_DAYS) != nullptr; })
        .Do([&] {
            // Deliberately asymmetric: an odd value turns the first two on, the third off.
            EXPECT_TRUE(Checked(Shown(IDC_ADV_NOTIFY_ICON)));
            EXPECT_TRUE(Checked(Shown(IDC_ADV_DELETE_DELETED)));
            EXPECT_FALSE(Checked(Shown(IDC_ADV_AUTO_MOVED)));
            EXPECT_EQ(L"20", test::TextOf(Shown(IDC_ADV_PURGE_DAYS)));
            EXPECT_FALSE(::IsWindowEnabled(Shown(IDC_ADV_PURGE_DAYS)));
            Press(Sheet(), IDOK);
        });
    ASSERT_TRUE(RunSheet(script));
    EXPECT_EQ(before, world_.ReadUserIni());
    EXPECT_TRUE(world_.HeardSinceLastAsk().empty());
}

TEST_F(FilteringSheetTest, CustomModeOnlyAfterTheCategoryDialogsOkAndSerenelSavesWithThePage) {
    HWND dialog = nullptr;
    auto category = [&] { dialog = FindDialog(world_.ui().Text(L"IDS_CATEGORY_CAPTION")); };
    Script script;
    script.Then(SheetUp())
        .Do([&] { ::PostMessageW(Item(IDC_DEFAULT_CUSTOMIZE), BM_CLICK, 0, 0); })
        .Then(DialogUp(L"IDS_CATEGORY_CAPTION"))
        .Do([&] {
            category();
            Key(::GetDlgItem(dialog, IDC_CATEGORY_SLIDER_FIRST), VK_HOME);
            Press(dialog, IDCANCEL);
        })
        .Then(DialogUp(L"IDS_CATEGORY_CAPTION", false))
        .Do([&] {
            EXPECT_TRUE(PanelShown(IDC_DEFAULT_SLIDER)) << "Cancel keeps the default mode";
            EXPECT_FALSE(PanelShown(IDC_CUSTOM_CHANGE));
            ::PostMessageW(Item(IDC_DEFAULT_CUSTOMIZE), BM_CLICK, 0, 0);
        })
        .Then(DialogUp(L"IDS_CATEGORY_CAPTION"))
        .Do([&] {
            category();
            HWND adult = ::GetDlgItem(dialog, IDC_CATEGORY_SLIDER_FIRST);
            EXPECT_EQ(1, Pos(adult)) << "the cancelled move was not kept";
            Key(adult, VK_HOME);
        })
        .Then([&] { return Pos(::GetDlgItem(dialog, IDC_CATEGORY_SLIDER_FIRST)) == 0; })
        .Do([&] { Press(dialog, IDOK); })
        .Then(DialogUp(L"IDS_CATEGORY_CAPTION", false))
        .Do([&] {
            EXPECT_TRUE(PanelShown(IDC_CUSTOM_CHANGE));
            EXPECT_FALSE(PanelShown(IDC_DEFAULT_SLIDER));
            EXPECT_EQ(world_.ui().Text(L"IDS_LEVEL_HIGH"),
                      test::TextOf(Item(IDC_CUSTOM_LEVEL_FIRST)));
            ::PostMessageW(Item(IDC_CUSTOM_SERENEL), BM_CLICK, 0, 0);
        })
        .Then(DialogUp(L"IDS_SERENEL_CAPTION"))
        .Do([&] {
            dialog = FindDialog(world_.ui().Text(L"IDS_SERENEL_CAPTION"));
            HWND slider = ::GetDlgItem(dialog, IDC_SERENEL_SLIDER);
            EXPECT_FALSE(::IsWindowEnabled(slider)) << "off: no level to choose";
            Click(::GetDlgItem(dialog, IDC_SERENEL_ENABLE));
            Key(slider, VK_END);
        })
        .Then([&] { return Pos(::GetDlgItem(dialog, IDC_SERENEL_SLIDER)) == 2; })
        .Do([&] { Press(dialog, IDOK); })
        .Then(DialogUp(L"IDS_SERENEL_CAPTION", false))
        .Do([&] { Press(Sheet(), IDOK); });
    ASSERT_TRUE(RunSheet(script));
    EXPECT_EQ(std::vector<std::string>{"posted WM_USER+12 wParam=0x0 lParam=0x0"},
              world_.HeardSinceLastAsk());
    EXPECT_EQ(
        "[General]\r\nGlobalLevel=0\r\nProtectLevel=2\r\nSexualLevel=3\r\nCommercialLevel=2\r\n"
        "FinancialLevel=2\r\nHealthLevel=2\r\nOtherLevel=2\r\nRacialLevel=2\r\nSpiritualLevel=2\r\n"
        "EnableInTheCloud=1\r\n[Qzufe]\r\nEnableQzufe=1\r\nSecurityLevel=1\r\n",
        world_.ReadUserIni());
}

TEST_F(FilteringSheetTest, DefaultLevelLinkFilterAndAdvancedPagesSaveTheirKeysAndTellTheScanner) {
    // Quoted, so the blanks reach the page (the profile API trims bare ones).
    world_.WriteUserIni("[General]\r\nGlobalLevel=\r\nProtectLevel=\" 3 \"\r\n");
    Script script;
    script.Then(SheetUp())
        .Do([&] {
            EXPECT_TRUE(PanelShown(IDC_DEFAULT_SLIDER))
                << "an empty GlobalLevel is the default mode";
            EXPECT_EQ(0, Pos(Item(IDC_DEFAULT_SLIDER)));
            Click(Item(IDC_DEFAULT_CLOUD));
            Key(Item(IDC_DEFAULT_SLIDER), VK_DOWN);
        })
        .Then([&] { return Pos(Item(IDC_DEFAULT_SLIDER)) == 1; })
        .Do([&] { ShowTab(1); })
        .Then([&] { return Item(IDC_LINK_DOMAIN_EDIT) != nullptr; })
        .Do([&] {
            HWND edit = Item(IDC_LINK_DOMAIN_EDIT);
            ::SetWindowTextW(edit, L"https://Mail.Example.COM/login");
            Key(edit, VK_RETURN);  // adds the domain; the sheet stays open
        })
        .Then([&] { return ::SendMessageW(Item(IDC_LINK_LIST), LB_GETCOUNT, 0, 0) == 1; })
        .Do([&] {
            EXPECT_EQ(0, ::GetWindowTextLengthW(Item(IDC_LINK_DOMAIN_EDIT)));
            Click(Item(IDC_LINK_WARN_MISMATCH));
            ShowTab(kAdvancedTab);
        })
        .Then([&] { return Shown(IDC_ADV_PURGE_DAYS) != nullptr; })
        .Do([&] {
            // The period can be edited exactly while its box is checked.
            Click(Shown(IDC_ADV_AUTO_MOVED));
            EXPECT_TRUE(::IsWindowEnabled(Shown(IDC_ADV_PURGE_DAYS)));
            ::SetWindowTextW(Shown(IDC_ADV_PURGE_DAYS), L"45");
            Click(Shown(IDC_ADV_NOTIFY_ICON));
            Press(Sheet(), IDOK);
        });
    ASSERT_TRUE(RunSheet(script));
    // The icon's change is sent, the rest posted: their order is the stand-in's.
    std::vector<std::string> heard = world_.HeardSinceLastAsk();
    std::sort(heard.begin(), heard.end());
    EXPECT_EQ((std::vector<std::string>{"posted WM_USER+12 wParam=0x0 lParam=0x0",
                                        "posted WM_USER+13 wParam=0x0 lParam=0x0",
                                        "sent WM_USER+20 wParam=0x0 lParam=0x0"}),
              heard);
    // What the scanning process reads, in the order it reads it.
    EXPECT_EQ(
        "[General]\r\nGlobalLevel=1\r\nProtectLevel=2\r\nSexualLevel=2\r\nCommercialLevel=2\r\n"
        "FinancialLevel=2\r\nHealthLevel=2\r\nOtherLevel=2\r\nRacialLevel=2\r\nSpiritualLevel=2\r\n"
        "EnableInTheCloud=0\r\nPurgeDays=45\r\nAutoMoved=1\r\nDeleteDeleted=0\r\nNotifyIcon=1\r\n"
        "[LinkFilter]\r\nEnableLinkFilter=1\r\nWarnMismatchedLinks=0\r\nFlagNumericLinks=1\r\n"
        "TrustedDomains=mail.example.com\r\n",
        world_.ReadUserIni());
}

TEST_F(FilteringSheetTest, HelpOpensTheOpenPagesAddressAndLogsEachFailure) {
    test::SetEngineValue(L"OnlineHelpURL", L"https://help.example/");
    test::SetEngineValue(L"ProductID", L"VELK35");
    velk::testing::LogCapture log;
    std::vector<std::wstring> opened;
    CFilteringSheet sheet(world_.ui());
    sheet.SetUrlOpener([&](const std::wstring& address) {
        opened.push_back(address);
        return false;  // the browser does not start
    });
    sheet.SetUpPages();
    Script script;
    script.Then(SheetUp())
        .Do([&] {
            ShowTab(1);
            Press(Sheet(), IDHELP);
        })
        .Then([&] { return opened.size() == 1; })
        .Do([&] {
            test::RemoveEngineKey();
            Press(Sheet(), IDHELP);
        })
        .Wait(200)
        .Do([&] { Press(Sheet(), IDCANCEL); });
    ASSERT_TRUE(script.Run([&] { sheet.DoModal(); }));
    ASSERT_EQ(1u, opened.size());
    EXPECT_EQ(0u, opened[0].rfind(L"https://help.example/VELK35/", 0)) << opened[0];
    EXPECT_NE(std::wstring::npos, opened[0].find(L"/link_filter/")) << opened[0];
    EXPECT_TRUE(log.Contains("@@@ Error : Can't open on-line help URL in browser."));
    EXPECT_TRUE(log.Contains("@@@ Error : Can't retrieve on-line help URL from registry."));
}

}  // namespace
}  // namespace velk::settings_ui
