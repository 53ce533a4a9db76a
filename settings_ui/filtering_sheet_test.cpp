// The filtering settings sheet as the user and the scanning process meet
// it: the language module's templates, the settings file, the stand-in's
// record of what was posted to it.
#include "settings_ui/filtering_sheet.h"

#include <gtest/gtest.h>

#include <commctrl.h>

#include "common_src/win32/companion.h"
#include "host/log_capture_for_test.h"
#include "host/window_identifiers.h"
#include "settings_ui/sheet_ids.h"
#include "settings_ui/sheet_test_world.h"

namespace velk::settings_ui {
namespace {

using test::FindDescendant;
using test::FindDialog;
using test::Script;
using test::SheetWorld;

const std::vector<std::string> kDetectionPosted = {"posted WM_USER+12 wParam=0x0 lParam=0x0"};
const std::vector<std::string> kLinkFilterPosted = {"posted WM_USER+13 wParam=0x0 lParam=0x0"};

class FilteringSheetTest : public ::testing::Test {
protected:
    HWND Sheet() { return FindDialog(world_.SheetCaption()); }
    HWND Item(int id) { return FindDescendant(Sheet(), id); }
    int Pos(HWND slider) { return static_cast<int>(::SendMessageW(slider, TBM_GETPOS, 0, 0)); }
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
    Script::Step DialogUp(const wchar_t* key) {
        return [this, key] { return FindDialog(world_.ui().Text(key)) != nullptr; };
    }
    Script::Step DialogGone(const wchar_t* key) {
        return [this, key] { return FindDialog(world_.ui().Text(key)) == nullptr; };
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

TEST_F(FilteringSheetTest, MarkerLivesWithTheSheetAndTheGuardHoldsOkCancelAndClose) {
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
            RECT client{};
            ::GetClientRect(sheet, &client);
            const RECT help = ChildRect(sheet, ::GetDlgItem(sheet, IDHELP));
            const RECT ok = ChildRect(sheet, ::GetDlgItem(sheet, IDOK));
            const RECT cancel = ChildRect(sheet, ::GetDlgItem(sheet, IDCANCEL));
            EXPECT_EQ(6, help.left);
            EXPECT_EQ(client.right - 6, cancel.right);
            EXPECT_EQ(cancel.left - 6, ok.right);
            EXPECT_TRUE(help.top == ok.top && ok.top == cancel.top);
            // The taller tabs still leave the whole page below them.
            HWND tab = reinterpret_cast<HWND>(::SendMessageW(sheet, PSM_GETTABCONTROL, 0, 0));
            HWND page = reinterpret_cast<HWND>(::SendMessageW(sheet, PSM_GETCURRENTPAGEHWND, 0, 0));
            RECT item{};
            ::SendMessageW(tab, TCM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&item));
            ::MapWindowPoints(tab, sheet, reinterpret_cast<POINT*>(&item), 2);
            EXPECT_EQ(22, item.bottom - item.top);
            EXPECT_GE(ChildRect(sheet, page).top, item.bottom);
            EXPECT_LE(ChildRect(sheet, page).bottom, ChildRect(sheet, tab).bottom);
            EXPECT_LT(ChildRect(sheet, tab).bottom, ok.top);
            guard.reset();
            Press(sheet, IDCANCEL);
        });
    ASSERT_TRUE(RunSheet(script));
    EXPECT_TRUE(marker_while_open);
    EXPECT_FALSE(win32::companion::FilteringSheetOpen());
    EXPECT_TRUE(world_.HeardSinceLastAsk().empty());
}

TEST_F(FilteringSheetTest, OkWithoutChangesWritesNothingAndPostsNothing) {
    world_.WriteUserIni(
        "[General]\r\nGlobalLevel=2\r\nProtectLevel=5\r\nEnableInTheCloud=abc\r\n"
        "[LinkFilter]\r\nTrustedDomains=b.example;a.example;not a domain\r\n");
    const std::string before = world_.ReadUserIni();
    Script script;
    script.Then(SheetUp())
        .Do([&] {
            // GlobalLevel 2 is the default mode; ProtectLevel 5 reads as Medium.
            EXPECT_TRUE(PanelShown(IDC_DEFAULT_SLIDER));
            EXPECT_FALSE(PanelShown(IDC_CUSTOM_CHANGE));
            EXPECT_EQ(1, Pos(Item(IDC_DEFAULT_SLIDER)));
            EXPECT_EQ(BST_CHECKED, ::SendMessageW(Item(IDC_DEFAULT_CLOUD), BM_GETCHECK, 0, 0));
            ::SendMessageW(Sheet(), PSM_SETCURSEL, 1, 0);  // both pages shown, so both asked
        })
        .Then([&] { return Item(IDC_LINK_LIST) != nullptr; })
        .Do([&] {
            EXPECT_EQ(2, ::SendMessageW(Item(IDC_LINK_LIST), LB_GETCOUNT, 0, 0));
            Press(Sheet(), IDOK);
        });
    ASSERT_TRUE(RunSheet(script));
    EXPECT_EQ(before, world_.ReadUserIni());
    EXPECT_TRUE(world_.HeardSinceLastAsk().empty());
}

TEST_F(FilteringSheetTest, SliderMovedByKeyOrMouseWritesEveryDetectionKeyAndPostsOnce) {
    // Quoted, so the blanks reach the page (the profile API trims bare ones).
    world_.WriteUserIni("[General]\r\nGlobalLevel=\r\nProtectLevel=\" 3 \"\r\n");
    Script by_key;
    by_key.Then(SheetUp()).Do([&] {
        EXPECT_TRUE(PanelShown(IDC_DEFAULT_SLIDER)) << "an empty GlobalLevel is the default mode";
        HWND slider = Item(IDC_DEFAULT_SLIDER);
        EXPECT_EQ(0, Pos(slider));
        Key(slider, VK_DOWN);
    });
    by_key.Then([&] { return Pos(Item(IDC_DEFAULT_SLIDER)) == 1; }).Do([&] {
        Press(Sheet(), IDOK);
    });
    ASSERT_TRUE(RunSheet(by_key));
    EXPECT_EQ(kDetectionPosted, world_.HeardSinceLastAsk());
    EXPECT_EQ(L"1", world_.UserValue(L"General", L"GlobalLevel"));
    EXPECT_EQ(L"2", world_.UserValue(L"General", L"ProtectLevel"));
    for (const wchar_t* key : {L"SexualLevel", L"CommercialLevel", L"FinancialLevel",
                               L"HealthLevel", L"OtherLevel", L"RacialLevel", L"SpiritualLevel"})
        EXPECT_EQ(L"2", world_.UserValue(L"General", key)) << key;
    EXPECT_EQ(L"1", world_.UserValue(L"General", L"EnableInTheCloud"));

    Script by_mouse;
    by_mouse.Then(SheetUp()).Do([&] {
        HWND slider = Item(IDC_DEFAULT_SLIDER);
        RECT client{};
        ::GetClientRect(slider, &client);
        ::PostMessageW(slider, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(5, client.bottom - 2));
        ::PostMessageW(slider, WM_LBUTTONUP, 0, MAKELPARAM(5, client.bottom - 2));
        ::SendMessageW(Item(IDC_DEFAULT_CLOUD), BM_CLICK, 0, 0);
    });
    by_mouse.Then([&] { return Pos(Item(IDC_DEFAULT_SLIDER)) == 2; }).Do([&] {
        Press(Sheet(), IDOK);
    });
    ASSERT_TRUE(RunSheet(by_mouse));
    EXPECT_EQ(kDetectionPosted, world_.HeardSinceLastAsk());
    EXPECT_EQ(L"1", world_.UserValue(L"General", L"ProtectLevel"));
    EXPECT_EQ(L"0", world_.UserValue(L"General", L"EnableInTheCloud"));
    EXPECT_EQ(L"<none>", world_.UserValue(L"Qzufe", L"SecurityLevel")) << "Serenel untouched";
}

TEST_F(FilteringSheetTest, CustomModeOnlyAfterTheCategoryDialogsOkAndSerenelSavesWithThePage) {
    HWND dialog = nullptr;
    auto category = [&] { return dialog = FindDialog(world_.ui().Text(L"IDS_CATEGORY_CAPTION")); };
    Script script;
    script.Then(SheetUp())
        .Do([&] { ::PostMessageW(Item(IDC_DEFAULT_CUSTOMIZE), BM_CLICK, 0, 0); })
        .Then(DialogUp(L"IDS_CATEGORY_CAPTION"))
        .Do([&] {
            category();
            Key(::GetDlgItem(dialog, IDC_CATEGORY_SLIDER_FIRST), VK_HOME);
            Press(dialog, IDCANCEL);
        })
        .Then(DialogGone(L"IDS_CATEGORY_CAPTION"))
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
        .Then(DialogGone(L"IDS_CATEGORY_CAPTION"))
        .Do([&] {
            EXPECT_TRUE(PanelShown(IDC_CUSTOM_CHANGE));
            EXPECT_FALSE(PanelShown(IDC_DEFAULT_SLIDER));
            wchar_t level[32] = L"";
            ::GetWindowTextW(Item(IDC_CUSTOM_LEVEL_FIRST), level, 32);
            EXPECT_EQ(world_.ui().Text(L"IDS_LEVEL_HIGH"), level);
            ::PostMessageW(Item(IDC_CUSTOM_SERENEL), BM_CLICK, 0, 0);
        })
        .Then(DialogUp(L"IDS_SERENEL_CAPTION"))
        .Do([&] {
            dialog = FindDialog(world_.ui().Text(L"IDS_SERENEL_CAPTION"));
            HWND slider = ::GetDlgItem(dialog, IDC_SERENEL_SLIDER);
            EXPECT_FALSE(::IsWindowEnabled(slider)) << "off: no level to choose";
            ::SendDlgItemMessageW(dialog, IDC_SERENEL_ENABLE, BM_CLICK, 0, 0);
            Key(slider, VK_END);
        })
        .Then([&] { return Pos(::GetDlgItem(dialog, IDC_SERENEL_SLIDER)) == 2; })
        .Do([&] { Press(dialog, IDOK); })
        .Then(DialogGone(L"IDS_SERENEL_CAPTION"))
        .Do([&] { Press(Sheet(), IDOK); });
    ASSERT_TRUE(RunSheet(script));
    EXPECT_EQ(kDetectionPosted, world_.HeardSinceLastAsk());
    EXPECT_EQ(L"0", world_.UserValue(L"General", L"GlobalLevel"));
    EXPECT_EQ(L"3", world_.UserValue(L"General", L"SexualLevel"));
    EXPECT_EQ(L"2", world_.UserValue(L"General", L"CommercialLevel"));
    EXPECT_EQ(L"1", world_.UserValue(L"Qzufe", L"EnableQzufe"));
    EXPECT_EQ(L"1", world_.UserValue(L"Qzufe", L"SecurityLevel"));
}

TEST_F(FilteringSheetTest, LinkFilterAddsADomainOnEnterSavesItsSectionAndPosts1037) {
    Script script;
    script.Then(SheetUp())
        .Do([&] { ::SendMessageW(Sheet(), PSM_SETCURSEL, 1, 0); })
        .Then([&] { return Item(IDC_LINK_DOMAIN_EDIT) != nullptr; })
        .Do([&] {
            HWND edit = Item(IDC_LINK_DOMAIN_EDIT);
            ::SetWindowTextW(edit, L"https://Mail.Example.COM/login");
            Key(edit, VK_RETURN);  // adds the domain; the sheet stays open
        })
        .Then([&] { return ::SendMessageW(Item(IDC_LINK_LIST), LB_GETCOUNT, 0, 0) == 1; })
        .Do([&] {
            EXPECT_EQ(0, ::GetWindowTextLengthW(Item(IDC_LINK_DOMAIN_EDIT)));
            ::SendMessageW(Item(IDC_LINK_WARN_MISMATCH), BM_CLICK, 0, 0);
            Press(Sheet(), IDOK);
        });
    ASSERT_TRUE(RunSheet(script));
    EXPECT_EQ(kLinkFilterPosted, world_.HeardSinceLastAsk());
    EXPECT_EQ(L"mail.example.com", world_.UserValue(L"LinkFilter", L"TrustedDomains"));
    EXPECT_EQ(L"0", world_.UserValue(L"LinkFilter", L"WarnMismatchedLinks"));
    EXPECT_EQ(L"1", world_.UserValue(L"LinkFilter", L"EnableLinkFilter"));
    EXPECT_EQ(L"<none>", world_.UserValue(L"General", L"ProtectLevel")) << "page 1 unchanged";
}

TEST_F(FilteringSheetTest, HelpOpensTheOpenPagesAddressAndLogsEachFailure) {
    const wchar_t* product = L"SOFTWARE\\Nuvexa\\Tessaveli";
    win32::unique_hkey key;
    ASSERT_EQ(ERROR_SUCCESS,
              ::RegCreateKeyExW(HKEY_LOCAL_MACHINE, product, 0, nullptr, 0,
                                KEY_ALL_ACCESS | KEY_WOW64_64KEY, nullptr, key.put(), nullptr));
    auto set = [&](const wchar_t* name, const wchar_t* value) {
        ::RegSetValueExW(key.get(), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value),
                         static_cast<DWORD>((wcslen(value) + 1) * sizeof(wchar_t)));
    };
    set(L"OnlineHelpURL", L"https://help.example/");
    set(L"ProductID", L"VELK35");
    key.reset();

    velk::testing::LogCapture log;
    std::vector<std::wstring> opened;
    bool browser_works = true;
    CFilteringSheet sheet(world_.ui());
    sheet.SetUrlOpener([&](const std::wstring& url) {
        opened.push_back(url);
        return browser_works;
    });
    sheet.SetUpPages();
    Script script;
    script.Then(SheetUp())
        .Do([&] {
            ::SendMessageW(Sheet(), PSM_SETCURSEL, 1, 0);
            Press(Sheet(), IDHELP);
        })
        .Then([&] { return opened.size() == 1; })
        .Do([&] {
            browser_works = false;
            Press(Sheet(), IDHELP);
        })
        .Then([&] { return opened.size() == 2; })
        .Do([&] {
            ::RegDeleteKeyExW(HKEY_LOCAL_MACHINE, product, KEY_WOW64_64KEY, 0);
            Press(Sheet(), IDHELP);
        })
        .Wait(200)
        .Do([&] {
            EXPECT_EQ(2u, opened.size());
            Press(Sheet(), IDCANCEL);
        });
    ASSERT_TRUE(script.Run([&] { sheet.DoModal(); }));
    ASSERT_FALSE(opened.empty());
    EXPECT_EQ(0u, opened[0].rfind(L"https://help.example/VELK35/", 0)) << opened[0];
    EXPECT_NE(std::wstring::npos, opened[0].find(L"/link_filter/")) << opened[0];
    EXPECT_TRUE(log.Contains("@@@ Error : Can't open on-line help URL in browser."));
    EXPECT_TRUE(log.Contains("@@@ Error : Can't retrieve on-line help URL from registry."));
}

}  // namespace
}  // namespace velk::settings_ui
