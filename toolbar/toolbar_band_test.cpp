// The band in this process, over the staged language module: its height
// rule, the overflow layout and menu, and the logo menu's trimming.
#include <gtest/gtest.h>

#include <windows.h>

#include <string>
#include <vector>

#include "common_src/win32/ResourceHandle.h"
#include "common_src/win32/handles.h"
#include "host/addin_globals.h"
#include "resources/resource_ids.h"
#include "toolbar/band_resources.h"
#include "toolbar/toolbar_band.h"

namespace {

using velk::host::Globals;
using velk::toolbar::CToolBarBand;
using velk::toolbar::ToolBarButtonRecord;

std::vector<UINT> Ids(HMENU menu) {
    std::vector<UINT> ids;
    for (int i = 0; i < ::GetMenuItemCount(menu); ++i)
        ids.push_back(::GetMenuItemID(menu, i));  // 0 for a separator, -1 for a sub-menu
    return ids;
}

class BandTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(mui_.Load(std::wstring(VELK_TEST_DIST) + L"\\Resource\\en-US\\"));
        Globals().resources = reinterpret_cast<HINSTANCE>(mui_.Get());
        wchar_t temp[MAX_PATH];
        ::GetTempPathW(MAX_PATH, temp);
        Globals().where = velk::settings::SettingsLocations(temp, temp);
        Globals().where.install_ini = std::wstring(temp) + L"velk_band_test.ini";
        Globals().where.SetUser(L"band-test");
        ::DeleteFileW(Globals().where.install_ini.c_str());
        ASSERT_TRUE(velk::toolbar::CToolBarButton::RegisterButtonClass());
        parent_.reset(::CreateWindowW(L"STATIC", L"", WS_POPUP, 0, 0, 800, 40, nullptr, nullptr,
                                      nullptr, nullptr));
        tall_.reset(::CreateBitmap(16, 60, 1, 32, nullptr));
        icon_.reset(::CreateBitmap(16, 16, 1, 32, nullptr));
        records_[0] = {tall_.get(), nullptr, L"", L"logo", 1, 0, 9, ID_TB_LOGO};
        records_[1] = {nullptr, nullptr, L"Menu", L"", 1, 2, 9, ID_TB_MENU_BUTTON};
        records_[2] = {nullptr, nullptr, L"", L"", 2, 0, 9, -1};
        records_[5] = {nullptr, nullptr, L"", L"", 2, 1, 9, -1};
        records_[6] = {icon_.get(), nullptr, L"Report Spam", L"tip", 1, 0, 9, ID_TB_REPORT_SPAM};
        records_[7] = {icon_.get(), nullptr, L"Report FP", L"tip", 1, 0, 9, ID_TB_REPORT_FP};
    }
    void TearDown() override {
        band_.reset();
        parent_.reset();
        Globals().resources = nullptr;
        ::DeleteFileW(Globals().where.install_ini.c_str());
    }
    void Install(const wchar_t* key, const wchar_t* value) {
        ::WritePrivateProfileStringW(L"General", key, value, Globals().where.install_ini.c_str());
    }
    HWND MakeBand() {
        band_.reset(new CToolBarBand(records_, 8, false, nullptr));
        EXPECT_TRUE(band_->Create(parent_.get()));
        return band_->hwnd();
    }
    void Resize(int width) {
        ::SetWindowPos(band_->hwnd(), nullptr, 0, 0, width, 30, SWP_NOZORDER | SWP_NOMOVE);
    }
    // The window's own flag: the test's parent window is never shown.
    static bool Flag(HWND window) {
        return (::GetWindowLongPtrW(window, GWL_STYLE) & WS_VISIBLE) != 0;
    }
    bool Shown(int index) const { return Flag(band_->button_window(index)); }

    ResourceHandle mui_;
    velk::win32::unique_hwnd parent_;
    velk::win32::unique_hbitmap tall_, icon_;
    ToolBarButtonRecord records_[8];
    std::unique_ptr<CToolBarBand> band_;
};

TEST_F(BandTest, TallButtonKeepsTheBandLowAndNarrowBandOffersHiddenButtonsInItsMenu) {
    Install(L"ShowCRXButton", L"0");
    HWND band = MakeBand();
    ASSERT_NE(nullptr, band);
    // A 60-pixel bitmap would push the client's bars apart.
    EXPECT_EQ(24, band_->min_cy());
    // Drawn by us, each button still names itself to screen readers: its
    // caption, else its tooltip.
    auto text = [](HWND window) {
        wchar_t buffer[64] = L"";
        ::GetWindowTextW(window, buffer, 64);
        return std::wstring(buffer);
    };
    EXPECT_EQ(L"logo", text(band_->button_window(0)));
    EXPECT_EQ(L"Report Spam", text(band_->button_window(6)));
    EXPECT_EQ(L">>", text(band_->overflow_window()));
    // Cloud feedback hidden by the installation: gone from both sub-menus.
    for (int sub : {0, 1}) {
        EXPECT_EQ(0xFFFFFFFFu, ::GetMenuState(::GetSubMenu(band_->logo_menu(), sub),
                                              ID_MENU_CLOUD_FEEDBACK, MF_BYCOMMAND));
    }

    Resize(800);
    EXPECT_FALSE(Flag(band_->overflow_window()));
    EXPECT_TRUE(Shown(0) && Shown(1) && Shown(6));
    EXPECT_FALSE(Shown(7));  // one report button at a time

    // Only the logo fits: the menu button and the report buttons overflow.
    Resize(60);
    EXPECT_TRUE(Flag(band_->overflow_window()));
    EXPECT_TRUE(Shown(0));
    EXPECT_FALSE(Shown(1) || Shown(6));
    velk::win32::unique_hmenu menu = band_->BuildOverflowMenu();
    const std::vector<UINT> ids = Ids(menu.get());
    ASSERT_EQ(3u, ids.size());
    EXPECT_EQ(static_cast<UINT>(-1), ids[0]);  // the logo menu as a sub-menu
    EXPECT_EQ(static_cast<UINT>(ID_TB_REPORT_SPAM), ids[1]);
    EXPECT_EQ(static_cast<UINT>(ID_TB_REPORT_FP), ids[2]);
    wchar_t caption[32] = L"";
    ::GetMenuStringW(menu.get(), 0, caption, 32, MF_BYPOSITION);
    EXPECT_STREQ(L"Menu", caption);
    HMENU copy = ::GetSubMenu(menu.get(), 0);
    EXPECT_NE(0xFFFFFFFFu, ::GetMenuState(copy, ID_MENU_DISABLE_TOOLBAR, MF_BYCOMMAND));
    EXPECT_EQ(0xFFFFFFFFu, ::GetMenuState(copy, ID_MENU_CLOUD_FEEDBACK, MF_BYCOMMAND));

    // Disabled buttons: the copy is the "enable" sub-menu.
    band_->EnableButtons(false);
    menu = band_->BuildOverflowMenu();
    copy = ::GetSubMenu(menu.get(), 0);
    EXPECT_NE(0xFFFFFFFFu, ::GetMenuState(copy, ID_MENU_ENABLE_TOOLBAR, MF_BYCOMMAND));
}

TEST_F(BandTest, ReportFpKeepsReportSpamsPlaceThroughLaterLayouts) {
    MakeBand();
    Resize(800);
    auto left = [&](int index) {
        RECT r{};
        ::GetWindowRect(band_->button_window(index), &r);
        return r.left;
    };
    const int spam = left(6);
    band_->SwitchReportButton(true);
    for (int width : {790, 800}) {
        Resize(width);
        EXPECT_TRUE(Shown(7) && !Shown(6)) << width;
        EXPECT_EQ(spam, left(7)) << width;
    }
    band_->SwitchReportButton(false);
    Resize(790);
    EXPECT_TRUE(Shown(6) && !Shown(7));
    EXPECT_EQ(spam, left(6));
}

TEST_F(BandTest, FirstPopupTakesTheUpdatesEntryOutOfBothSubMenusOnce) {
    MakeBand();
    const int entries = ::GetMenuItemCount(::GetSubMenu(band_->logo_menu(), 0));
    for (int round = 0; round < 2; ++round) {
        band_->TrimLogoMenuOnFirstPopup();
        for (int sub : {0, 1}) {
            HMENU menu = ::GetSubMenu(band_->logo_menu(), sub);
            EXPECT_EQ(0xFFFFFFFFu, ::GetMenuState(menu, ID_MENU_UPDATES, MF_BYCOMMAND));
            // With the separators around it.
            EXPECT_EQ(entries - 3, ::GetMenuItemCount(menu)) << round;
        }
    }
}

}  // namespace
