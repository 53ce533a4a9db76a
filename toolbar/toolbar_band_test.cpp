// The band in this process, over the staged language module: its height
// rule and its overflow layout and menu. Clicks, menus and the report switch
// are proven with the add-in in the client.
#include <gtest/gtest.h>

#include <windows.h>
#include <commctrl.h>

#include <string>

#include "common_src/QzCommon/QzComn_test_util.h"
#include "common_src/win32/ResourceHandle.h"
#include "common_src/win32/handles.h"
#include "host/addin_globals.h"
#include "resources/resource_ids.h"
#include "toolbar/toolbar_band.h"

namespace {

using velk::host::Globals;
using velk::toolbar::CToolBarBand;

constexpr UINT kAbsent = 0xFFFFFFFFu;

TEST(Band, TallButtonKeepsTheBandLowAndANarrowBandOffersItsHiddenButtonsInAMenu) {
    ResourceHandle mui;
    ASSERT_TRUE(mui.Load(std::wstring(VELK_TEST_DIST) + L"\\Resource\\en-US\\"));
    Globals().resources = reinterpret_cast<HINSTANCE>(mui.Get());
    QzCommon::testing_util::TempFolder folder;
    Globals().where = velk::settings::SettingsLocations(folder.path(), folder.path());
    Globals().where.SetUser(L"band-test");
    // Cloud feedback hidden by the installation.
    folder.WriteFile(L"VELK_OE.ini", "[General]\r\nShowCRXButton=0\r\n");
    ASSERT_TRUE(velk::toolbar::CToolBarButton::RegisterButtonClass());
    velk::win32::unique_hwnd parent(::CreateWindowW(L"STATIC", L"", WS_POPUP, 0, 0, 800, 40,
                                                    nullptr, nullptr, nullptr, nullptr));
    velk::win32::unique_hbitmap tall(::CreateBitmap(16, 60, 1, 32, nullptr));
    velk::win32::unique_hbitmap icon(::CreateBitmap(16, 16, 1, 32, nullptr));
    const velk::toolbar::ToolBarButtonRecord records[8] = {
        {tall.get(), nullptr, L"", L"logo", 1, 0, 9, ID_TB_LOGO},
        {nullptr, nullptr, L"Menu", L"", 1, 2, 9, ID_TB_MENU_BUTTON},
        {nullptr, nullptr, L"", L"", 2, 0, 9, -1}, {}, {},
        {nullptr, nullptr, L"", L"", 2, 1, 9, -1},
        {icon.get(), nullptr, L"Report Spam", L"tip", 1, 0, 9, ID_TB_REPORT_SPAM},
        {icon.get(), nullptr, L"Report FP", L"tip", 1, 0, 9, ID_TB_REPORT_FP}};
    CToolBarBand band(records, 8, false, nullptr);
    ASSERT_TRUE(band.Create(parent.get()));
    // A 60-pixel bitmap would push the client's bars apart.
    EXPECT_EQ(24, band.min_cy());
    // Each plain button is the tool of a tip of the band's, with the record's
    // text; the tip watches the button's mouse itself.
    int tools = 0;
    for (HWND tip = ::FindWindowExW(nullptr, nullptr, TOOLTIPS_CLASSW, nullptr); tip != nullptr;
         tip = ::FindWindowExW(nullptr, tip, TOOLTIPS_CLASSW, nullptr)) {
        wchar_t text[64] = L"";
        TTTOOLINFOW ti{};
        ti.cbSize = TTTOOLINFOW_V2_SIZE;
        ti.hwnd = band.hwnd();
        ti.uId = reinterpret_cast<UINT_PTR>(band.button_window(6));
        ti.lpszText = text;
        if (!::SendMessageW(tip, TTM_GETTOOLINFOW, 0, reinterpret_cast<LPARAM>(&ti)))
            continue;
        ++tools;
        EXPECT_STREQ(L"tip", text);
        EXPECT_NE(0u, ti.uFlags & TTF_SUBCLASS);
    }
    EXPECT_EQ(1, tools) << "Report Spam's tip";
    auto resize = [&](int width) {
        ::SetWindowPos(band.hwnd(), nullptr, 0, 0, width, 30, SWP_NOZORDER | SWP_NOMOVE);
    };
    // The window's own flag: the test's parent window is never shown.
    auto shown = [&](HWND w) { return (::GetWindowLongPtrW(w, GWL_STYLE) & WS_VISIBLE) != 0; };
    auto place = [&](int index) {
        RECT r{};
        ::GetWindowRect(band.button_window(index), &r);
        ::MapWindowPoints(nullptr, band.hwnd(), reinterpret_cast<POINT*>(&r), 2);
        return r;
    };

    resize(800);
    EXPECT_FALSE(shown(band.overflow_window()));
    EXPECT_TRUE(shown(band.button_window(6)) && !shown(band.button_window(7)));
    // Report FP takes Report Spam's place, through later layouts too.
    const RECT spam = place(6);
    band.SwitchReportButton(true);
    EXPECT_EQ(spam.left, place(7).left);
    resize(790);
    EXPECT_TRUE(shown(band.button_window(7)) && !shown(band.button_window(6)));
    EXPECT_EQ(spam.left, place(7).left);
    band.SwitchReportButton(false);
    // A button that would reach under the ">>" button overflows.
    resize(spam.right + 10);
    EXPECT_FALSE(shown(band.button_window(6)));
    EXPECT_TRUE(shown(band.overflow_window()));

    // Only the logo fits: the menu button and the report buttons overflow
    // into the menu, the logo menu as a sub-menu without cloud feedback.
    resize(60);
    EXPECT_TRUE(shown(band.button_window(0)) && !shown(band.button_window(1)));
    for (bool enabled : {true, false}) {
        band.EnableButtons(enabled);
        velk::win32::unique_hmenu menu = band.BuildOverflowMenu();
        ASSERT_EQ(3, ::GetMenuItemCount(menu.get()));
        EXPECT_EQ(static_cast<UINT>(ID_TB_REPORT_SPAM), ::GetMenuItemID(menu.get(), 1));
        EXPECT_EQ(static_cast<UINT>(ID_TB_REPORT_FP), ::GetMenuItemID(menu.get(), 2));
        HMENU copy = ::GetSubMenu(menu.get(), 0);
        ASSERT_NE(nullptr, copy);
        EXPECT_NE(kAbsent, ::GetMenuState(copy, enabled ? ID_MENU_DISABLE_TOOLBAR
                                                        : ID_MENU_ENABLE_TOOLBAR,
                                          MF_BYCOMMAND));
        EXPECT_EQ(kAbsent, ::GetMenuState(copy, ID_MENU_CLOUD_FEEDBACK, MF_BYCOMMAND));
    }
    for (int sub : {0, 1}) {
        EXPECT_EQ(kAbsent, ::GetMenuState(::GetSubMenu(band.logo_menu(), sub),
                                          ID_MENU_CLOUD_FEEDBACK, MF_BYCOMMAND));
    }
    Globals().resources = nullptr;
}

}  // namespace
